// SPBTRF: Cholesky factorization of a symmetric positive definite band matrix, A = U^T U or A = L L^T, in blocks;
// SPBTF2: the same column by column. info is 0, or the order of the first leading block that is not positive definite;
// a pivot that is NaN is not positive.
//
// Right-looking, on the dense view of the band. The step of the block in columns [i, i + ib), for U:
//
//           ib   i2   i3
//     ib  [ A11  A12  A13 ]    A13 is a lower triangle: the band ends in it, so it is worked on in a square W whose
//     i2  [      A22  A23 ]    other triangle is 0.
//     i3  [           A33 ]
//
// L is the same on the transposed picture. The products decide on threads for themselves.
#include <algorithm>
#include <cmath>

#include "blas/calls.hpp"
#include "lapack/calls/band.hpp"
#include "lapack/calls/cholesky.hpp"
#include "lapack/kernel/source/band/band_view.hpp"
#include "lapack/kernel/source/band/pbtrf_route.hpp"
#include "service/tuning.hpp"
#include "service/vector_form.hpp"

namespace qrv::lapack {
namespace {

// x := factor * x, and the rank-one update of the `count` columns that row x of U, or column x of L, reaches.
void eliminate_narrow(Uplo uplo, int count, float factor, Vector<float> x, Matrix<float> a) {
    float row[pbtrfNarrow];
    for (int i = 0; i < count; ++i)
        row[i] = x[i] *= factor;
    for (int j = 0; j < count; ++j) {
        const int first = uplo == Uplo::upper ? 0 : j, end = uplo == Uplo::upper ? j + 1 : count;
        for (int i = first; i < end; ++i)
            a(i, j) -= row[i] * row[j];
    }
}

int unblocked(Uplo uplo, int n, int kd, Matrix<float> a) {
    const bool upper = uplo == Uplo::upper;
    for (int j = 0; j < n; ++j) {
        const float pivot = a(j, j);
        if (!(pivot > 0))
            return j + 1;
        const float root = std::sqrt(pivot);
        a(j, j) = root;
        const int rest = std::min(kd, n - j - 1);
        if (rest == 0)
            continue;
        const Vector<float> next = upper ? a.row(j, j + 1) : a.column(j + 1, j);
        if (kd <= pbtrfNarrow) {
            eliminate_narrow(uplo, rest, 1 / root, next, a.block(j + 1, j + 1));
            continue;
        }
        kernel::scal(rest, 1 / root, next);
        kernel::her(uplo, rest, -1, next, a.block(j + 1, j + 1));
    }
    return 0;
}

// The block of rows i and columns j of U; of L the one across the diagonal.
Matrix<float> block_of(Uplo uplo, Matrix<float> a, int i, int j) {
    return uplo == Uplo::upper ? a.block(i, j) : a.block(j, i);
}

// x := inv(U11)^T x, or x := x inv(L11)^T.
void solve(Uplo uplo, int ib, int count, Matrix<float> a11, Matrix<float> x) {
    if (uplo == Uplo::upper)
        blas::trsm(Side::left, uplo, Op::transpose, Diag::nonUnit, ib, count, 1, a11, x);
    else
        blas::trsm(Side::right, uplo, Op::transpose, Diag::nonUnit, count, ib, 1, a11, x);
}

void update(Uplo uplo, int ib, int i2, int i3, int kd, Matrix<float> a, Matrix<float> w) {
    const bool upper = uplo == Uplo::upper;
    const Op first = upper ? Op::transpose : Op::none, second = upper ? Op::none : Op::transpose;
    const Matrix<float> a12 = block_of(uplo, a, 0, ib), a13 = block_of(uplo, a, 0, kd);
    if (i2 > 0) {
        solve(uplo, ib, i2, a, a12);
        blas::rank_k(uplo, first, i2, ib, -1, a12, 1, a.block(ib, ib));
    }
    if (i3 <= 0)
        return;
    const Corner corner = upper ? Corner::lower : Corner::upper;
    const int height = upper ? ib : i3, columns = upper ? i3 : ib;
    for_corner(corner, height, columns, [&](int r, int c) { w(r, c) = a13(r, c); });
    solve(uplo, ib, i3, a, w);
    if (i2 > 0) {
        const Matrix<float> a23 = block_of(uplo, a, ib, kd);
        if (upper)
            blas::gemm(first, second, i2, i3, ib, -1, a12, w, 1, a23);
        else
            blas::gemm(first, second, i3, i2, ib, -1, w, a12, 1, a23);
    }
    blas::rank_k(uplo, first, i3, ib, -1, w, 1, a.block(kd, kd));
    for_corner(corner, height, columns, [&](int r, int c) { a13(r, c) = w(r, c); });
}

int blocked(int nb, Uplo uplo, int n, int kd, Matrix<float> a) {
    float square[pbtrfWidest * pbtrfWidest] = {};
    for (int i = 0, ib; i < n; i += ib) {
        ib = std::min(nb, n - i);
        const Matrix<float> a11 = a.block(i, i);
        if (const int info = potf2(uplo, ib, a11))
            return i + info;
        update(uplo, ib, std::min(kd - ib, n - i - ib), std::min(ib, n - i - kd), kd, a11, {square, pbtrfWidest});
    }
    return 0;
}

} // namespace

int pbtf2(Uplo uplo, int n, int kd, float* ab, int ldab) {
    return unblocked(uplo, n, kd, band_view(ab, ldab, uplo == Uplo::upper ? kd : 0));
}

int pbtrf(Uplo uplo, int n, int kd, float* ab, int ldab) {
    const int nb = pbtrf_block(kd, tuning::block_size("SPBTRF", n, kd), vector_form_in_use() != VectorForm::sse);
    if (nb == 1)
        return pbtf2(uplo, n, kd, ab, ldab);
    return blocked(nb, uplo, n, kd, band_view(ab, ldab, uplo == Uplo::upper ? kd : 0));
}

} // namespace qrv::lapack
