// What a Fortran program needs beyond other names for the upper-case entries, which the linker gives them: functions
// with complex results.
#include "qrv/native.h"

// As Fortran compilers of this platform return it.
__extension__ typedef __complex__ float FortranComplex;

namespace {

template <class Dot>
FortranComplex dot(Dot* routine, const int* n, const qrv_complex* x, const int* incx, const qrv_complex* y,
                   const int* incy) {
    FortranComplex result;
    __real__ result = 0;
    __imag__ result = 0;
    routine(reinterpret_cast<qrv_complex*>(&result), n, x, incx, y, incy);
    return result;
}

} // namespace

#define QRV_FORTRAN extern "C" [[gnu::visibility("default")]]

QRV_FORTRAN FortranComplex cdotc_(const int* n, const qrv_complex* x, const int* incx, const qrv_complex* y,
                                  const int* incy) {
    return dot(CDOTC, n, x, incx, y, incy);
}
QRV_FORTRAN FortranComplex cdotu_(const int* n, const qrv_complex* x, const int* incx, const qrv_complex* y,
                                  const int* incy) {
    return dot(CDOTU, n, x, incx, y, incy);
}
