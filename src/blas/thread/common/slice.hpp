// What one thread of a team works on.
#pragma once

#include <cstddef>

namespace qrv {

// Elements, rows, columns or steps [first, first + count).
struct Slice {
    int first, count;
};

// A thread's slice of a vector of n elements: equal chunks of a multiple of 8, so that all begin with the alignment of
// the vector, the last thread taking what remains. A thread beyond the team gets nothing.
//
//   n    team   slices
//   100  4      0+24  24+24  48+24  72+28
//   60   8      0+0   0+0    ...    0+60
//   7    1      0+7
constexpr Slice vector_slice(int n, int team, int thread) {
    constexpr int unit = 8;
    if (n <= 0 || thread >= team)
        return {0, 0};
    const int chunk = n / team / unit * unit;
    const int first = chunk * thread; // below n, as chunk * team <= n
    return {first, thread == team - 1 ? n - first : chunk};
}

// From the address of a vector of n elements to that of its slice. With a negative increment a routine counts back
// from the address it is given, so that of the slice is as far from its first element as that of the vector is from
// its own.
constexpr std::ptrdiff_t slice_offset(Slice slice, int n, int inc) {
    const int steps = inc >= 0 ? slice.first : slice.first + slice.count - n;
    return std::ptrdiff_t{steps} * inc;
}

} // namespace qrv
