// SRSCL, CSRSCL: x := x / divisor.
//
// Neither the reciprocal of the divisor nor the quotient of an element need be a number that can be held until the last
// step: as long as that is so, x is multiplied by as much as the smallest or largest safe number.
#include <cmath>

#include "blas/calls.hpp"
#include "lapack/calls/norms.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {

template <class T>
void rscl(int n, float divisor, T* x, int incx) {
    constexpr float small = machine::safeMinimum, big = 1 / small;
    float dividend = 1;
    // An infinite divisor would stay as it is.
    while (std::fabs(divisor * small) > std::fabs(dividend) && dividend != 0 && std::isfinite(divisor)) {
        kernel::scal(n, small, Vector{x, incx});
        divisor *= small;
    }
    while (std::fabs(dividend / big) > std::fabs(divisor)) {
        kernel::scal(n, big, Vector{x, incx});
        dividend /= big;
    }
    kernel::scal(n, dividend / divisor, Vector{x, incx});
}

template void rscl(int, float, float*, int);
template void rscl(int, float, SingleComplex*, int);

} // namespace qrv::lapack
