// SNRM2, SCNRM2 of the builds with vectors: squares of floats neither overflow nor vanish in double, so they are summed
// as they are.
//
// A NaN gives NaN; otherwise an infinity gives infinity, as does a norm above the largest float.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/level1/level1_steps.hpp"
#include "blas/kernel/common/level1/level1_strided.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// The sum of n squares: passes of 4 vectors of 128 bits, of 8 wider ones, then half as many and so on, between what
// lies outside the boundaries of vectors. 8 vectors of 128 bits took 1.18 times as long.
inline double sum_of_squares(std::ptrdiff_t n, const float* x) {
    Doubles<Vec> even = Doubles<Vec>::zero(), odd = even;
    const auto add_pairs = [&](int pairs) __attribute__((always_inline)) {
#pragma GCC unroll 4
        for (int i = 0; i < pairs; ++i, x += 2 * Vec::lanes) {
            even.add_squares(Doubles<Vec>::widen_peeled(x));
            odd.add_squares(Doubles<Vec>::widen_peeled(x + Vec::lanes));
        }
    };
    if (const int head = floats_to_peel(n, x)) {
        odd.add_squares(Doubles<Vec>::widen(load_part<Vec>(x, head)));
        x += head;
        n -= head;
    }
    constexpr int pairs = isWide ? 4 : 2;
    for (; n >= 2 * pairs * Vec::lanes; n -= 2 * pairs * Vec::lanes)
        add_pairs(pairs);
    if (isWide && n & 4 * Vec::lanes)
        add_pairs(2);
    if (n & 2 * Vec::lanes)
        add_pairs(1);
    if (n & Vec::lanes) {
        even.add_squares(Doubles<Vec>::widen_peeled(x));
        x += Vec::lanes;
    }
    if (const int rest = n % Vec::lanes)
        odd.add_squares(Doubles<Vec>::widen(load_part<Vec>(x, rest)));
    return (even + odd).sum();
}

// The same for so few floats that to ask for boundaries and passes takes longer.
constexpr int fewSquares = isWide ? 4 * Vec::lanes : 40;
inline double sum_of_few_squares(int n, const float* x) {
    Doubles<Vec> whole = Doubles<Vec>::zero(), rest = whole;
    if (isWide && n < Vec::lanes) {
        rest.add_squares(Doubles<Vec>::widen(load_part<Vec>(x, n)));
        return rest.sum();
    }
    for (; n >= Vec::lanes; n -= Vec::lanes, x += Vec::lanes)
        whole.add_squares(Doubles<Vec>::widen(Vec::load(x)));
    if (n > 0)
        rest.add_squares(Doubles<Vec>::widen(load_part<Vec>(x, n)));
    return (whole + rest).sum();
}

template <class T>
[[gnu::always_inline]] inline double squares(int n, const T* x, int incx) {
    if (n < 1)
        return 0;
    if (n < fewSquares / floatsIn<T> && contiguous_either_way(x, incx))
        return sum_of_few_squares(n * floatsIn<T>, parts(x));
    if (contiguous_either_way(x, incx))
        return sum_of_squares(std::ptrdiff_t{n} * floatsIn<T>, parts(x));
    double sum = 0;
    strided::walk_parts(n, x, incx, [&](float part) { sum += double{part} * part; });
    return sum;
}

template <class T>
float nrm2(int n, const T* x, int incx) {
    return static_cast<float>(__builtin_sqrt(squares(n, x, incx)));
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
