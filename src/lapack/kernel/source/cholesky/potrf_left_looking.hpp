// The Cholesky factorization block by block, left-looking: what the leaf and the serial route are made of.
//
// Before step j, in blocks of j, jb and the rest:
//
//   [ U00 U01 U02 ]   done                    A11 -= U01^H U01, factor A11
//   [     A11 A12 ]   this block row          A12  = U11^-H (A12 - U01^H U02)
//   [         A22 ]   untouched
//
// and the same on the transposed picture for L.
#pragma once

#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/elements.hpp"
#include "lapack/factorization.hpp"

namespace qrv::lapack {

// Who computes the products and solves: the decision routines, which may thread, or the kernels.
enum class Layer { blas, kernel };

// Columns that are left over join the last block if they are so few. The first one never takes all.
constexpr int fewLeftOver = 4;

// In blocks of nb; factor(j, jb, block) factors the one on the diagonal.
template <Layer layer, class T, class Factor>
FactorResult factor_left_looking(int nb, Uplo uplo, int n, Matrix<T> a, const Factor& factor) {
    const auto rank_k = [](auto... x) { layer == Layer::blas ? blas::rank_k(x...) : kernel::rank_k(x...); };
    const auto gemm = [](auto... x) { layer == Layer::blas ? blas::gemm<T>(x...) : kernel::gemm<T>(x...); };
    const auto trsm = [](auto... x) { layer == Layer::blas ? blas::trsm<T>(x...) : kernel::trsm<T>(x...); };
    const T one = scalar<T>(1), minusOne = scalar<T>(-1);
    const bool upper = uplo == Uplo::upper;
    for (int j = 0, jb; j < n; j += jb) {
        jb = j > 0 && n - j <= nb + fewLeftOver ? n - j : std::min(nb, n - j);
        const int rest = n - j - jb;
        const Matrix<T> done = upper ? a.block(0, j) : a.block(j, 0), diagonal = a.block(j, j);
        if (j > 0)
            rank_k(uplo, upper ? adjoint<T> : Op::none, jb, j, -1.0F, done, 1.0F, diagonal);
        const FactorResult block = factor(j, jb, diagonal);
        if (block.info != 0 || block.stopped)
            return {block.info > 0 ? block.info + j : 0, block.stopped};
        if (rest == 0)
            break;
        const Matrix<T> next = upper ? a.block(j, j + jb) : a.block(j + jb, j);
        const Matrix<T> beside = upper ? a.block(0, j + jb) : a.block(j + jb, 0);
        if (j > 0 && upper)
            gemm(adjoint<T>, Op::none, jb, rest, j, minusOne, done, beside, one, next);
        else if (j > 0)
            gemm(Op::none, adjoint<T>, rest, jb, j, minusOne, beside, done, one, next);
        if (upper)
            trsm(Side::left, uplo, adjoint<T>, Diag::nonUnit, jb, rest, one, diagonal, next);
        else
            trsm(Side::right, uplo, adjoint<T>, Diag::nonUnit, rest, jb, one, diagonal, next);
    }
    return {};
}

} // namespace qrv::lapack
