// What the steps of level 1 share: which vectors are walked over as arrays of floats.
#pragma once

#include <cstdint>

#include "blas/complex.hpp"
#include "blas/kernel/common/vec/complex_factor.hpp"
#include "blas/kernel/vec.hpp"

#if QRV_VECTOR_LANES == 4
#include "blas/kernel/common/level1/unit_stride.hpp"
#else
#include "blas/kernel/common/level1/unit_stride_wide.hpp"
#endif

namespace qrv::kernel::QRV_KERNEL_BUILD {

// The floats of an array of elements.
inline float* parts(float* x) {
    return x;
}
inline const float* parts(const float* x) {
    return x;
}
inline float* parts(SingleComplex* x) {
    return &x->re;
}
inline const float* parts(const SingleComplex* x) {
    return &x->re;
}

// Whether vectors have no gaps, in one question: calls of few elements feel each branch. An address that is no multiple
// of 4 is left to the loops over elements.
constexpr unsigned off_one(int inc) {
    return static_cast<unsigned>(inc) ^ 1U;
}
constexpr unsigned off_one_either_way(int inc) {
    return (static_cast<unsigned>(inc) + 1) & ~2U;
}
template <class T>
unsigned off_floats(const T* x) {
    return reinterpret_cast<std::uintptr_t>(x) % sizeof(float);
}
template <class T>
bool contiguous(const T* x, int inc) {
    return (off_one(inc) | off_floats(x)) == 0;
}
template <class T>
bool contiguous(const T* x, int incx, const T* y, int incy) {
    return (off_one(incx) | off_one(incy) | off_floats(x) | off_floats(y)) == 0;
}
template <class T>
bool contiguous_either_way(const T* x, int inc) {
    return (off_one_either_way(inc) | off_floats(x)) == 0;
}

// Whether a part of a vector is one masked load, so that fewer floats than a vector holds go without a loop.
constexpr bool isWide = Vec::lanes > 4;

// Sums over one vector: how many of the n floats at x are taken before the vectors that follow lie on boundaries. Wide
// loads may cross a boundary, at a price that short sums do not earn back.
constexpr int peeledFrom = isWide ? 256 : 0;
inline int floats_to_peel(std::ptrdiff_t n, const float* x) {
    const auto past = static_cast<int>(reinterpret_cast<std::uintptr_t>(x) / sizeof(float) % Vec::lanes);
    if (past == 0 || n < peeledFrom)
        return 0;
    const int count = Vec::lanes - past;
    return count < n ? count : static_cast<int>(n);
}
// A vector after peeling.
inline Vec load_peeled(const float* x) {
    return peeledFrom == 0 ? Vec::load_aligned(x) : Vec::load(x);
}

// Sums of several vectors into one.
inline Vec sum_of_all(const Vec (&x)[4]) {
    return (x[0] + x[1]) + (x[2] + x[3]);
}

// Hands n elements of x and y to a Step.
template <class Step, class X, class Y>
[[gnu::always_inline]] inline void walk(int n, X* x, Y* y, Step& step) {
    if (n > 0) [[likely]]
        UnitStride(std::ptrdiff_t{n} * floatsIn<Y>, parts(x), parts(y), step).walk();
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
