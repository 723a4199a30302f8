// Products with a triangular matrix and solves, in place: x := op(A)*x and x := inverse(op(A))*x, for dense and for
// banded triangles.
//
// All cases are one walk along the diagonal, a few columns at a time. What is stored beside the diagonal block of these
// columns either adds them to the rest of x (op(A) = A) or takes its dot products with the rest for them. A product
// needs the rest as it was, a solve needs it solved; that gives the direction of the walk and which of the two comes
// first, the diagonal block or what is beside it:
//
//              op(A) = A                     op(A) = A'
//   multiply   upper ascends, beside first   upper descends, diagonal first
//   solve      upper descends, diagonal first   upper ascends, beside first
//
// Lower triangles walk the other way. An element of the diagonal is read only if it is not taken to be 1, and then
// divided by: there is no reciprocal of floats.
//
// With op(A) = A an element of x that is 0 adds nothing and is not divided: its column is not read as long as the
// others of its group are 0 too.
#pragma once

#include "blas/complex.hpp"
#include "blas/kernel/common/action.hpp"
#include "blas/kernel/common/level2/band_columns.hpp"
#include "blas/kernel/common/vec/unrolling.hpp"
#include "blas/matrix.hpp"
#include "blas/options.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// A triangle of n columns with `reach` diagonals stored beside the main one, n - 1 if it is dense. Element (i, j) is
// a(i, j) for band storage too: there, each column begins one place lower than the one before.
template <class T>
struct Triangle {
    Matrix<const T> a;
    int n;
    int reach;
    Uplo uplo;
    Diag diag;

    bool upper() const { return uplo == Uplo::upper; }
};

constexpr bool beside_first(Action action, bool transposed) {
    return transposed == (action == Action::solve);
}

// What is divided by. A complex number divides as operator/ does, but by a product in double with the reciprocal of its
// square, which does not wait for the dividend.
template <class T>
struct Divisor {
    T value = scalar<T>(1);
    T divide(T x) const { return x / value; }
};
template <>
struct Divisor<SingleComplex> {
    double re = 1, im = 0, reciprocal = 1;
    Divisor() = default;
    explicit Divisor(SingleComplex x) : re(x.re), im(x.im), reciprocal(1 / (re * re + im * im)) {}
    SingleComplex divide(SingleComplex x) const {
        if (reciprocal == 0) // an infinite part
            return x / SingleComplex{static_cast<float>(re), static_cast<float>(im)};
        return {static_cast<float>((x.re * re + x.im * im) * reciprocal),
                static_cast<float>((x.im * re - x.re * im) * reciprocal)};
    }
};

// The diagonal block of a few columns, with a at its first element: s := op(A)*s or inverse(op(A))*s. In line, so that
// s stays in registers: its elements one by one to memory and back as a vector would wait for the store, in each group.
template <Action action, bool transposed, bool conjugated, Uplo uplo, int columns, class T>
[[gnu::always_inline]] inline void diagonal_block(Matrix<const T> a, Diag diag, T (&s)[columns]) {
    constexpr bool upper = uplo == Uplo::upper;
    const auto beside = [&](int j) {
        const auto add = [&](T& sum, T x, T y) { sum = action == Action::multiply ? sum + x * y : sum - x * y; };
        QRV_UNROLL
        for (int i = upper ? 0 : j + 1; i < (upper ? j : columns); ++i) {
            if (transposed)
                add(s[j], conj_if<conjugated>(a(i, j)), s[i]);
            else
                add(s[i], a(i, j), s[j]);
        }
    };
    Divisor<T> divisor[columns];
    if (action == Action::solve && diag == Diag::nonUnit) {
        QRV_UNROLL
        for (int j = 0; j < columns; ++j)
            divisor[j] = Divisor<T>{conj_if<conjugated>(a(j, j))};
    }
    QRV_UNROLL
    for (int step = 0; step < columns; ++step) {
        const int j = ascends(action, is_upper(uplo, transposed)) ? step : columns - 1 - step;
        if (!transposed && s[j] == scalar<T>(0))
            continue;
        if (beside_first(action, transposed))
            beside(j);
        if (diag == Diag::nonUnit)
            s[j] = action == Action::multiply ? conj_if<conjugated>(a(j, j)) * s[j] : divisor[j].divide(s[j]);
        if (!beside_first(action, transposed))
            beside(j);
    }
}

