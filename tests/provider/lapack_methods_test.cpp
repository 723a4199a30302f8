// Every LAPACK method of the provider classes against its native routine.
#include <cmath>

#include "support/call.hpp"
#include "support/method_check.hpp"

namespace qrv::test {
namespace {

// The rows of each class are in the order of its virtual table.
struct LapackMethods : testing::Test {
    ParallelX86SingleLinearAlgebraProvider provider;
};

TEST_F(LapackMethods, Real) {
    using Class = SingleLapack;
    MethodTable methods(provider.Lapack());
    methods.check("SGETRF", &Class::Sgetrf, SGETRF, {9, 7, at, 11});
    methods.check("SGETRS", &Class::Sgetrs, SGETRS, {6, 4, at, 8, at, 9});
    methods.check("SGETRI", &Class::Sgetri, SGETRI, {6, at, 8}, {5, 6});
    methods.check("SGECON", &Class::Sgecon, SGECON, {6, at, 8}, {7, 8});
    methods.check("SLANGE", &Class::Slange, SLANGE, {6, 7, at, 9}, {6});
    methods.check("SGEQRF", &Class::Sgeqrf, SGEQRF, {9, 7, at, 11, at}, {6, 7});
    methods.check("SGEQP3", &Class::Sgeqp3, SGEQP3, {9, 7, at, 11, at}, {7, 8});
    methods.check("SORMQR", &Class::Sormqr, SORMQR, {9, 7, 5, at, 11, at, at, 12}, {11, 12});
    methods.check("STRTRS", &Class::Strtrs, STRTRS, {6, 4, at, 8, at, 9});
    methods.check("STRTRI", &Class::Strtri, STRTRI, {6, at, 8});
    methods.check("STRCON", &Class::Strcon, STRCON, {6, at, 8}, {8, 9});
    methods.check("SLANTR", &Class::Slantr, SLANTR, {6, 6, at, 9}, {8});
    methods.check("SPOTRF", &Class::Spotrf, SPOTRF, {6, at, 8});
    methods.check("SPOTRI", &Class::Spotri, SPOTRI, {6, at, 8});
    methods.check("SPOTRS", &Class::Spotrs, SPOTRS, {6, 4, at, 8, at, 9});
    methods.check("SPOCON", &Class::Spocon, SPOCON, {6, at, 8}, {7, 8});
    methods.check("SGBTRF", &Class::Sgbtrf, SGBTRF, {9, 7, 2, 1, at, 8});
    methods.check("SGBTRS", &Class::Sgbtrs, SGBTRS, {6, 2, 1, 4, at, 8, at, 9});
    methods.check("SGBCON", &Class::Sgbcon, SGBCON, {6, 2, 1, at, 8}, {10, 11});
    methods.check("STBTRS", &Class::Stbtrs, STBTRS, {6, 2, 4, at, 8, at, 9});
    methods.check("SPBTRF", &Class::Spbtrf, SPBTRF, {6, 2, at, 8});
    methods.check("SPBTRS", &Class::Spbtrs, SPBTRS, {6, 2, 4, at, 8, at, 9});
    methods.check("SPBCON", &Class::Spbcon, SPBCON, {6, 2, at, 8}, {8, 9});
    methods.check("SGESDD", &Class::Sgesdd, SGESDD, {9, 7, at, 11, 10, 8}, {11, 12, 13});
    methods.check_arrays("SSYEVR", &Class::Ssyevr, {6, at, 8, 1, 2, at, at, 7});
    methods.check("SGEEV", &Class::Sgeev, SGEEV, {6, at, 8, 7, 9}, {12, 13});
    methods.check("SLACPY", &Class::Slacpy, SLACPY, {26, 7, at, 30, at, 28});
}

TEST_F(LapackMethods, Complex) {
    using Class = SingleComplexLapack;
    MethodTable methods(provider.ComplexLapack());
    methods.check("CGETRF", &Class::Cgetrf, CGETRF, {9, 7, at, 11});
    methods.check("CGETRS", &Class::Cgetrs, CGETRS, {6, 4, at, 8, at, 9});
    methods.check("CGETRI", &Class::Cgetri, CGETRI, {6, at, 8}, {5, 6});
    methods.check("CGECON", &Class::Cgecon, CGECON, {6, at, 8}, {7, 8});
    methods.check("CGEQRF", &Class::Cgeqrf, CGEQRF, {9, 7, at, 11, at}, {6, 7});
    methods.check("CTRTRS", &Class::Ctrtrs, CTRTRS, {6, 4, at, 8, at, 9});
    methods.check("CTRTRI", &Class::Ctrtri, CTRTRI, {6, at, 8});
    methods.check("CTRCON", &Class::Ctrcon, CTRCON, {6, at, 8}, {8, 9});
    methods.check("CPOTRF", &Class::Cpotrf, CPOTRF, {6, at, 8});
    methods.check("CPOTRI", &Class::Cpotri, CPOTRI, {6, at, 8});
    methods.check("CPOTRS", &Class::Cpotrs, CPOTRS, {6, 4, at, 8, at, 9});
    methods.check("CPOCON", &Class::Cpocon, CPOCON, {6, at, 8}, {7, 8});
    methods.check("CUNMQR", &Class::Cunmqr, CUNMQR, {9, 7, 5, at, 11, at, at, 12}, {11, 12});
    methods.check("CGESDD", &Class::Cgesdd, CGESDD, {9, 7, at, 11, 10, 8}, {11, 12, 13, 14});
    methods.check("CLACPY", &Class::Clacpy, CLACPY, {26, 7, at, 30, at, 28});
}

TEST_F(LapackMethods, NormsOfNothing) {
    std::vector<float> a{5};
    SingleLapack& lapack = *provider.Lapack();
    EXPECT_EQ(lapack.Slange(MatrixNorm::One, 0, 0, a, 0, 1), 0);
    EXPECT_EQ(lapack.Slantr(MatrixNorm::Frobenius, MatrixTriangleMode::Upper, MatrixDiagonalMode::Unit, 0, 3, a, 0, 1),
              0);
    EXPECT_THROW(lapack.Slange(MatrixNorm::Infinity, 0, 0, a, 0, 1), IndexOutOfRangeError) << "an empty work array";
    EXPECT_THROW(lapack.Slange(MatrixNorm::Infinity, -1, 1, a, 0, 1), InvalidArraySizeError);
}

// Bounds and the array of supports are not handed on: all eigenvalues come, whatever was asked for.
TEST_F(LapackMethods, SsyevrIsOfTheWholeSpectrum) {
    constexpr int n = 6, lda = 8;
    const MatrixTriangleMode lower = static_cast<MatrixTriangleMode>(1);
    std::vector<float> a(lda * n), w(n + 1), z(n * n + 2), whole(n), vectors(n * n), work(36 * n);
    std::vector<int> iwork(10 * n), isuppz(2 * n, -7), untouched = isuppz, supports(2 * n);
    int m = 777, info = 777;
    const auto ssyevr = [&](char16_t job, char16_t range, ProviderArray<int> given) {
        for (int k = 0; k < lda * n; ++k)
            a[std::size_t(k)] = k % lda == k / lda ? 3 : 1 / (1.0F + static_cast<float>(k));
        m = info = 777;
        provider.Lapack()->Ssyevr(job, range, lower, n, a, 0, lda, 2.0F, 1.0F, 2, 3, 9.0F, m, w, 1, z, 2, n, given,
                                  info);
    };
    ssyevr(u'X', u'A', {});
    EXPECT_EQ(info, -1);
    ASSERT_EQ(test::call(SSYEVR, 'V', 'A', 'L', n, a, lda, 0.0F, 0.0F, 0, 0, 0.0F, &m, whole, vectors, n, supports,
                         work, 36 * n, iwork, 10 * n),
              0);
    for (const char16_t range : {u'A', u'I', u'V'})
        for (const bool given : {true, false}) {
            ssyevr(u'V', range, given ? ProviderArray<int>(isuppz) : ProviderArray<int>());
            EXPECT_TRUE(info == 0 && m == n && isuppz == untouched);
            for (std::size_t i = 0; i < n; ++i)
                EXPECT_NEAR(w[i + 1], whole[i], 1e-5F) << i;
            for (std::size_t k = 0; k < vectors.size(); ++k)
                EXPECT_NEAR(std::abs(z[k + 2]), std::abs(vectors[k]), 1e-4F) << k;
        }
}

} // namespace
} // namespace qrv::test
