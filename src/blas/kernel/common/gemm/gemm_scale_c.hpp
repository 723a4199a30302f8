// C := beta*C. beta = 0 stores zeros and does not read C, beta = 1 leaves it alone.
//
//   tile       4 columns, then one at a time; 8, 4 and single rows
//   alignment  none assumed; tall columns are entered at a 16-byte boundary of the group's first column
//   reads      nothing outside C
#pragma once

#include <cstddef>
#include <cstdint>

#include "blas/complex.hpp"
#include "blas/kernel/common/vec/complex_factor.hpp"
#include "blas/kernel/common/vec/vec4f.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

constexpr int peelFrom = 11; // columns (in GEMM: depths) from here on are entered at a 16-byte boundary

// Floats before the first 16-byte boundary at or after p, 0 to 3; 0 if no float of this array lies on one.
inline int floats_to_boundary(const float* p) {
    const auto address = reinterpret_cast<std::uintptr_t>(p);
    return address % sizeof(float) == 0 ? static_cast<int>((16 - address % 16) % 16 / sizeof(float)) : 0;
}

// A factor on a vector of elements: one, or two complex ones.
template <class T>
struct ScaledBy;
template <>
struct ScaledBy<float> {
    Vec4f factor;
    explicit ScaledBy(float x) : factor(Vec4f::splat(x)) {}
    Vec4f operator()(Vec4f x) const { return factor * x; }
    template <int lanes>
    Vec4f operator()(const float* p, Lanes<lanes>) const {
        return (*this)(load_first<lanes>(p));
    }
};
template <>
struct ScaledBy<SingleComplex> {
    ComplexFactor<Vec4f> factor;
    explicit ScaledBy(SingleComplex x) : factor(x) {}
    Vec4f operator()(Vec4f x) const { return factor.times(x); }
    template <int lanes>
    Vec4f operator()(const float* p, Lanes<lanes>) const {
        return (*this)(load_first<lanes>(p));
    }
};

struct SetToZero {
    template <int lanes>
    Vec4f operator()(const float*, Lanes<lanes>) const {
        return Vec4f::zero();
    }
};

// Writes what `change` makes of the lanes at an address, for `columns` columns of m floats, `unit` of them an element.
template <int unit, int columns, class Change>
void change_columns(std::ptrdiff_t m, Change change, Matrix<float> c) {
    auto at = [&](std::ptrdiff_t i, auto lanes) {
        for (int j = 0; j < columns; ++j) {
            float* p = c.column(j) + i;
            store_first<lanes()>(p, change(p, lanes));
        }
    };
    const Lanes<4> vector;
    const Lanes<unit> single;
    std::ptrdiff_t i = 0;
    if (m >= peelFrom)
        for (const int head = floats_to_boundary(c.data) / unit * unit; i < head; i += unit)
            at(i, single);
    for (; m - i >= 8; i += 8) {
        at(i, vector);
        at(i + 4, vector);
    }
    for (; m - i >= 4; i += 4)
        at(i, vector);
    for (; i < m; i += unit)
        at(i, single);
}

template <int unit, class Change>
void change_matrix(std::ptrdiff_t m, int n, Change change, Matrix<float> c) {
    int j = 0;
    for (; n - j >= 4; j += 4)
        change_columns<unit, 4>(m, change, c.block(0, j));
    for (; j < n; ++j)
        change_columns<unit, 1>(m, change, c.block(0, j));
}

template <class T>
void gemm_scale_c(int m, int n, T beta, Matrix<T> c) {
    constexpr int unit = floatsIn<T>;
    const Matrix<float> matrix{reinterpret_cast<float*>(c.data), unit * c.ld};
    if (beta == scalar<T>(0))
        change_matrix<unit>(std::ptrdiff_t{unit} * m, n, SetToZero(), matrix);
    else if (beta != scalar<T>(1))
        change_matrix<unit>(std::ptrdiff_t{unit} * m, n, ScaledBy<T>(beta), matrix);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
