// BLAS level 1 of the real provider.
#include "provider/call.hpp"
#include "qrv/native/blas.h"
#include "qrv/providers/x86.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

ParallelX86SingleBlasLevel1::ParallelX86SingleBlasLevel1() = default;

void ParallelX86SingleBlasLevel1::Sscal(int n, float alpha, ProviderArray<float> x, int xOffset, int incx) {
    call(SSCAL, n, alpha, At(x, xOffset), incx);
}

void ParallelX86SingleBlasLevel1::Saxpy(int n, float alpha, ProviderArray<const float> x, int xOffset, int incx,
                                        ProviderArray<float> y, int yOffset, int incy) {
    call(SAXPY, n, alpha, At(x, xOffset), incx, At(y, yOffset), incy);
}

float ParallelX86SingleBlasLevel1::Sdot(int n, ProviderArray<const float> x, int xOffset, int incx,
                                        ProviderArray<const float> y, int yOffset, int incy) {
    return call(SDOT, n, At(x, xOffset), incx, At(y, yOffset), incy);
}

void ParallelX86SingleBlasLevel1::Sswap(int n, ProviderArray<float> x, int xOffset, int incx, ProviderArray<float> y,
                                        int yOffset, int incy) {
    call(SSWAP, n, At(x, xOffset), incx, At(y, yOffset), incy);
}

void ParallelX86SingleBlasLevel1::Scopy(int n, ProviderArray<const float> x, int xOffset, int incx,
                                        ProviderArray<float> y, int yOffset, int incy) {
    call(SCOPY, n, At(x, xOffset), incx, At(y, yOffset), incy);
}

float ParallelX86SingleBlasLevel1::Snrm2(int n, ProviderArray<const float> x, int xOffset, int incx) {
    return call(SNRM2, n, At(x, xOffset), incx);
}

float ParallelX86SingleBlasLevel1::Sasum(int n, ProviderArray<const float> x, int xOffset, int incx) {
    return call(SASUM, n, At(x, xOffset), incx);
}

int ParallelX86SingleBlasLevel1::Isamax(int n, ProviderArray<const float> x, int xOffset, int incx) {
    return call(ISAMAX, n, At(x, xOffset), incx);
}

void ParallelX86SingleBlasLevel1::Srotg(float& a, float& b, float& c, float& s) {
    call(SROTG, &a, &b, &c, &s);
}

void ParallelX86SingleBlasLevel1::Srot(int n, ProviderArray<float> x, int xOffset, int incx, ProviderArray<float> y,
                                       int yOffset, int incy, float c, float s) {
    call(SROT, n, At(x, xOffset), incx, At(y, yOffset), incy, c, s);
}

void ParallelX86SingleBlasLevel1::Srotmg(float& d1, float& d2, float& x1, float y1, ProviderArray<float> param) {
    call(SROTMG, &d1, &d2, &x1, y1, param);
}

void ParallelX86SingleBlasLevel1::Srotm(int n, ProviderArray<float> x, int xOffset, int incx, ProviderArray<float> y,
                                        int yOffset, int incy, ProviderArray<const float> param) {
    call(SROTM, n, At(x, xOffset), incx, At(y, yOffset), incy, param);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
