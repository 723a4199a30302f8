// SSYTD2 on a team: the update by a reflector is fused with the product for the next one, so that the rest of the
// matrix is read once a step.
//
// A step makes the reflector of a column, and the team, which is kept, then goes over the triangle that is left, strip
// by strip (strips.hpp): the update of the step before, if one is pending, and the product with the new vector v. A
// product reads only the columns of its strip, which its thread has just updated. Each thread adds to a column of its
// own; behind a barrier one thread sums these to w. The update with v and w stays pending, but for the column that
// comes next.
//
//   pending    the last reflector is not the identity; its v, in the matrix with its 1, and w, in the column of the
//              results behind those of the threads, have not reached the triangle that is left
//   results    rows are those of the matrix; an upper triangle shrinks at its end, so that its rows stay
//
// A step with tau 0 has no product, and leaves no update pending.
#include <algorithm>

#include "blas/thread/common/kept_team.hpp"
#include "lapack/calls/reflectors.hpp"
#include "lapack/calls/symmetric.hpp"
#include "lapack/kernel/source/symmetric/strips.hpp"
#include "lapack/kernel/source/symmetric/sytrd.hpp"
#include "lapack/lapack.hpp"
#include "lapack/workspace.hpp"
#include "qrv/service.h"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

// What is left of the matrix behind a reflector, and its vectors there.
struct Rest {
    int order;
    Matrix<float> a;
    Vector<float> v, w;
    Matrix<float> results;

    // Behind the next reflector.
    Rest next(Uplo uplo) const {
        if (uplo == Uplo::upper)
            return {order - 1, a, v, w, results};
        return {order - 1, a.block(1, 1), v.from(1), w.from(1), results.block(1, 0)};
    }
};

// The update with v and w where it is pending, and w := the product with the new vector, of the reflector that is
// tau's, if that is not 0.
struct Pass {
    Uplo uplo;
    bool pending;
    float tau;
    Vector<const float> newV;

    void run(KeptTeam& threads, const Rest& rest) const {
        if (!pending && tau == 0)
            return;
        int size = 1;
        threads.run([&](int team, int thread) {
            if (thread == 0)
                size = team;
            const TriangleShare share = triangle_share(Deal::evenWidths, uplo, rest.order, team, thread);
            const Vector<float> own = rest.results.column(0, thread);
            if (tau != 0)
                std::fill_n(own.data, rest.order, 0.0F);
            for (const Slice strip : {share.longer, share.shorter}) {
                if (pending)
                    update_columns(uplo, rest.order, strip, rest.v, rest.w, rest.a);
                if (tau != 0)
                    add_columns(uplo, rest.order, strip, tau, rest.a, newV, own);
            }
        });
        if (tau != 0)
            make_w(size, rest);
    }

private:
    void make_w(int team, const Rest& rest) const {
        kernel::copy(rest.order, rest.results.column(0, 0), rest.w);
        add_results(1, team, rest.order, rest.results, rest.w);
        kernel::axpy(rest.order, -0.5F * tau * kernel::dotu(rest.order, rest.w, newV), newV, rest.w);
    }
};

} // namespace

void sytd3(int threads, int tail, Uplo uplo, int n, Matrix<float> a, float* d, float* e, float* tau) {
    const bool upper = uplo == Uplo::upper;
    const int steps = std::max(0, n - std::max(1, tail));
    const bool onTeam = threads > 1 && steps > 0;
    const WorkArea<float> area(nullptr, 0, onTeam ? std::int64_t{n} * (threads + 1) : 0);
    if (!area.data())
        return sytd2(uplo, n, a, d, e, tau);

    const Matrix<float> results{area.data(), n};
    KeptTeam::form(threads, [&](KeptTeam& team) {
        Rest rest{n, a, a.column(0, 0), results.column(0, threads), results};
        bool pending = false;
        for (int step = 0; step < steps; ++step) {
            const int m = n - 1 - step;
            // The column that is reduced, the place beside the diagonal, and the new vector.
            const int column = upper ? m : step, at = upper ? m - 1 : step;
            float& beside = upper ? a(m - 1, m) : a(step + 1, step);
            const Vector<float> v = upper ? a.column(0, m) : a.column(step + 1, step);
            const float factor = larfg(m, beside, upper ? v : v.from(m > 1 ? 1 : 0));
            d[column] = a(column, column);
            e[at] = beside;
            tau[at] = factor;
            if (factor != 0)
                beside = 1;

            rest = rest.next(uplo);
            Pass{uplo, pending, factor, v}.run(team, rest);
            rest.v = v;
            pending = factor != 0;
            if (step == steps - 1)
                Pass{uplo, pending, 0, v}.run(team, rest);
            else if (pending)
                update_columns(uplo, m, {upper ? m - 1 : 0, 1}, rest.v, rest.w, rest.a);
            beside = e[at];
        }
    });
    const int at = upper ? 0 : steps;
    sytd2(uplo, n - steps, a.block(at, at), d + at, e + at, tau + at);
}

} // namespace qrv::lapack

using namespace qrv;

void qrv_lapack_ssytd3(const char* uplo, const int* n, float* a, const int* lda, float* d, float* e, float* tau,
                       int* info) {
    *info = 0;
    if (*n > 0)
        lapack::sytd3(qrv_serv_get_max_threads(), tuning::crossover("SSYTD2", *n), uplo_of(*uplo), *n, {a, *lda}, d, e,
                      tau);
}
