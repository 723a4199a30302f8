// SLAQR0, SLAQR4: eigenvalues and Schur form of a large Hessenberg matrix by the multishift QR iteration.
//
//   until every row has converged:
//     split              the active block ends above with a subdiagonal element that is exactly zero
//     deflate            a window of the last rows, which also gives shifts (laqr3.cpp)
//     choose shifts      unless so much was deflated that another window is worth more than a sweep
//     sweep              several small bulges (laqr5.cpp)
//
// The two differ in the windows that they use: SLAQR4 is for those of SLAQR0 and does not call itself.
// What lies below the subdiagonal of H is scratch for windows and sweeps; the sizes of both are limited so that it
// fits.
//
// Source: K. Braman, R. Byers, R. Mathias, The multishift QR algorithm I and II, SIAM J. Matrix Anal. Appl. 23 (2002).
#include "lapack/calls/norms.hpp"
#include "lapack/kernel/source/nonsymmetric/qr_iteration.hpp"
#include "lapack/workspace.hpp"

namespace qrv::lapack {
namespace {

constexpr int tiny = 11;          // order of matrices that the double-shift iteration takes
constexpr int windowPatience = 5; // rounds without a deflation before windows grow
constexpr int shiftPatience = 6;  // and before exceptional shifts
constexpr float exceptional1 = 0.75F, exceptional2 = -0.4375F;

constexpr int even(int x) {
    return x - x % 2;
}

// Numbers that stay the same during an iteration.
struct Limits {
    int leastForMultishift, nibble;
    bool accumulates;
    int window, mostWindow;
    int shifts, mostShifts;
};
int window_wanted(ActiveRange range) {
    return std::min(range.size(), std::max(2, tuning::qr_iteration(13, range.begin + 1, range.end)));
}
int most_shifts(int n) {
    return n / 9 + (n % 9 + 6) / 9; // (n + 6) / 9
}
int shifts_wanted(int n, ActiveRange range) {
    const int wanted = tuning::qr_iteration(15, range.begin + 1, range.end);
    return std::max(2, even(std::min({wanted, most_shifts(n), range.size() - 1})));
}
// Windows and shifts that n floats of work are enough for.
Limits limits_of(int n, ActiveRange range) {
    const auto tuned = [&](int which) { return tuning::qr_iteration(which, range.begin + 1, range.end); };
    return {.leastForMultishift = std::max(tiny, tuned(12)),
            .nibble = std::max(0, tuned(14)),
            .accumulates = tuned(16) > 0,
            .window = window_wanted(range),
            .mostWindow = (n - 1) / 3,
            .shifts = shifts_wanted(n, range),
            .mostShifts = even(most_shifts(n))};
}

class Iteration {
public:
    Iteration(const SchurProblem& p, bool recurses, float* work, int lwork)
        : p_(p), h_(p.h), wr_(p.wr), wi_(p.wi), work_(work), lwork_(lwork), recurses_(recurses),
          limits_(limits_of(p.n, p.range)), bottom_(p.range.end - 1) {}

    int run() {
        const int mostRounds = 30 * std::max(10, p_.range.size());
        for (int round = 0; bottom_ >= p_.range.begin; ++round) {
            find_block();
            const bool lost = bottom_ > top_ && !std::isfinite(h_(bottom_, bottom_ - 1)); // NaN comes here and stays
            if (round >= mostRounds || lost)
                return bottom_ + 1;
            const int window = window_order();
            const Deflation found = deflate(window);
            bottom_ -= found.deflated;
            if (is_worth_a_sweep(found.deflated, window))
                sweep(bottom_ - found.shifts + 1);
            inVain_ = found.deflated > 0 ? 1 : inVain_ + 1;
        }
        return 0;
    }

private:
    int size() const { return bottom_ - top_ + 1; }

    void find_block() {
        top_ = bottom_;
        while (top_ > p_.range.begin && h_(top_, top_ - 1) != 0)
            --top_;
    }

    // ---- Window ----

    // Grows while nothing is deflated, as far as there is room, and then shrinks again.
    int window_order() {
        const int most = std::min(size(), limits_.mostWindow);
        int order = inVain_ < windowPatience ? std::min(most, limits_.window) : std::min(most, 2 * order_);
        if (order < limits_.mostWindow) {
            if (order >= size() - 1) {
                order = size();
            } else {
                const int first = bottom_ - order + 1;
                if (std::fabs(h_(first, first - 1)) > std::fabs(h_(first - 1, first - 2)))
                    ++order;
            }
        }
        if (inVain_ < windowPatience) {
            shrunk_ = -1;
        } else if (shrunk_ >= 0 || order >= most) {
            ++shrunk_;
            if (order - shrunk_ < 2)
                shrunk_ = 0;
            order -= shrunk_;
        }
        return order_ = order;
    }

    // The window's V is in the lower left corner of H, T to its right, WV above it.
    Deflation deflate(int order) {
        const int free = p_.n - 2 * order - 1; // rows and columns between
        const DeflationWork scratch{.v = h_.block(p_.n - order, 0),
                                    .columns = free,
                                    .t = h_.block(p_.n - order, order),
                                    .rows = free,
                                    .wv = h_.block(order + 1, 0),
                                    .work = work_,
                                    .lwork = lwork_};
        return laqr3(block(), recurses_, order, scratch);
    }
    SchurProblem block() const {
        SchurProblem block = p_;
        block.range = {top_, bottom_ + 1};
        return block;
    }
    // Two rows a window takes whole, unless they are NaN.
    bool is_worth_a_sweep(int deflated, int window) const {
        if (deflated == 0)
            return size() > 2;
        return std::int64_t{100} * deflated <= std::int64_t{window} * limits_.nibble &&
               size() > std::min(limits_.leastForMultishift, limits_.mostWindow);
    }

