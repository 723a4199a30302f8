// Every LAPACK method of the provider classes against its native routine.
#include <limits>

#include "support/method_check.hpp"

namespace qrv::test {
namespace {

// SSYEVR as the method calls it: bounds and the array of supports are not handed on.
void whole_spectrum(const char* jobz, const char* range, const char* uplo, const int* n, float* a, const int* lda,
                    const float*, const float*, const int*, const int*, const float*, int* m, float* w, float* z,
                    const int* ldz, int*, int* info) {
    const float most = std::numeric_limits<float>::max(), least = -most, tolerance = 0;
    const int first = 1, lwork = 36 * *n, liwork = 10 * *n;
    std::vector<float> work(lwork);
    std::vector<int> iwork(liwork), supports(2 * *n);
    SSYEVR(jobz, range, uplo, n, a, lda, &least, &most, &first, n, &tolerance, m, w, z, ldz, supports.data(),
           work.data(), &lwork, iwork.data(), &liwork, info);
}

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
                  METHOD(SGESDD, Sgesdd), std::make_tuple("SSYEVR", &Class::Ssyevr, whole_spectrum),
                  METHOD(SGEEV, Sgeev), METHOD(SLACPY, Slacpy));
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

} // namespace
} // namespace qrv::test
