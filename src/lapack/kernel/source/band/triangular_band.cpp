// A block of unknowns at a time, on the dense view of the band: a solve with the triangle on the diagonal, then its
// products off the right-hand sides to come. They reach over kd more rows, of which the far end is in the band on one
// side of a diagonal only:
//
//      ib    kd - ib    ib
//    [ X11  rectangle  corner ]     forward, by rows of X: U^T or L; backward, the mirror image: U or L^T
//
// The rectangle is an ordinary operand. So is the corner, as a triangle; where the matrix ends within it, what there is
// of it goes through a square that is 0 elsewhere.
#include "lapack/kernel/source/band/triangular_band.hpp"

#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/kernel/source/band/band_view.hpp"
#include "service/work_pool.hpp"

namespace qrv::lapack {
namespace {

// Whether the first unknowns come first.
bool is_forward(const TriangularBand& t) {
    return (t.uplo == Uplo::lower) == (t.op == Op::none);
}

// The coefficients with which unknowns from `from` on enter rows from `row` on.
Matrix<const float> coefficients(const TriangularBand& t, int row, int from) {
    return t.op == Op::none ? t.a.block(row, from) : t.a.block(from, row);
}

// B(row.., :) -= op(C) X for `rows` rows, ib unknowns and `columns` columns.
void subtract(const TriangularBand& t, int rows, int ib, int columns, Matrix<const float> c, Matrix<const float> x,
              Matrix<float> b) {
    if (rows > 0)
        blas::gemm(t.op, Op::none, rows, columns, ib, -1, c, x, 1, b);
}

// A whole corner: its product in a copy of X.
void subtract_corner(const TriangularBand& t, int ib, int columns, Matrix<const float> corner, Matrix<const float> x,
                     Matrix<float> b, Matrix<float> work) {
    for (int j = 0; j < columns; ++j)
        kernel::copy(ib, x.column(0, j), work.column(0, j));
    const Uplo side = t.uplo == Uplo::upper ? Uplo::lower : Uplo::upper;
    blas::trmm(Side::left, side, t.op, Diag::nonUnit, ib, columns, 1, corner, work);
    for (int j = 0; j < columns; ++j)
        kernel::axpy(ib, -1, work.column(0, j), b.column(0, j));
}

// Rows [skip, skip + rows) of a corner of ib rows; the others lie outside the matrix.
void subtract_cut_corner(const TriangularBand& t, int skip, int rows, int ib, int columns, int row, int from,
                         Matrix<const float> x, Matrix<float> b, Matrix<float> work) {
    const Matrix<const float> corner = coefficients(t, row, from);
    const bool direct = t.op == Op::none;
    const int height = direct ? rows : ib, width = direct ? ib : rows;
    for (int j = 0; j < width; ++j)
        for (int i = 0; i < height; ++i) {
            const int r = direct ? i + skip : i, c = direct ? j : j + skip; // in the whole corner
            const bool inBand = t.uplo == Uplo::upper ? r >= c : r <= c;
            work(i, j) = inBand ? corner(i, j) : 0;
        }
    subtract(t, rows, ib, columns, work, x, b);
}

// One block of unknowns, [i, i + ib), and what it takes off the rows behind it.
void step_forward(const TriangularBand& t, int i, int ib, int columns, Matrix<float> b, Matrix<float> work) {
    const Matrix<float> x = b.block(i, 0);
    blas::trsm(Side::left, t.uplo, t.op, t.diag, ib, columns, 1, t.a.block(i, i), x);
    const int behind = t.n - i - ib, rectangle = std::min(t.kd - ib, behind), corner = std::min(behind - rectangle, ib);
    subtract(t, rectangle, ib, columns, coefficients(t, i + ib, i), x, b.block(i + ib, 0));
    const int row = i + t.kd;
    if (corner == ib)
        subtract_corner(t, ib, columns, coefficients(t, row, i), x, b.block(row, 0), work);
    else if (corner > 0)
        subtract_cut_corner(t, 0, corner, ib, columns, row, i, x, b.block(row, 0), work);
}

void step_backward(const TriangularBand& t, int i, int ib, int columns, Matrix<float> b, Matrix<float> work) {
    const Matrix<float> x = b.block(i, 0);
    blas::trsm(Side::left, t.uplo, t.op, t.diag, ib, columns, 1, t.a.block(i, i), x);
    const int rectangle = std::min(t.kd - ib, i), corner = std::min(i - rectangle, ib);
    subtract(t, rectangle, ib, columns, coefficients(t, i - rectangle, i), x, b.block(i - rectangle, 0));
    const int row = i - rectangle - corner;
    if (corner == ib)
        subtract_corner(t, ib, columns, coefficients(t, row, i), x, b.block(row, 0), work);
    else if (corner > 0)
        subtract_cut_corner(t, ib - corner, corner, ib, columns, row, i, x, b.block(row, 0), work);
}

} // namespace

void solve_band_blocked(const TriangularBand& t, int nb, int nrhs, Matrix<float> b, float* work) {
    const Matrix<float> square{work, nb};
    for (int first = 0, columns; first < nrhs; first += columns) {
        columns = std::min(nb, nrhs - first);
        const Matrix<float> x = b.block(0, first);
        if (is_forward(t))
            for (int i = 0, ib; i < t.n; i += ib)
                step_forward(t, i, ib = std::min(nb, t.n - i), columns, x, square);
        else
            for (int end = t.n; end > 0; end -= std::min(nb, end))
                step_backward(t, std::max(end - nb, 0), std::min(nb, end), columns, x, square);
    }
}

void solve_band_unblocked(const TriangularBand& t, int nrhs, Matrix<float> b) {
    const Matrix<const float> ab{t.a.data - (t.uplo == Uplo::upper ? t.kd : 0), t.a.ld + 1};
    for (int j = 0; j < nrhs; ++j)
        blas::tbsv(t.uplo, t.op, t.diag, t.n, t.kd, ab, b.column(0, j));
}

void solve_band(const TriangularBand& t, int nb, int nrhs, Matrix<float> b) {
    if (nb < 2)
        return solve_band_unblocked(t, nrhs, b);
    void* const work =
        qrv_serv_allocate(static_cast<std::size_t>(nb) * static_cast<std::size_t>(nb) * sizeof(float), 128);
    if (!work)
        return solve_band_unblocked(t, nrhs, b);
    solve_band_blocked(t, nb, nrhs, b, static_cast<float*>(work));
    qrv_serv_deallocate(work);
}

} // namespace qrv::lapack
