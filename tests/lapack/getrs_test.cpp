// Solves, inverses and condition estimates from LU factors, by their residuals and by what is known in double.
#include <gmock/gmock.h>

#include "qrv/native.h"
#include "support/lu_case.hpp"
#include "support/teams.hpp"

namespace qrv::test {
namespace {

template <class T>
class Getrs : public testing::Test {};
TYPED_TEST_SUITE(Getrs, Elements);

// The routines of an element type, those with different work arrays in one form.
template <class T>
struct Routines;
template <>
struct Routines<float> {
    static constexpr auto& getrf = qrv_lapack_sgetrf;
    static constexpr auto& getrs = qrv_lapack_sgetrs;
    static constexpr auto& getri = qrv_lapack_sgetri;
    static void gecon(char norm, int n, const float* a, int lda, float anorm, float* rcond, int* info) {
        std::vector<float> work(static_cast<std::size_t>(4 * n) + 1);
        std::vector<int> iwork(static_cast<std::size_t>(n) + 1);
        qrv_lapack_sgecon(&norm, &n, a, &lda, &anorm, rcond, work.data(), iwork.data(), info);
    }
};
template <>
struct Routines<SingleComplex> {
    static constexpr auto& getrf = qrv_lapack_cgetrf;
    static constexpr auto& getrs = qrv_lapack_cgetrs;
    static constexpr auto& getri = qrv_lapack_cgetri;
    static void gecon(char norm, int n, const SingleComplex* a, int lda, float anorm, float* rcond, int* info) {
        std::vector<SingleComplex> work(static_cast<std::size_t>(2 * n) + 1);
        std::vector<float> rwork(static_cast<std::size_t>(2 * n) + 1);
        qrv_lapack_cgecon(&norm, &n, a, &lda, &anorm, rcond, work.data(), rwork.data(), info);
    }
};

template <class T>
BasicGuardedMatrix<T> random_matrix(int m, int n, int extra, unsigned seed) {
    BasicGuardedMatrix<T> x(m, n, m + extra);
    std::mt19937 random(seed);
    x.fill_random(random);
    return x;
}

template <class T>
LuFactors<T> factored(const BasicGuardedMatrix<T>& a) {
    return factor(native_route("getrf", Routines<T>::getrf), a);
}

template <class T>
using WideOf = decltype(wide(T()));

template <class T>
WideOf<T> op_element(const BasicGuardedMatrix<T>& a, char trans, int i, int j) {
    if (trans == 'N')
        return wide(a(i, j));
    if constexpr (isComplex<T>)
        if (trans == 'C')
            return std::conj(wide(a(j, i)));
    return wide(a(j, i));
}

// max |B - op(A) X| / (n eps |op(A)| |X|), each norm the largest sum over a row.
template <class T>
double solve_residual(const BasicGuardedMatrix<T>& a, char trans, const BasicGuardedMatrix<T>& b,
                      const BasicGuardedMatrix<T>& x) {
    const int n = a.rows();
    double worst = 0, normA = 0;
    for (int i = 0; i < n; ++i) {
        double sum = 0;
        for (int j = 0; j < n; ++j)
            sum += std::abs(op_element(a, trans, i, j));
        normA = std::max(normA, sum);
    }
    for (int k = 0; k < b.columns(); ++k) {
        double error = 0, normX = 0;
        for (int i = 0; i < n; ++i) {
            WideOf<T> residual = wide(b(i, k));
            for (int j = 0; j < n; ++j)
                residual -= op_element(a, trans, i, j) * wide(x(j, k));
            error = std::isnan(std::abs(residual)) ? nan : std::max(error, std::abs(residual));
            normX = std::max(normX, std::abs(wide(x(i, k))));
        }
        const double scaled = error / (n * double{std::numeric_limits<float>::epsilon()} * normA * normX);
        worst = std::isnan(scaled) ? scaled : std::max(worst, scaled);
    }
    return worst;
}
constexpr double solveBound = 2; // as |L||U| is some times |A|

TYPED_TEST(Getrs, Residual) {
    using T = TypeParam;
    for (const int team : teamSizes)
        for (const int n : {1, 2, 24, 25, 63, 64, 65, 200, 1000})
            for (const char* trans : {"N", "T", "C", "t"}) {
                if (n == 1000 && (team > 2 || *trans == 'C' || *trans == 't'))
                    continue;
                const ForcedTeam forced(team);
                const int nrhs = n % 7 + 1, extra = n % 3;
                const auto a = random_matrix<T>(n, n, extra, 3), b = random_matrix<T>(n, nrhs, 2, 5);
                const auto f = factored(a);
                auto x = b;
                int info = -9;
                const int lda = a.ld(), ldb = b.ld();
                Routines<T>::getrs(trans, &n, &nrhs, f.lu.data(), &lda, f.ipiv.data(), x.data(), &ldb, &info);
                EXPECT_EQ(info, 0);
                EXPECT_TRUE(x.guards_intact());
                const double residual = solve_residual(a, *trans == 't' ? 'T' : *trans, b, x);
                EXPECT_TRUE(residual <= solveBound) << residual << " n=" << n << " trans=" << trans << " team " << team;
            }
}

// |A X - I|, with work sizes from the least to the whole, on both sides of those at which blocking begins.
TYPED_TEST(Getrs, Inverse) {
    using T = TypeParam;
    for (const int n : {1, 2, 24, 63, 64, 65, 130, 200}) {
        const auto a = random_matrix<T>(n, n, 1, 7);
        const auto f = factored(a);
        BasicGuardedMatrix<T> identity(n, n, n);
        identity.set([](int i, int j) { return scalar<T>(i == j ? 1.0F : 0.0F); });
        for (const int lwork : {n, n + 1, 2 * n - 1, 2 * n, 5 * n, 64 * n}) {
            const int lda = a.ld();
            auto x = f.lu;
            BasicGuardedMatrix<T> work(lwork, 1, lwork);
            int info = -9;
            Routines<T>::getri(&n, x.data(), &lda, f.ipiv.data(), work.data(), &lwork, &info);
            EXPECT_EQ(info, 0);
            EXPECT_TRUE(x.guards_intact() && work.guards_intact());
            // Column by column X solves A X = I about as well as inv(A) is known at all.
            const double residual = solve_residual(a, 'N', identity, x);
            EXPECT_TRUE(residual <= solveBound) << residual << " n=" << n << " lwork=" << lwork;
            EXPECT_EQ(wide(work(0, 0)), WideOf<T>(n > 64 ? 64 * n : n)) << "the length that was wanted, not " << lwork;
        }
    }
}

TYPED_TEST(Getrs, InverseOfASingularMatrix) {
    using T = TypeParam;
    const int n = 70, lwork = 64 * n;
    auto a = random_matrix<T>(n, n, 0, 7);
    a(40, 40) = T(); // of a U
    const auto before = a;
    std::vector<int> ipiv(static_cast<std::size_t>(n), 1);
    std::vector<T> work(static_cast<std::size_t>(lwork));
    int info = -9;
    Routines<T>::getri(&n, a.data(), &n, ipiv.data(), work.data(), &lwork, &info);
    EXPECT_EQ(info, 41);
    EXPECT_EQ(a.count_bad([&](int i, int j, T x) { return x == before(i, j); }), 0);
}

// The norm of the inverse in double, by Gauss-Jordan elimination with pivoting; a is well-conditioned for double.
template <class T>
double inverse_norm(const BasicGuardedMatrix<T>& a, bool byColumns) {
    const int n = a.rows();
    const auto size = static_cast<std::size_t>(n);
    std::vector<std::vector<WideOf<T>>> rows(size, std::vector<WideOf<T>>(2 * size));
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j)
            rows[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] = wide(a(i, j));
        rows[static_cast<std::size_t>(i)][size + static_cast<std::size_t>(i)] = 1;
    }
    for (std::size_t k = 0; k < size; ++k) {
        std::size_t pivot = k;
        for (std::size_t i = k; i < size; ++i)
            if (std::abs(rows[i][k]) > std::abs(rows[pivot][k]))
                pivot = i;
        std::swap(rows[k], rows[pivot]);
        const WideOf<T> head = rows[k][k];
        for (auto& x : rows[k])
            x /= head;
        for (std::size_t i = 0; i < size; ++i)
            if (const WideOf<T> factor = rows[i][k]; i != k)
                for (std::size_t j = k; j < 2 * size; ++j)
                    rows[i][j] -= factor * rows[k][j];
    }
    std::vector<double> sums(size);
    for (std::size_t i = 0; i < size; ++i)
        for (std::size_t j = 0; j < size; ++j)
            sums[byColumns ? j : i] += std::abs(rows[i][size + j]);
    return *std::max_element(sums.begin(), sums.end());
}

