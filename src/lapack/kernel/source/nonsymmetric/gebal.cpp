// SGEBAL: isolates eigenvalues by permutation, and makes the norms of the other rows and columns nearly equal.
//
// Sources: B. Parlett, C. Reinsch, Balancing a matrix for calculation of eigenvalues and eigenvectors, Numer. Math. 13
// (1969); R. James, J. Langou, B. Lowery, On matrix balancing and eigenvector computation, arXiv:1401.5766 (2014): with
// the Euclidean norms of whole rows and columns. By sums beside the diagonal a matrix that is all but triangular is
// scaled until its eigenvectors are lost. Factors are powers of two, so that nothing is rounded. A NaN ends the
// scaling.
#include <algorithm>
#include <cmath>

#include "blas/calls.hpp"
#include "lapack/calls/nonsymmetric.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

// ---- Permutation --------------------------------------------------------------------------------------------------

bool all_zero_but(int skipped, int first, int last, Vector<const float> x) {
    for (int i = first; i < last; ++i)
        if (i != skipped && !(x[i] == 0))
            return false;
    return true;
}

// The last row of the leading `end` ones that is zero beside its diagonal within as many columns; -1: there is none.
int isolated_row(int end, Matrix<const float> a) {
    int j = end - 1;
    while (j >= 0 && !all_zero_but(j, 0, end, a.row(j, 0)))
        --j;
    return j;
}
// The first column of the range that is zero beside its diagonal within the range.
int isolated_column(ActiveRange range, Matrix<const float> a) {
    int j = range.begin;
    while (j < range.end && !all_zero_but(j, range.begin, range.end, a.column(0, j)))
        ++j;
    return j < range.end ? j : -1;
}

// Interchanges j and `place` in the part of the matrix that both have.
void exchange(int j, int place, ActiveRange range, int n, Matrix<float> a, float* scale) {
    scale[place] = static_cast<float>(j + 1);
    if (j == place)
        return;
    blas::swap(range.end, a.column(0, j), a.column(0, place));
    blas::swap(n - range.begin, a.row(j, range.begin), a.row(place, range.begin));
}

// Rows with an isolated eigenvalue go to the end, columns to the begin. A single row that is left is isolated too.
ActiveRange permute(int n, Matrix<float> a, float* scale) {
    ActiveRange range{0, n};
    for (int j; (j = isolated_row(range.end, a)) >= 0; --range.end) {
        exchange(j, range.end - 1, range, n, a, scale);
        if (range.end == 1)
            return range;
    }
    for (int j; (j = isolated_column(range, a)) >= 0; ++range.begin)
        exchange(j, range.begin, range, n, a, scale);
    return range;
}

// ---- Scaling --------------------------------------------------------------------------------------------------------

constexpr float step = 2;
constexpr float leastScale = machine::safeMinimum / machine::precision, largestScale = 1 / leastScale;
constexpr float lower = leastScale * step, upper = 1 / lower;

// Euclidean norms, and largest magnitudes, of a column and the row with the same number.
struct Norms {
    float column, row;
    float columnMax, rowMax;
};

Norms norms_of(int i, ActiveRange range, int n, Matrix<const float> a) {
    const auto largest = [](int count, Vector<const float> x) { return std::fabs(x[kernel::iamax(count, x) - 1]); };
    return {kernel::nrm2(range.size(), a.column(range.begin, i)), kernel::nrm2(range.size(), a.row(i, range.begin)),
            largest(range.end, a.column(0, i)), largest(n - range.begin, a.row(i, range.begin))};
}

// The power of two by which a column is multiplied, and its row divided, so that their norms are as near to each other
// as they can be without overflow or underflow. The norms become those of the result.
float factor_for(Norms& x) {
    float f = 1;
    for (float goal = x.row / step;
         x.column < goal && std::max({f, x.column, x.columnMax}) < upper && std::min({x.row, goal, x.rowMax}) > lower;
         goal /= step) {
        f *= step, x.column *= step, x.columnMax *= step;
        x.row /= step, x.rowMax /= step;
    }
    for (float goal = x.column / step;
         goal >= x.row && std::max(x.row, x.rowMax) < upper && std::min({f, x.column, goal, x.columnMax}) > lower;
         goal /= step) {
        f /= step, x.column /= step, x.columnMax /= step;
        x.row *= step, x.rowMax *= step;
    }
    return f;
}

enum class Change { none, scaled, notANumber };

Change balance(int i, ActiveRange range, float enough, int n, Matrix<float> a, float& scale) {
    Norms x = norms_of(i, range, n, a);
    if (std::isnan(x.column + x.row + x.columnMax + x.rowMax))
        return Change::notANumber;
    if (x.column == 0 || x.row == 0)
        return Change::none;
    const float before = x.column + x.row, f = factor_for(x);
    if (x.column + x.row >= enough * before)
        return Change::none;
    if ((f < 1 && scale < 1 && f * scale <= leastScale) || (f > 1 && scale > 1 && scale >= largestScale / f))
        return Change::none;
    scale *= f;
    kernel::scal(n - range.begin, 1 / f, a.row(i, range.begin));
    kernel::scal(range.end, f, Vector{a.column(i)});
    return Change::scaled;
}

// Sweeps until nothing changes. Each change makes norms smaller by a part of them, and powers of two within the range
// of floats end that.
void scale_rows_and_columns(ActiveRange range, float enough, int n, Matrix<float> a, float* scale) {
    std::fill(scale + range.begin, scale + range.end, 1.0F);
    for (bool changed = true; changed;) {
        changed = false;
        for (int i = range.begin; i < range.end; ++i) {
            const Change change = balance(i, range, enough, n, a, scale[i]);
            if (change == Change::notANumber)
                return;
            changed = changed || change == Change::scaled;
        }
    }
}

} // namespace

ActiveRange gebal(Balance what, int n, Matrix<float> a, float* scale) {
    std::fill(scale, scale + n, 1.0F);
    if (n == 0)
        return {0, 0};
    const ActiveRange range = what.permutes ? permute(n, a, scale) : ActiveRange{0, n};
    if (what.scales)
        scale_rows_and_columns(range, what.enough, n, a, scale);
    return range;
}

} // namespace qrv::lapack
