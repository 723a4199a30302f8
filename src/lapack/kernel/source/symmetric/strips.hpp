// How a team shares a triangle out in strips of columns.
//
// The columns are dealt into twice as many strips as there are threads, counted from the corner where columns are
// short: the top left of an upper triangle, the bottom right of a lower one. Thread t owns strips t and 2 team - 1 - t,
// a short and a long one, so that all have about as many elements. A strip is written by its owner only.
#pragma once

#include "blas/calls.hpp"
#include "blas/thread/common/slice.hpp"

namespace qrv::lapack {

// Strips of an even width but the last, which takes what remains, or of widths that differ by one at most.
enum class Deal { evenWidths, nearlyEqual };

// Columns of the triangle, from the left.
struct TriangleShare {
    Slice shorter, longer;
};

//   order 11, team 2   even widths    upper  0+2 6+5 | 2+2 4+2     lower  9+2 0+5 | 7+2 5+2
//                      nearly equal          0+3 9+2 | 3+3 6+3            8+3 0+2 | 5+3 2+3
constexpr TriangleShare triangle_share(Deal deal, Uplo uplo, int order, int team, int thread) {
    const auto strip = [=](int number) {
        const Slice s =
            deal == Deal::evenWidths ? equal_slice(order, 2 * team, number, 2) : even_slice(order, 2 * team, number);
        return uplo == Uplo::upper ? s : Slice{order - s.first - s.count, s.count};
    };
    return {strip(thread), strip(2 * team - 1 - thread)};
}

// y := alpha*A*x + y for these columns of the triangle and their mirror images.
inline void add_columns(Uplo uplo, int order, Slice columns, float alpha, Matrix<const float> a, Vector<const float> x,
                        Vector<float> y) {
    const int first = columns.first;
    if (columns.count == 0)
        return;
    if (uplo == Uplo::upper)
        kernel::hemv_strip(uplo, first + columns.count, columns.count, alpha, a, x, 1, y);
    else
        kernel::hemv_strip(uplo, order - first, columns.count, alpha, a.block(first, first), x.from(first), 1,
                           y.from(first));
}

// A := A - v*w' - w*v' in these columns of the triangle.
inline void update_columns(Uplo uplo, int order, Slice columns, Vector<const float> v, Vector<const float> w,
                           Matrix<float> a) {
    const int first = columns.first;
    if (columns.count == 0)
        return;
    if (uplo == Uplo::upper)
        kernel::her2_strip(uplo, first + columns.count, columns.count, -1, v, w, a);
    else
        kernel::her2_strip(uplo, order - first, columns.count, -1, v.from(first), w.from(first), a.block(first, first));
}

// x := the first columns of a team's results, one a thread; in the order of threads, so that a team of one size always
// rounds alike.
inline void add_results(int first, int team, int m, Matrix<const float> results, Vector<float> x) {
    for (int thread = first; thread < team; ++thread)
        kernel::axpy(m, 1.0F, results.column(0, thread), x);
}

} // namespace qrv::lapack
