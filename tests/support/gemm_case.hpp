// One GEMM problem with its operands and its result in double precision, for any routine that has the kernel's
// arguments.
#pragma once

#include <algorithm>
#include <complex>
#include <gtest/gtest.h>
#include <ostream>

#include "blas/kernel/kernels.hpp"
#include "support/matrices.hpp"

namespace qrv::test {

template <class T>
using Gemm = void(QRV_GEMM_PARAMETERS(T));
using Elements = testing::Types<float, SingleComplex>; // of the suites that serve both

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

// Four pairs of options; of complex operands, those that do most. GemmContract.EveryOption has the others.
template <class T, class Body>
void each_transposition(Body body) {
    constexpr char conjugate = isComplex<T> ? 'C' : 'T';
    body('N', 'N');
    body('N', conjugate);
    body(conjugate, 'N');
    body('T', conjugate);
}

// Elements in double precision.
inline double wide(float x) {
    return x;
}
inline std::complex<double> wide(SingleComplex x) {
    return {x.re, x.im};
}
inline double product(double x, double y) {
    return x * y;
}
inline std::complex<double> product(std::complex<double> x, std::complex<double> y) {
    return {x.real() * y.real() - x.imag() * y.imag(), x.real() * y.imag() + x.imag() * y.real()};
}

// op(X) of the given size, as it is stored.
template <class T>
BasicGuardedMatrix<T> operand(char option, int rows, int columns, int extra, int start) {
    if (is_transposed(option))
        std::swap(rows, columns);
    return BasicGuardedMatrix<T>(rows, columns, std::max(1, rows) + extra, start);
}

// Element (i, j) of op(X).
template <class T>
T element_of(char option, const BasicGuardedMatrix<T>& x, int i, int j) {
    return !is_transposed(option) ? x(i, j) : conjugates(option) ? conj(x(j, i)) : x(j, i);
}

// alpha*op(A)*op(B) + beta*C0 in double, to compare one or several results with.
template <class T>
class GemmReference {
    using Wide = decltype(wide(T()));

public:
    GemmReference(const GemmShape& p, const BasicGuardedMatrix<T>& a, const BasicGuardedMatrix<T>& b,
                  const BasicGuardedMatrix<T>& before)
        : expected_(static_cast<std::size_t>(p.m * p.n)), allowed_(expected_.size()) {
        constexpr double unit = std::numeric_limits<float>::epsilon() / 2 * (isComplex<T> ? 2 * 1.4143 : 1);
        const Wide alpha = wide(scalar_of<T>(p.alpha)), beta = wide(scalar_of<T>(p.beta));
        std::vector<Wide> left;
        std::vector<double> leftSize;
        for (int l = 0; l < p.k; ++l)
            for (int i = 0; i < p.m; ++i) {
                left.push_back(wide(element_of(p.transa, a, i, l)));
                leftSize.push_back(std::abs(left.back()));
            }
        const auto m = static_cast<std::size_t>(p.m);
        std::vector<double> size(m);
        for (int j = 0; j < p.n; ++j) {
            Wide* const sum = expected_.data() + m * static_cast<std::size_t>(j);
            std::fill(size.begin(), size.end(), 0);
            for (int l = 0; l < p.k; ++l) {
                const Wide y = wide(element_of(p.transb, b, l, j));
                const double ySize = std::abs(y);
                const std::size_t first = m * static_cast<std::size_t>(l);
                for (std::size_t i = 0; i < m; ++i) {
                    sum[i] += product(left[first + i], y);
                    size[i] += leftSize[first + i] * ySize;
                }
            }
            for (std::size_t i = 0; i < m; ++i) {
                const Wide scaled = p.beta == 0 ? 0 : product(beta, wide(before(static_cast<int>(i), j)));
                sum[i] = product(alpha, sum[i]) + scaled;
                allowed_[m * static_cast<std::size_t>(j) + i] =
                    unit * ((p.k + 3) * std::abs(alpha) * size[i] + 2 * std::abs(scaled)) +
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
                const double error = std::abs(wide(c(i, j)) - expected_[p]) / allowed_[p];
                if (std::isnan(error))
                    return error; // no later element may hide it
                worst = std::max(worst, error);
            }
        return worst;
    }

private:
    std::vector<Wide> expected_; // by columns
    std::vector<double> allowed_;
};

// Random operands, C full of NaN if beta is 0.
template <class T>
struct GemmCase {
    using Matrix = BasicGuardedMatrix<T>;
    GemmShape p;
    T alpha, beta;
    Matrix a, b, before;

    explicit GemmCase(const GemmShape& shape)
        : p(shape), alpha(scalar_of<T>(p.alpha)), beta(scalar_of<T>(p.beta)),
          a(operand<T>(p.transa, p.m, p.k, p.extraA, p.startA)), b(operand<T>(p.transb, p.k, p.n, p.extraB, p.startB)),
          before(operand<T>('N', p.m, p.n, p.extraC, p.startC)) {
        std::mt19937 random(11);
        a.fill_random(random);
        b.fill_random(random);
        if (p.beta == 0)
            before.fill(nan);
        else
            before.fill_random(random);
    }

    T& a_at(int i, int l) { return is_transposed(p.transa) ? a(l, i) : a(i, l); }
    T& b_at(int l, int j) { return is_transposed(p.transb) ? b(j, l) : b(l, j); }
    GemmReference<T> reference() const { return GemmReference<T>(p, a, b, before); }
    // What C becomes if no product is added.
    T scaled(int i, int j) const { return p.beta == 0 ? T() : p.beta == 1 ? before(i, j) : beta * before(i, j); }

    // Runs a routine on these operands, or on copies of them, and a C with the same leading dimension.
    template <class Routine, class A, class B, class C>
    auto run(Routine&& routine, const A& ax, const B& bx, C& c) const {
        const int lda = ax.ld(), ldb = bx.ld(), ldc = c.ld();
        return routine(&p.transa, &p.transb, &p.m, &p.n, &p.k, &alpha, ax.data(), &lda, bx.data(), &ldb, &beta,
                       c.data(), &ldc);
    }
    Matrix result(Gemm<T>* gemm) const {
        Matrix c = before;
        run(gemm, a, b, c);
        EXPECT_TRUE(c.guards_intact()) << p << ": written outside C";
        return c;
    }
};

} // namespace qrv::test
