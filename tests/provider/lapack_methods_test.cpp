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
    check_methods(provider.Lapack(), METHOD(SGETRF, Sgetrf), METHOD(SGETRS, Sgetrs), METHOD(SGETRI, Sgetri),
                  METHOD(SGECON, Sgecon), METHOD(SLANGE, Slange), METHOD(SGEQRF, Sgeqrf), METHOD(SGEQP3, Sgeqp3),
                  METHOD(SORMQR, Sormqr), METHOD(STRTRS, Strtrs), METHOD(STRTRI, Strtri), METHOD(STRCON, Strcon),
                  METHOD(SLANTR, Slantr), METHOD(SPOTRF, Spotrf), METHOD(SPOTRI, Spotri), METHOD(SPOTRS, Spotrs),
                  METHOD(SPOCON, Spocon), METHOD(SGBTRF, Sgbtrf), METHOD(SGBTRS, Sgbtrs), METHOD(SGBCON, Sgbcon),
                  METHOD(STBTRS, Stbtrs), METHOD(SPBTRF, Spbtrf), METHOD(SPBTRS, Spbtrs), METHOD(SPBCON, Spbcon),
                  METHOD(SGESDD, Sgesdd), std::make_tuple("SSYEVR", &Class::Ssyevr, nullptr), METHOD(SGEEV, Sgeev),
                  METHOD(SLACPY, Slacpy));
}

TEST_F(LapackMethods, Complex) {
    using Class = SingleComplexLapack;
    check_methods(provider.ComplexLapack(), METHOD(CGETRF, Cgetrf), METHOD(CGETRS, Cgetrs), METHOD(CGETRI, Cgetri),
                  METHOD(CGECON, Cgecon), METHOD(CGEQRF, Cgeqrf), METHOD(CTRTRS, Ctrtrs), METHOD(CTRTRI, Ctrtri),
                  METHOD(CTRCON, Ctrcon), METHOD(CPOTRF, Cpotrf), METHOD(CPOTRI, Cpotri), METHOD(CPOTRS, Cpotrs),
                  METHOD(CPOCON, Cpocon), METHOD(CUNMQR, Cunmqr), METHOD(CGESDD, Cgesdd), METHOD(CLACPY, Clacpy));
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
