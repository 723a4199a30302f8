// Every LAPACK method of the provider classes against its native routine.
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
    methods.pending("SGEQP3", &Class::Sgeqp3, {9, 7, at, 11, at});
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
    methods.pending("SSYEVR", &Class::Ssyevr, {6, at, 8, 1, 2, at, at, 7});
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

} // namespace
} // namespace qrv::test
