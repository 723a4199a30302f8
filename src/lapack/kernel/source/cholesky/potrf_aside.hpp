// A lower triangle factored in a copy, where its own columns share sets of the caches (goes_aside in potrf_route.hpp)
// and there is memory for it. The copy is in square tiles, each by itself in memory, and left-looking over them:
//
//   [ L00           ]   done                        for each tile Ai1, from the diagonal downward:
//   [ L10  A11      ]   this column of tiles        Ai1 -= Li0 L10^H, factored or Ai1 L11^-H
//   [ L20  A21  A22 ]   untouched
//
// A tile is copied when its turn comes and goes back when it is done, both while it is in the caches.
#pragma once

#include <cstdint>

#include "blas/calls.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/elements.hpp"
#include "lapack/factorization.hpp"
#include "lapack/kernel/source/cholesky/potrf_route.hpp"
#include "lapack/workspace.hpp"

namespace qrv::lapack {

template <class T>
class TilesAside {
public:
    TilesAside(int n, Matrix<T> a)
        : n_(n), side_(smaller(n, tile_aside(n, sizeof(T)))), ld_(dimension_aside(side_, sizeof(T))), a_(a),
          area_(nullptr, 0, std::int64_t{index(tiles(), 0)} * size()) {}

    explicit operator bool() const { return area_.data() != nullptr; }

    // factor(j, jb, block) factors the one on the diagonal.
    template <class Factor>
    FactorResult factor(const Factor& factor) const {
        for (int j = 0; j < tiles(); ++j)
            for (int i = j; i < tiles(); ++i) {
                load(i, j);
                for (int k = 0; k < j; ++k)
                    subtract_product(i, j, k);
                if (i > j)
                    blas::trsm(Side::right, Uplo::lower, adjoint<T>, Diag::nonUnit, length(i), length(j), scalar<T>(1),
                               tile(j, j), tile(i, j));
                const FactorResult result = i > j ? FactorResult{} : factor(first(j), length(j), tile(j, j));
                store(i, j);
                if (result.info != 0 || result.stopped)
                    return {result.info > 0 ? result.info + first(j) : 0, result.stopped};
            }
        return {};
    }

private:
    int tiles() const { return (n_ - 1) / side_ + 1; }
    int first(int i) const { return i * side_; }
    int length(int i) const { return smaller(side_, n_ - first(i)); }
    std::int64_t size() const { return std::int64_t{ld_} * side_; }
    static int index(int i, int j) { return i * (i + 1) / 2 + j; }
    Matrix<T> tile(int i, int j) const { return {area_.data() + index(i, j) * size(), ld_}; }
    Matrix<T> place(int i, int j) const { return a_.block(first(i), first(j)); }

    static Part part(int i, int j) { return i == j ? Part::lower : Part::whole; }
    void load(int i, int j) const { lacpy<T>(part(i, j), length(i), length(j), place(i, j), tile(i, j)); }
    void store(int i, int j) const { lacpy<T>(part(i, j), length(i), length(j), tile(i, j), place(i, j)); }

    void subtract_product(int i, int j, int k) const {
        if (i == j)
            blas::rank_k(Uplo::lower, Op::none, length(j), length(k), -1.0F, tile(j, k), 1.0F, tile(j, j));
        else
            blas::gemm(Op::none, adjoint<T>, length(i), length(j), length(k), scalar<T>(-1), tile(i, k), tile(j, k),
                       scalar<T>(1), tile(i, j));
    }

    int n_, side_, ld_;
    Matrix<T> a_;
    WorkArea<T> area_;
};

// factor(j, jb, block) for the blocks on the diagonal of a copy in tiles, where that pays; otherwise whole().
template <class T, class Factor, class Whole>
FactorResult factor_aside(Uplo uplo, int n, Matrix<T> a, const Factor& factor, const Whole& whole) {
    if (!goes_aside(uplo, n, a.ld, sizeof(T)))
        return whole();
    const TilesAside<T> tiles(n, a);
    return tiles ? tiles.factor(factor) : whole();
}

} // namespace qrv::lapack
