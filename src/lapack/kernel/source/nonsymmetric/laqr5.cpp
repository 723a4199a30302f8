// SLAQR5: a sweep of small bulges down a Hessenberg matrix, several pairs of shifts at a time; SLAQR1: the vector with
// which a pair enters.
//
// A chain of bulges stands 3 rows apart. It moves by 3 bulges - 2 columns at a time, through a window of 6 bulges - 3
// rows in which its reflectors are multiplied into U; what of H and Z lies outside the window then takes one product
// with U. Without accumulation the reflectors go over all of H and Z at once.
//
//   for each place of the chain
//     for each column that it moves by
//       make the reflectors         each bulge's next one, or the first one of a pair that enters
//       apply them                  from the left and the right, within the window
//       watch                       a subdiagonal element behind a bulge that has become negligible is set to zero
//       complete the bulges         the row that each has grown by
//     multiply by U                 the rest of H, and Z
//
// The blocks of U that are zero are multiplied like the others: one large product is faster than several small ones.
//
// On a team one thread multiplies by U what the next window is to see and goes on there, with a U of its own, while the
// others multiply the rest, in pieces that whoever is free takes; so does the one when it is through the window. What
// holds:
//   - The next window changes rows from its first_row on in its own columns, and columns up to its end in its own rows.
//   - The rest are columns from that end on, rows above the first_row of the window before, and Z.
//   - A piece is the same whoever takes it: the bits depend on whether there is a team, not on how large it is.
//
// Source: K. Braman, R. Byers, R. Mathias, The multishift QR algorithm I, SIAM J. Matrix Anal. Appl. 23 (2002).
#include <array>
#include <omp.h>

#include "blas/thread/common/crowd.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/kernel/source/nonsymmetric/qr_iteration.hpp"
#include "lapack/kernel/source/nonsymmetric/reflector3.hpp"
#include "lapack/workspace.hpp"

namespace qrv::lapack {

void laqr1(int n, Matrix<const float> h, const ShiftPair& shifts, float* v) {
    const auto [r1, i1] = shifts.first;
    const auto [r2, i2] = shifts.second;
    const float below3 = n == 3 ? std::fabs(h(2, 0)) : 0;
    const float s = std::fabs(h(0, 0) - r2) + std::fabs(i2) + std::fabs(h(1, 0)) + below3;
    if (s == 0) {
        std::fill(v, v + n, 0.0F);
        return;
    }
    const float h21 = h(1, 0) / s;
    v[0] = (h(0, 0) - r1) * ((h(0, 0) - r2) / s) - i1 * (i2 / s) + h(0, 1) * h21;
    v[1] = h21 * (h(0, 0) + h(1, 1) - r1 - r2);
    if (n == 3) {
        const float h31 = h(2, 0) / s;
        v[0] += h(0, 2) * h31;
        v[1] += h(1, 2) * h31;
        v[2] = h31 * (h(0, 0) + h(2, 2) - r1 - r2) + h21 * h(2, 1);
    }
}

int sweep_threads(std::int64_t lines, int order, int budget) {
    constexpr int linesOfThread = 256; // from so many on another thread is worth it
    if (lines * order * order < leastForTeam)
        return 1;
    return static_cast<int>(std::min<std::int64_t>(budget, 1 + lines / linesOfThread));
}

namespace {

constexpr float ulp = machine::precision;
constexpr int linesOfPiece = 192; // that a thread of a team multiplies at a time

// Conjugates come to lie side by side, from an even place on; real shifts keep their order.
void pair_shifts(int ns, float* sr, float* si) {
    for (int i = 0; i + 2 < ns; i += 2)
        if (si[i] != -si[i + 1]) {
            std::rotate(sr + i, sr + i + 1, sr + i + 3);
            std::rotate(si + i, si + i + 1, si + i + 3);
        }
}

class Sweep {
public:
    Sweep(const SchurProblem& problem, int ns, const float* sr, const float* si, const SweepWork& work)
        : p_(problem), h_(problem.h), w_(work), sr_(sr), si_(si), bulges_(ns / 2), order_(3 * ns - 3),
          step_(3 * bulges_ - 2), top_(problem.range.begin), bottom_(problem.range.end - 1),
          smallest_(negligible_size(problem.n)), window_(window(3 * (1 - bulges_) + top_, work.u)) {
        if (bottom_ - top_ >= 2)
            h_(top_ + 2, top_) = 0; // a bulge may enter as soon as its column is clear
    }

