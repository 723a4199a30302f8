// Every LAPACK method of the provider classes against its native routine.
#include "support/method_check.hpp"

namespace qrv::test {
namespace {

// The rows of each class are in the order of its virtual table.
struct LapackMethods : testing::Test {
    ParallelX86SingleLinearAlgebraProvider provider;
};

// Native routines with their work arrays, which are larger here than they need be.
struct WorkMemory {
    std::array<float, 400> work;
    std::array<int, 100> iwork;
    qrv_complex* complex_work() { return reinterpret_cast<qrv_complex*>(work.data()); }
};

float slange(const char* norm, const int* m, const int* n, const float* a, const int* lda) {
    return SLANGE(norm, m, n, a, lda, WorkMemory().work.data());
}
float slantr(const char* norm, const char* uplo, const char* diag, const int* m, const int* n, const float* a,
             const int* lda) {
    return SLANTR(norm, uplo, diag, m, n, a, lda, WorkMemory().work.data());
}

void strcon(const char* norm, const char* uplo, const char* diag, const int* n, const float* a, const int* lda,
            float* rcond, int* info) {
    WorkMemory memory;
    STRCON(norm, uplo, diag, n, a, lda, rcond, memory.work.data(), memory.iwork.data(), info);
}
void ctrcon(const char* norm, const char* uplo, const char* diag, const int* n, const qrv_complex* a, const int* lda,
            float* rcond, int* info) {
    WorkMemory memory, real;
    CTRCON(norm, uplo, diag, n, a, lda, rcond, memory.complex_work(), real.work.data(), info);
}

void sgetri(const int* n, float* a, const int* lda, const int* ipiv, int* info) {
    const int lwork = 4 * *n;
    SGETRI(n, a, lda, ipiv, WorkMemory().work.data(), &lwork, info);
}
void cgetri(const int* n, qrv_complex* a, const int* lda, const int* ipiv, int* info) {
    const int lwork = 4 * *n;
    CGETRI(n, a, lda, ipiv, WorkMemory().complex_work(), &lwork, info);
}
void sgecon(const char* norm, const int* n, const float* a, const int* lda, const float* anorm, float* rcond,
            int* info) {
    WorkMemory memory;
    SGECON(norm, n, a, lda, anorm, rcond, memory.work.data(), memory.iwork.data(), info);
}
void cgecon(const char* norm, const int* n, const qrv_complex* a, const int* lda, const float* anorm, float* rcond,
            int* info) {
    WorkMemory memory, real;
    CGECON(norm, n, a, lda, anorm, rcond, memory.complex_work(), real.work.data(), info);
}

TEST_F(LapackMethods, Real) {
    using Class = SingleLapack;
    MethodTable methods(provider.Lapack());
    methods.check("SGETRF", &Class::Sgetrf, SGETRF, {9, 7, 11}, {1, 2, 4});
    methods.check("SGETRS", &Class::Sgetrs, SGETRS, {6, 4, 8, 9}, {1, 2, 3, 5, 8});
    methods.check("SGETRI", &Class::Sgetri, sgetri, {6, 8}, {1, 3});
    methods.check("SGECON", &Class::Sgecon, sgecon, {6, 8}, {1, 2, 4});
    methods.check("SLANGE", &Class::Slange, slange, {6, 7, 9});
    methods.check("STRTRS", &Class::Strtrs, STRTRS, {6, 4, 8, 9}, {1, 2, 3, 4, 5, 7, 9});
    methods.check("STRTRI", &Class::Strtri, STRTRI, {6, 8}, {1, 2, 3, 5});
    methods.check("STRCON", &Class::Strcon, strcon, {6, 8}, {1, 2, 3, 4, 6});
    methods.check("SLANTR", &Class::Slantr, slantr, {6, 6, 9});
    methods.check("SLACPY", &Class::Slacpy, SLACPY, {26, 7, 30, 28});
}

TEST_F(LapackMethods, Complex) {
    using Class = SingleComplexLapack;
    MethodTable methods(provider.ComplexLapack());
    methods.check("CGETRF", &Class::Cgetrf, CGETRF, {9, 7, 11}, {1, 2, 4});
    methods.check("CGETRS", &Class::Cgetrs, CGETRS, {6, 4, 8, 9}, {1, 2, 3, 5, 8});
    methods.check("CGETRI", &Class::Cgetri, cgetri, {6, 8}, {1, 3});
    methods.check("CGECON", &Class::Cgecon, cgecon, {6, 8}, {1, 2, 4});
    methods.check("CTRTRS", &Class::Ctrtrs, CTRTRS, {6, 4, 8, 9}, {1, 2, 3, 4, 5, 7, 9});
    methods.check("CTRTRI", &Class::Ctrtri, CTRTRI, {6, 8}, {1, 2, 3, 5});
    methods.check("CTRCON", &Class::Ctrcon, ctrcon, {6, 8}, {1, 2, 3, 4, 6});
    methods.check("CLACPY", &Class::Clacpy, CLACPY, {26, 7, 30, 28});
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
