// Every BLAS method of the provider classes against its native routine.
#include "support/method_check.hpp"

namespace qrv::test {
namespace {

// The rows of each class are in the order of its virtual table.
struct BlasMethods : testing::Test {
    ParallelX86SingleLinearAlgebraProvider provider;
};

TEST_F(BlasMethods, RealLevel1) {
    using Class = SingleBlasLevel1;
    MethodTable methods(provider.BlasLevel1());
    methods.check("SSCAL", &Class::Sscal, SSCAL, {20, 3});
    methods.check("SAXPY", &Class::Saxpy, SAXPY, {20, 3, -2});
    methods.check("SDOT", &Class::Sdot, SDOT, {20, 3, -2});
    methods.check("SSWAP", &Class::Sswap, SSWAP, {20, 3, -2});
    methods.check("SCOPY", &Class::Scopy, SCOPY, {20, 3, -2});
    methods.check("SNRM2", &Class::Snrm2, SNRM2, {20, 3});
    methods.check("SASUM", &Class::Sasum, SASUM, {20, 3});
    methods.check("ISAMAX", &Class::Isamax, ISAMAX, {20, 3});
    methods.check("SROTG", &Class::Srotg, SROTG, {});
    methods.check("SROT", &Class::Srot, SROT, {20, 3, -2});
    methods.check("SROTMG", &Class::Srotmg, SROTMG, {});
    methods.check("SROTM", &Class::Srotm, SROTM, {20, 3, -2});
}

TEST_F(BlasMethods, RealLevel2) {
    using Class = SingleBlasLevel2;
    MethodTable methods(provider.BlasLevel2());
    methods.check("SGEMV ", &Class::Sgemv, SGEMV, {5, 6, 8, 3, -2}, {1, 2, 3, 6, 8, 11});
    methods.check("STRMV ", &Class::Strmv, STRMV, {6, 8, -2}, {1, 2, 3, 4, 6, 8});
    methods.check("STRSV ", &Class::Strsv, STRSV, {6, 8, -2}, {1, 2, 3, 4, 6, 8});
    methods.check("SSYMV ", &Class::Ssymv, SSYMV, {6, 8, 3, -2}, {1, 2, 5, 7, 10});
    methods.check("SGER  ", &Class::Sger, SGER, {5, 6, 3, -2, 8}, {1, 2, 5, 7, 9});
    methods.check("SSYR  ", &Class::Ssyr, SSYR, {6, 3, 8}, {1, 2, 5, 7});
    methods.check("SSYR2 ", &Class::Ssyr2, SSYR2, {6, 3, -2, 8}, {1, 2, 5, 7, 9});
    methods.check("SGBMV ", &Class::Sgbmv, SGBMV, {5, 6, 1, 2, 8, 3, -2}, {1, 2, 3, 4, 5, 8, 10, 13});
    methods.check("STBMV ", &Class::Stbmv, STBMV, {6, 2, 8, -2}, {1, 2, 3, 4, 5, 7, 9});
    methods.check("STBSV ", &Class::Stbsv, STBSV, {6, 2, 8, -2}, {1, 2, 3, 4, 5, 7, 9});
    methods.check("SSBMV ", &Class::Ssbmv, SSBMV, {6, 2, 8, 3, -2}, {1, 2, 3, 6, 8, 11});
}

TEST_F(BlasMethods, RealLevel3) {
    using Class = SingleBlasLevel3;
    MethodTable methods(provider.BlasLevel3());
    methods.check("SGEMM ", &Class::Sgemm, SGEMM, {4, 5, 6, 7, 8, 9}, {1, 2, 3, 4, 5, 8, 10, 13});
    methods.check("SSYMM ", &Class::Ssymm, SSYMM, {5, 6, 8, 7, 9}, {1, 2, 3, 4, 7, 9, 12});
    methods.check("STRMM ", &Class::Strmm, STRMM, {5, 6, 8, 7}, {1, 2, 3, 4, 5, 6, 9, 11});
    methods.check("STRSM ", &Class::Strsm, STRSM, {5, 6, 8, 7}, {1, 2, 3, 4, 5, 6, 9, 11});
    methods.check("SSYRK ", &Class::Ssyrk, SSYRK, {5, 6, 8, 7}, {1, 2, 3, 4, 7, 10});
    methods.check("SSYR2K", &Class::Ssyr2k, SSYR2K, {5, 6, 8, 9, 7}, {1, 2, 3, 4, 7, 9, 12});
}

TEST_F(BlasMethods, ComplexLevel1) {
    using Class = SingleComplexBlasLevel1;
    MethodTable methods(provider.ComplexBlasLevel1());
    methods.check("CSCAL", &Class::Cscal, CSCAL, {20, 3});
    methods.check("CAXPY", &Class::Caxpy, CAXPY, {20, 3, -2});
    methods.check("CDOTC", &Class::Cdotc, CDOTC, {20, 3, -2});
    methods.check("CDOTU", &Class::Cdotu, CDOTU, {20, 3, -2});
    methods.check("CSWAP", &Class::Cswap, CSWAP, {20, 3, -2});
    methods.check("CCOPY", &Class::Ccopy, CCOPY, {20, 3, -2});
    methods.check("SCNRM2", &Class::Scnrm2, SCNRM2, {20, 3});
    methods.check("SCASUM", &Class::Scasum, SCASUM, {20, 3});
    methods.check("ICAMAX", &Class::Icamax, ICAMAX, {20, 3});
}

TEST_F(BlasMethods, ComplexLevel2) {
    using Class = SingleComplexBlasLevel2;
    MethodTable methods(provider.ComplexBlasLevel2());
    methods.check("CGEMV ", &Class::Cgemv, CGEMV, {5, 6, 8, 3, -2}, {1, 2, 3, 6, 8, 11});
    methods.check("CHEMV ", &Class::Chemv, CHEMV, {6, 8, 3, -2}, {1, 2, 5, 7, 10});
    methods.check("CTRMV ", &Class::Ctrmv, CTRMV, {6, 8, -2}, {1, 2, 3, 4, 6, 8});
    methods.check("CTRSV ", &Class::Ctrsv, CTRSV, {6, 8, -2}, {1, 2, 3, 4, 6, 8});
    methods.check("CGERU ", &Class::Cgeru, CGERU, {5, 6, 3, -2, 8}, {1, 2, 5, 7, 9});
    methods.check("CGERC ", &Class::Cgerc, CGERC, {5, 6, 3, -2, 8}, {1, 2, 5, 7, 9});
    methods.check("CHER  ", &Class::Cher, CHER, {6, 3, 8}, {1, 2, 5, 7});
    methods.check("CHER2 ", &Class::Cher2, CHER2, {6, 3, -2, 8}, {1, 2, 5, 7, 9});
}

TEST_F(BlasMethods, ComplexLevel3) {
    using Class = SingleComplexBlasLevel3;
    MethodTable methods(provider.ComplexBlasLevel3());
    methods.check("CGEMM ", &Class::Cgemm, CGEMM, {4, 5, 6, 7, 8, 9}, {1, 2, 3, 4, 5, 8, 10, 13});
    methods.check("CHEMM ", &Class::Chemm, CHEMM, {5, 6, 8, 7, 9}, {1, 2, 3, 4, 7, 9, 12});
    methods.check("CHERK ", &Class::Cherk, CHERK, {5, 6, 8, 7}, {1, 2, 3, 4, 7, 10});
    methods.check("CHER2K", &Class::Cher2k, CHER2K, {5, 6, 8, 9, 7}, {1, 2, 3, 4, 7, 9, 12});
    methods.check("CTRMM ", &Class::Ctrmm, CTRMM, {5, 6, 8, 7}, {1, 2, 3, 4, 5, 6, 9, 11});
    methods.check("CTRSM ", &Class::Ctrsm, CTRSM, {5, 6, 8, 7}, {1, 2, 3, 4, 5, 6, 9, 11});

    NativeComplexBlasLevel3 own; // has operations that its interface lacks
    MethodTable ownMethods(&own);
    ownMethods.check("CSYMM ", &NativeComplexBlasLevel3::Csymm, CSYMM, {5, 6, 8, 7, 9}, {1, 2, 3, 4, 7, 9, 12});
    ownMethods.check("CSYRK ", &NativeComplexBlasLevel3::Csyrk, CSYRK, {5, 6, 8, 7}, {1, 2, 3, 4, 7, 10});
    ownMethods.check("CSYR2K", &NativeComplexBlasLevel3::Csyr2k, CSYR2K, {5, 6, 8, 9, 7}, {1, 2, 3, 4, 7, 9, 12});
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

TEST_F(BlasMethods, ConjugateAloneIsRejectedByComplexRoutines) {
    std::vector<SingleComplex> a{{1, 1}, {2, 0}, {3, 0}, {4, 0}}, x{{1, 0}, {0, 1}}, y{{5, 5}, {6, 6}};
    const std::vector<SingleComplex> before = y;
    const std::string text = printed([&] {
        provider.ComplexBlasLevel2()->Cgemv(TransposeOperation::Conjugate, 2, 2, 1, a, 0, 2, x, 0, 1, 0, y, 0, 1);
    });
    EXPECT_EQ(text, "\nQRV ERROR: Parameter 1 was incorrect on entry to CGEMV \n");
    EXPECT_EQ(y, before);
    std::vector<float> b{1, 2, 3, 4}, z{1, 10}, w{7, 7};
    provider.BlasLevel2()->Sgemv(TransposeOperation::Conjugate, 2, 2, 1, b, 0, 2, z, 0, 1, 0, w, 0, 1);
    EXPECT_EQ(w, (std::vector<float>{31, 42})) << "a real matrix as it is";
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
