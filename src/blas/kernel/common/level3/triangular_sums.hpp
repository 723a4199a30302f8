// A few unknowns of a triangle at a time, for a strip of right-hand sides: their sums of products stay in registers.
//
//   group   groupRows unknowns, fewer at the end, x the vectors of a strip
//   tile    see triangular_tile.hpp
//   reads   of the triangle, its stored elements only, and the diagonal not at all
#pragma once

#include <cstddef>
#include <cstring>

#include "blas/complex.hpp"
#include "blas/kernel/common/action.hpp"
#include "blas/kernel/common/count.hpp"
#include "blas/kernel/common/level3/triangular_tile.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// Unknowns of a group. With the vectors of a strip: at least eight sums, which hide the latency of an addition, and no
// more than registers hold beside a coefficient and the vectors of an unknown.
constexpr int groupRows = Vec::lanes == 16 ? 8 : Vec::lanes == 8 ? 6 : 2;

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

// An unknown for all right-hand sides of a strip, or of a narrow one.
template <class T, int vectors>
struct StripOf {
    static constexpr int parts = floatsIn<T>;
    Vec part[parts][vectors]; // real, then imaginary

    QRV_INLINE static StripOf load(const float* from) {
        StripOf s;
        QRV_UNROLL
        for (int p = 0; p < parts; ++p)
            QRV_UNROLL
        for (int v = 0; v < vectors; ++v)
            s.part[p][v] = Vec::load_aligned(from + (p * stripVectors<T> + v) * Vec::lanes);
        return s;
    }
    QRV_INLINE void store(float* to) const {
        QRV_UNROLL
        for (int p = 0; p < parts; ++p)
            QRV_UNROLL
        for (int v = 0; v < vectors; ++v)
            part[p][v].store_aligned(to + (p * stripVectors<T> + v) * Vec::lanes);
    }

    // *this += a*x for a product, -= for a solve.
    template <Action action>
    QRV_INLINE void add(const T& a, const StripOf& x) {
        constexpr bool adds = action == Action::multiply;
        if constexpr (isComplex<T>) {
            add_part<adds>(part[0], a.re, x.part[0]);
            add_part<adds>(part[1], a.re, x.part[1]);
            add_part<!adds>(part[0], a.im, x.part[1]);
            add_part<adds>(part[1], a.im, x.part[0]);
        } else {
            add_part<adds>(part[0], a, x.part[0]);
        }
    }
    QRV_INLINE void multiply_by(const T& a) {
        QRV_UNROLL
        for (int v = 0; v < vectors; ++v) {
            Vec& re = part[0][v];
            if constexpr (isComplex<T>) {
                const Vec ar = Vec::splat(a.re), ai = Vec::splat(a.im);
                Vec& im = part[1][v];
                const Vec product = subtract_product(ai, im, ar * re);
                im = multiply_add(ai, re, ar * im);
                re = product;
            } else {
                re = Vec::splat(a) * re;
            }
        }
    }

private:
    template <bool adds>
    QRV_INLINE static void add_part(Vec (&sum)[vectors], float a, const Vec (&x)[vectors]) {
        const Vec factor = Vec::splat(a);
        QRV_UNROLL
        for (int v = 0; v < vectors; ++v)
            sum[v] = adds ? multiply_add(factor, x[v], sum[v]) : subtract_product(factor, x[v], sum[v]);
    }
};

// The unknowns of a range times their coefficients into the sums of a group; a begins with the group's first row and
// the range's first unknown.
template <Action action, int rows, int vectors, class T>
QRV_INLINE void add_unknowns(StripOf<T, vectors> (&sums)[rows], const Coefficients<T>& a, Range range,
                             const Unknowns& x) {
    const T* column = a.data;
    const float* unknown = x.at(range.first);
#pragma GCC unroll 1
    for (int k = 0; k < range.count; ++k, column += a.columnStep, unknown += x.step) {
        const auto term = StripOf<T, vectors>::load(unknown);
        QRV_UNROLL
        for (int r = 0; r < rows; ++r)
            sums[r].template add<action>(column[r * a.rowStep], term);
    }
}

// ---- Groups -------------------------------------------------------------------------------------------------------

// each(Count<..>(), first unknown) for groups of groupRows, and for one of what is left.
template <class Each, int rows = groupRows>
QRV_INLINE void each_group(int n, const Each& each, int first = 0) {
    for (; n - first >= rows; first += rows)
        each(Count<rows>(), first);
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
            const Range beside = Operation::beside(first, rows(), n);
            const T* from = a.at(backward_ ? first + rows() - 1 : first, beside.first);
            for (int k = 0; k < beside.count; ++k, from += a.columnStep, buffer += rows())
                std::memcpy(buffer, from, rows() * sizeof(T));
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
