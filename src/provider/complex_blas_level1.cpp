// BLAS level 1 of the complex provider: encode, call one native entry.
#include "provider/encoding.hpp"
#include "qrv/native.h"
#include "qrv/providers.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

NativeComplexBlasLevel1::NativeComplexBlasLevel1() = default;

void NativeComplexBlasLevel1::Cscal(int n, SingleComplex alpha, ProviderArray<SingleComplex> x, int xOffset, int incx) {
    qrv_complex* x0 = element(x, xOffset);
    CSCAL(&n, native(&alpha), x0, &incx);
}

void NativeComplexBlasLevel1::Caxpy(int n, SingleComplex alpha, ProviderArray<const SingleComplex> x, int xOffset,
                                    int incx, ProviderArray<SingleComplex> y, int yOffset, int incy) {
    const qrv_complex* x0 = element(x, xOffset);
    qrv_complex* y0 = element(y, yOffset);
    CAXPY(&n, native(&alpha), x0, &incx, y0, &incy);
}

SingleComplex NativeComplexBlasLevel1::Cdotc(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx,
                                             ProviderArray<const SingleComplex> y, int yOffset, int incy) {
    const qrv_complex* x0 = element(x, xOffset);
    const qrv_complex* y0 = element(y, yOffset);
    SingleComplex result = SingleComplex::Zero;
    CDOTC(native(&result), &n, x0, &incx, y0, &incy);
    return result;
}

SingleComplex NativeComplexBlasLevel1::Cdotu(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx,
                                             ProviderArray<const SingleComplex> y, int yOffset, int incy) {
    const qrv_complex* x0 = element(x, xOffset);
    const qrv_complex* y0 = element(y, yOffset);
    SingleComplex result = SingleComplex::Zero;
    CDOTU(native(&result), &n, x0, &incx, y0, &incy);
    return result;
}

void NativeComplexBlasLevel1::Cswap(int n, ProviderArray<SingleComplex> x, int xOffset, int incx,
                                    ProviderArray<SingleComplex> y, int yOffset, int incy) {
    qrv_complex* x0 = element(x, xOffset);
    qrv_complex* y0 = element(y, yOffset);
    CSWAP(&n, x0, &incx, y0, &incy);
}

void NativeComplexBlasLevel1::Ccopy(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx,
                                    ProviderArray<SingleComplex> y, int yOffset, int incy) {
    const qrv_complex* x0 = element(x, xOffset);
    qrv_complex* y0 = element(y, yOffset);
    CCOPY(&n, x0, &incx, y0, &incy);
}

float NativeComplexBlasLevel1::Scnrm2(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx) {
    const qrv_complex* x0 = element(x, xOffset);
    return SCNRM2(&n, x0, &incx);
}

float NativeComplexBlasLevel1::Scasum(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx) {
    const qrv_complex* x0 = element(x, xOffset);
    return SCASUM(&n, x0, &incx);
}

int NativeComplexBlasLevel1::Icamax(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx) {
    const qrv_complex* x0 = element(x, xOffset);
    return ICAMAX(&n, x0, &incx);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