    void run() {
        for (; window_.begin < bottom_; window_ = window(window_.begin + step_, w_.u)) {
            pass();
            if (w_.accumulates)
                multiply_rest();
        }
    }

    // Rows and columns that all windows together leave.
    std::int64_t lines() const {
        return w_.accumulates ? end_column() - first_row() + (p_.wantZ ? p_.zRows.size() : 0) : 0;
    }
    int order() const { return order_; }
    // Memory for another U, and for products of each thread with a piece.
    std::int64_t memory(int threads) const {
        return std::int64_t{order_} * (order_ + std::int64_t{threads} * linesOfPiece);
    }
    void run_on_team(int threads, float* memory) {
        const Matrix<float> otherU{memory, order_};
        float* const products = memory + std::int64_t{order_} * order_;
        pass();
        for (bool goesOn = true; goesOn;) {
            const Window behind = window_;
            goesOn = behind.begin + step_ < bottom_;
            if (goesOn)
                window_ = window(behind.begin + step_, behind.u.data == w_.u.data ? otherU : w_.u);
            const int seen = goesOn ? window_.end : behind.end;
            const int most = goes_alone(ticks_now()) ? 1 : threads;
            int team = 1;
            Ticks piece = mostDelay, done = 0; // of the quickest piece, and when the caller found no other
#pragma omp parallel num_threads(most) reduction(min : piece)
            {
                const int thread = omp_get_thread_num();
                float* const product = products + std::int64_t{thread} * order_ * linesOfPiece;
                if (thread == 0 && goesOn) {
                    each_piece({behind.end, seen}, linesOfPiece, [&](Lines columns) {
                        multiply_columns(behind, columns, {product, order_});
                    });
                    pass();
                }
                const auto share = [&](Lines lines, const auto& body) {
#pragma omp for schedule(dynamic) nowait
                    for (int begin = lines.begin; begin < lines.end; begin += linesOfPiece) {
                        const Ticks start = ticks_now();
                        const Lines part{begin, std::min(begin + linesOfPiece, lines.end)};
                        body(part);
                        piece = std::min(piece, (ticks_now() - start) * linesOfPiece / part.size());
                    }
                };
                share({seen, end_column()}, [&](Lines columns) {
                    multiply_columns(behind, columns, {product, order_});
                });
                for (const Rows& rest : rest_of_rows(behind))
                    share(rest.lines, [&](Lines rows) {
                        multiply_rows(behind, rows, rest.a, {product, linesOfPiece});
                    });
                if (thread == 0)
                    done = ticks_now(), team = omp_get_num_threads();
            }
            if (team > 1)
                note_region(2, piece, done, ticks_now()); // the others have a piece each at most then
        }
    }

private:
    // Where a chain moves by a step, and U.
    struct Window {
        int begin;    // its first row; before the matrix while the chain enters
        int firstRow; // of those that the window takes with it
        int end;      // of its columns
        int clear;    // rows and columns of U that stay those of I
        Matrix<float> u;
    };
    Window window(int begin, Matrix<float> u) const {
        return {begin, std::max(top_, begin - 1), std::min(begin + order_, bottom_ + 1), std::max(0, top_ - begin), u};
    }

    void pass() const {
        if (w_.accumulates)
            laset<float>(Part::whole, order_, order_, 0, 1, window_.u);
        const int lastColumn = std::min(window_.begin + step_ - 1, bottom_ - 1);
        for (int column = window_.begin; column <= lastColumn; ++column)
            advance(column);
    }

    // Bulges [begin, end) of three rows are inside; the one after them has two, at the last rows.
    struct Chain {
        int column, begin, end;
        bool short2;
        int row(int bulge) const { return column + 3 * bulge; } // its first; it reduces the column before
    };

    void advance(int column) const {
        Chain c{column, std::max(0, (top_ - column + 2) / 3), std::min(bulges_, (bottom_ + 1 - column) / 3), false};
        c.short2 = c.end < bulges_ && c.row(c.end) == bottom_ - 1;
        make_reflectors(c);
        apply_left(c);
        apply_right(c);
        watch(c);
        complete(c);
    }