// What is stored beside the diagonal block of these columns, `near` rows next to it left out.
template <int columns, class T>
[[gnu::always_inline]] inline BandRows<columns> rows_beside(const Triangle<T>& t, int j, int near = 0) {
    BandRows<columns> rows;
    QRV_UNROLL
    for (int k = 0; k < columns; ++k) {
        const int column = j + k;
        rows.from[k] = t.upper() ? larger(0, column - t.reach) : j + columns + near;
        rows.to[k] = t.upper() ? j - near : column < t.n - t.reach ? column + t.reach + 1 : t.n;
    }
    return rows;
}

template <int columns, class T>
[[gnu::always_inline]] inline bool all_zero(const T (&s)[columns]) {
    bool zero = true;
    QRV_UNROLL
    for (int k = 0; k < columns; ++k)
        zero = zero && s[k] == scalar<T>(0);
    return zero;
}

// A solve waits for the group of columns before: its values, at hand for the next group, do not go through memory. So
// the square block of A between two neighbouring groups, which `reach` must cover, is left out of what is beside them.
template <class T>
struct SolvedGroup {
    T values[groupColumns];

    // s := s - op(A)*values for the block between this group, at j, and the next one, at `next`.
    template <bool transposed, bool conjugated>
    void subtract_from(T (&s)[groupColumns], Matrix<const T> a, int j, int next) const {
        if (!transposed && all_zero(values))
            return;
        QRV_UNROLL
        for (int step = 0; step < groupColumns; ++step) {
            const int i = j < next ? step : groupColumns - 1 - step; // the one that was solved last comes last
            QRV_UNROLL
            for (int k = 0; k < groupColumns; ++k)
                s[k] -= (transposed ? conj_if<conjugated>(a(j + i, next + k)) : a(next + k, j + i)) * values[i];
        }
    }
};

template <Action action, bool transposed, bool conjugated, int columns, class T, class X>
void apply_columns(const Triangle<T>& t, int j, X x, SolvedGroup<T>& last) {
    T s[columns];
    QRV_UNROLL
    for (int k = 0; k < columns; ++k)
        s[k] = x[j + k];
    int near = 0;
    if constexpr (action == Action::solve && columns == groupColumns) {
        const bool above = j >= columns, below = t.n - j >= 2 * columns; // groups there
        if (t.reach >= 2 * columns - 1) {
            near = (t.upper() ? above : below) ? columns : 0;
            const bool ascending = ascends(action, is_upper(t.uplo, transposed));
            if (ascending && above)
                last.template subtract_from<transposed, conjugated>(s, t.a, j - columns, j);
            else if (!ascending && below)
                last.template subtract_from<transposed, conjugated>(s, t.a, j + columns, j);
        }
    }
    // In line, so that s need not lie in memory: parts stored one by one do not reach a load of the whole element.
    const auto beside = [&]() __attribute__((always_inline)) {
        if (!transposed && all_zero(s))
            return;
        const auto rows = rows_beside<columns>(t, j, near);
        T terms[columns]; // of the rest of x, respectively of these columns
        if constexpr (transposed) {
            dot_band_columns<columns, conjugated>(rows, t.a.column(j), t.a.ld, x, terms);
            QRV_UNROLL
            for (int k = 0; k < columns; ++k)
                s[k] = action == Action::multiply ? s[k] + terms[k] : s[k] - terms[k];
        } else {
            QRV_UNROLL
            for (int k = 0; k < columns; ++k)
                terms[k] = action == Action::multiply ? s[k] : -s[k];
            add_band_columns<columns>(rows, t.a.column(j), t.a.ld, terms, x,
                                      t.upper() && action == Action::solve ? WholeVectors::last : WholeVectors::first);
        }
    };
    if constexpr (beside_first(action, transposed))
        beside();
    const auto corner = t.a.block(j, j);
    if (t.upper())
        diagonal_block<action, transposed, conjugated, Uplo::upper>(corner, t.diag, s);
    else
        diagonal_block<action, transposed, conjugated, Uplo::lower>(corner, t.diag, s);
    if constexpr (!beside_first(action, transposed))
        beside();
    QRV_UNROLL
    for (int k = 0; k < columns; ++k)
        x[j + k] = s[k];
    if constexpr (columns == groupColumns)
        for (int k = 0; k < columns; ++k)
            last.values[k] = s[k];
}

