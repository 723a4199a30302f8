// Rank-one and rank-two updates of a triangle of a symmetric matrix, with complex elements a Hermitian one, whose
// diagonal becomes real.
//
//   rank one   A := alpha*x*op(x) + A                           alpha real
//   rank two   A := alpha*x*op(y) + op(alpha)*y*op(x) + A       op transposes and conjugates
//
// Several columns a pass. A column for which the elements of x and y are 0 is left alone, but for the imaginary part on
// the diagonal.
//
//   A        of the band of the triangle, its rows and columns only; the other triangle is neither read nor written
//   x, y     as long as the band reaches, any increments but 0
//   memory   a block of blockElements a vector on the stack
#pragma once

#include "blas/assert.hpp"
#include "blas/complex.hpp"
#include "blas/kernel/common/level2/columns.hpp"
#include "blas/kernel/common/level2/rank_update.hpp"
#include "blas/kernel/common/level2/strided_vector.hpp"
#include "blas/kernel/pack.hpp"
#include "blas/matrix.hpp"
#include "blas/options.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// A part of a triangle: what lies in these rows and columns.
struct TriangleBand {
    Uplo uplo;
    int firstRow, rows, firstColumn, columns;
};

// The whole triangle; the last `width` columns of the leading upper, or rows of the leading lower triangle; the last
// columns of an upper, or the first ones of a lower triangle of order n.
constexpr TriangleBand whole_triangle(Uplo uplo, int n) {
    return {uplo, 0, n, 0, n};
}
constexpr TriangleBand last_band(Uplo uplo, int width, int length) {
    return uplo == Uplo::upper ? TriangleBand{uplo, 0, length, length - width, width}
                               : TriangleBand{uplo, length - width, width, 0, length};
}

constexpr TriangleBand strip_of_triangle(Uplo uplo, int n, int columns) {
    return {uplo, 0, n, uplo == Uplo::upper ? n - columns : 0, columns};
}

// The matrix of which the band begins at a.
template <class T>
Matrix<T> whole_of_band(const TriangleBand& band, T* a, std::ptrdiff_t lda) {
    return {a - band.firstRow - lda * band.firstColumn, lda};
}

// x, or x and y.
template <int terms, class T>
struct UpdateSources {
    StridedVector<const T> x[terms];
    bool all_zero(int i) const {
        bool zero = true;
        for (const StridedVector<const T>& v : x)
            zero = zero && v[i] == scalar<T>(0);
        return zero;
    }
};

// What column j of the update multiplies the vectors with.
template <class T>
[[gnu::always_inline]] inline void column_factors(float alpha, const UpdateSources<1, T>& v, int j, T (&s)[1]) {
    s[0] = alpha * conj(v.x[0][j]);
}
template <class T>
[[gnu::always_inline]] inline void column_factors(T alpha, const UpdateSources<2, T>& v, int j, T (&s)[2]) {
    s[0] = alpha * conj(v.x[1][j]);
    s[1] = conj(alpha * v.x[0][j]);
}

// Rows `first` to `end` - 1 of one column. v begins with row `start`.
template <int terms, class T>
void update_column(int first, int end, T* column, const T (&s)[terms], const UpdateVectors<terms, T>& v, int start) {
    T factors[terms][1];
    for (int t = 0; t < terms; ++t)
        factors[t][0] = s[t];
    if (first < end)
        update_columns<Corner::none>(end - first, column + first, 0, factors, v.from(first - start));
}

// The columns from j on, as many as s has, as far as they lie in rows `start` to `end` - 1 of the triangle. They meet
// the diagonal either there in full or not at all.
template <bool far, int columns, int terms, class T>
void update_triangle_columns(Uplo uplo, int start, int end, int j, const T (&s)[terms][columns],
                             const UpdateVectors<terms, T>& v, Matrix<T> a) {
    if (j < start || j >= end)
        update_columns<Corner::none, far>(end - start, &a(start, j), a.ld, s, v);
    else if (uplo == Uplo::upper)
        update_columns<Corner::last, far>(j + columns - start, &a(start, j), a.ld, s, v);
    else
        update_columns<Corner::first, far>(end - j, &a(j, j), a.ld, s, v.from(j - start));
}