    ShiftPair shifts(int bulge) const {
        const int i = 2 * bulge;
        return {{sr_[i], si_[i]}, {sr_[i + 1], si_[i + 1]}};
    }
    Reflector3 reflector(int bulge) const {
        return {w_.v(0, bulge), w_.v(1, bulge), w_.v(2, bulge), 0};
    }
    void set_reflector(int bulge, const Reflector3& h) const {
        w_.v(0, bulge) = h.tau, w_.v(1, bulge) = h.v2, w_.v(2, bulge) = h.v3;
    }
    Reflector3 entering(int order, int row, int bulge) const {
        float v[3] = {};
        laqr1(order, h_.block(row, row), shifts(bulge), v);
        return reflector3(v[0], v[1], v[2]);
    }

    void make_reflectors(const Chain& c) const {
        for (int bulge = c.begin; bulge < c.end; ++bulge) {
            const int r = c.row(bulge);
            set_reflector(bulge, r == top_ ? entering(3, r, bulge) : next(r, bulge));
        }
        if (c.short2) {
            const int r = c.row(c.end);
            if (r == top_) {
                set_reflector(c.end, entering(2, r, c.end));
            } else {
                const Reflector3 h = reflector3(h_(r, r - 1), h_(r + 1, r - 1));
                h_(r, r - 1) = h.beta, h_(r + 1, r - 1) = 0;
                set_reflector(c.end, h);
            }
        }
    }
    // Of a bulge under way. One that has collapsed, as its last row is zero, is begun anew if what that throws away is
    // negligible.
    Reflector3 next(int r, int bulge) const {
        float* const x = &h_(r, r - 1);
        const bool collapsed = x[2] == 0 && h_(r + 2, r) == 0 && h_(r + 2, r + 1) != 0;
        if (collapsed) {
            const Reflector3 h = entering(3, r, bulge);
            const float moved = h.tau * (x[0] + h.v2 * x[1]);
            const float thrown = std::fabs(x[1] - moved * h.v2) + std::fabs(moved * h.v3);
            const float size = std::fabs(h_(r - 1, r - 1)) + std::fabs(h_(r, r)) + std::fabs(h_(r + 1, r + 1));
            if (!(thrown > ulp * size)) {
                x[0] -= moved, x[1] = 0, x[2] = 0;
                return h;
            }
        }
        const Reflector3 h = reflector3(x[0], x[1], x[2]);
        x[0] = h.beta, x[1] = 0, x[2] = 0;
        return h;
    }

    int end_column() const {
        return p_.wantT ? p_.n : bottom_ + 1;
    }
    int first_row() const {
        return p_.wantT ? 0 : top_;
    }

    // Bulges have rows of their own, so those of a chain go over each column and row together.
    void apply_left(const Chain& c) const {
        const int end = w_.accumulates ? window_.end : end_column(), first = c.row(c.begin);
        if (c.end > c.begin)
            kernel::larf3_left(c.end - c.begin, end - first, w_.v.block(0, c.begin), h_.block(first, first));
        if (c.short2)
            reflect_rows<2>(reflector(c.end), c.row(c.end), c.row(c.end), end, h_);
    }
    void apply_right(const Chain& c) const {
        const int begin = w_.accumulates ? window_.firstRow : first_row(), first = c.row(c.begin);
        if (c.end > c.begin) {
            const auto apply = [&](int from, int to, int fromStep, int toStep, Matrix<float> a) {
                kernel::larf3_right(c.end - c.begin, from, to, fromStep, toStep, w_.v.block(0, c.begin), a);
            };
            apply(begin, first + 3, 0, 3, h_.block(0, first));
            // A column of U has come from where its bulge began, and got no further than the first one.
            if (w_.accumulates)
                apply(3 * c.begin, reached(c), window_.clear > 0 ? 0 : 3, 0, window_.u.block(0, first - window_.begin));
            else if (p_.wantZ)
                apply(p_.zRows.begin, p_.zRows.end, 0, 0, p_.z.block(0, first));
        }
        if (c.short2)
            apply_right_short(c.row(c.end), reflector(c.end), begin);
    }
    // Rows of U that the chain has come to.
    int reached(const Chain& c) const {
        return (c.end < bulges_ ? window_.end : c.row(c.end)) - window_.begin;
    }
    void apply_right_short(int r, const Reflector3& h, int begin) const {
        if (h.tau == 0)
            return;
        reflect_columns<2>(h, r, begin, bottom_ + 1, h_);
        if (w_.accumulates)
            reflect_columns<2>(h, r - window_.begin, window_.clear, order_, window_.u);
        else if (p_.wantZ)
            reflect_columns<2>(h, r, p_.zRows.begin, p_.zRows.end, p_.z);
    }

