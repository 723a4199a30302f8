// A few unknowns of a triangle at a time, for a strip of right-hand sides: their sums of products stay in registers.
//
//   group   groupRows unknowns, fewer at the end, x the vectors of a strip
//   tile    see triangular_tile.hpp
//   reads   of the triangle, its stored elements only, and the diagonal not at all
#pragma once

#include <cstddef>
#include <cstring>

#include "blas/kernel/common/action.hpp"
#include "blas/kernel/common/triangular_tile.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Unknowns of a group. With the vectors of a strip: at least eight sums, which hide the latency of an addition, and no
// more than registers hold beside a coefficient and the vectors of an unknown.
constexpr int groupRows = Vec::lanes == 16 ? 8 : Vec::lanes == 8 ? 6 : 2;

// Unknowns or right-hand sides [first, first + count).
struct Range {
    int first, count;
};

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

// The unknowns of a range times their coefficients into the sums of a group; a begins with the group's first row and
// the range's first unknown.
template <Action action, int rows, class T>
QRV_INLINE void add_unknowns(StripOf<T> (&sums)[rows], const Coefficients<T>& a, Range range, const Unknowns& x) {
    const T* column = a.data;
    const float* unknown = x.at(range.first);
#pragma GCC unroll 1
    for (int k = 0; k < range.count; ++k, column += a.columnStep, unknown += x.step) {
        const auto term = StripOf<T>::load(unknown);
        QRV_UNROLL
        for (int r = 0; r < rows; ++r)
            sums[r].template add<action>(column[r * a.rowStep], term);
    }
}

// ---- Groups
// -----------------------------------------------------------------------------------------------------------

// A number of rows as a type.
template <int rows>
struct Rows {
    static constexpr int count = rows;
};

// each(Rows<..>(), first unknown) for groups of groupRows, and for one of what is left.
template <class Each, int rows = groupRows>
QRV_INLINE void each_group(int n, const Each& each, int first = 0) {
    for (; n - first >= rows; first += rows)
        each(Rows<rows>(), first);
    if constexpr (rows > 1)
        each_group<Each, rows - 1>(n, each, first);
}

// Of each group, the coefficients beside its own triangle, copied so that those of an unknown lie next to each other,
// and the unknowns one behind the other. In A they lie in columns that are far apart: each in a page of its own, and
// often all in the same few sets of the cache.
template <class Operation, class T>
class CoefficientCopies {
public:
    static constexpr int room(int n) { return n * n / 2; }

    // Copying takes time too: the strips must be many.
    static bool repays(const Coefficients<T>& a, int strips) {
        constexpr int leastStrips = 4, farApart = 2048 / sizeof(T);
        const bool rowsNeighbour = a.rowStep == 1 || a.rowStep == -1;
        return rowsNeighbour && strips >= leastStrips && (a.columnStep >= farApart || a.columnStep <= -farApart);
    }

    CoefficientCopies(int n, const Coefficients<T>& a, T* buffer) : next_(buffer), backward_(a.rowStep < 0) {
        each_group(n, [&](auto rows, int first) {
            const Range beside = Operation::beside(first, rows.count, n);
            const T* from = a.at(backward_ ? first + rows.count - 1 : first, beside.first);
            for (int k = 0; k < beside.count; ++k, from += a.columnStep, buffer += rows.count)
                std::memcpy(buffer, from, rows.count * sizeof(T));
        });
    }

    // Of the next group.
    Coefficients<T> take(int rows, Range beside) {
        const Coefficients<T> copy{backward_ ? next_ + rows - 1 : next_, backward_ ? -1 : 1, rows};
        next_ += rows * beside.count;
        return copy;
    }

private:
    const T* next_;
    bool backward_;
};

} // namespace qrv::kernel::QRV_KERNEL_BUILD
