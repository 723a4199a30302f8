// The product of SLATRD with a new reflector on a team, by one of two plans.
//
//   product alone   strips of even widths, each thread's result in a column of its own; then the caller adds them
//   all             nearly equal strips, in pieces of some columns; thread 0 adds to the result itself, the others to
//                   columns of their own; barrier; then three jobs for whoever is free, for none needs another's
//                   result: the sum of the columns, W' v, and V' v, which goes to the column that no thread had
//
// By the second plan a sweep over the strips begins where that of the column before ended, so that this part of the
// matrix is still in the cache: columns with odd numbers are swept one way, those with even numbers the other.
#include <algorithm>

#include "lapack/kernel/source/symmetric/strips.hpp"
#include "lapack/kernel/source/symmetric/sytrd.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

void clear(int m, Vector<float> x) {
    std::fill_n(x.data, m, 0.0F);
}

void multiply_alone(KeptTeam& members, const PanelColumn& c, Matrix<float> results) {
    int size = 1;
    members.run([&](int team, int thread) {
        const Vector<float> own = results.column(0, thread);
        clear(c.m, own);
        const TriangleShare share = triangle_share(Deal::evenWidths, c.uplo, c.m, team, thread);
        for (const Slice strip : {share.longer, share.shorter})
            add_columns(c.uplo, c.m, strip, 1, c.rest, c.reflector, own);
        if (thread == 0)
            size = team;
    });
    kernel::copy(c.m, results.column(0, 0), c.x);
    add_results(1, size, c.m, results, c.x);
}

// A strip in pieces of at most `width` columns, from its first or from its last column on.
void add_in_pieces(const PanelColumn& c, Slice strip, int width, bool upward, Vector<float> y) {
    for (int done = 0, count; done < strip.count; done += count) {
        count = std::min(width, strip.count - done);
        const int first = upward ? strip.first + done : strip.first + strip.count - done - count;
        add_columns(c.uplo, c.m, {first, count}, 1, c.rest, c.reflector, y);
    }
}

void multiply_all(KeptTeam& members, const PanelColumn& c, Matrix<float> results) {
    const int width = tuning::block_size("SLATRD", c.m, members.size());
    const auto multiply = [&](int team, int thread) {
        const Vector<float> own = thread == 0 ? c.x : results.column(0, thread);
        clear(c.m, own);
        const TriangleShare share = triangle_share(Deal::nearlyEqual, c.uplo, c.m, team, thread);
        const bool upward = (c.uplo == Uplo::upper) == (c.number % 2 == 0);
        add_in_pieces(c, upward ? share.shorter : share.longer, width, upward, own);
        add_in_pieces(c, upward ? share.longer : share.shorter, width, upward, own);
    };
    members.run(multiply, [&](int team, int thread) {
        for (int job = thread; job < 3; job += team)
            if (job == 0)
                add_results(1, team, c.m, results, c.x);
            else if (c.earlier > 0)
                kernel::gemv(Op::transpose, c.m, c.earlier, 1.0F, job == 1 ? c.w : c.v, c.reflector, 0.0F,
                             job == 1 ? c.products : results.column(0, 0));
    });
}

} // namespace

void multiply_on_team(KeptTeam& team, PanelPlan plan, const PanelColumn& c, Matrix<float> results) {
    if (plan == PanelPlan::productAlone)
        multiply_alone(team, c, results);
    else
        multiply_all(team, c, results);
}

} // namespace qrv::lapack