    void watch(const Chain& c) const {
        const int end = c.end + (c.short2 ? 1 : 0) + (c.column == bottom_ - 1 ? 1 : 0);
        for (int bulge = c.begin; bulge < end; ++bulge) {
            const int k = std::min(bottom_, c.row(bulge));
            if (k > top_ && h_(k, k - 1) != 0 && is_negligible(k))
                h_(k, k - 1) = 0;
        }
    }
    bool is_negligible(int k) const {
        float size = std::fabs(h_(k - 1, k - 1)) + std::fabs(h_(k, k));
        if (size == 0) { // what else the bulges leave near by
            for (int j = std::max(top_, k - 4); j < k - 1; ++j)
                size += std::fabs(h_(k - 1, j));
            for (int i = k + 1; i <= std::min(bottom_, k + 3); ++i)
                size += std::fabs(h_(i, k));
        }
        if (!(std::fabs(h_(k, k - 1)) <= std::max(smallest_, ulp * size)))
            return false;
        const DeflationTest test(k, h_);
        return test.allowed == 0 || test.passes(smallest_);
    }

    void complete(const Chain& c) const {
        const int end = std::min(bulges_, (bottom_ - c.column) / 3);
        for (int bulge = c.begin; bulge < end; ++bulge) {
            const auto [tau, v2, v3, unused] = reflector(bulge);
            float* const at = &h_(c.row(bulge) + 3, c.row(bulge));
            float &x = at[0], &y = at[h_.ld], &z = at[2 * h_.ld];
            const float moved = tau * v3 * z;
            x = -moved, y = -moved * v2, z -= moved * v3;
        }
    }

    // ---- Products with U ----

    using Lines = ActiveRange;
    template <class Body>
    static void each_piece(Lines lines, int most, const Body& body) {
        for (int begin = lines.begin; begin < lines.end; begin += most)
            body(Lines{begin, std::min(begin + most, lines.end)});
    }
    // Rows above a window, and those of Z.
    struct Rows {
        Lines lines;
        Matrix<float> a;
    };
    std::array<Rows, 2> rest_of_rows(const Window& x) const {
        const Lines ofZ = p_.wantZ ? p_.zRows : Lines{0, 0};
        return {Rows{{first_row(), x.firstRow}, h_}, {ofZ, p_.z}};
    }
    void multiply_rest() const {
        each_piece({window_.end, end_column()}, w_.columns,
                   [&](Lines columns) { multiply_columns(window_, columns, w_.wh); });
        for (const Rows& rest : rest_of_rows(window_))
            each_piece(rest.lines, w_.rows, [&](Lines rows) { multiply_rows(window_, rows, rest.a, w_.wv); });
    }
    void multiply_columns(const Window& x, Lines columns, Matrix<float> product) const {
        const int at = x.begin + x.clear, order = x.end - at, count = columns.size();
        const Matrix<float> rows = h_.block(at, columns.begin);
        kernel::gemm(Op::transpose, Op::none, order, count, order, 1, x.u.block(x.clear, x.clear), rows, 0, product);
        lacpy<float>(Part::whole, order, count, product, rows);
    }
    void multiply_rows(const Window& x, Lines rows, Matrix<float> a, Matrix<float> product) const {
        const int at = x.begin + x.clear, order = x.end - at, count = rows.size();
        const Matrix<float> columns = a.block(rows.begin, at);
        kernel::gemm(Op::none, Op::none, count, order, order, 1, columns, x.u.block(x.clear, x.clear), 0, product);
        lacpy<float>(Part::whole, count, order, product, columns);
    }

    const SchurProblem& p_;
    const Matrix<float> h_;
    const SweepWork& w_;
    const float *sr_, *si_;
    const int bulges_, order_, step_, top_, bottom_;
    const float smallest_;
    Window window_; // where the chain is
};

} // namespace

void laqr5(const SchurProblem& p, int ns, float* sr, float* si, const SweepWork& work) {
    if (ns < 2 || p.range.size() < 2)
        return;
    pair_shifts(ns, sr, si);
    Sweep sweep(p, ns - ns % 2, sr, si, work);
    const int threads =
        work.threads > 0 ? work.threads : sweep_threads(sweep.lines(), sweep.order(), qrv_serv_get_max_threads());
    const WorkArea<float> memory(nullptr, 0, threads > 1 ? sweep.memory(threads) : 0);
    threads > 1 && memory.data() ? sweep.run_on_team(threads, memory.data()) : sweep.run();
}

} // namespace qrv::lapack
