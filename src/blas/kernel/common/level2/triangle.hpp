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
#if QRV_VECTOR_LANES > 1
    // Of a number in the first two lanes.
    QRV_INLINE Vec4f divide(Vec4f x) const {
        if (reciprocal == 0) {
            const SingleComplex q =
                divide(SingleComplex{_mm_cvtss_f32(x.v), _mm_cvtss_f32(_mm_shuffle_ps(x.v, x.v, 1))});
            return Vec4f::alternate(q.re, q.im);
        }
        const __m128d parts = _mm_cvtps_pd(x.v);
        const __m128d sum = _mm_add_pd(_mm_mul_pd(parts, _mm_set1_pd(re)),
                                       _mm_mul_pd(_mm_shuffle_pd(parts, parts, 1), _mm_setr_pd(im, -im)));
        return {_mm_cvtpd_ps(_mm_mul_pd(sum, _mm_set1_pd(reciprocal)))};
    }
#endif
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

// Whether an earlier group is the one before in the walk, so that its square block is left out of what is beside it.
template <class T>
[[gnu::always_inline]] inline bool follows_group(const Triangle<T>& t, int j, bool ascending) {
    return t.reach >= 2 * groupColumns - 1 && (ascending ? j >= groupColumns : t.n - j >= 2 * groupColumns);
}

#if QRV_VECTOR_LANES > 1
// The same for a group of complex elements, in two quads: to bring parts of elements together takes longer than to
// compute with them.
struct ComplexGroup {
    Vec4f half[2];

    QRV_INLINE static ComplexGroup load(const SingleComplex* p) { return {{quad(p), quad(p + 2)}}; }
    QRV_INLINE void store(SingleComplex* p) const {
        half[0].store(&p->re);
        half[1].store(&p[2].re);
    }
    // Element j, in the first two lanes.
    template <int j>
    QRV_INLINE Vec4f element() const {
        return j % 2 == 0 ? half[j / 2] : swap_halves(half[j / 2]);
    }
    QRV_INLINE static bool is_zero(Vec4f element) { return (equal_lanes(Vec4f::zero(), element) & 3) == 3; }

    // Adds rows [from, to) of a column times a number, or takes them off. No other row is read.
    template <Action action, int from, int to>
    QRV_INLINE void add_column(const SingleComplex* column, Vec4f factor) {
        const Vec4f re = {_mm_shuffle_ps(factor.v, factor.v, 0x00)}, im = {_mm_shuffle_ps(factor.v, factor.v, 0x55)};
        repeat<2>([&](auto h) __attribute__((always_inline)) {
            constexpr int first = larger(from, 2 * h()), end = smaller(to, 2 * h() + 2);
            if constexpr (first < end) {
                const SingleComplex* const p = column + first;
                const Vec4f a = end - first == 2 ? quad(p)
                                : first % 2 == 0 ? load_first<2>(&p->re)
                                                 : low_halves(Vec4f::zero(), load_first<2>(&p->re));
                const Vec4f turned = negate_part<0>(swap_parts(a));
                if constexpr (action == Action::solve) { // a row beside that becomes NaN is solved already
                    half[h()] = half[h()] - a * re - turned * im;
                } else {
                    const Vec4f sum = half[h()] + a * re + turned * im;
                    half[h()] = end - first == 2 ? sum
                                : first % 2 == 0 ? join_halves(sum, half[h()])
                                                 : join_halves(half[h()], sum);
                }
            }
        });
    }
    // As SolvedGroup does.
    QRV_INLINE void subtract(const ComplexGroup& solved, Matrix<const SingleComplex> a, bool ascending) {
        if ((equal_lanes(Vec4f::zero(), solved.half[0]) & equal_lanes(Vec4f::zero(), solved.half[1])) == 15)
            return;
        const auto take = [&](auto i) __attribute__((always_inline)) {
            add_column<Action::solve, 0, groupColumns>(a.column(i()), solved.element<i()>());
        };
        if (ascending)
            repeat<groupColumns>(take);
        else
            repeat<groupColumns>([&](auto i) __attribute__((always_inline)) { take(Lanes<groupColumns - 1 - i()>()); });
    }
    template <Uplo uplo>
    QRV_INLINE void solve(Matrix<const SingleComplex> a, Diag diag) {
        constexpr bool upper = uplo == Uplo::upper;
        Divisor<SingleComplex> divisor[groupColumns];
        if (diag == Diag::nonUnit)
            repeat<groupColumns>([&](auto j) __attribute__((always_inline)) {
                divisor[j()] = Divisor<SingleComplex>{a(j(), j())};
            });
        Vec4f solved[groupColumns];
        repeat<groupColumns>([&](auto step) __attribute__((always_inline)) {
            constexpr int j = upper ? groupColumns - 1 - step() : step();
            constexpr int from = upper ? 0 : j + 1, to = upper ? j : groupColumns;
            solved[j] = element<j>();
            if (is_zero(solved[j]))
                return;
            if (diag == Diag::nonUnit)
                solved[j] = divisor[j].divide(solved[j]);
            add_column<Action::solve, from, to>(a.column(j), solved[j]);
        });
        half[0] = low_halves(solved[0], solved[1]);
        half[1] = low_halves(solved[2], solved[3]);
    }
    template <Uplo uplo>
    QRV_INLINE void multiply(Matrix<const SingleComplex> a, Diag diag) {
        constexpr bool upper = uplo == Uplo::upper;
        const ComplexGroup x = *this;
        if (diag == Diag::nonUnit)
            half[0] = half[1] = Vec4f::zero();
        repeat<groupColumns>([&](auto j) __attribute__((always_inline)) {
            constexpr int from = upper ? 0 : j() + 1, to = upper ? j() : groupColumns;
            const Vec4f factor = x.element<j()>();
            if (is_zero(factor))
                return;
            if (diag == Diag::nonUnit)
                add_column<Action::multiply, from - !upper, to + upper>(a.column(j()), factor); // and the diagonal
            else
                add_column<Action::multiply, from, to>(a.column(j()), factor);
        });
    }

