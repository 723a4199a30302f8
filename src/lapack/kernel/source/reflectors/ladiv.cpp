// SLADIV, CLADIV: the quotient of two complex numbers. Products of floats are exact in double and neither overflow nor
// vanish, so the textbook formula does.
#include "lapack/calls/reflectors.hpp"

namespace qrv::lapack {

SingleComplex ladiv(SingleComplex x, SingleComplex y) {
    const double a = x.re, b = x.im, c = y.re, d = y.im, square = c * c + d * d;
    return {static_cast<float>((a * c + b * d) / square), static_cast<float>((b * c - a * d) / square)};
}

} // namespace qrv::lapack
