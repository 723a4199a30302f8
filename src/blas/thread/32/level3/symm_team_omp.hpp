// C := alpha*A*B + beta*C and C := alpha*B*A + beta*C with a symmetric or Hermitian A, on a team: each thread has its
// columns of B and C (side L) or its rows (side R), and reads all of A.
#pragma once

#include <omp.h>

#include "blas/blas.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/thread/32/level3/level3_threads.hpp"
#include "blas/thread/common/machine.hpp"

namespace qrv {

template <auto& kernel, class T>
void symm_on_team(QRV_SYMM_PARAMETERS(T)) {
    if (*m <= 0 || *n <= 0 || (*alpha == scalar<T>(0) && *beta == scalar<T>(1)))
        return;
    const int threads = sliced_threads(*m, *n, ThisMachine{});
    if (threads <= 1)
        return kernel(QRV_SYMM_ARGUMENTS);
#pragma omp parallel num_threads(threads)
    {
        const auto part = matrix_slice(side_of(*side), *m, *n, omp_get_num_threads(), omp_get_thread_num());
        const Matrix<const T> operand{b, *ldb};
        const Matrix<T> result{c, *ldc};
        kernel(side, uplo, &part.m, &part.n, alpha, a, lda, operand.block(part.row, part.column).data, ldb, beta,
               result.block(part.row, part.column).data, ldc);
    }
}

} // namespace qrv
