// ISAMAX, ICAMAX: position, from 1, of the first element of largest magnitude |re| + |im|.
//
// An element takes over from the best so far unless the best is at least as large. So a NaN takes over from everything,
// and the element behind it from the NaN: what lies in front of the last NaN has no say. A last element that is NaN
// wins; otherwise the first of largest magnitude behind the last NaN does. Of a slice the position is negative if there
// is a NaN.
#pragma once

#include <cstdint>

#include "blas/complex.hpp"
#include "blas/kernel/common/level1/level1_steps.hpp"
#include "blas/kernel/common/level1/level1_strided.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Magnitudes of as many elements as a vector has lanes, and of the first `count` of them, zeros behind.
inline Vec magnitudes(const float* x) {
    return abs(Vec::load(x));
}
inline Vec magnitudes(const SingleComplex* x) {
    return sum_neighbours(abs(Vec::load(&x->re)), abs(Vec::load(&x->re + Vec::lanes)));
}
inline Vec magnitudes_part(const float* x, int count) {
    return abs(load_part<Vec>(x, count));
}
inline Vec magnitudes_part(const SingleComplex* x, int count) {
    const int floats = 2 * count;
    if (floats < Vec::lanes)
        return sum_neighbours(abs(load_part<Vec>(&x->re, floats)), Vec::zero());
    const Vec behind = floats == Vec::lanes ? Vec::zero() : load_part<Vec>(&x->re + Vec::lanes, floats - Vec::lanes);
    return sum_neighbours(abs(Vec::load(&x->re)), abs(behind));
}

// The largest magnitude of n elements, NaN if one is NaN.
template <class T>
[[gnu::always_inline]] inline float largest_magnitude(int n, const T* x) {
    constexpr int L = Vec::lanes;
    Peak peak;
    const auto take_four = [&] {
        peak.take(magnitudes(x), magnitudes(x + L), magnitudes(x + 2 * L), magnitudes(x + 3 * L));
        x += 4 * L;
    };
    for (; !isWide && n >= 8 * L; n -= 8 * L) {
        take_four();
        take_four();
    }
    for (; n >= 4 * L; n -= 4 * L)
        take_four();
    for (; n >= L; n -= L, x += L)
        peak.take(magnitudes(x));
    if (n > 0)
        peak.take(magnitudes_part(x, n));
    return peak.value();
}

// Index of the first of n elements whose magnitude is `size`; there is one.
template <class T>
[[gnu::always_inline]] inline int first_of_magnitude(float size, int n, const T* x) {
    constexpr int L = Vec::lanes;
    const Vec wanted = Vec::splat(size);
    int i = 0;
    for (; n - i >= 4 * L; i += 4 * L) {
        const T* const p = x + i;
        if (const std::uint64_t found =
                equal_lanes(wanted, magnitudes(p), magnitudes(p + L), magnitudes(p + 2 * L), magnitudes(p + 3 * L)))
            return i + __builtin_ctzll(found);
    }
    for (; n - i >= L; i += L)
        if (const std::uint64_t found = equal_lanes(wanted, magnitudes(x + i)))
            return i + __builtin_ctzll(found);
    return i + __builtin_ctzll(equal_lanes(wanted, magnitudes_part(x + i, n - i)));
}

// Index of the winner among n elements, no more than a vector has lanes, or -1 if one is NaN.
template <class T>
int index_in_vector(int n, const T* x) {
    const Vec all = n == Vec::lanes ? magnitudes(x) : magnitudes_part(x, n);
    Peak peak;
    peak.take(all);
    const std::uint64_t found = equal_lanes(peak.spread(), all);
    return found != 0 ? __builtin_ctzll(found) : -1;
}

