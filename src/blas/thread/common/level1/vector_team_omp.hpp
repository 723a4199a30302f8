// One level 1 operation on a team, told once for all: the choice between the serial kernel and a team, and the region
// in which every thread calls the kernel on its slices.
#pragma once

#include <cstddef>
#include <omp.h>

#include "blas/blas.hpp"
#include "blas/kernel/kernels.hpp"
#include "blas/thread/common/level1/level1_threads.hpp"
#include "blas/thread/common/slice.hpp"

namespace qrv {

// A vector of n elements with an increment.
template <class T>
struct VectorOperand {
    T* data;
    int n;
    int inc;

    T* slice(Slice part) const { return data + slice_offset(part, n, inc); }
};

// Calls body(slice) on each thread of a team of at most `threads`; the slices are those of n elements. A team of one
// gets the whole.
template <class Body>
void on_slices(int threads, int n, const Body& body) {
#pragma omp parallel num_threads(threads)
    body(vector_slice(n, omp_get_num_threads(), omp_get_thread_num()));
}

// Both routines get the caller's arguments as they are. Out of line, so that a short vector pays for one comparison.
template <const VectorRow& row, auto& serial, auto& threaded, class... Args>
[[gnu::noinline]] auto call_by_machine(int n, int incx, int incy, Args... args) {
    const int threads = vector_threads_here(row, n, incx, incy);
    return threads > 1 ? threaded(&threads, args...) : serial(args...);
}

template <const VectorRow& row, auto& serial, auto& threaded, class... Args>
auto call_by_length(int n, int incx, int incy, Args... args) {
    return n <= row.serialUpTo ? serial(args...) : call_by_machine<row, serial, threaded>(n, incx, incy, args...);
}

} // namespace qrv
