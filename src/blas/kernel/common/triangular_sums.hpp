// A few unknowns of a triangle at a time, for a strip of right-hand sides: their sums of products stay in registers.
//
//   group   groupRows unknowns, fewer at the end, x the vectors of a strip
//   tile    see triangular_tile.hpp
//   reads   of the triangle, its stored elements only, and the diagonal not at all
#pragma once

#include <cstddef>

#include "blas/kernel/common/action.hpp"
#include "blas/kernel/common/triangular_tile.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Unknowns of a group. With the vectors of a strip: at least eight sums, which hide the latency of an addition, and no
// more than registers hold beside a coefficient and the vectors of an unknown.
constexpr int groupRows = Vec::lanes == 16 ? 8 : Vec::lanes == 8 ? 4 : 2;

// Coefficients of the unknowns, in the order in which these are computed; the steps may be negative.
template <class T>
struct Coefficients {
    const T* data;
    std::ptrdiff_t rowStep, columnStep;

    const T* at(int i, int k) const { return data + i * rowStep + k * columnStep; }
};

// The tile in the same order.
struct Unknowns {
    float* data;
    std::ptrdiff_t step;

    float* at(int k) const { return data + k * step; }
};

// An unknown for all right-hand sides of a strip.
template <class T>
struct StripOf {
    static constexpr int vectors = stripVectors<T>;
    Vec re[vectors], im[isComplex<T> ? vectors : 1];

    QRV_INLINE static StripOf zero() {
        StripOf s;
        s.each([](Vec& re, Vec& im, int) {
            re = Vec::zero();
            im = Vec::zero();
        });
        return s;
    }
    QRV_INLINE static StripOf load(const float* p) {
        StripOf s;
        s.each([p](Vec& re, Vec& im, int v) {
            re = Vec::load_aligned(p + v * Vec::lanes);
            if constexpr (isComplex<T>)
                im = Vec::load_aligned(p + (vectors + v) * Vec::lanes);
        });
        return s;
    }
    QRV_INLINE void store(float* p) const {
        QRV_UNROLL
        for (int v = 0; v < vectors; ++v) {
            re[v].store_aligned(p + v * Vec::lanes);
            if constexpr (isComplex<T>)
                im[v].store_aligned(p + (vectors + v) * Vec::lanes);
        }
    }

    // *this += a*x for a product, -= for a solve.
    template <Action action>
    QRV_INLINE void add(const T& a, const StripOf& x) {
        constexpr bool adds = action == Action::multiply;
        if constexpr (isComplex<T>) {
            const Vec ar = Vec::splat(a.re);
            each([&](Vec& sr, Vec& si, int v) {
                sr = adds ? multiply_add(ar, x.re[v], sr) : subtract_product(ar, x.re[v], sr);
                si = adds ? multiply_add(ar, x.im[v], si) : subtract_product(ar, x.im[v], si);
            });
            const Vec ai = Vec::splat(a.im);
            each([&](Vec& sr, Vec& si, int v) {
                sr = adds ? subtract_product(ai, x.im[v], sr) : multiply_add(ai, x.im[v], sr);
                si = adds ? multiply_add(ai, x.re[v], si) : subtract_product(ai, x.re[v], si);
            });
        } else {
            const Vec ar = Vec::splat(a);
            each([&](Vec& s, Vec&, int v) {
                s = adds ? multiply_add(ar, x.re[v], s) : subtract_product(ar, x.re[v], s);
            });
        }
    }
    QRV_INLINE void multiply_by(const T& a) {
        if constexpr (isComplex<T>) {
            const Vec ar = Vec::splat(a.re), ai = Vec::splat(a.im);
            each([&](Vec& sr, Vec& si, int) {
                const Vec product = subtract_product(ai, si, ar * sr);
                si = multiply_add(ai, sr, ar * si);
                sr = product;
            });
        } else {
            const Vec ar = Vec::splat(a);
            each([&](Vec& s, Vec&, int) { s = ar * s; });
        }
    }

private:
    template <class Each>
    QRV_INLINE void each(const Each& change) {
        QRV_UNROLL
        for (int v = 0; v < vectors; ++v)
            change(re[v], im[isComplex<T> ? v : 0], v);
    }
};

// The unknowns `from` to `to` - 1 times their coefficients into the sums of a group; a has the group's first row.
template <Action action, int rows, class T>
QRV_INLINE void add_unknowns(StripOf<T> (&sums)[rows], const Coefficients<T>& a, int from, int to, const Unknowns& x) {
    const T* column = a.at(0, from);
    const float* unknown = x.at(from);
#pragma GCC unroll 1
    for (int k = from; k < to; ++k, column += a.columnStep, unknown += x.step) {
        const auto term = StripOf<T>::load(unknown);
        QRV_UNROLL
        for (int r = 0; r < rows; ++r)
            sums[r].template add<action>(column[r * a.rowStep], term);
    }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
