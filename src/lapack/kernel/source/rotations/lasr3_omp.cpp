// Several sequences of rotations applied together (lasr3.hpp).
//
// A block of rotations is multiplied out into an orthogonal matrix U, so that the lines X of the matrix that it turns
// become U' X, or X U for columns. Sequence s widens the profile of U by one: column j of a block that goes forward
// ends with row j + k, so of its quarters, k x k each, the lower left one is upper triangular; backward the upper right
// one is lower triangular. With o and c for the halves such that U(c, o) is the triangle,
//
//   W := X(c),  X(c) := U(c, c)' W + U(o, c)' X(o),  W := U(c, o)' W + U(o, o)' X(o),  X(o) := W
//
// takes W of k lines only. Blocks that have no such halves are applied whole to as many columns as W has room for.
#include "blas/calls.hpp"
#include "blas/thread/common/slice.hpp"
#include "blas/thread/common/team_omp.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/rotations.hpp"
#include "lapack/kernel/source/rotations/lasr3.hpp"
#include "lapack/lapack.hpp"
#include "qrv/service.h"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

// Some rotations of a sequence on some elements of the lines.
void turn(const Sweeps& q, int sequence, Planes planes, Slice part) {
    if (planes.count > 0 && part.count > 0)
        kernel::lasr(q.side, Pivot::variable, q.direct, q.left() ? planes.count + 1 : part.count,
                     q.left() ? part.count : planes.count + 1, q.cs.column(2 * sequence) + planes.first,
                     q.cs.column(2 * sequence + 1) + planes.first, q.at(planes.first, part.first));
}

// ---- Rotations themselves -------------------------------------------------------------------------------------------

void apply_one_by_one(const Sweeps& q, Slice part) {
    for (int s = 0; s < q.count; ++s)
        turn(q, s, {0, q.planes()}, part);
}

// A thread's share of the skewed route. Rows are turned in pieces of columns that stay in cache, columns in blocks of
// rotations that do.
void apply_skewed(const Sweeps& q, Slice share) {
    constexpr int pieceElements = 32'768, pieceUnit = 8;
    if (share.count <= 0)
        return;
    if (q.left()) {
        const int piece = std::max(pieceUnit, pieceElements / share.count / pieceUnit * pieceUnit);
        for (int done = 0; done < share.count; done += piece)
            apply_one_by_one(q, {share.first + done, std::min(piece, share.count - done)});
    } else if (2 * q.count < q.n) {
        const int lines = q.planes() + q.count - 1;
        for (int from = 0; from < lines; from += q.count)
            for (int s = 0; s < q.count; ++s)
                turn(q, s, planes_on_lines(q.direct, q.planes(), s, from, std::min(lines, from + q.count)), share);
    } else {
        apply_one_by_one(q, share);
    }
}

// ---- Blocks of them as products -------------------------------------------------------------------------------------

// U := the product of the block's rotations. Of each sequence they come in pieces, and a piece meets rows only that are
// not all zero in its columns.
void multiply_out(const Sweeps& q, const SweepBlock& block, Matrix<float> u) {
    constexpr int piece = 32;
    const bool forward = q.direct == Direct::forward;
    laset(Part::whole, block.order, block.order, 0.0F, 1.0F, u);
    for (int s = 0; s < q.count; ++s) {
        const Planes planes = planes_on_lines(q.direct, q.planes(), s, block.from, block.to);
        const int begin = planes.first - block.first, end = begin + planes.count;
        for (int done = 0, size; done < planes.count; done += size) {
            size = std::min(piece, planes.count - done);
            const int first = forward ? begin + done : end - done - size;
            const int top = forward ? begin : std::max(0, first - s),
                      bottom = forward ? std::min(block.order, first + size + s + 1) : end + 1;
            kernel::lasr(Side::right, Pivot::variable, q.direct, bottom - top, size + 1,
                         q.cs.column(2 * s) + block.first + first, q.cs.column(2 * s + 1) + block.first + first,
                         u.block(top, first));
        }
    }
}

struct BlockProduct {
    const Sweeps& q;
    SweepBlock block;
    Matrix<const float> u;
    float* work; // k lines of all elements

    void apply(Slice share) const {
        if (share.count <= 0)
            return;
        if (block.halves)
            return apply_halves(share);
        const int room = static_cast<int>(std::int64_t{q.count} * share.count / block.order);
        for (int done = 0; done < share.count; done += std::max(1, room)) {
            const Slice part{share.first + done, std::min(std::max(1, room), share.count - done)};
            if (room > 0)
                apply_whole(part, share_of_work(share, part.count, block.order));
            else
                turn_each(part);
        }
    }

private:
    // `lines` lines of `elements` elements in the thread's part of the work.
    Matrix<float> share_of_work(Slice share, int elements, int lines) const {
        return {work + std::ptrdiff_t{q.count} * share.first, q.left() ? lines : elements};
    }
    // y := beta*y + U(i, j)' x for rows, x U(i, j) for columns: lines of `part`.
    void multiply(int from, int to, int i, int j, Slice part, Matrix<const float> x, float beta,
                  Matrix<float> y) const {
        if (q.left())
            blas::gemm(Op::transpose, Op::none, to, part.count, from, 1.0F, u.block(i, j), x, beta, y);
        else
            blas::gemm(Op::none, Op::none, part.count, to, from, 1.0F, x, u.block(i, j), beta, y);
    }
    void copy(int lines, Slice part, Matrix<const float> from, Matrix<float> to) const {
        lacpy(Part::whole, q.left() ? lines : part.count, q.left() ? part.count : lines, from, to);
    }

