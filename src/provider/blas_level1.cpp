// BLAS level 1 of the real provider: encode, call one native entry.
#include "provider/encoding.hpp"
#include "qrv/native.h"
#include "qrv/providers.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

ParallelX86SingleBlasLevel1::ParallelX86SingleBlasLevel1() = default;

void ParallelX86SingleBlasLevel1::Sscal(int n, float alpha, ProviderArray<float> x, int xOffset, int incx) {
    float* x0 = element(x, xOffset);
    SSCAL(&n, &alpha, x0, &incx);
}

void ParallelX86SingleBlasLevel1::Saxpy(int n, float alpha, ProviderArray<const float> x, int xOffset, int incx,
                                        ProviderArray<float> y, int yOffset, int incy) {
    const float* x0 = element(x, xOffset);
    float* y0 = element(y, yOffset);
    SAXPY(&n, &alpha, x0, &incx, y0, &incy);
}

float ParallelX86SingleBlasLevel1::Sdot(int n, ProviderArray<const float> x, int xOffset, int incx,
                                        ProviderArray<const float> y, int yOffset, int incy) {
    const float* x0 = element(x, xOffset);
    const float* y0 = element(y, yOffset);
    return SDOT(&n, x0, &incx, y0, &incy);
}

void ParallelX86SingleBlasLevel1::Sswap(int n, ProviderArray<float> x, int xOffset, int incx, ProviderArray<float> y,
                                        int yOffset, int incy) {
    float* x0 = element(x, xOffset);
    float* y0 = element(y, yOffset);
    SSWAP(&n, x0, &incx, y0, &incy);
}

void ParallelX86SingleBlasLevel1::Scopy(int n, ProviderArray<const float> x, int xOffset, int incx,
                                        ProviderArray<float> y, int yOffset, int incy) {
    const float* x0 = element(x, xOffset);
    float* y0 = element(y, yOffset);
    SCOPY(&n, x0, &incx, y0, &incy);
}

float ParallelX86SingleBlasLevel1::Snrm2(int n, ProviderArray<const float> x, int xOffset, int incx) {
    const float* x0 = element(x, xOffset);
    return SNRM2(&n, x0, &incx);
}

float ParallelX86SingleBlasLevel1::Sasum(int n, ProviderArray<const float> x, int xOffset, int incx) {
    const float* x0 = element(x, xOffset);
    return SASUM(&n, x0, &incx);
}

int ParallelX86SingleBlasLevel1::Isamax(int n, ProviderArray<const float> x, int xOffset, int incx) {
    const float* x0 = element(x, xOffset);
    return ISAMAX(&n, x0, &incx);
}

void ParallelX86SingleBlasLevel1::Srotg(float& a, float& b, float& c, float& s) {
    SROTG(&a, &b, &c, &s);
}

void ParallelX86SingleBlasLevel1::Srot(int n, ProviderArray<float> x, int xOffset, int incx, ProviderArray<float> y,
                                       int yOffset, int incy, float c, float s) {
    float* x0 = element(x, xOffset);
    float* y0 = element(y, yOffset);
    SROT(&n, x0, &incx, y0, &incy, &c, &s);
}

void ParallelX86SingleBlasLevel1::Srotmg(float& d1, float& d2, float& x1, float y1, ProviderArray<float> param) {
    float* param0 = element(param);
    SROTMG(&d1, &d2, &x1, &y1, param0);
}

void ParallelX86SingleBlasLevel1::Srotm(int n, ProviderArray<float> x, int xOffset, int incx, ProviderArray<float> y,
                                        int yOffset, int incy, ProviderArray<const float> param) {
    float* x0 = element(x, xOffset);
    float* y0 = element(y, yOffset);
    const float* param0 = element(param);
    SROTM(&n, x0, &incx, y0, &incy, param0);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