TYPED_TEST(Getrs, ConditionEstimate) {
    using T = TypeParam;
    for (const char norm : {'1', 'O', 'i'})
        for (const int n : {1, 2, 9, 30, 64})
            for (const LuKind kind : {LuKind::random, LuKind::graded, LuKind::nearlySingular}) {
                const auto a = lu_matrix<T>(kind, n, n, 2);
                const auto f = factored(a);
                const bool byColumns = norm != 'i';
                double anorm = 0;
                for (int j = 0; j < n; ++j) {
                    double sum = 0;
                    for (int i = 0; i < n; ++i)
                        sum += std::abs(byColumns ? wide(a(i, j)) : wide(a(j, i)));
                    anorm = std::max(anorm, sum);
                }
                float rcond = -1;
                int info = -9;
                Routines<T>::gecon(norm, n, f.lu.data(), a.ld(), static_cast<float>(anorm), &rcond, &info);
                EXPECT_EQ(info, 0);
                const double truth = 1 / (anorm * inverse_norm(a, byColumns));
                if (truth > 1e-6) // else the factors in single precision are those of another matrix
                    EXPECT_TRUE(rcond >= truth * 0.9 && rcond <= truth * 10)
                        << rcond << " for " << truth << " norm " << norm << " n=" << n << " kind "
                        << static_cast<int>(kind);
                else
                    EXPECT_TRUE(rcond >= 0 && rcond < 1e-5) << rcond << " for " << truth;
            }
}

