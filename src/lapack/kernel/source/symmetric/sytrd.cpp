// SSYTRD: reduction of a symmetric matrix to tridiagonal form Q' A Q in panels.
//
// SLATRD makes the reflectors of a panel, the rest is brought up to date with all of them at once, by a rank-2k update;
// what is smaller than the crossover is left to the unblocked form. A lower triangle is worked on from its first
// columns, an upper one from its last. On a team the products of a panel, the updates and the unblocked form are
// shared out in strips of columns (strips.hpp), each in regions of its own.
// Source: J. Dongarra, S. Hammarling, D. Sorensen, Block reduction of matrices to condensed forms for eigenvalue
// computations, J. Comput. Appl. Math. 27 (1989).
#include <algorithm>

#include "blas/thread/common/far_cores.hpp"
#include "lapack/calls/symmetric.hpp"
#include "lapack/kernel/source/symmetric/sytrd.hpp"
#include "lapack/workspace.hpp"
#include "qrv/service.h"
#include "service/tuning.hpp"
#include "service/vector_form.hpp"

namespace qrv::lapack {
namespace {

// Orders from which a team pays where wide vectors run: two threads took 0.85 of the time of one for n = 250, 0.77 for
// n = 500 and 0.58 for n = 1000, but 1.8, 1.5 and 0.86 as long as their cores were far from each other. Panels are as
// for one thread then: with those of teams it was 0.79 for n = 500 and 0.60 for n = 1000.
constexpr int wideTeamOrder = 450;
// On far cores two threads took 1.12, 1.33 and 1.06 of the time of one for n = 300, 600 and 800, what one does for both
// 1.02 and 1.2.
constexpr int farTeamOrder = 700;

int sytrd_threads(int n) {
    const bool wide = vector_form_in_use() != VectorForm::sse;
    const int least = wide ? wideTeamOrder : tuning::crossover("SSYTRD", -1);
    return n < least ? 1 : std::max(1, qrv_serv_get_max_threads());
}

// As the tuning values are asked for: one thread is not told.
int told(int threads) {
    return threads > 1 && vector_form_in_use() == VectorForm::sse ? threads : -1;
}

std::int64_t sytrd_work(int n, int threads) {
    return std::max<std::int64_t>(1, std::int64_t{n} * tuning::block_size("SSYTRD", n, told(threads)));
}

} // namespace

Panels choose_panels(int n, int lwork, int threads) {
    const int nb = tuning::block_size("SSYTRD", n, told(threads));
    if (nb <= 1 || nb >= n)
        return {1, threads > 1 ? 0 : n};
    const int rest = std::max(nb, tuning::crossover("SSYTRD", n, told(threads)));
    if (rest >= n || lwork >= std::int64_t{n} * nb)
        return {nb, rest};
    const int fitting = std::max(lwork / n, 1);
    return {fitting, fitting < tuning::minimum_block_size("SSYTRD") ? n : rest};
}

void sytrd_in_panels(int threads, const Panels& panels, int tail, Uplo uplo, int n, Matrix<float> a, float* d, float* e,
                     float* tau, Matrix<float> w) {
    const int nb = panels.width;
    const auto update = [&](int order, Matrix<const float> v, Matrix<const float> wPart, Matrix<float> rest) {
        if (threads > 1)
            update_on_team(threads, uplo, order, nb, v, wPart, rest);
        else
            blas::rank_2k(uplo, Op::none, order, nb, -1.0F, v, wPart, 1.0F, rest);
    };
    int done = 0;
    for (; done < n - panels.rest; done += nb) {
        const int left = n - done, order = left - nb;
        if (uplo == Uplo::upper) {
            latrd(threads, uplo, left, nb, a, e, tau, w);
            update(order, a.block(0, order), w, a);
            for (int j = order; j < left; ++j) {
                if (j > 0)
                    a(j - 1, j) = e[j - 1];
                d[j] = a(j, j);
            }
        } else {
            latrd(threads, uplo, left, nb, a.block(done, done), e + done, tau + done, w);
            update(order, a.block(done + nb, done), w.block(nb, 0), a.block(done + nb, done + nb));
            for (int j = done; j < done + nb; ++j) {
                if (j < n - 1)
                    a(j + 1, j) = e[j];
                d[j] = a(j, j);
            }
        }
    }
    const int at = uplo == Uplo::upper ? 0 : done;
    if (threads > 1)
        sytd3(threads, tail, uplo, n - done, a.block(at, at), d + at, e + at, tau + at);
    else
        sytd2(uplo, n - done, a.block(at, at), d + at, e + at, tau + at);
}

std::int64_t sytrd_work(int n) {
    return sytrd_work(n, sytrd_threads(n));
}

void sytrd(Uplo uplo, int n, Matrix<float> a, float* d, float* e, float* tau, float* work, int lwork) {
    if (n == 0)
        return;
    const NearTeams teams(n, farTeamOrder);
    const int threads = sytrd_threads(n), tail = threads > 1 ? std::max(1, tuning::crossover("SSYTD2", n)) : n;
    sytrd_in_panels(threads, choose_panels(n, lwork, threads), tail, uplo, n, a, d, e, tau, {work, n});
    work[0] = work_size<float>(sytrd_work(n, threads));
}

} // namespace qrv::lapack
