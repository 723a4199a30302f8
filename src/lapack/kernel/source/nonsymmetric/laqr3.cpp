// SLAQR3, SLAQR2: aggressive early deflation. The last rows of a Hessenberg matrix are brought to Schur form by
// themselves, which leaves the subdiagonal element before them as a spike; whatever of the spike is negligible makes an
// eigenvalue that has converged.
//
//   solve       T := Schur form of the window, V its vectors; the spike is s times the first row of V
//   deflate     from the last row of T up: cut off what has converged, move the rest to the begin
//   sort        what is left, by size, for use as shifts
//   restore     reflect the spike back into one element and T to Hessenberg form
//   multiply    the rest of H, and Z, by V
//
// The two differ in the iteration for the window: SLAQR3 may use SLAQR4, SLAQR2 uses SLAHQR only.
//
// Source: K. Braman, R. Byers, R. Mathias, The multishift QR algorithm II, SIAM J. Matrix Anal. Appl. 23 (2002).
#include "lapack/calls/norms.hpp"
#include "lapack/calls/reflectors.hpp"
#include "lapack/kernel/source/nonsymmetric/qr_iteration.hpp"
#include "lapack/workspace.hpp"

namespace qrv::lapack {
namespace {

constexpr float ulp = machine::precision;

void multiply(Op opA, int m, int n, int k, Matrix<const float> a, Matrix<const float> b, Matrix<float> c) {
    if (std::int64_t{m} * n * k >= leastForTeam)
        blas::gemm(opA, Op::none, m, n, k, 1, a, b, 0, c);
    else
        kernel::gemm(opA, Op::none, m, n, k, 1, a, b, 0, c);
}

class Window {
public:
    Window(const SchurProblem& p, bool recurses, int nw, const DeflationWork& work)
        : p_(p), w_(work), recurses_(recurses), order_(std::min(nw, p.range.size())), first_(p.range.end - order_),
          spike_(first_ == p.range.begin ? 0 : p.h(first_, first_ - 1)), smallest_(negligible_size(p.n)) {}

    Deflation run() {
        if (order_ == 0)
            return {0, 0};
        if (order_ == 1)
            return single();
        solve();
        deflate();
        if (left_ == 0)
            spike_ = 0;
        if (left_ < order_)
            sort();
        tell_eigenvalues();
        if (left_ < order_ || spike_ == 0)
            restore();
        return {left_ - failed_, order_ - left_};
    }

private:
    bool is_negligible(float x, float size) const {
        return std::fabs(x) <= std::max(smallest_, ulp * (size == 0 ? std::fabs(spike_) : size));
    }

    Deflation single() const {
        const float x = p_.h(first_, first_);
        p_.wr[first_] = x, p_.wi[first_] = 0;
        if (!(std::fabs(spike_) <= std::max(smallest_, ulp * std::fabs(x))))
            return {1, 0};
        if (first_ > p_.range.begin)
            p_.h(first_, first_ - 1) = 0;
        return {0, 1};
    }

    void solve() {
        const Matrix<float> window = p_.h.block(first_, first_), t = w_.t;
        lacpy<float>(Part::upper, order_, order_, window, t);
        for (int j = 0; j + 1 < order_; ++j)
            t(j + 1, j) = window(j + 1, j);
        laset<float>(Part::whole, order_, order_, 0, 1, w_.v);
        const ActiveRange all{0, order_};
        const SchurProblem inside{true, true, order_, all, t, p_.wr + first_, p_.wi + first_, all, w_.v};
        const bool large = recurses_ && order_ > tuning::qr_iteration(12, 1, order_);
        failed_ = large ? laqr0(inside, false, w_.work, w_.lwork) : lahqr(inside);
        clear_below_subdiagonal();
    }
    void clear_below_subdiagonal() const {
        for (int j = 0; j + 2 < order_; ++j)
            for (int i = j + 2; i < std::min(j + 4, order_); ++i)
                w_.t(i, j) = 0;
    }

    // ---- Blocks on the diagonal of T ----

    bool joined(int k) const { return k + 1 < left_ && w_.t(k + 1, k) != 0; } // rows k and k + 1 are one block
    int order_at(int k) const { return joined(k) ? 2 : 1; }
    // |t(k, k)|, and what makes the size of an eigenvalue of it in a block of order 2.
    float size_at(int k) const {
        const float diagonal = std::fabs(w_.t(k, k));
        return joined(k) ? diagonal + std::sqrt(std::fabs(w_.t(k + 1, k))) * std::sqrt(std::fabs(w_.t(k, k + 1)))
                         : diagonal;
    }
    Place move(int from, int to) const { return trexc(true, order_, w_.t, w_.v, from, to); }

    void deflate() {
        left_ = order_;
        for (int begin = failed_; begin < left_;) { // rows before `begin` were looked at and stay
            const int last = left_ - 1, order = last > 0 && w_.t(last, last - 1) != 0 ? 2 : 1, k = left_ - order;
            const float tip = order == 2 ? std::max(std::fabs(w_.v(0, k)), std::fabs(w_.v(0, last))) : w_.v(0, k);
            if (is_negligible(spike_ * tip, size_at(k)))
                left_ -= order;
            else
                begin = move(last, begin).to + order;
        }
    }

