// SSYTRD: reduction of a symmetric matrix to tridiagonal form Q' A Q in panels.
//
// SLATRD makes the reflectors of a panel, the rest is brought up to date with all of them at once, by a rank-2k update;
// what is smaller than the crossover is left to SSYTD2. A lower triangle is worked on from its first columns, an upper
// one from its last.
// Source: J. Dongarra, S. Hammarling, D. Sorensen, Block reduction of matrices to condensed forms for eigenvalue
// computations, J. Comput. Appl. Math. 27 (1989).
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/symmetric.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

// Columns of a panel, and the order that is left to the unblocked form.
struct Panels {
    int width, rest;
};
Panels choose_panels(int n, int lwork) {
    const int nb = tuning::block_size("SSYTRD", n);
    if (nb <= 1 || nb >= n)
        return {1, n};
    const int rest = std::max(nb, tuning::crossover("SSYTRD", n));
    if (rest >= n || lwork >= std::int64_t{n} * nb)
        return {nb, rest};
    const int fitting = std::max(lwork / n, 1);
    return {fitting, fitting < tuning::minimum_block_size("SSYTRD") ? n : rest};
}

} // namespace

std::int64_t sytrd_work(int n) {
    return std::max<std::int64_t>(1, std::int64_t{n} * tuning::block_size("SSYTRD", n));
}

void sytrd(Uplo uplo, int n, Matrix<float> a, float* d, float* e, float* tau, float* work, int lwork) {
    if (n == 0)
        return;
    const auto [nb, rest] = choose_panels(n, lwork);
    const Matrix<float> w{work, n};
    if (uplo == Uplo::upper) {
        int left = n;
        for (; left > rest; left -= nb) {
            const int i = left - nb; // the panel's first column
            latrd(uplo, left, nb, a, e, tau, w);
            blas::rank_2k(uplo, Op::none, i, nb, -1.0F, a.block(0, i), w, 1.0F, a);
            for (int j = i; j < left; ++j) {
                a(j - 1, j) = e[j - 1];
                d[j] = a(j, j);
            }
        }
        sytd2(uplo, left, a, d, e, tau);
    } else {
        int i = 0;
        for (; i < n - rest; i += nb) {
            latrd(uplo, n - i, nb, a.block(i, i), e + i, tau + i, w);
            blas::rank_2k(uplo, Op::none, n - i - nb, nb, -1.0F, a.block(i + nb, i), w.block(nb, 0), 1.0F,
                          a.block(i + nb, i + nb));
            for (int j = i; j < i + nb; ++j) {
                a(j + 1, j) = e[j];
                d[j] = a(j, j);
            }
        }
        sytd2(uplo, n - i, a.block(i, i), d + i, e + i, tau + i);
    }
    work[0] = work_size<float>(sytrd_work(n));
}

} // namespace qrv::lapack
