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
};

float slange(const char* norm, const int* m, const int* n, const float* a, const int* lda) {
    return SLANGE(norm, m, n, a, lda, WorkMemory().work.data());
}
float slantr(const char* norm, const char* uplo, const char* diag, const int* m, const int* n, const float* a,
             const int* lda) {
    return SLANTR(norm, uplo, diag, m, n, a, lda, WorkMemory().work.data());
}

TEST_F(LapackMethods, Real) {
    using Class = SingleLapack;
    MethodTable methods(provider.Lapack());
    methods.check("SLANGE", &Class::Slange, slange, {6, 7, 9});
    methods.check("SLANTR", &Class::Slantr, slantr, {6, 6, 9});
    methods.check("SLACPY", &Class::Slacpy, SLACPY, {26, 7, 30, 28});
}

TEST_F(LapackMethods, Complex) {
    using Class = SingleComplexLapack;
    MethodTable methods(provider.ComplexLapack());
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
