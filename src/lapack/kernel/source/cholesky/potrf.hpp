// Cholesky factorization of a symmetric or Hermitian positive definite matrix, A = U^H U or A = L L^H: the routes of
// SPOTRF and CPOTRF and what they share.
//
// Only the triangle told by uplo is read and overwritten; of a Hermitian diagonal only the real parts count, and those
// of the factor are real. info is 0, or the order of the first leading block that is not positive definite: the factor
// is complete before that column. A pivot that is NaN is not positive.
//
//   unblocked   the leaf: small blocks by the serial kernels         potrf_unblocked.cpp, potrf_left_looking.hpp
//   serial      left-looking over blocks, recursive in the diagonal  potrf_serial.cpp
//   tiles       tasks on square tiles, handed out as they ripen      potrf_omp.cpp, potrf_tiles.hpp, potrf_schedule.hpp
//
// The progress routine is called after each leaf. If it asks to stop, the routes return at once: what lies behind the
// leaves until then is in the state that the route had reached.
#pragma once

#include "blas/matrix.hpp"
#include "blas/options.hpp"
#include "lapack/factorization.hpp"

namespace qrv::lapack {

template <class T>
FactorResult potrf_serial(Uplo uplo, int n, Matrix<T> a, FactorPlace place);

// How the tiled route cuts its work.
struct PotrfGrain {
    int tile;       // columns of a tile
    int steps;      // inner steps, in tiles, that one task may take
    int firstBlock; // columns of the leading block, which the caller factors alone, at most
};

// The span of the first tasks: that of the schedule, as far as the leading block allows.
constexpr int first_span(int span, PotrfGrain grain) {
    while (span > 1 && grain.tile * span > grain.firstBlock)
        span /= 2;
    return span;
}

// On a team of at most `threads`; grain.tile < n.
template <class T>
FactorResult potrf_tiles(int threads, PotrfGrain grain, Uplo uplo, int n, Matrix<T> a);

// By the route that potrf_route.hpp chooses for n >= 1: SPOTRF itself, and what a route calls for its leading block.
template <class T>
FactorResult potrf_any(Uplo uplo, int n, Matrix<T> a);

} // namespace qrv::lapack