// Orders of whole real triangles that are cheaper element by element: what a vector would store of a column in part the
// next call waits for.
template <int terms, class T>
constexpr int elementwiseUpTo = isComplex<T> || Pack<T>::count == 1 ? 0
                                : Pack<T>::count == 4               ? 7
                                : terms == 1                        ? 12
                                                                    : 10;

template <int terms>
[[gnu::noinline]] void update_elements(Uplo uplo, int n, float alpha, const UpdateSources<terms, float>& v,
                                       Matrix<float> a) {
    for (int j = 0; j < n; ++j) {
        if (v.all_zero(j))
            continue;
        float s[terms];
        column_factors(alpha, v, j, s);
        const int end = uplo == Uplo::upper ? j + 1 : n;
        for (int i = uplo == Uplo::upper ? 0 : j; i < end; ++i)
            for (int t = 0; t < terms; ++t)
                a(i, j) = multiply_add_element(v.x[t][i], s[t], a(i, j));
    }
}

template <bool far, int terms, class Alpha, class T>
void update_triangle(TriangleBand band, Alpha alpha, const UpdateSources<terms, T>& sources, Matrix<T> a) {
    constexpr int block = blockElements<T>;
    alignas(64) T buffers[terms][block];
    const int endRow = band.firstRow + band.rows, endColumn = band.firstColumn + band.columns;
    const bool upper = band.uplo == Uplo::upper;
    for (int start = band.firstRow, end; start < endRow; start = end) {
        end = start + smaller(block, endRow - start);
        UpdateVectors<terms, T> v;
        for (int t = 0; t < terms; ++t)
            v.x[t] = gathered(sources.x[t], start, end - start, buffers[t]);
        const int from = upper ? larger(band.firstColumn, start) : band.firstColumn;
        const int to = upper ? endColumn : smaller(endColumn, end);
        in_passes<columnsOfUpdate<T, terms>>(from, to, [&](auto columns, int j) {
            T s[terms][columns()];
            bool singly = (j < start && start < j + columns()) || (j < end && end < j + columns());
            for (int k = 0; k < columns(); ++k) {
                T factors[terms];
                column_factors(alpha, sources, j + k, factors);
                for (int t = 0; t < terms; ++t)
                    s[t][k] = factors[t];
                singly = singly || sources.all_zero(j + k);
            }
            if (!singly)
                update_triangle_columns<far>(band.uplo, start, end, j, s, v, a);
            for (int k = 0; k < columns(); ++k) {
                const int jk = j + k;
                if (singly && !sources.all_zero(jk)) {
                    T factors[terms];
                    column_factors(alpha, sources, jk, factors);
                    update_column(upper ? start : larger(jk, start), upper ? smaller(jk + 1, end) : end, a.column(jk),
                                  factors, v, start);
                }
                if (start <= jk && jk < end)
                    make_real(a(jk, jk));
            }
        });
    }
}

template <class T>
void syr(TriangleBand band, float alpha, StridedVector<const T> x, Matrix<T> a) {
    QRV_ASSERT(a.ld >= band.firstRow + band.rows || band.columns <= 1);
    if constexpr (elementwiseUpTo < 1, T >> 0)
        if (alpha != 0 && band.rows == band.columns && band.rows <= elementwiseUpTo<1, T>)
            return update_elements<1>(band.uplo, band.rows, alpha, {{x}}, a);
    if (alpha != 0)
        near_or_far<T, Passes::update>(is_far<T, Passes::update>(band.rows, band.columns),
                                       [&](auto far) { update_triangle<far(), 1, float, T>(band, alpha, {{x}}, a); });
}
template <class T>
void syr2(TriangleBand band, T alpha, StridedVector<const T> x, StridedVector<const T> y, Matrix<T> a) {
    QRV_ASSERT(a.ld >= band.firstRow + band.rows || band.columns <= 1);
    if constexpr (elementwiseUpTo < 2, T >> 0)
        if (alpha != 0 && band.rows == band.columns && band.rows <= elementwiseUpTo<2, T>)
            return update_elements<2>(band.uplo, band.rows, alpha, {{x, y}}, a);
    if (alpha != scalar<T>(0))
        near_or_far<T, Passes::update>(is_far<T, Passes::update>(band.rows, band.columns), [&](auto far) {
            update_triangle<far(), 2, T, T>(band, alpha, {{x, y}}, a);
        });
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
