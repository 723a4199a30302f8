// Options of BLAS and LAPACK routines as enumerations with the published letter as value. They are parsed once, at the
// boundary; an option on its way to a check stays a character.
//
// Kernel builds are compiled for different processors, so nothing inline may be shared between them: in a kernel
// source these functions live in the build's own namespace.
#pragma once

#include "blas/matrix.hpp"

namespace QRV_VIEW_NAMESPACE {

enum class Side : char { left = 'L', right = 'R' };
enum class Uplo : char { upper = 'U', lower = 'L' };
enum class Op : char { none = 'N', transpose = 'T', adjoint = 'C' };
enum class Diag : char { nonUnit = 'N', unit = 'U' };
// Of a product of rotations or reflectors: whether the first one acts first.
enum class Direct : char { forward = 'F', backward = 'B' };
// The lines that rotation k of a sequence turns: k and k + 1; the top one and k + 1; k and the bottom one.
enum class Pivot : char { variable = 'V', top = 'T', bottom = 'B' };

constexpr bool is_option(char option, char upperCase) {
    return option == upperCase || option == upperCase + ('a' - 'A');
}
constexpr Side side_of(char option) {
    return is_option(option, 'L') ? Side::left : Side::right;
}
constexpr Uplo uplo_of(char option) {
    return is_option(option, 'U') ? Uplo::upper : Uplo::lower;
}
constexpr Op op_of(char option) {
    return !transposes(option) ? Op::none : conjugates(option) ? Op::adjoint : Op::transpose;
}
constexpr bool transposes(Op op) {
    return op != Op::none;
}
constexpr bool conjugates(Op op) {
    return op == Op::adjoint;
}
constexpr Diag diag_of(char option) {
    return is_option(option, 'U') ? Diag::unit : Diag::nonUnit;
}
constexpr Direct direct_of(char option) {
    return is_option(option, 'F') ? Direct::forward : Direct::backward;
}
constexpr Pivot pivot_of(char option) {
    return is_option(option, 'V') ? Pivot::variable : is_option(option, 'T') ? Pivot::top : Pivot::bottom;
}
template <class Option>
constexpr char letter(Option option) {
    return static_cast<char>(option);
}

} // namespace QRV_VIEW_NAMESPACE