// The same of more elements, up to four vectors: one or two vectors from the start and as many up to the end. What
// both hold, the first ones have.
template <class T>
int index_in_vectors(int n, const T* x) {
    constexpr int L = Vec::lanes;
    const int half = n <= 2 * L ? L : 2 * L, second = half - L, third = n - half, fourth = n - L;
    const Vec a = magnitudes(x), b = magnitudes(x + second), c = magnitudes(x + third), d = magnitudes(x + fourth);
    Peak peak;
    peak.take(a, b, c, d);
    const std::uint64_t found = equal_lanes(peak.spread(), a, b, c, d);
    if (found == 0)
        return -1;
    const int i = __builtin_ctzll(found);
    return i < L ? i : i < 2 * L ? i - L + second : i < 3 * L ? i - 2 * L + third : i - 3 * L + fourth;
}

// The same of still more, up to eight vectors: four from the start and four up to the end.
template <class T>
int index_in_eight_vectors(int n, const T* x) {
    constexpr int L = Vec::lanes;
    const T* const last = x + n - 4 * L;
    const Vec a = magnitudes(x), b = magnitudes(x + L), c = magnitudes(x + 2 * L), d = magnitudes(x + 3 * L);
    const Vec e = magnitudes(last), f = magnitudes(last + L), g = magnitudes(last + 2 * L),
              h = magnitudes(last + 3 * L);
    Peak peak;
    peak.take(a, b, c, d);
    peak.take(e, f, g, h);
    const Vec largest = peak.spread();
    if (const std::uint64_t found = equal_lanes(largest, a, b, c, d))
        return __builtin_ctzll(found);
    const std::uint64_t found = equal_lanes(largest, e, f, g, h);
    return found != 0 ? n - 4 * L + __builtin_ctzll(found) : -1;
}

// The same in a function of its own: among the questions of the blocks the loop of wide vectors took 1.1 times as long.
template <class T>
[[gnu::noinline]] float largest_in_block(int n, const T* x) {
    return largest_magnitude(n, x);
}

// Elements of a block. To find the winner in its block may take as long again as the block did, so blocks are long only
// where there are many of them.
constexpr int magnitudeBlock = isWide ? 32 * Vec::lanes : 512, longBlock = 256 * Vec::lanes, longBlocks = 16;

// Position of the winner among n elements without gaps. Block by block the largest magnitude is compared with the best
// so far; where in its block the winner lies is found at the end.
template <class T>
[[gnu::noinline]] int position_by_blocks(int n, const T* x) {
    const int block = n < longBlocks * longBlock ? magnitudeBlock : longBlock;
    const auto block_at = [=](int i) { return n - i < block ? n - i : block; };
    float best = -1;
    int bestBlock = 0;
    bool allNumbers = true;
    for (int i = 0; i < n;) {
        const int count = block_at(i);
        const float largest = largest_in_block(count, x + i);
        if (largest != largest) {
            int last = i + count - 1;
            while (abs1(x[last]) == abs1(x[last]))
                --last;
            if (last == n - 1)
                return -n;
            allNumbers = false;
            best = -1;
            i = last + 1;
            continue;
        }
        if (largest > best) {
            best = largest;
            bestBlock = i;
        }
        i += count;
    }
    const int position = 1 + bestBlock + first_of_magnitude(best, block_at(bestBlock), x + bestBlock);
    return allNumbers ? position : -position;
}

template <class T>
[[gnu::always_inline]] inline int position_of_largest(int n, const T* x) {
    if (n <= (isWide ? 8 : 4) * Vec::lanes)
        if (const int index = n <= Vec::lanes       ? index_in_vector(n, x)
                              : n <= 4 * Vec::lanes ? index_in_vectors(n, x)
                                                    : index_in_eight_vectors(n, x);
            index >= 0)
            return 1 + index;
    if (n <= magnitudeBlock)
        if (const float largest = largest_magnitude(n, x); largest == largest)
            return 1 + first_of_magnitude(largest, n, x);
    return position_by_blocks(n, x);
}

template <class T>
[[gnu::always_inline]] inline int iamax_of_slice(int n, const T* x, int incx) {
    if (n > 0 && contiguous(x, incx)) [[likely]]
        return position_of_largest(n, x);
    return strided::iamax_of_slice(n, x, incx);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