    // ---- Shifts: the eigenvalues [first, bottom_] ----

    void sweep(int first) {
        int count = even(std::min({limits_.mostShifts, limits_.shifts, size() - 1}));
        if (inVain_ % shiftPatience == 0) {
            first = bottom_ - count + 1;
            make_exceptional(first);
        } else {
            if (bottom_ - first + 1 <= count / 2)
                first = solve_for_shifts(count);
            if (bottom_ - first + 1 > count)
                sort(first);
            pair(first);
        }
        if (bottom_ - first + 1 == 2 && wi_[bottom_] == 0)
            take_nearer_twice();
        count = even(std::min(count, bottom_ - first + 1));
        chase(count);
    }

    void make_exceptional(int first) const {
        for (int i = bottom_; i > first; i -= 2) {
            const float s = std::fabs(h_(i, i - 1)) + std::fabs(h_(i - 1, i - 2)), moved = exceptional1 * s + h_(i, i);
            set_eigenvalues(wr_, wi_, i - 1, lanv2(moved, s, exceptional2 * s, moved));
        }
    }

    // The window gave too few: the eigenvalues of the last rows, in a copy in the lower left corner.
    int solve_for_shifts(int count) const {
        int first = bottom_ - count + 1;
        const Matrix<float> copy = h_.block(p_.n - count, 0);
        lacpy<float>(Part::whole, count, count, h_.block(first, first), copy);
        const SchurProblem inside{false, false, count, {0, count}, copy, wr_ + first, wi_ + first, {0, 0}, copy};
        const bool large = recurses_ && count > limits_.leastForMultishift;
        first += large ? laqr0(inside, false, work_, lwork_) : lahqr(inside);
        if (first < bottom_)
            return first;
        first = bottom_ - 1; // it did not converge
        set_eigenvalues(wr_, wi_, first,
                        lanv2(h_(first, first), h_(first, bottom_), h_(bottom_, first), h_(bottom_, bottom_)));
        return first;
    }

    // By size, the smallest last: those are used.
    void sort(int first) const {
        bool sorted = false;
        for (int end = bottom_; !sorted && end > first; --end) {
            sorted = true;
            for (int i = first; i < end; ++i)
                if (std::fabs(wr_[i]) + std::fabs(wi_[i]) < std::fabs(wr_[i + 1]) + std::fabs(wi_[i + 1])) {
                    sorted = false;
                    std::swap(wr_[i], wr_[i + 1]);
                    std::swap(wi_[i], wi_[i + 1]);
                }
        }
    }
    // Conjugates come to lie side by side, from the last one up.
    void pair(int first) const {
        for (int i = bottom_; i >= first + 2; i -= 2)
            if (wi_[i] != -wi_[i - 1]) {
                std::rotate(wr_ + i - 2, wr_ + i, wr_ + i + 1);
                std::rotate(wi_ + i - 2, wi_ + i, wi_ + i + 1);
            }
    }
    void take_nearer_twice() const {
        const float corner = h_(bottom_, bottom_);
        float &last = wr_[bottom_], &other = wr_[bottom_ - 1];
        if (std::fabs(last - corner) < std::fabs(other - corner))
            other = last;
        else
            last = other;
    }

    // ---- Sweep ----

    // U is in the lower left corner of H, WH to its right, WV above it.
    void chase(int count) const {
        const int order = 3 * count - 3, first = bottom_ - count + 1, free = p_.n - 2 * order - 3;
        const SweepWork scratch{.accumulates = limits_.accumulates,
                                .v = {work_, 3},
                                .u = h_.block(p_.n - order, 0),
                                .rows = free,
                                .wv = h_.block(order + 3, 0),
                                .columns = free,
                                .wh = h_.block(p_.n - order, order)};
        laqr5(block(), count, wr_ + first, wi_ + first, scratch);
    }

    const SchurProblem& p_;
    const Matrix<float> h_;
    float *const wr_, *const wi_, *const work_;
    const int lwork_;
    const bool recurses_;
    const Limits limits_;
    int top_ = 0, bottom_; // first and last row of the active block
    int inVain_ = 1;       // rounds since the last deflation, and one
    int order_ = 0;        // of the last window
    int shrunk_ = -1;      // by how much the window is smaller than it might be; -1 while it grows
};

} // namespace

int laqr0(const SchurProblem& p, bool recurses, float* work, int lwork) {
    if (p.n == 0)
        return 0;
    return p.n <= tiny ? lahqr(p) : Iteration(p, recurses, work, lwork).run();
}

std::int64_t laqr0_work(int n, ActiveRange range, bool recurses) {
    if (n <= tiny)
        return 1;
    const int window = window_wanted(range) + 1;
    return std::max(std::int64_t{3} * shifts_wanted(n, range) / 2, laqr3_work(range, window, recurses));
}

int laqr0_telling(const SchurProblem& p, bool recurses, float* work, int lwork) {
    const int info = lwork == -1 ? 0 : laqr0(p, recurses, work, lwork);
    *work = work_size<float>(std::max(std::int64_t{p.n}, laqr0_work(p.n, p.range, recurses)));
    return info;
}

} // namespace qrv::lapack
