// How a provider method turns the host's arguments into the native calling form.
//
// An option becomes the address of a constant text of which native code reads the first character. A method
// encodes in this order: addresses of its arrays (the one check it makes), options, scalars as addresses of its
// own copies.
#pragma once

#include <cstddef>

#include "qrv/native.h"
#include "qrv/providers.hpp"

namespace qrv::provider {

namespace host = Corvex::Mathematics::LinearAlgebra;
using Corvex::Mathematics::SingleComplex;

// Conjugation is no operation on real numbers: None and Conjugate give "N", everything else "T".
constexpr const char* rule_r(host::TransposeOperation op) {
    return op == host::TransposeOperation::None || op == host::TransposeOperation::Conjugate ? "N" : "T";
}

// The value as an index into `letters`; the last value of a table of n letters is an empty text, which every
// native routine rejects.
template <std::size_t N>
constexpr const char* indexed(const char (&letters)[N], std::int32_t value) {
    const auto index = static_cast<std::uint32_t>(value);
    return letters + (index < N ? index : N - 1);
}

// None "N", Transpose "T", ConjugateTranspose "C"; Conjugate alone reaches the native routine as a bad option.
inline const char* rule_c(host::TransposeOperation op) {
    static constexpr char letters[] = "NTC";
    return indexed(letters, static_cast<std::int32_t>(op));
}

inline const char* norm(host::MatrixNorm kind) {
    static constexpr char letters[] = "FOIM";
    return indexed(letters, static_cast<std::int32_t>(kind));
}

constexpr const char* triangle(host::MatrixTriangleMode mode) {
    return mode == host::MatrixTriangleMode::Upper ? "U" : "L";
}

// For the matrix copies, which take any other value as the whole matrix.
constexpr const char* triangle_or_both(host::MatrixTriangleMode mode) {
    switch (mode) {
    case host::MatrixTriangleMode::Upper:
        return "U";
    case host::MatrixTriangleMode::Lower:
        return "L";
    }
    return "B";
}

constexpr const char* diagonal(host::MatrixDiagonalMode mode) {
    return mode == host::MatrixDiagonalMode::NonUnit ? "N" : "U";
}

constexpr const char* side(host::MatrixOperationSide value) {
    return value == host::MatrixOperationSide::Left ? "L" : "R";
}

// A host character has 16 bits; native code reads the low 8 of a local copy.
constexpr char narrow(char16_t letter) {
    return static_cast<char>(letter);
}

// The host's complex numbers as the native routines know them: the same two floats.
inline qrv_complex* native(SingleComplex* x) {
    static_assert(sizeof(SingleComplex) == sizeof(qrv_complex) && alignof(SingleComplex) == alignof(qrv_complex));
    return reinterpret_cast<qrv_complex*>(x);
}
inline const qrv_complex* native(const SingleComplex* x) {
    return native(const_cast<SingleComplex*>(x));
}
template <class T> // float, int
constexpr T* native(T* x) {
    return x;
}

// Native address of the element at `offset`. Fails on a null and on an empty array; compares the offset with nothing.
template <class T>
constexpr auto* element(const host::Providers::ProviderArray<T>& array, int offset = 0) {
    return native(array.Address() + static_cast<std::ptrdiff_t>(offset));
}

} // namespace qrv::provider
