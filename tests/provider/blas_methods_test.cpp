// Every BLAS method of the provider classes against its native routine.
#include "support/method_check.hpp"

namespace qrv::test {
namespace {

struct BlasMethods : testing::Test {
    ParallelX86SingleLinearAlgebraProvider provider;
};

TEST_F(BlasMethods, RealLevel1) {
    using Level1 = SingleBlasLevel1;
    Level1* const blas = provider.BlasLevel1();
    MethodCheck("SSCAL", blas, &Level1::Sscal, SSCAL, {20, 3}).run();
    MethodCheck("SAXPY", blas, &Level1::Saxpy, SAXPY, {20, 3, -2}).run();
    MethodCheck("SDOT", blas, &Level1::Sdot, SDOT, {20, 3, -2}).run();
    MethodCheck("SSWAP", blas, &Level1::Sswap, SSWAP, {20, 3, -2}).run();
    MethodCheck("SCOPY", blas, &Level1::Scopy, SCOPY, {20, 3, -2}).run();
    MethodCheck("SNRM2", blas, &Level1::Snrm2, SNRM2, {20, 3}).run();
    MethodCheck("SASUM", blas, &Level1::Sasum, SASUM, {20, 3}).run();
    MethodCheck("ISAMAX", blas, &Level1::Isamax, ISAMAX, {20, 3}).run();
    MethodCheck("SROTG", blas, &Level1::Srotg, SROTG, {}).run();
    MethodCheck("SROT", blas, &Level1::Srot, SROT, {20, 3, -2}).run();
    MethodCheck("SROTMG", blas, &Level1::Srotmg, SROTMG, {}).run();
    MethodCheck("SROTM", blas, &Level1::Srotm, SROTM, {20, 3, -2}).run();
}

TEST_F(BlasMethods, ComplexLevel1) {
    using Level1 = SingleComplexBlasLevel1;
    Level1* const blas = provider.ComplexBlasLevel1();
    MethodCheck("CSCAL", blas, &Level1::Cscal, CSCAL, {20, 3}).run();
    MethodCheck("CAXPY", blas, &Level1::Caxpy, CAXPY, {20, 3, -2}).run();
    MethodCheck("CDOTC", blas, &Level1::Cdotc, CDOTC, {20, 3, -2}).run();
    MethodCheck("CDOTU", blas, &Level1::Cdotu, CDOTU, {20, 3, -2}).run();
    MethodCheck("CSWAP", blas, &Level1::Cswap, CSWAP, {20, 3, -2}).run();
    MethodCheck("CCOPY", blas, &Level1::Ccopy, CCOPY, {20, 3, -2}).run();
    MethodCheck("SCNRM2", blas, &Level1::Scnrm2, SCNRM2, {20, 3}).run();
    MethodCheck("SCASUM", blas, &Level1::Scasum, SCASUM, {20, 3}).run();
    MethodCheck("ICAMAX", blas, &Level1::Icamax, ICAMAX, {20, 3}).run();
}

TEST_F(BlasMethods, RealLevel3) {
    MethodCheck("SGEMM ", provider.BlasLevel3(), &SingleBlasLevel3::Sgemm, SGEMM, {4, 5, 6, 7, 8, 9},
                {1, 2, 3, 4, 5, 8, 10, 13})
        .run();
}

// Known values, which the methods and the native routines must both give.
TEST_F(BlasMethods, ResultsComeBack) {
    std::vector<float> x{9, 3, 9, -4}, y{1, 2};
    EXPECT_EQ(provider.BlasLevel1()->Sdot(2, x, 1, 2, y, 0, 1), -5);
    EXPECT_EQ(provider.BlasLevel1()->Isamax(2, x, 1, 2), 2) << "counted from one";
    float a = 0, b = 2, c = 9, s = 9;
    provider.BlasLevel1()->Srotg(a, b, c, s);
    EXPECT_EQ(std::tuple(a, b, c, s), std::tuple(2.0F, 1.0F, 0.0F, 1.0F)) << "in the caller's variables";
    std::vector<SingleComplex> z{{0, 0}, {1, 2}}, w{{3, -1}};
    auto* const complex = provider.ComplexBlasLevel1();
    EXPECT_EQ(complex->Cdotc(1, z, 1, 1, w, 0, 1), SingleComplex(1, -7));
    EXPECT_EQ(complex->Cdotu(1, z, 1, 1, w, 0, 1), SingleComplex(5, 5));
    EXPECT_EQ(complex->Cdotu(0, z, 1, 1, w, 0, 1), SingleComplex::Zero);
    EXPECT_EQ(complex->Icamax(2, z, 0, 1), 2);
}

TEST(SparseBlas, DoesNothingWithAnyArguments) {
    ParallelX86SingleSparseBlas sparse;
    SingleSparseBlas& host = sparse;
    std::vector<float> y{1, 2, 3};
    const TransposeOperation op{77};
    const MatrixStructure structure{-3};
    const std::string text = printed([&] {
        host.Scscmv(op, -1, -1, 2, structure, MatrixTriangleMode{5}, MatrixDiagonalMode{6}, nullptr, nullptr, nullptr,
                    nullptr, nullptr, -9, 0, 3, y, 0, 1);
        host.Scscsv(op, 3, 2, structure, MatrixTriangleMode{5}, MatrixDiagonalMode{6}, nullptr, nullptr, nullptr,
                    nullptr, nullptr, 0, 1, y, 0, 1);
        host.Scscmm(op, 3, 1, 3, 2, structure, MatrixTriangleMode{5}, MatrixDiagonalMode{6}, nullptr, nullptr, nullptr,
                    nullptr, nullptr, 0, 3, 0, nullptr, 0, 3);
    });
    EXPECT_EQ(text, "");
    EXPECT_EQ(y, (std::vector<float>{1, 2, 3}));
}

} // namespace
} // namespace qrv::test
