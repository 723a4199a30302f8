// The leaf of the Cholesky factorization: row by row of U, column by column of L.
//
//   [ U00 u01 U02 ]   done          u11 = sqrt(a11 - u01^H u01)
//   [     a11 a12 ]   this row      u12 = (a12 - u01^H U02) / u11
//   [         A22 ]   untouched
//
// and the same on the transposed picture for L.
#include <cmath>

#include "blas/calls.hpp"
#include "lapack/calls/cholesky.hpp"
#include "lapack/elements.hpp"

namespace qrv::lapack {

template <class T>
int potf2(Uplo uplo, int n, Matrix<T> a) {
    const bool upper = uplo == Uplo::upper;
    const T one = scalar<T>(1), minusOne = scalar<T>(-1);
    for (int j = 0; j < n; ++j) {
        const int rest = n - j - 1;
        const Vector<T> done = upper ? a.column(0, j) : a.row(j, 0); // u01, or the row of L left of the diagonal
        const float pivot = real_part(a(j, j)) - real_part(blas::dotc(j, done, done));
        if (!(pivot > 0)) {
            a(j, j) = scalar<T>(pivot);
            return j + 1;
        }
        const float root = std::sqrt(pivot);
        a(j, j) = scalar<T>(root);
        if (rest == 0)
            break;
        const Vector<T> next = upper ? a.row(j, j + 1) : a.column(j + 1, j);
        if (j > 0) {
            conjugate(j, done);
            if (upper)
                blas::gemv(Op::transpose, j, rest, minusOne, a.block(0, j + 1), done, one, next);
            else
                blas::gemv(Op::none, rest, j, minusOne, a.block(j + 1, 0), done, one, next);
            conjugate(j, done);
        }
        blas::scal(rest, 1 / root, next);
    }
    return 0;
}

template int potf2(Uplo, int, Matrix<float>);
template int potf2(Uplo, int, Matrix<SingleComplex>);

} // namespace qrv::lapack
