// Options of the host as native code wants them: the address of a constant text, of which it reads the first character.
#pragma once

#include <cstddef>

#include "qrv/providers/types.hpp"

namespace qrv::provider {

namespace host = Corvex::Mathematics::LinearAlgebra;

// The value as an index into `letters`; the last value of a table of n letters is an empty text, which every native
// routine rejects.
template <std::size_t N>
constexpr const char* indexed(const char (&letters)[N], std::int32_t value) {
    const auto index = static_cast<std::uint32_t>(value);
    return letters + (index < N ? index : N - 1);
}

// Transposition has two rules. Most real routines: conjugation is no operation on real numbers, so None and Conjugate
// give "N", everything else "T".
constexpr const char* rule_r(host::TransposeOperation op) {
    return op == host::TransposeOperation::None || op == host::TransposeOperation::Conjugate ? "N" : "T";
}

// Complex routines and some of the real LAPACK: None "N", Transpose "T", ConjugateTranspose "C"; Conjugate alone
// reaches the native routine as a bad option.
inline const char* rule_c(host::TransposeOperation op) {
    static constexpr char letters[] = "NTC";
    return indexed(letters, static_cast<std::int32_t>(op));
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

// The other options mean the same to every routine.
constexpr const char* option(host::MatrixTriangleMode mode) {
    return mode == host::MatrixTriangleMode::Upper ? "U" : "L";
}
constexpr const char* option(host::MatrixDiagonalMode mode) {
    return mode == host::MatrixDiagonalMode::NonUnit ? "N" : "U";
}
constexpr const char* option(host::MatrixOperationSide side) {
    return side == host::MatrixOperationSide::Left ? "L" : "R";
}
inline const char* option(host::MatrixNorm norm) {
    static constexpr char letters[] = "FOIM";
    return indexed(letters, static_cast<std::int32_t>(norm));
}

// A host character has 16 bits; native code reads the low 8 of a copy.
constexpr char narrow(char16_t letter) {
    return static_cast<char>(letter);
}

} // namespace qrv::provider
