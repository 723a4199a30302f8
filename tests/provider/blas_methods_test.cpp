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
    methods.check("SSCAL", &Class::Sscal, SSCAL, {20, at, 3});
    methods.check("SAXPY", &Class::Saxpy, SAXPY, {20, at, 3, at, -2});
    methods.check("SDOT", &Class::Sdot, SDOT, {20, at, 3, at, -2});
    methods.check("SSWAP", &Class::Sswap, SSWAP, {20, at, 3, at, -2});
    methods.check("SCOPY", &Class::Scopy, SCOPY, {20, at, 3, at, -2});
    methods.check("SNRM2", &Class::Snrm2, SNRM2, {20, at, 3});
    methods.check("SASUM", &Class::Sasum, SASUM, {20, at, 3});
    methods.check("ISAMAX", &Class::Isamax, ISAMAX, {20, at, 3});
    methods.check("SROTG", &Class::Srotg, SROTG, {});
    methods.check("SROT", &Class::Srot, SROT, {20, at, 3, at, -2});
    methods.check("SROTMG", &Class::Srotmg, SROTMG, {});
    methods.check("SROTM", &Class::Srotm, SROTM, {20, at, 3, at, -2});
}

TEST_F(BlasMethods, RealLevel2) {
    using Class = SingleBlasLevel2;
    MethodTable methods(provider.BlasLevel2());
    methods.check("SGEMV ", &Class::Sgemv, SGEMV, {5, 6, at, 8, at, 3, at, -2});
    methods.check("STRMV ", &Class::Strmv, STRMV, {6, at, 8, at, -2});
    methods.check("STRSV ", &Class::Strsv, STRSV, {6, at, 8, at, -2});
    methods.check("SSYMV ", &Class::Ssymv, SSYMV, {6, at, 8, at, 3, at, -2});
    methods.check("SGER  ", &Class::Sger, SGER, {5, 6, at, 3, at, -2, at, 8});
    methods.check("SSYR  ", &Class::Ssyr, SSYR, {6, at, 3, at, 8});
    methods.check("SSYR2 ", &Class::Ssyr2, SSYR2, {6, at, 3, at, -2, at, 8});
    methods.check("SGBMV ", &Class::Sgbmv, SGBMV, {5, 6, 1, 2, at, 8, at, 3, at, -2});
    methods.check("STBMV ", &Class::Stbmv, STBMV, {6, 2, at, 8, at, -2});
    methods.check("STBSV ", &Class::Stbsv, STBSV, {6, 2, at, 8, at, -2});
    methods.check("SSBMV ", &Class::Ssbmv, SSBMV, {6, 2, at, 8, at, 3, at, -2});
}

TEST_F(BlasMethods, RealLevel3) {
    using Class = SingleBlasLevel3;
    MethodTable methods(provider.BlasLevel3());
    methods.check("SGEMM ", &Class::Sgemm, SGEMM, {4, 5, 6, at, 7, at, 8, at, 9});
    methods.check("SSYMM ", &Class::Ssymm, SSYMM, {5, 6, at, 8, at, 7, at, 9});
    methods.check("STRMM ", &Class::Strmm, STRMM, {5, 6, at, 8, at, 7});
    methods.check("STRSM ", &Class::Strsm, STRSM, {5, 6, at, 8, at, 7});
    methods.check("SSYRK ", &Class::Ssyrk, SSYRK, {5, 6, at, 8, at, 7});
    methods.check("SSYR2K", &Class::Ssyr2k, SSYR2K, {5, 6, at, 8, at, 9, at, 7});
}

TEST_F(BlasMethods, ComplexLevel1) {
    using Class = SingleComplexBlasLevel1;
    MethodTable methods(provider.ComplexBlasLevel1());
    methods.check("CSCAL", &Class::Cscal, CSCAL, {20, at, 3});
    methods.check("CAXPY", &Class::Caxpy, CAXPY, {20, at, 3, at, -2});
    methods.check("CDOTC", &Class::Cdotc, CDOTC, {20, at, 3, at, -2});
    methods.check("CDOTU", &Class::Cdotu, CDOTU, {20, at, 3, at, -2});
    methods.check("CSWAP", &Class::Cswap, CSWAP, {20, at, 3, at, -2});
    methods.check("CCOPY", &Class::Ccopy, CCOPY, {20, at, 3, at, -2});
    methods.check("SCNRM2", &Class::Scnrm2, SCNRM2, {20, at, 3});
    methods.check("SCASUM", &Class::Scasum, SCASUM, {20, at, 3});
    methods.check("ICAMAX", &Class::Icamax, ICAMAX, {20, at, 3});
}

TEST_F(BlasMethods, ComplexLevel2) {
    using Class = SingleComplexBlasLevel2;
    MethodTable methods(provider.ComplexBlasLevel2());
    methods.check("CGEMV ", &Class::Cgemv, CGEMV, {5, 6, at, 8, at, 3, at, -2});
    methods.check("CHEMV ", &Class::Chemv, CHEMV, {6, at, 8, at, 3, at, -2});
    methods.check("CTRMV ", &Class::Ctrmv, CTRMV, {6, at, 8, at, -2});
    methods.check("CTRSV ", &Class::Ctrsv, CTRSV, {6, at, 8, at, -2});
    methods.check("CGERU ", &Class::Cgeru, CGERU, {5, 6, at, 3, at, -2, at, 8});
    methods.check("CGERC ", &Class::Cgerc, CGERC, {5, 6, at, 3, at, -2, at, 8});
    methods.check("CHER  ", &Class::Cher, CHER, {6, at, 3, at, 8});
    methods.check("CHER2 ", &Class::Cher2, CHER2, {6, at, 3, at, -2, at, 8});
}

TEST_F(BlasMethods, ComplexLevel3) {
    using Class = SingleComplexBlasLevel3;
    MethodTable methods(provider.ComplexBlasLevel3());
    methods.check("CGEMM ", &Class::Cgemm, CGEMM, {4, 5, 6, at, 7, at, 8, at, 9});
    methods.check("CHEMM ", &Class::Chemm, CHEMM, {5, 6, at, 8, at, 7, at, 9});
    methods.check("CHERK ", &Class::Cherk, CHERK, {5, 6, at, 8, at, 7});
    methods.check("CHER2K", &Class::Cher2k, CHER2K, {5, 6, at, 8, at, 9, at, 7});
    methods.check("CTRMM ", &Class::Ctrmm, CTRMM, {5, 6, at, 8, at, 7});
    methods.check("CTRSM ", &Class::Ctrsm, CTRSM, {5, 6, at, 8, at, 7});

    NativeComplexBlasLevel3 own; // has operations that its interface lacks
    MethodTable ownMethods(&own);
    ownMethods.check("CSYMM ", &NativeComplexBlasLevel3::Csymm, CSYMM, {5, 6, at, 8, at, 7, at, 9});
    ownMethods.check("CSYRK ", &NativeComplexBlasLevel3::Csyrk, CSYRK, {5, 6, at, 8, at, 7});
    ownMethods.check("CSYR2K", &NativeComplexBlasLevel3::Csyr2k, CSYR2K, {5, 6, at, 8, at, 9, at, 7});
}

} // namespace
} // namespace qrv::test
