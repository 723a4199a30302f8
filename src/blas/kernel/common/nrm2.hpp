// SNRM2, SCNRM2 of the builds with vectors: squares of floats neither overflow nor vanish in double, so they are summed
// as they are.
//
// A NaN gives NaN; otherwise an infinity gives infinity, as does a norm above the largest float.
#pragma once

#include "blas/kernel/common/level1_steps.hpp"
#include "blas/kernel/common/level1_strided.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// The sum of n squares: passes of 8 vectors between what lies outside the boundaries of vectors.
inline double sum_of_squares(std::ptrdiff_t n, const float* x) {
    Doubles<Vec> even = Doubles<Vec>::zero(), odd = even; // in SSE 8 numbers, passes of 32
    if (const int head = floats_to_boundary(n, x)) {
        odd.add_squares(Doubles<Vec>::widen(load_part<Vec>(x, head)));
        x += head;
        n -= head;
    }
    constexpr int pass = 8 * Vec::lanes;
    for (; n >= pass; n -= pass, x += pass) {
#pragma GCC unroll 4
        for (int i = 0; i < pass; i += 2 * Vec::lanes) {
            even.add_squares(Doubles<Vec>::widen_aligned(x + i));
            odd.add_squares(Doubles<Vec>::widen_aligned(x + i + Vec::lanes));
        }
    }
    for (; n >= Vec::lanes; n -= Vec::lanes, x += Vec::lanes)
        even.add_squares(Doubles<Vec>::widen_aligned(x));
    if (n > 0)
        odd.add_squares(Doubles<Vec>::widen(load_part<Vec>(x, static_cast<int>(n))));
    return (even + odd).sum();
}

template <class T>
float nrm2(int n, const T* x, int incx) {
    if (n < 1)
        return 0;
    double sum = 0;
    if (contiguous_either_way(x, incx))
        sum = sum_of_squares(std::ptrdiff_t{n} * partsOf<T>, parts(x));
    else
        strided::walk_parts(n, x, incx, [&](float part) { sum += double{part} * part; });
    return static_cast<float>(__builtin_sqrt(sum));
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
