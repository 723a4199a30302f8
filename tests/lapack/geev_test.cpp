// Eigenvectors: of Schur forms and of general matrices.
#include <gtest/gtest.h>

#include "qrv/native.h"
#include "support/call.hpp"
#include "support/combine.hpp"
#include "support/unsymmetric.hpp"

namespace qrv::test {
namespace {

using std::abs;
using Complex = std::complex<double>;
constexpr double ulp = 2 * unitRoundoff;

struct Eigen {
    GuardedVector<float> wr, wi;
    Operand<float> left, right;
    int info = -1;

    explicit Eigen(int n) : wr(n), wi(n), left(n, n, n + 1), right(n, n, n + 2) {}
};

// Element i of the vector that begins in column j.
Complex element_of(const Operand<float>& v, const GuardedVector<float>& wi, int i, int j) {
    return {v(i, j), wi[j] > 0 ? v(i, j + 1) : 0.0F};
}

// The largest |A x - w x| / (n |A| |x| ulp), or with A' and the conjugate of w.
double residual(const WideMatrix<float>& a, bool left, const Eigen& e) {
    const int n = a.rows;
    const Operand<float>& v = left ? e.left : e.right;
    const WideMatrix<float> op = left ? a.adjoint() : a, image = op * WideMatrix<float>(v);
    const double size = norm(op, 'O');
    double worst = 0;
    for (int j = 0; j<n; j += e.wi[j]> 0 ? 2 : 1) {
        const Complex w(e.wr[j], left ? -double{e.wi[j]} : e.wi[j]);
        double error = 0, length = 0;
        for (int i = 0; i < n; ++i) {
            const Complex x = element_of(v, e.wi, i, j);
            const Complex y(image(i, j), e.wi[j] > 0 ? image(i, j + 1) : 0);
            error += abs(y - w * x);
            length += abs(x);
        }
        if (!(length > 0))
            return nan;
        worst = worse(worst, in_roundings(error, n, size * length));
    }
    return worst;
}

void expect_vectors(const WideMatrix<float>& a, const Eigen& e) {
    EXPECT_LE(residual(a, false, e), 5);
    EXPECT_LE(residual(a, true, e), 5);
}

// Vectors have length 1; of complex ones the largest element is real.
void expect_normalized(const Operand<float>& v, const GuardedVector<float>& wi, const std::string& what) {
    const int n = v.rows();
    for (int j = 0; j<n; j += wi[j]> 0 ? 2 : 1) {
        double squares = 0, largest = 0, largestReal = 0;
        for (int i = 0; i < n; ++i) {
            const Complex x = element_of(v, wi, i, j);
            squares += std::norm(x);
            largest = std::max(largest, abs(x));
            if (x.imag() == 0)
                largestReal = std::max(largestReal, abs(x));
        }
        EXPECT_LE(abs(std::sqrt(squares) - 1), 10 * ulp) << what << " column " << j;
        EXPECT_GE(largestReal, (1 - 10 * ulp) * largest) << what << " column " << j;
    }
}

Eigen eigen_of(const Operand<float>& a, char jobvl, char jobvr, int workLength = fullSpeed) {
    const int n = a.rows();
    Eigen e(n);
    Operand<float> overwritten = a;
    const auto find = [&](float* work, int lwork) {
        e.info = call(SGEEV, jobvl, jobvr, n, overwritten, e.wr, e.wi, e.left, e.right, work, lwork);
    };
    GuardedVector<float> work(work_length(workLength, std::max(1, n * (jobvl == 'V' || jobvr == 'V' ? 4 : 3)), find));
    find(work.data(), work.size());
    return e;
}

bool same_values(const Eigen& x, const Eigen& y) {
    return x.wr.same_bits(y.wr) && x.wi.same_bits(y.wi);
}

void expect_eigen(const Operand<float>& a) {
    const WideMatrix<float> wide(a);
    const Eigen both = eigen_of(a, 'V', 'V');
    ASSERT_EQ(both.info, 0);
    expect_vectors(wide, both);
    expect_normalized(both.right, both.wi, "right");
    expect_normalized(both.left, both.wi, "left");
    const Eigen left = eigen_of(a, 'V', 'N'), right = eigen_of(a, 'N', 'V'), values = eigen_of(a, 'N', 'N');
    if (bits_are_free_of_alignment()) {
        EXPECT_TRUE(same_values(left, both) && left.left.same_bits(both.left));
        EXPECT_TRUE(same_values(right, both) && right.right.same_bits(both.right));
        EXPECT_TRUE(a.rows() > 75 || same_values(values, both)); // by one iteration, with and without a Schur form
    } else {
        EXPECT_LE(residual(wide, true, left), 5) << "left alone";
        EXPECT_LE(residual(wide, false, right), 5) << "right alone";
    }
    EXPECT_LE(residual(wide, false, eigen_of(a, 'V', 'V', least)), 5) << "least work";
    EXPECT_EQ(values.info, 0);
    EXPECT_EQ(eigen_of(a, 'N', 'N', least).info, 0);
}

TEST(Geev, Residual) {
    for (const int n : {0, 1, 2, 3, 10, 11, 12, 49, 50, 51, 75, 76, 150})
        for (const auto& [name, a] : unsymmetric_matrices(n)) {
            SCOPED_TRACE(name + ' ' + std::to_string(n));
            expect_eigen(a);
        }
}

// Small vectors of Frank's matrix are lost if its rows are balanced against each other too far.
TEST(Geev, ResidualOfALargeMatrix) {
    for (const auto& [name, a] : unsymmetric_matrices(590))
        if (name == "Frank") {
            const Eigen e = eigen_of(a, 'V', 'V');
            EXPECT_EQ(e.info, 0);
            expect_vectors(WideMatrix<float>(a), e);
        }
}

// Sizes at which the matrix has to be scaled, and vectors on the way to overflow.
TEST(Geev, ResidualOfHugeAndTinyMatrices) {
    combine({5, 30, 80}, {0x1p-126F, 0x1p-80F, 0x1p90F, 0x1p122F}).each([](int n, float size) {
        Operand<float> a = unsymmetric_matrices(n)[0].a;
        a.set([&](int i, int j) { return size * a(i, j); });
        const Eigen e = eigen_of(a, 'V', 'V');
        EXPECT_EQ(e.info, 0);
        if (size > 1e-30F) // the results of smaller ones are denormal
            expect_vectors(WideMatrix<float>(a), e);
        expect_normalized(e.right, e.wi, "right");
        expect_normalized(e.left, e.wi, "left");
    });
}

// ---- Vectors of Schur forms ---------------------------------------------------------------------------------------

// Triangles with what makes the substitution scale its vectors, and the Schur forms of general matrices.
std::vector<NamedMatrix> schur_forms(int n) {
    std::vector<NamedMatrix> all;
    std::mt19937 random(9);
    std::normal_distribution<float> normal;
    const auto add = [&](const char* name, const auto& element) {
        all.push_back({name, Operand<float>(n, n, n + 1)});
        all.back().a.set([&](int i, int j) { return i > j ? 0 : element(i, j); });
    };
    add("huge to tiny values",
        [&](int i, int j) { return i == j ? std::ldexp(1.0F, i * 37 % 200 - 100) : normal(random); });
    add("all but nilpotent", [&](int i, int j) { return (i == j ? 1e-30F : 1e30F) * normal(random); });
    add("one value", [](int i, int j) { return i == j ? 3 : 1e20F; });
    add("pairs with an unequal column", [&](int, int j) { return (j % 2 == 0 ? 1e-3F : 1e25F) * normal(random); });
    for (int k = 0; k < n; ++k) {
        const float below = k % 3 == 0 ? 1e20F : 1;
        Operand<float>& t = all.back().a;
        t(k, k) = static_cast<float>(k / 2 + 1);
        if (k % 2 == 1)
            t(k, k - 1) = -below, t(k - 1, k) = 1 / below;
    }
    for (const NamedMatrix& general : unsymmetric_matrices(n)) {
        Operand<float> t(n, n, n + 1), z(n, n, n);
        t.set([&](int i, int j) { return i > j + 1 ? 0 : general.a(i, j); });
        GuardedVector<float> wr(n), wi(n), work(64 * n + 1);
        call(SHSEQR, 'S', 'N', n, 1, n, t, wr, wi, z, work, work.size());
        all.push_back({general.name, t});
    }
    return all;
}

struct Vectors {
    Operand<float> left, right;
    int m = -1;
    std::vector<int> select;
};
Vectors vectors_of(const Operand<float>& t, char side, char howmny, std::vector<int> select = {}) {
    const int n = t.rows();
    Vectors v{Operand<float>(n, n, n + 2), Operand<float>(n, n, n + 3), -1, std::move(select)};
    if (howmny == 'B')
        v.left.set(identity_operand(n)), v.right.set(identity_operand(n));
    GuardedVector<float> work(3 * n);
    EXPECT_EQ(call(STREVC, side, howmny, v.select, n, t, v.left, v.right, n, &v.m, work), 0);
    return v;
}

TEST(VectorsOfSchurForms, Residual) {
    combine({1, 2, 7, 40, 64, 65, 130}, "AB").each([](int n, char howmny) { // the second with Q = I
        for (const auto& [name, t] : schur_forms(n)) {
            SCOPED_TRACE(name);
            Eigen e(n);
            read_eigenvalues(t, e.wr, e.wi);
            const Vectors v = vectors_of(t, 'B', howmny);
            EXPECT_EQ(v.m, n);
            e.right.set(v.right);
            e.left.set(v.left);
            expect_vectors(WideMatrix<float>(t), e);
            for (int j = 0; j<n; j += e.wi[j]> 0 ? 2 : 1)
                for (const Operand<float>* const x : {&v.left, &v.right}) {
                    double largest = 0;
                    for (int i = 0; i < n; ++i) {
                        const Complex y = element_of(*x, e.wi, i, j);
                        largest = std::max(largest, abs(y.real()) + abs(y.imag()));
                    }
                    EXPECT_NEAR(largest, 1, 4 * ulp) << j;
                }
        }
    });
}

// A pivot that is too small is enlarged to what the eigenvalue is known to, and no less.
TEST(VectorsOfSchurForms, SolutionsForNearlyEqualValuesStayApart) {
    Operand<float> t(2, 2, 2);
    t.set([](int i, int j) { return i == j ? 1 : i < j ? 1e-9F : 0; });
    const Vectors v = vectors_of(t, 'B', 'A');
    EXPECT_LE(abs(v.right(0, 1)), 0.1);
    EXPECT_LE(abs(v.left(1, 0)), 0.1);
}

// Every third row is selected, which may be either one of a pair.
TEST(VectorsOfSchurForms, SolutionsThatAreSelected) {
    const int n = 40;
    for (const auto& [name, t] : schur_forms(n)) {
        const Vectors all = vectors_of(t, 'B', 'A');
        for (int shift = 0; shift < 3; ++shift) {
            std::vector<int> select(std::size_t(n), 0);
            for (int i = shift; i < n; i += 3)
                select[std::size_t(i)] = 1;
            const Vectors some = vectors_of(t, 'B', 'S', select);
            int column = 0;
            for (int k = 0, order; k < n; k += order) {
                order = k + 1 < n && t(k + 1, k) != 0 ? 2 : 1;
                const bool wanted = select[std::size_t(k)] || (order == 2 && select[std::size_t(k + 1)]);
                EXPECT_EQ(some.select[std::size_t(k)] != 0, wanted) << name << k;
                EXPECT_TRUE(order == 1 || some.select[std::size_t(k + 1)] == 0) << name << k;
                for (int c = 0; wanted && c < order; ++c, ++column)
                    for (int i = 0; i < n; ++i) {
                        ASSERT_EQ(some.right(i, column), all.right(i, k + c)) << name << ' ' << i << ' ' << k;
                        ASSERT_EQ(some.left(i, column), all.left(i, k + c)) << name << ' ' << i << ' ' << k;
                    }
            }
            EXPECT_EQ(some.m, column) << name;
        }
    }
}

} // namespace
} // namespace qrv::test
