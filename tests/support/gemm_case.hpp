// One GEMM problem with its operands and its result in double precision, for any routine that has the kernel's
// arguments.
#pragma once

#include <algorithm>
#include <gtest/gtest.h>
#include <ostream>

#include "blas/kernel/kernels.hpp"
#include "support/matrices.hpp"

namespace qrv::test {

using Sgemm = void(QRV_GEMM_PARAMETERS(float));

struct GemmShape {
    char transa = 'N', transb = 'N';
    int m = 1, n = 1, k = 1;
    float alpha = 1, beta = 1;
    int extraA = 0, extraB = 0, extraC = 0; // leading dimensions beyond the least
    int startA = 0, startB = 0, startC = 0; // floats past a 64-byte boundary
};

inline std::ostream& operator<<(std::ostream& out, const GemmShape& p) {
    return out << p.transa << p.transb << " m=" << p.m << " n=" << p.n << " k=" << p.k << " alpha=" << p.alpha
               << " beta=" << p.beta << " ld+" << p.extraA << ',' << p.extraB << ',' << p.extraC << " start "
               << p.startA << ',' << p.startB << ',' << p.startC;
}

// op(X) of the given size, as it is stored.
inline GuardedMatrix operand(char option, int rows, int columns, int extra, int start) {
    if (is_transposed(option))
        std::swap(rows, columns);
    return GuardedMatrix(rows, columns, std::max(1, rows) + extra, start);
}

// alpha*op(A)*op(B) + beta*C0 in double, to compare one or several results with.
class GemmReference {
public:
    GemmReference(const GemmShape& p, const GuardedMatrix& a, const GuardedMatrix& b, const GuardedMatrix& before)
        : expected_(static_cast<std::size_t>(p.m * p.n)), allowed_(expected_.size()) {
        constexpr double unit = std::numeric_limits<float>::epsilon() / 2;
        const bool ta = is_transposed(p.transa), tb = is_transposed(p.transb);
        std::vector<double> sum(static_cast<std::size_t>(p.m)), size(sum.size());
        for (int j = 0; j < p.n; ++j) {
            std::fill(sum.begin(), sum.end(), 0);
            std::fill(size.begin(), size.end(), 0);
            for (int l = 0; l < p.k; ++l) {
                const double y = tb ? b(j, l) : b(l, j);
                const float* x = ta ? a.data() + l : a.data() + std::ptrdiff_t{a.ld()} * l;
                const std::ptrdiff_t step = ta ? a.ld() : 1;
                for (std::size_t i = 0; i < sum.size(); ++i, x += step) {
                    sum[i] += *x * y;
                    size[i] += std::abs(*x * y);
                }
            }
            for (std::size_t i = 0; i < sum.size(); ++i) {
                const double scaled = p.beta == 0 ? 0 : double{p.beta} * before(static_cast<int>(i), j);
                const std::size_t at = i + static_cast<std::size_t>(p.m * j);
                expected_[at] = p.alpha * sum[i] + scaled;
                allowed_[at] = unit * ((p.k + 3) * std::abs(p.alpha) * size[i] + 2 * std::abs(scaled)) +
                               std::numeric_limits<float>::denorm_min();
            }
        }
    }

    // Largest error of C in units of the rounding that a sum of k + 2 terms of that size may have: at most about 1
    // for a good product. NaN if an element that should be finite is not.
    template <class Matrix>
    double error(const Matrix& c) const {
        double worst = 0;
        std::size_t p = 0;
        for (int j = 0; j < c.columns(); ++j)
            for (int i = 0; i < c.rows(); ++i, ++p) {
                const double error = std::abs(c(i, j) - expected_[p]) / allowed_[p];
                if (std::isnan(error))
                    return error; // no later element may hide it
                worst = std::max(worst, error);
            }
        return worst;
    }

private:
    std::vector<double> expected_, allowed_; // by columns
};

// Random operands, C full of NaN if beta is 0.
struct GemmCase {
    GemmShape p;
    GuardedMatrix a, b, before;

    explicit GemmCase(const GemmShape& shape)
        : p(shape), a(operand(p.transa, p.m, p.k, p.extraA, p.startA)),
          b(operand(p.transb, p.k, p.n, p.extraB, p.startB)), before(operand('N', p.m, p.n, p.extraC, p.startC)) {
        std::mt19937 random(11);
        a.fill_random(random);
        b.fill_random(random);
        if (p.beta == 0)
            before.fill(nan);
        else
            before.fill_random(random);
    }

    float& a_at(int i, int l) { return is_transposed(p.transa) ? a(l, i) : a(i, l); }
    float& b_at(int l, int j) { return is_transposed(p.transb) ? b(j, l) : b(l, j); }
    GemmReference reference() const { return GemmReference(p, a, b, before); }

    // Runs a routine on these operands, or on copies of them, and a C with the same leading dimension.
    template <class Routine, class A, class B, class C>
    auto run(Routine&& routine, const A& ax, const B& bx, C& c) const {
        const int lda = ax.ld(), ldb = bx.ld(), ldc = c.ld();
        return routine(&p.transa, &p.transb, &p.m, &p.n, &p.k, &p.alpha, ax.data(), &lda, bx.data(), &ldb, &p.beta,
                       c.data(), &ldc);
    }
    GuardedMatrix result(Sgemm* sgemm) const {
        GuardedMatrix c = before;
        run(sgemm, a, b, c);
        EXPECT_TRUE(c.guards_intact()) << p << ": written outside C";
        return c;
    }
};

} // namespace qrv::test
