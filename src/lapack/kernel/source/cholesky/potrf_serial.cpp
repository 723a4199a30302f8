// The Cholesky factorization on the calling thread: left-looking over blocks, recursive in the diagonal block.
//
// Before step j, in blocks of j, jb and the rest:
//
//   [ U00 U01 U02 ]   done                    A11 -= U01^H U01, factor A11
//   [     A11 A12 ]   this block row          A12  = U11^-H (A12 - U01^H U02)
//   [         A22 ]   untouched
//
// and the same on the transposed picture for L. The products and the solve decide on threads for themselves; inside a
// parallel region they get one.
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/cholesky.hpp"
#include "lapack/elements.hpp"
#include "lapack/kernel/source/cholesky/potrf.hpp"
#include "lapack/routine_name.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {

template <class T>
FactorResult potrf_serial(Uplo uplo, int n, Matrix<T> a, FactorPlace place) {
    const int nb = tuning::block_size(RoutineName<T>("POTRF"), n);
    if (nb <= 1 || nb >= n)
        return tell_progress(RoutineName<T>("POTRF"), n, place, potf2(uplo, n, a));
    const T one = scalar<T>(1), minusOne = scalar<T>(-1);
    const bool upper = uplo == Uplo::upper;
    for (int j = 0, jb; j < n; j += jb) {
        jb = std::min(nb, n - j);
        const int rest = n - j - jb;
        const Matrix<T> done = upper ? a.block(0, j) : a.block(j, 0), diagonal = a.block(j, j);
        blas::rank_k(uplo, upper ? adjoint<T> : Op::none, jb, j, -1, done, 1, diagonal);
        const FactorResult block = potrf_serial(uplo, jb, diagonal, {place.thread, place.offset + j});
        if (block.info != 0 || block.stopped)
            return {block.info > 0 ? block.info + j : 0, block.stopped};
        if (rest == 0)
            break;
        if (upper) {
            const Matrix<T> right = a.block(j, j + jb);
            blas::gemm(adjoint<T>, Op::none, jb, rest, j, minusOne, done, a.block(0, j + jb), one, right);
            blas::trsm(Side::left, uplo, adjoint<T>, Diag::nonUnit, jb, rest, one, diagonal, right);
        } else {
            const Matrix<T> below = a.block(j + jb, j);
            blas::gemm(Op::none, adjoint<T>, rest, jb, j, minusOne, a.block(j + jb, 0), done, one, below);
            blas::trsm(Side::right, uplo, adjoint<T>, Diag::nonUnit, rest, jb, one, diagonal, below);
        }
    }
    return {};
}

template FactorResult potrf_serial(Uplo, int, Matrix<float>, FactorPlace);
template FactorResult potrf_serial(Uplo, int, Matrix<SingleComplex>, FactorPlace);

} // namespace qrv::lapack