    // Passes that move the smallest block to the end, of what the last pass has left.
    void sort() {
        bool sorted = false;
        for (int end = left_; !sorted;) {
            sorted = true;
            int i = failed_, k = i + (i < left_ ? order_at(i) : 1);
            while (k < end) {
                if (size_at(i) >= size_at(k)) {
                    i = k;
                } else {
                    sorted = false;
                    const Place place = move(i, k);
                    i = place.rejected ? k : place.to;
                }
                k = i + order_at(i);
            }
            end = i;
        }
    }

    void tell_eigenvalues() const {
        float *const wr = p_.wr + first_, *const wi = p_.wi + first_;
        for (int i = order_ - 1; i >= failed_; --i) {
            if (i > failed_ && w_.t(i, i - 1) != 0) {
                --i;
                set_eigenvalues(wr, wi, i, lanv2(w_.t(i, i), w_.t(i, i + 1), w_.t(i + 1, i), w_.t(i + 1, i + 1)));
            } else {
                wr[i] = w_.t(i, i), wi[i] = 0;
            }
        }
    }

    // ---- Back to Hessenberg form ----

    void restore() {
        const bool reflected = left_ > 1 && spike_ != 0;
        float *const tau = w_.work, *const rest = w_.work + order_;
        if (reflected)
            reflect_spike(tau, rest);
        if (first_ > 0)
            p_.h(first_, first_ - 1) = spike_ * w_.v(0, 0);
        const Matrix<float> window = p_.h.block(first_, first_);
        lacpy<float>(Part::upper, order_, order_, w_.t, window);
        for (int j = 0; j + 1 < order_; ++j)
            window(j + 1, j) = w_.t(j + 1, j);
        if (reflected)
            ormhr(Side::right, Op::none, order_, left_, {0, left_}, w_.t, tau, w_.v, rest, w_.lwork - order_);
        multiply_rest();
    }
    void reflect_spike(float* vector, float* rest) const {
        kernel::copy(left_, w_.v.row(0, 0), Vector{vector});
        const float tau = larfg(left_, vector[0], Vector{vector + 1});
        vector[0] = 1;
        for (int j = 0; j + 2 < order_; ++j)
            std::fill(&w_.t(j + 2, j), w_.t.column(j) + order_, 0.0F);
        const Vector<const float> v{vector};
        larf(Side::left, left_, order_, v, tau, w_.t, rest);
        larf(Side::right, left_, left_, v, tau, w_.t, rest);
        larf(Side::right, order_, left_, v, tau, w_.v, rest);
        gehrd(order_, {0, left_}, w_.t, vector, rest, w_.lwork - order_);
    }

    void multiply_rest() const {
        multiply_columns(p_.wantT ? 0 : p_.range.begin, first_, p_.h.block(0, first_));
        if (p_.wantT)
            for (int j = p_.range.end, count; j < p_.n; j += count) {
                count = std::min(w_.columns, p_.n - j);
                const Matrix<float> rows = p_.h.block(first_, j);
                multiply(Op::transpose, order_, count, order_, w_.v, rows, w_.t);
                lacpy<float>(Part::whole, order_, count, w_.t, rows);
            }
        if (p_.wantZ)
            multiply_columns(p_.zRows.begin, p_.zRows.end, p_.z.block(0, first_));
    }
    void multiply_columns(int begin, int end, Matrix<float> a) const {
        for (int i = begin, count; i < end; i += count) {
            count = std::min(w_.rows, end - i);
            const Matrix<float> columns = a.block(i, 0);
            multiply(Op::none, count, order_, order_, columns, w_.v, w_.wv);
            lacpy<float>(Part::whole, count, order_, w_.wv, columns);
        }
    }

    const SchurProblem& p_;
    const DeflationWork& w_;
    const bool recurses_;
    const int order_, first_; // of the window
    float spike_;
    const float smallest_;
    int failed_ = 0; // leading rows of T that have not converged
    int left_ = 0;   // rows of T that are not deflated
};

} // namespace

Deflation laqr3(const SchurProblem& p, bool recurses, int nw, const DeflationWork& work) {
    return Window(p, recurses, nw, work).run();
}

std::int64_t laqr3_work(ActiveRange range, int nw, bool recurses) {
    const int order = std::min(nw, range.size());
    if (order <= 2)
        return 1;
    const ActiveRange all{0, order - 1};
    const std::int64_t reduction = order + std::max(gehrd_work(order, all), ormhr_work(Side::right, order, order, all));
    return recurses ? std::max(reduction, laqr0_work(order, {0, order}, false)) : reduction;
}

void laqr3_telling(const SchurProblem& p, bool recurses, int nw, const DeflationWork& work, int* shifts,
                   int* deflated) {
    if (work.lwork != -1) {
        const Deflation found = laqr3(p, recurses, nw, work);
        *shifts = found.shifts, *deflated = found.deflated;
    }
    *work.work = work_size<float>(std::max(std::int64_t{2} * nw, laqr3_work(p.range, nw, recurses)));
}

} // namespace qrv::lapack
