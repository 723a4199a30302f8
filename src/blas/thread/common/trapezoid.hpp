// A triangle shared out by columns.
#pragma once

#include <cmath>

#include "blas/options.hpp"
#include "blas/thread/common/slice.hpp"

namespace qrv {

// The columns of a part of a triangle of order n, of about equal areas: a block on the diagonal, and above it (upper
// triangle) or below it a rectangle of these rows.
//
//   n     team   upper: columns, rectangle's rows
//   1000  2      0+704, 0+0     704+296, 0+704
//   100   3      0+64, 0+0      64+16, 0+64     80+20, 0+80
struct Trapezoid {
    Slice columns, rectangle;
};
inline Trapezoid trapezoid(Uplo uplo, int n, int team, int part) {
    constexpr int tile = 16;
    const auto left_of = [=](int parts) {
        return parts == team ? n : static_cast<int>(n * std::sqrt(static_cast<double>(parts) / team)) / tile * tile;
    };
    const int first = uplo == Uplo::upper ? left_of(part) : n - left_of(team - part);
    const int end = uplo == Uplo::upper ? left_of(part + 1) : n - left_of(team - part - 1);
    return {{first, end - first}, uplo == Uplo::upper ? Slice{0, first} : Slice{end, n - end}};
}

// The rows that these columns have in the triangle.
constexpr Slice rows_of(Uplo uplo, int n, Slice columns) {
    return uplo == Uplo::upper ? Slice{0, columns.first + columns.count} : Slice{columns.first, n - columns.first};
}

} // namespace qrv
