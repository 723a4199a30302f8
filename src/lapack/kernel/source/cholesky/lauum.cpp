// SLAUUM, CLAUUM: the product U U^H or L^H L of a triangular matrix, in place of the factor, in blocks; SLAUU2, CLAUU2:
// the same row by row. The inverse from a Cholesky factorization ends with it.
//
// Before step i, in blocks of i, ib and the rest, of the upper triangle:
//
//   [ P00 P01 P02 ]   sums over what is done    P01  = U01 U11^H + U02 U12^H
//   [     U11 U12 ]   this block row            P11  = U11 U11^H + U12 U12^H
//   [         U22 ]   untouched
//
// where P00 has the blocks up to here already, and P01 and P02 are still U01 and U02. The lower triangle is the same on
// the transposed picture. Of large triangles the blocks are the halves, each in the same way. The products decide on
// threads for themselves.
#include <algorithm>

#include "blas/calls.hpp"
#include "blas/complex.hpp"
#include "lapack/calls/cholesky.hpp"
#include "lapack/elements.hpp"
#include "lapack/factorization.hpp"
#include "lapack/routine_name.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {

// Row i of U, or column i of L, from its diagonal on: its square is the new diagonal, its product with what lies
// beside it replaces column i of U or row i of L.
template <class T>
void lauu2(Uplo uplo, int n, Matrix<T> a) {
    const bool upper = uplo == Uplo::upper;
    for (int i = 0; i < n; ++i) {
        const int rest = n - i - 1;
        const float diagonal = real_part(a(i, i));
        const Vector<T> left = upper ? a.column(0, i) : a.row(i, 0); // i elements
        if (rest == 0) {
            kernel::scal(i, diagonal, left);
            a(i, i) = scalar<T>(diagonal * diagonal);
            break;
        }
        const Vector<T> right = upper ? a.row(i, i + 1) : a.column(i + 1, i);
        const float square = diagonal * diagonal + real_part(kernel::dotc(rest, right, right));
        a(i, i) = scalar<T>(square);
        if (i == 0)
            continue;
        conjugate(rest, right);
        if (upper)
            kernel::gemv(Op::none, i, rest, scalar<T>(1), a.block(0, i + 1), right, scalar<T>(diagonal), left);
        else
            kernel::gemv(Op::transpose, rest, i, scalar<T>(1), a.block(i + 1, 0), right, scalar<T>(diagonal), left);
        conjugate(rest, right);
    }
}

template <class T>
void lauum(Uplo uplo, int n, Matrix<T> a) {
    const int nb = n > mostInBlocks ? half_in_blocks(n) : tuning::block_size(RoutineName<T>("LAUUM"), n);
    if (nb <= 1 || nb >= n)
        return lauu2(uplo, n, a);
    const T one = scalar<T>(1);
    const bool upper = uplo == Uplo::upper;
    for (int i = 0, ib; i < n; i += ib) {
        ib = std::min(nb, n - i);
        const int rest = n - i - ib;
        const Matrix<T> diagonal = a.block(i, i);
        const Matrix<T> product = upper ? a.block(0, i) : a.block(i, 0);         // P01
        const Matrix<T> right = upper ? a.block(i, i + ib) : a.block(i + ib, i); // U12
        const Matrix<T> above = upper ? a.block(0, i + ib) : a.block(i + ib, 0); // U02
        if (upper)
            blas::trmm(Side::right, uplo, adjoint<T>, Diag::nonUnit, i, ib, one, diagonal, product);
        else
            blas::trmm(Side::left, uplo, adjoint<T>, Diag::nonUnit, ib, i, one, diagonal, product);
        lauum(uplo, ib, diagonal);
        if (rest == 0)
            break;
        if (upper)
            blas::gemm(Op::none, adjoint<T>, i, ib, rest, one, above, right, one, product);
        else
            blas::gemm(adjoint<T>, Op::none, ib, i, rest, one, right, above, one, product);
        blas::rank_k(uplo, upper ? Op::none : adjoint<T>, ib, rest, 1, right, 1, diagonal);
    }
}

template void lauu2(Uplo, int, Matrix<float>);
template void lauu2(Uplo, int, Matrix<SingleComplex>);
template void lauum(Uplo, int, Matrix<float>);
template void lauum(Uplo, int, Matrix<SingleComplex>);

} // namespace qrv::lapack
