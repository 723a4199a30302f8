// A few rows of a column in vectors, for leaves that work in a copy and are compiled once for all processors: what is
// loaded so is four elements, real and imaginary parts by themselves.
#pragma once

#include "blas/complex.hpp"

namespace qrv::lapack {

inline constexpr int lanes = 4;
using Quad [[gnu::may_alias]] = float __attribute__((vector_size(lanes * sizeof(float))));
struct [[gnu::may_alias]] ComplexQuad {
    Quad re, im;
};
template <class T>
struct RowsOf {
    using Type = Quad;
};
template <>
struct RowsOf<SingleComplex> {
    using Type = ComplexQuad;
};
template <class T>
using Rows = typename RowsOf<T>::Type;

// The number of vectors that hold so many rows.
constexpr int quads_of(int rows) {
    return (rows + lanes - 1) / lanes;
}

inline Quad spread(float x) {
    return Quad{} + x;
}
inline ComplexQuad spread(SingleComplex x) {
    return {Quad{} + x.re, Quad{} + x.im};
}
using qrv::operator*, qrv::operator-, qrv::operator+; // of elements
inline ComplexQuad operator*(const ComplexQuad& x, float y) {
    return {x.re * y, x.im * y};
}
inline ComplexQuad operator-(const ComplexQuad& x, const ComplexQuad& y) {
    return {x.re - y.re, x.im - y.im};
}
inline ComplexQuad operator+(const ComplexQuad& x, const ComplexQuad& y) {
    return {x.re + y.re, x.im + y.im};
}
// x conj(y)
inline Quad times_adjoint(Quad x, Quad y) {
    return x * y;
}
inline ComplexQuad times_adjoint(const ComplexQuad& x, const ComplexQuad& y) {
    return {x.re * y.re + x.im * y.im, x.im * y.re - x.re * y.im};
}

} // namespace qrv::lapack
