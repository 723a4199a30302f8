// Sweeps of the QR iteration that are kept back, to be applied to the vectors together.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "blas/calls.hpp"
#include "lapack/calls/rotations.hpp"
#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/rotations/lasr3.hpp"
#include "lapack/workspace.hpp"
#include "qrv/service.h"
#include "service/tuning.hpp"

namespace qrv::lapack {

// A table of the rotations from the right, for V', and one of those from the left, for U and C: two columns a sweep,
// cosines and sines, with row i for the plane (i, i + 1). What is kept all goes in one direction. Behind the tables
// lies the work of lasr3. Without that memory, and where sweeps are applied one by one in any case, each is applied at
// once, from the 4*n floats of `work`; without vectors nothing is kept.
class KeptSweeps {
public:
    KeptSweeps(int n, const BidiagonalVectors& vectors, float* work)
        : n_(n), vectors_(vectors), threads_(longest_line() < leastAcross ? 1 : qrv_serv_get_max_threads()),
          routes_{route(Side::left, vectors.ncvt), route(Side::right, vectors.nru), route(Side::left, vectors.ncc)},
          most_(routes_.keep() ? tuning::block_size("SBDSQR", n, threads_) : 0),
          bothAtOnce_(threads_ == 2 && routes_.vt == SweepRoute::blockedTeam && routes_.u == SweepRoute::blockedTeam),
          buffer_(nullptr, 0, std::int64_t{4} * most_ * n + (1 + bothAtOnce_) * rest_size()) {
        if (!buffer_.data())
            most_ = 1;
        float* const tables = buffer_.data() ? buffer_.data() : work;
        right_ = {tables, n};
        left_ = {tables + std::ptrdiff_t{2} * most_ * n, n};
        rest_ = tables + std::ptrdiff_t{4} * most_ * n;
    }

    // A sweep on rows and columns first to last: its rotations are put, then it ends. None reaches further down than
    // those that are kept, as the iteration works its way up.
    void begin(Direct direct, int first, int last) {
        if (!vectors_.any())
            return;
        if (count_ > 0 && (direct != direct_ || last < first_ || first > last_))
            apply();
        if (count_ == 0)
            first_ = first, last_ = last;
        direct_ = direct;
        first_ = std::min(first_, first);
        for (const Matrix<float> table : {right_, left_}) {
            std::fill_n(table.column(2 * count_), n_, 1.0F);
            std::fill_n(table.column(2 * count_ + 1), n_, 0.0F);
        }
    }
    void put(int plane, float rightC, float rightS, float leftC, float leftS) {
        if (!vectors_.any())
            return;
        right_(plane, 2 * count_) = rightC, right_(plane, 2 * count_ + 1) = rightS;
        left_(plane, 2 * count_) = leftC, left_(plane, 2 * count_ + 1) = leftS;
    }
    void end() {
        if (vectors_.any() && ++count_ == most_)
            apply();
    }
    void apply() {
        if (count_ == 0)
            return;
        const int lines = last_ - first_ + 1;
        if (bothAtOnce_ && buffer_.data()) {
            apply_both({sweeps(Side::left, lines, vectors_.ncvt, right_, vectors_.vt),
                        sweeps(Side::right, vectors_.nru, lines, left_, vectors_.u)},
                       {rest_, rest_ + rest_size()});
        } else {
            apply_to(Side::left, routes_.vt, lines, vectors_.ncvt, right_, vectors_.vt);
            apply_to(Side::right, routes_.u, vectors_.nru, lines, left_, vectors_.u);
        }
        apply_to(Side::left, routes_.c, lines, vectors_.ncc, left_, vectors_.c);
        count_ = 0;
    }

private:
    struct Routes {
        SweepRoute vt, u, c;
        bool keep() const {
            return vt != SweepRoute::oneByOne || u != SweepRoute::oneByOne || c != SweepRoute::oneByOne;
        }
    };
    static constexpr int leastAcross = 32; // for which tuning values are asked
    static constexpr int fewElements = 64; // for which loops are faster than calls of kernels

    std::int64_t rest_size() const { return lasr3_work(most_, longest_line()); }
    int longest_line() const { return std::max({vectors_.ncvt, vectors_.nru, vectors_.ncc}); }
    SweepRoute route(Side side, int across) const {
        return across < leastAcross ? SweepRoute::oneByOne : tuned_sweep_route(side, across, threads_);
    }
    Sweeps sweeps(Side side, int m, int n, Matrix<float> table, Matrix<float> whole) const {
        return {side,
                direct_,
                m,
                n,
                count_,
                table.block(first_, 0),
                side == Side::left ? whole.block(first_, 0) : whole.block(0, first_)};
    }
    void apply_to(Side side, SweepRoute route, int m, int n, Matrix<float> table, Matrix<float> whole) const {
        if (m == 0 || n == 0)
            return;
        const Sweeps q = sweeps(side, m, n, table, whole);
        if (std::int64_t{m} * n <= fewElements && count_ == 1)
            turn_few(side, q.planes(), q.across(), q.cs, q.a);
        else if (buffer_.data())
            apply_sweeps(q, route, threads_, rest_);
        else
            kernel::lasr(side, Pivot::variable, direct_, m, n, q.cs.column(0), q.cs.column(1), q.a);
    }

    void turn_few(Side side, int planes, int across, Matrix<const float> cs, Matrix<float> a) const {
        const std::ptrdiff_t line = side == Side::left ? 1 : a.ld, element = side == Side::left ? a.ld : 1;
        for (int k = 0; k < planes; ++k) {
            const int p = direct_ == Direct::forward ? k : planes - 1 - k;
            const float c = cs(p, 0), s = cs(p, 1);
            if (c == 1 && s == 0)
                continue;
            float* x = a.data + p * line;
            for (int i = 0; i < across; ++i, x += element) {
                const float first = x[0];
                x[0] = s * x[line] + c * first;
                x[line] = c * x[line] - s * first;
            }
        }
    }

    int n_;
    BidiagonalVectors vectors_;
    int threads_;
    Routes routes_;
    int most_, count_ = 0;
    bool bothAtOnce_; // V' and U are turned at once
    WorkArea<float> buffer_;
    float* rest_ = nullptr;
    Matrix<float> right_{nullptr, 1}, left_{nullptr, 1};
    Direct direct_ = Direct::forward;
    int first_ = 0, last_ = 0; // of what is kept
};

} // namespace qrv::lapack
