// What a Fortran program needs beyond other names for the upper-case entries, which the linker gives them: functions
// with complex results, and reports through the program's own XERBLA.
#include <cstddef>

#include "qrv/native.h"
#include "service/reporter.hpp"

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

// The program's, or that of another library which the program is linked with; null if there is none.
extern "C" [[gnu::weak]] void xerbla_(const char* name, const int* info, std::size_t length);

// Takes the place of the entries' own reporter in this library.
void XERBLA(const char* name, const int* info, int length) {
    if (xerbla_)
        xerbla_(name, info, static_cast<std::size_t>(length));
    else
        qrv::default_report(name, info, length);
}