    // Each element becomes the dot product of its column, conjugated or not, with them all.
    template <Uplo uplo, bool conjugated>
    QRV_INLINE void multiply_transposed(Matrix<const SingleComplex> a, Diag diag) {
        diag == Diag::unit ? add_dots<uplo, conjugated, 1>(a) : add_dots<uplo, conjugated, 0>(a);
    }

private:
    // Without the diagonal (`apart` 1) the dot products are added to the elements. Where one element of two belongs to
    // the triangle, the other is 0 on both sides: an infinite one must not make it NaN.
    template <Uplo uplo, bool conjugated, int apart>
    QRV_INLINE void add_dots(Matrix<const SingleComplex> a) {
        constexpr bool upper = uplo == Uplo::upper;
        const Vec4f none = Vec4f::zero();
        const Vec4f alone[2] = {upper ? low_halves(half[0], none) : join_halves(none, half[0]),
                                upper ? low_halves(half[1], none) : join_halves(none, half[1])};
        Vec4f dots[groupColumns];
        repeat<groupColumns>([&](auto j) __attribute__((always_inline)) {
            constexpr int from = upper ? 0 : j() + apart, to = upper ? j() + 1 - apart : groupColumns;
            Vec4f straight = none, crossed = none;
            repeat<2>([&](auto h) __attribute__((always_inline)) {
                constexpr int first = larger(from, 2 * h()), end = smaller(to, 2 * h() + 2);
                if constexpr (first < end) {
                    const SingleComplex* const p = a.column(j()) + first;
                    const Vec4f y = end - first == 2 ? quad(p)
                                    : upper          ? load_first<2>(&p->re)
                                                     : low_halves(none, load_first<2>(&p->re));
                    const Vec4f x = end - first == 2 ? half[h()] : alone[h()];
                    straight = straight + y * x;
                    crossed = crossed + y * swap_parts(x);
                }
            });
            dots[j()] = sum_pairs(straight, crossed);
        });
        const Vec4f signs = Vec4f::alternate(conjugated ? 0.0F : -0.0F, conjugated ? -0.0F : 0.0F);
        repeat<2>([&](auto h) __attribute__((always_inline)) {
            const Vec4f low = dots[2 * h()], high = dots[2 * h() + 1];
            const Vec4f sum = low_halves(low, high) + change_signs(high_halves(low, high), signs);
            half[h()] = apart == 0 ? sum : half[h()] + sum;
        });
    }
    QRV_INLINE static Vec4f quad(const SingleComplex* p) { return Vec4f::load(&p->re); }
};

template <Action action>
void apply_complex_group(const Triangle<SingleComplex>& t, int j, SingleComplex* x, SolvedGroup<SingleComplex>& last) {
    constexpr bool solves = action == Action::solve;
    const bool upper = t.upper();
    const auto corner = t.a.block(j, j);
    auto s = ComplexGroup::load(x + j);
    if constexpr (solves) {
        if (follows_group(t, j, !upper))
            s.subtract(ComplexGroup::load(last.values), t.a.block(j, upper ? j + groupColumns : j - groupColumns),
                       !upper);
        upper ? s.solve<Uplo::upper>(corner, t.diag) : s.solve<Uplo::lower>(corner, t.diag);
        s.store(x + j);
        s.store(last.values);
    }
    alignas(16) SingleComplex terms[groupColumns];
    const Vec4f signs = Vec4f::splat(solves ? -0.0F : 0.0F);
    ComplexGroup{{change_signs(s.half[0], signs), change_signs(s.half[1], signs)}}.store(terms);
    const int near = solves && follows_group(t, upper ? j : t.n - j - groupColumns, true) ? groupColumns : 0;
    if (!all_zero(terms))
        add_band_columns<groupColumns>(rows_beside<groupColumns>(t, j, near), t.a.column(j), t.a.ld, terms, x,
                                       upper && solves ? WholeVectors::last : WholeVectors::first);
    if constexpr (!solves) {
        upper ? s.multiply<Uplo::upper>(corner, t.diag) : s.multiply<Uplo::lower>(corner, t.diag);
        s.store(x + j);
    }
}
template <bool conjugated>
void multiply_complex_group_transposed(const Triangle<SingleComplex>& t, int j, SingleComplex* x) {
    const auto corner = t.a.block(j, j);
    auto s = ComplexGroup::load(x + j);
    t.upper() ? s.multiply_transposed<Uplo::upper, conjugated>(corner, t.diag)
              : s.multiply_transposed<Uplo::lower, conjugated>(corner, t.diag);
    SingleComplex dots[groupColumns];
    dot_band_columns<groupColumns, conjugated>(rows_beside<groupColumns>(t, j), t.a.column(j), t.a.ld, x, dots);
    const auto beside = ComplexGroup::load(dots);
    ComplexGroup{{s.half[0] + beside.half[0], s.half[1] + beside.half[1]}}.store(x + j);
}
#endif

template <Action action, bool transposed, bool conjugated, int columns, class T, class X>
void apply_columns(const Triangle<T>& t, int j, X x, SolvedGroup<T>& last) {
    if constexpr (isComplex<T> && columns == groupColumns && isContiguous<X> && Pack<T>::count > 1) {
        if constexpr (!transposed)
            return apply_complex_group<action>(t, j, x, last);
        else if constexpr (action == Action::multiply)
            return multiply_complex_group_transposed<conjugated>(t, j, x);
    }
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
