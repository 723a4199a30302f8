// A few rows of a column in vectors, for leaves that work in a copy and are compiled once for all processors: what is
// loaded so is four elements, real and imaginary parts by themselves.
#pragma once

#include <cstddef>
#include <utility>

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

inline float element_of(const Quad& x, int lane) {
    return x[lane];
}
inline SingleComplex element_of(const ComplexQuad& x, int lane) {
    return {x.re[lane], x.im[lane]};
}
inline void set_element(Quad& x, int lane, float value) {
    x[lane] = value;
}
inline void set_element(ComplexQuad& x, int lane, SingleComplex value) {
    x.re[lane] = value.re, x.im[lane] = value.im;
}
// Elements 0 to count - 1, which lie so far apart, and zeros behind them.
template <class T>
Rows<T> load_rows(const T* from, std::ptrdiff_t step, int count) {
    if constexpr (!isComplex<T>)
        if (step == 1 && count >= lanes) {
            Quad whole;
            __builtin_memcpy(&whole, from, sizeof whole);
            return whole;
        }
    const auto load = [&]<int... l>(std::integer_sequence<int, l...>) {
        Rows<T> rows{};
        (set_element(rows, l, from[l * step]), ...);
        return rows;
    };
    return count == 1   ? load(std::make_integer_sequence<int, 1>())
           : count == 2 ? load(std::make_integer_sequence<int, 2>())
           : count == 3 ? load(std::make_integer_sequence<int, 3>())
                        : load(std::make_integer_sequence<int, lanes>());
}

// The same, one behind the other.
template <class T>
void store_rows(const Rows<T>& rows, int count, T* to) {
    if constexpr (!isComplex<T>)
        if (count >= lanes) {
            __builtin_memcpy(to, &rows, sizeof rows);
            return;
        }
    for (int l = 0; l < count && l < lanes; ++l)
        to[l] = element_of(rows, l);
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
