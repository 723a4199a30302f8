// A triangular solve or product on a team: right-hand sides do not depend on each other, so each thread has a slice of
// them and all of A, and calls the serial kernel.
#pragma once

#include <omp.h>

#include "blas/kernel/kernels.hpp"
#include "blas/thread/32/level3/level3_threads.hpp"
#include "blas/thread/common/machine.hpp"

namespace qrv {

// The kernel, with the calling form of the published routine.
template <class T>
using TriangularKernel = void(QRV_TRSM_PARAMETERS(T));

template <class T>
void triangular_region(int threads, TriangularKernel<T>* kernel, QRV_TRSM_PARAMETERS(T)) {
#pragma omp parallel num_threads(threads)
    {
        const auto part = matrix_slice(side_of(*side), *m, *n, omp_get_num_threads(), omp_get_thread_num());
        T* const start = Matrix<T>{b, *ldb}.block(part.row, part.column).data;
        kernel(side, uplo, transa, diag, &part.m, &part.n, alpha, a, lda, start, ldb);
    }
}

// Whether a matrix B without rows is left to the serial kernel; a solve does not ask.
enum class WithoutRows { serial, asOthers };

template <WithoutRows withoutRows, class T>
void triangular_on_team(TriangularKernel<T>* kernel, QRV_TRSM_PARAMETERS(T)) {
    if (*n == 0)
        return;
    const bool serial = withoutRows == WithoutRows::serial && *m == 0;
    const int threads = serial ? 1 : sliced_threads(*m, *n, ThisMachine{});
    if (threads > 1)
        triangular_region<T>(threads, kernel, QRV_TRSM_ARGUMENTS);
    else
        kernel(QRV_TRSM_ARGUMENTS);
}

} // namespace qrv
