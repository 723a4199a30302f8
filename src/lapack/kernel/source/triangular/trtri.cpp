// STRTRI, CTRTRI: inverse of a triangular matrix, in place, in blocks.
//
// With the part that is already inverted in A11', the next block of columns of an upper triangle is
//
//     inv [ A11 A12 ]  =  [ A11'  -A11' A12 inv(A22) ]
//         [     A22 ]     [           inv(A22)       ]
//
// and a lower triangle is the same from its last block on. Of large triangles the blocks are the halves, each inverted
// in the same way. The product and the solve may thread.
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/triangular.hpp"
#include "lapack/factorization.hpp"
#include "lapack/routine_name.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

template <class T>
void invert(Uplo uplo, Diag diag, int n, Matrix<T> a);

template <class T>
void invert_upper(Diag diag, int n, int nb, Matrix<T> a) {
    for (int j = 0; j < n; j += nb) {
        const int jb = std::min(nb, n - j);
        const auto above = a.block(0, j), diagonal = a.block(j, j);
        blas::trmm(Side::left, Uplo::upper, Op::none, diag, j, jb, scalar<T>(1), a, above);
        blas::trsm(Side::right, Uplo::upper, Op::none, diag, j, jb, scalar<T>(-1), diagonal, above);
        invert(Uplo::upper, diag, jb, diagonal);
    }
}

template <class T>
void invert_lower(Diag diag, int n, int nb, Matrix<T> a) {
    for (int j = (n - 1) / nb * nb; j >= 0; j -= nb) {
        const int jb = std::min(nb, n - j), rest = n - j - jb;
        const auto diagonal = a.block(j, j);
        if (rest > 0) {
            const auto below = a.block(j + jb, j), trailing = a.block(j + jb, j + jb);
            blas::trmm(Side::left, Uplo::lower, Op::none, diag, rest, jb, scalar<T>(1), trailing, below);
            blas::trsm(Side::right, Uplo::lower, Op::none, diag, rest, jb, scalar<T>(-1), diagonal, below);
        }
        invert(Uplo::lower, diag, jb, diagonal);
    }
}

template <class T>
void invert(Uplo uplo, Diag diag, int n, Matrix<T> a) {
    const int nb = n > mostInBlocks ? half_in_blocks(n) : tuning::block_size(RoutineName<T>("TRTRI"), n);
    if (nb <= 1 || nb >= n)
        trti2(uplo, diag, n, a);
    else if (uplo == Uplo::upper)
        invert_upper(diag, n, nb, a);
    else
        invert_lower(diag, n, nb, a);
}

} // namespace

template <class T>
int trtri(Uplo uplo, Diag diag, int n, Matrix<T> a) {
    if (diag == Diag::nonUnit)
        if (const int zero = zero_on_diagonal<T>(n, a))
            return zero;
    invert(uplo, diag, n, a);
    return 0;
}

template int trtri(Uplo, Diag, int, Matrix<float>);
template int trtri(Uplo, Diag, int, Matrix<SingleComplex>);

} // namespace qrv::lapack
