// SLADIV, CLADIV: the quotient of two complex numbers, as all of the library forms it.
#include "blas/complex.hpp"
#include "lapack/calls/reflectors.hpp"

namespace qrv::lapack {

SingleComplex ladiv(SingleComplex x, SingleComplex y) {
    return x / y;
}

} // namespace qrv::lapack
