// BLAS level 1 of the complex provider.
#include "provider/call.hpp"
#include "qrv/native/blas.h"
#include "qrv/providers/x86.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

NativeComplexBlasLevel1::NativeComplexBlasLevel1() = default;

void NativeComplexBlasLevel1::Cscal(int n, SingleComplex alpha, ProviderArray<SingleComplex> x, int xOffset, int incx) {
    call(CSCAL, n, alpha, At(x, xOffset), incx);
}

void NativeComplexBlasLevel1::Caxpy(int n, SingleComplex alpha, ProviderArray<const SingleComplex> x, int xOffset,
                                    int incx, ProviderArray<SingleComplex> y, int yOffset, int incy) {
    call(CAXPY, n, alpha, At(x, xOffset), incx, At(y, yOffset), incy);
}

SingleComplex NativeComplexBlasLevel1::Cdotc(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx,
                                             ProviderArray<const SingleComplex> y, int yOffset, int incy) {
    SingleComplex result = SingleComplex::Zero;
    call(CDOTC, &result, n, At(x, xOffset), incx, At(y, yOffset), incy);
    return result;
}

SingleComplex NativeComplexBlasLevel1::Cdotu(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx,
                                             ProviderArray<const SingleComplex> y, int yOffset, int incy) {
    SingleComplex result = SingleComplex::Zero;
    call(CDOTU, &result, n, At(x, xOffset), incx, At(y, yOffset), incy);
    return result;
}

void NativeComplexBlasLevel1::Cswap(int n, ProviderArray<SingleComplex> x, int xOffset, int incx,
                                    ProviderArray<SingleComplex> y, int yOffset, int incy) {
    call(CSWAP, n, At(x, xOffset), incx, At(y, yOffset), incy);
}

void NativeComplexBlasLevel1::Ccopy(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx,
                                    ProviderArray<SingleComplex> y, int yOffset, int incy) {
    call(CCOPY, n, At(x, xOffset), incx, At(y, yOffset), incy);
}

float NativeComplexBlasLevel1::Scnrm2(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx) {
    return call(SCNRM2, n, At(x, xOffset), incx);
}

float NativeComplexBlasLevel1::Scasum(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx) {
    return call(SCASUM, n, At(x, xOffset), incx);
}

int NativeComplexBlasLevel1::Icamax(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx) {
    return call(ICAMAX, n, At(x, xOffset), incx);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
