// C := alpha*A*B + beta*C and C := alpha*B*A + beta*C with a symmetric or Hermitian A, on a team: each thread has its
// columns of B and C (side L) or its rows (side R), and reads all of A.
#pragma once

#include <omp.h>

#include "blas/blas.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/options.hpp"
#include "blas/thread/common/slice.hpp"
#include "qrv/service.h"

namespace qrv {

// Products of which neither size is larger are one kernel call.
constexpr int serialProductUpTo = 16;

template <auto& kernel, class T>
void symm_on_team(QRV_SYMM_PARAMETERS(T)) {
    if (*m <= 0 || *n <= 0 || (*alpha == scalar<T>(0) && *beta == scalar<T>(1)))
        return;
    const bool small = *m <= serialProductUpTo && *n <= serialProductUpTo;
    const int threads = small ? 1 : qrv_serv_domain_get_max_threads(QRV_DOMAIN_BLAS);
    if (threads <= 1)
        return kernel(QRV_SYMM_ARGUMENTS);
    const bool left = side_of(*side) == Side::left;
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads();
        const Slice part = equal_slice(left ? *n : *m, team, omp_get_thread_num());
        const Matrix<const T> operand{b, *ldb};
        const Matrix<T> result{c, *ldc};
        const int row = left ? 0 : part.first, column = left ? part.first : 0;
        if (team == 1)
            kernel(QRV_SYMM_ARGUMENTS);
        else
            kernel(side, uplo, left ? m : &part.count, left ? &part.count : n, alpha, a, lda,
                   operand.block(row, column).data, ldb, beta, result.block(row, column).data, ldc);
    }
}

} // namespace qrv