// x := A'*x for a group of columns of a narrow band that are all of full length, which begin one row below each other.
// With elements of x of its own for each column no corner is left over, and the diagonal is an element like the others.
// A wide band takes longer so, as x is loaded for each column.
constexpr int slantedReach = 64;
template <class T>
bool is_slanted(const Triangle<T>& t, int j) {
    return t.reach >= groupColumns && t.reach <= slantedReach &&
           (t.upper() ? j >= t.reach : j + groupColumns + t.reach <= t.n);
}
template <class T>
[[gnu::noinline]] void multiply_slanted_columns(const Triangle<T>& t, int j, T* x) {
    const bool unit = t.diag == Diag::unit;
    const int from = t.upper() ? j - t.reach : unit ? j + 1 : j, rows = unit ? t.reach : t.reach + 1;
    const ColumnStarts<groupColumns, const T> column(&t.a(from, j), t.a.ld + 1);
    DotSum<false, T> sums[groupColumns];
    clear(sums);
    const auto add = [&, xs = x + from ](int i, auto height, auto... range) __attribute__((always_inline)) {
        QRV_UNROLL
        for (int k = 0; k < groupColumns; ++k)
            sums[k].add(Pack<T>::load(column.at[k] + i, height), DotOperand<T>(Pack<T>::load(xs + k + i, height)),
                        range...);
    };
    constexpr int count = Pack<T>::count;
    int i = 0;
    for (; rows - i >= count; i += count)
        add(i, All{});
    if (i == 0)
        add(0, rows);
    else if (i < rows) // whole vectors, as one with lanes left out would wait for elements of x just stored
        add(rows - count, All{}, Pack<T>::range(count - (rows - i), count));
    if (unit)
        add_dots(sums, scalar<T>(1), x + j);
    else
        store_dots(sums, x + j);
}

template <Action action, bool transposed, bool conjugated, class T, class X>
void apply_triangle(const Triangle<T>& t, X x) {
    const bool inGroups = t.reach >= groupColumns - 1; // a group's diagonal block is dense then
    constexpr bool maySlant =
        action == Action::multiply && transposed && !isComplex<T> && isContiguous<X> && Pack<T>::count > 1;
    SolvedGroup<T> last;
    walk_columns(t.n, inGroups, ascends(action, is_upper(t.uplo, transposed)), [&](auto columns, int j) {
        if constexpr (maySlant)
            if (columns() == groupColumns && is_slanted(t, j))
                return multiply_slanted_columns(t, j, x);
        apply_columns<action, transposed, conjugated, columns()>(t, j, x, last);
    });
}
template <Action action, class T, class X>
void apply_triangle(Op op, const Triangle<T>& t, X x) {
    if (!transposes(op))
        apply_triangle<action, false, false>(t, x);
    else if (isComplex<T> && op == Op::adjoint)
        apply_triangle<action, true, isComplex<T>>(t, x);
    else
        apply_triangle<action, true, false>(t, x);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
