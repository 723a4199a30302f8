#include "blas/thread/common/level1/level1_threads.hpp"

#include "blas/thread/common/machine.hpp"

int qrv::vector_threads_here(const VectorRow& row, int n, int incx, int incy) {
    return vector_threads(row, n, incx, incy, ThisMachine{});
}
