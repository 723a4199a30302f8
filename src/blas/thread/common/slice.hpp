// What one thread of a team works on.
#pragma once

#include <cstddef>

#include "blas/matrix.hpp"

namespace qrv {

// Elements, rows, columns or steps [first, first + count).
struct Slice {
    int first, count;
};

// Slice `part` of `parts`: equal chunks of a multiple of `unit`, the last one taking what remains. Without enough
// units for all, the last slice is everything and the others are empty.
//
//   total parts unit   slices
//   10    4     1      0+2  2+2  4+2  6+4
//   3     4     1      0+0  0+0  0+0  0+3
//   103   3     4      0+32  32+32  64+39
constexpr Slice equal_slice(int total, int parts, int part, int unit = 1) {
    const int chunk = total / parts / unit * unit;
    const int first = chunk * part;
    return {first, part == parts - 1 ? total - first : chunk};
}

// The same without a unit, as even as can be: the first slices take one more where the parts do not divide the total.
//
//   total parts   slices
//   10    4       0+3  3+3  6+2  8+2
//   3     4       0+1  1+1  2+1  3+0
constexpr Slice even_slice(int total, int parts, int part) {
    const int quotient = total / parts, rest = total % parts;
    return {part * quotient + smaller(part, rest), quotient + (part < rest)};
}

// Even slices in whole register tiles of `unit` rows or columns; the last one ends with the total. Beyond the tiles
// slices are empty.
//
//   total parts unit   slices
//   200   3     16     0+80  80+64  144+56
//   100   3     8      0+40  40+32  72+28
//   5     2     8      0+5   none
constexpr Slice tile_slice(int total, int parts, int part, int unit) {
    const Slice tiles = even_slice(total / unit + (total % unit != 0), parts, part);
    if (tiles.count == 0)
        return {total > 0 ? total - 1 : 0, 0};
    const int first = tiles.first * unit;
    return {first, smaller(tiles.count * unit, total - first)};
}

// The same of rows and of columns of C, of which narrow slices take few at once.
constexpr Slice row_slice(int rows, int parts, int part) {
    return tile_slice(rows, parts, part, 16);
}
constexpr Slice column_slice(int columns, int parts, int part) {
    return tile_slice(columns, parts, part, columns / parts >= 64 ? 16 : 4);
}

// A thread's slice of a vector of n elements: equal chunks of a multiple of 8, so that all begin with the alignment of
// the vector, the last thread taking what remains. A thread beyond the team gets nothing.
//
//   n    team   slices
//   100  4      0+24  24+24  48+24  72+28
//   60   8      0+0   0+0    ...    0+60
//   7    1      0+7
constexpr Slice vector_slice(int n, int team, int thread) {
    constexpr int unit = 8;
    return n <= 0 || thread >= team ? Slice{0, 0} : equal_slice(n, team, thread, unit);
}

// From the address of a vector of n elements to that of its slice. With a negative increment a routine counts back
// from the address it is given, so that of the slice is as far from its first element as that of the vector is from
// its own.
constexpr std::ptrdiff_t slice_offset(Slice slice, int n, int inc) {
    const int steps = inc >= 0 ? slice.first : slice.first + slice.count - n;
    return std::ptrdiff_t{steps} * inc;
}
template <class T>
constexpr Vector<T> slice_of(Vector<T> x, int n, Slice slice) {
    return {x.data + slice_offset(slice, n, x.inc), x.inc};
}

} // namespace qrv