    void apply_halves(Slice share) const {
        const bool forward = q.direct == Direct::forward;
        const int k = q.count, c = forward ? k : 0, o = k - c;
        const Matrix<float> w = share_of_work(share, share.count, k), xc = q.at(block.first + c, share.first),
                            xo = q.at(block.first + o, share.first);
        copy(k, share, xc, w);
        multiply(k, k, c, c, share, w, 0, xc);
        multiply(k, k, o, c, share, xo, 1, xc);
        blas::trmm(q.side, forward ? Uplo::upper : Uplo::lower, q.left() ? Op::transpose : Op::none, Diag::nonUnit,
                   q.left() ? k : share.count, q.left() ? share.count : k, 1.0F, u.block(c, o), w);
        multiply(k, k, o, o, share, xo, 1, w);
        copy(k, share, w, xo);
    }
    void apply_whole(Slice part, Matrix<float> w) const {
        const Matrix<float> x = q.at(block.first, part.first);
        copy(block.order, part, x, w);
        multiply(block.order, block.order, 0, 0, part, w, 0, x);
    }
    // Without room for a single element of all lines.
    void turn_each(Slice part) const {
        for (int s = 0; s < q.count; ++s)
            turn(q, s, planes_on_lines(q.direct, q.planes(), s, block.from, block.to), part);
    }
};

// Each product is shared out by `share(product)`, which comes back when all of it is done: the next block overlaps.
template <class Share>
void apply_blocks(const Sweeps& q, float* work, const Share& share) {
    const Matrix<float> u{work, 2 * q.count};
    each_sweep_block(q.direct, q.planes(), q.count, [&](const SweepBlock& block) {
        multiply_out(q, block, u);
        share(BlockProduct{q, block, u, work + 4 * std::ptrdiff_t{q.count} * q.count});
    });
}

// ---- Routes ---------------------------------------------------------------------------------------------------------

} // namespace

void apply_sweeps(const Sweeps& q, SweepRoute route, int threads, float* work) {
    const Slice whole{0, q.across()};
    switch (route) {
    case SweepRoute::oneByOne:
        return apply_one_by_one(q, whole);
    case SweepRoute::blocked:
        return apply_blocks(q, work, [&](const BlockProduct& product) { product.apply(whole); });
    case SweepRoute::skewed:
        return on_team(threads,
                       [&](int team, int thread) { apply_skewed(q, equal_slice(whole.count, team, thread, 2)); });
    case SweepRoute::blockedTeam:
        return apply_blocks(q, work, [&](const BlockProduct& product) {
            on_team(threads, [&](int team, int thread) { product.apply(even_slice(whole.count, team, thread)); });
        });
    }
}

void apply_both(const Sweeps (&both)[2], float* const (&work)[2]) {
    on_team(2, [&](int team, int thread) {
        for (int i = thread; i < 2; i += team)
            apply_sweeps(both[i], SweepRoute::blocked, 1, work[i]);
    });
}

namespace {

void choose_and_apply(const Sweeps& q, float* work, int threads) {
    if (q.planes() >= 1 && q.count >= 1 && q.across() >= 1)
        apply_sweeps(q, tuned_sweep_route(q.side, q.across(), threads), threads, work);
}

} // namespace

SweepRoute tuned_sweep_route(Side side, int across, int threads) {
    const char* const name = side == Side::left ? "SBDSQR" : "SSTEQR";
    return sweep_route(across, tuning::crossover(name, 1), tuning::crossover(name, 3), [&] { return threads; });
}

void lasr3(Side side, Direct direct, int m, int n, int sequences, Matrix<const float> cs, Matrix<float> a,
           float* work) {
    choose_and_apply({side, direct, m, n, sequences, cs, a}, work, qrv_serv_get_max_threads());
}

void lasr3_serial(Side side, Direct direct, int m, int n, int sequences, Matrix<const float> cs, Matrix<float> a,
                  float* work) {
    choose_and_apply({side, direct, m, n, sequences, cs, a}, work, 1);
}

} // namespace qrv::lapack

void qrv_lapack_slasr3(const char* side, const char* pivot, const char* direct, const int* m, const int* n,
                       const int* k, const float* cs, const int* ldcs, float* a, const int* lda, float* work,
                       const int*, int*) {
    using namespace qrv;
    if (*pivot == 'V' && (*direct == 'F' || *direct == 'B'))
        lapack::lasr3(*side == 'L' ? Side::left : Side::right, *direct == 'F' ? Direct::forward : Direct::backward, *m,
                      *n, *k, {cs, *ldcs}, {a, *lda}, work);
}