TYPED_TEST(Getrs, ConditionOfSpecialMatrices) {
    using T = TypeParam;
    const int n = 20;
    auto f = factored(random_matrix<T>(n, n, 0, 1));
    const auto rcond_of = [&](const BasicGuardedMatrix<T>& lu, float anorm) {
        float rcond = -1;
        int info = -9;
        Routines<T>::gecon('1', lu.rows(), lu.data(), lu.ld(), anorm, &rcond, &info);
        EXPECT_EQ(info, 0);
        return rcond;
    };
    EXPECT_EQ(rcond_of(f.lu, 0), 0);
    EXPECT_FALSE(rcond_of(f.lu, nan) > 0);
    f.lu(7, 7) = T();
    EXPECT_EQ(rcond_of(f.lu, 1), 0) << "a singular factor";
    f.lu(7, 7) = all_parts<T>(nan);
    EXPECT_FALSE(rcond_of(f.lu, 1) > 0) << "ends";
    f.lu(7, 7) = all_parts<T>(infinity);
    EXPECT_FALSE(rcond_of(f.lu, 1) < 0) << "ends";
    for (const float size : {1e-30F, 1e37F}) {
        BasicGuardedMatrix<T> diagonal(n, n, n);
        diagonal.set([&](int i, int j) { return scalar<T>(i == j ? size : 0); });
        EXPECT_NEAR(rcond_of(diagonal, size), 1, 1e-3);
    }
    float rcond = -1;
    int info = -9;
    Routines<T>::gecon('1', 0, f.lu.data(), 1, 1, &rcond, &info);
    EXPECT_EQ(rcond, 1) << "of nothing";
}

TEST(GetriWork, Query) {
    const int query = -1, zero = 0, n = 100;
    float work = -5, a = 3;
    int info = -9, ipiv = 1;
    qrv_lapack_sgetri(&zero, &a, &n, &ipiv, &work, &query, &info);
    EXPECT_EQ(work, 0);
    qrv_lapack_sgetri(&n, &a, &n, &ipiv, &work, &query, &info);
    EXPECT_EQ(work, 6400);
    EXPECT_EQ(info, 0);
    EXPECT_EQ(a, 3);
}

} // namespace
} // namespace qrv::test
