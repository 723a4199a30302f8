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
    check_methods(provider.BlasLevel1(), METHOD(SSCAL, Sscal), METHOD(SAXPY, Saxpy), METHOD(SDOT, Sdot),
                  METHOD(SSWAP, Sswap), METHOD(SCOPY, Scopy), METHOD(SNRM2, Snrm2), METHOD(SASUM, Sasum),
                  METHOD(ISAMAX, Isamax), METHOD(SROTG, Srotg), METHOD(SROT, Srot), METHOD(SROTMG, Srotmg),
                  METHOD(SROTM, Srotm));
}

TEST_F(BlasMethods, RealLevel2) {
    using Class = SingleBlasLevel2;
    check_methods(provider.BlasLevel2(), METHOD(SGEMV, Sgemv), METHOD(STRMV, Strmv), METHOD(STRSV, Strsv),
                  METHOD(SSYMV, Ssymv), METHOD(SGER, Sger), METHOD(SSYR, Ssyr), METHOD(SSYR2, Ssyr2),
                  METHOD(SGBMV, Sgbmv), METHOD(STBMV, Stbmv), METHOD(STBSV, Stbsv), METHOD(SSBMV, Ssbmv));
}

TEST_F(BlasMethods, RealLevel3) {
    using Class = SingleBlasLevel3;
    check_methods(provider.BlasLevel3(), METHOD(SGEMM, Sgemm), METHOD(SSYMM, Ssymm), METHOD(STRMM, Strmm),
                  METHOD(STRSM, Strsm), METHOD(SSYRK, Ssyrk), METHOD(SSYR2K, Ssyr2k));
}

TEST_F(BlasMethods, ComplexLevel1) {
    using Class = SingleComplexBlasLevel1;
    check_methods(provider.ComplexBlasLevel1(), METHOD(CSCAL, Cscal), METHOD(CAXPY, Caxpy), METHOD(CDOTC, Cdotc),
                  METHOD(CDOTU, Cdotu), METHOD(CSWAP, Cswap), METHOD(CCOPY, Ccopy), METHOD(SCNRM2, Scnrm2),
                  METHOD(SCASUM, Scasum), METHOD(ICAMAX, Icamax));
}

TEST_F(BlasMethods, ComplexLevel2) {
    using Class = SingleComplexBlasLevel2;
    check_methods(provider.ComplexBlasLevel2(), METHOD(CGEMV, Cgemv), METHOD(CHEMV, Chemv), METHOD(CTRMV, Ctrmv),
                  METHOD(CTRSV, Ctrsv), METHOD(CGERU, Cgeru), METHOD(CGERC, Cgerc), METHOD(CHER, Cher),
                  METHOD(CHER2, Cher2));
}

TEST_F(BlasMethods, ComplexLevel3) {
    using Class = SingleComplexBlasLevel3;
    check_methods(provider.ComplexBlasLevel3(), METHOD(CGEMM, Cgemm), METHOD(CHEMM, Chemm), METHOD(CHERK, Cherk),
                  METHOD(CHER2K, Cher2k), METHOD(CTRMM, Ctrmm), METHOD(CTRSM, Ctrsm));
}

TEST_F(BlasMethods, ComplexLevel3BeyondItsInterface) {
    using Class = NativeComplexBlasLevel3;
    Class own;
    check_methods(&own, METHOD(CSYMM, Csymm), METHOD(CSYRK, Csyrk), METHOD(CSYR2K, Csyr2k));
}

} // namespace
} // namespace qrv::test
