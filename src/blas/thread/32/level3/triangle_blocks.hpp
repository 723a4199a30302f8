// How a team divides the triangle of a rank-k or rank-2k update.
#pragma once

#include "blas/thread/common/slice.hpp"

namespace qrv {

// Updates up to this size are one kernel call.
constexpr int serialUpdateUpTo = 16;

// One block row of a triangle: the diagonal block, and what follows it in its rows (upper triangle) or in
// its columns (lower).
struct TriangleBlockRow {
    Slice rows, rest;
};

// Equal blocks, the last one taking what remains; nothing follows it.
//
//   n     team  diagonal blocks     rests
//   17    2     0+8    8+9          8+9    17+0
//   3     4     0+0 (three) 0+3     0+3 (three) 3+0
constexpr TriangleBlockRow triangle_block_row(int n, int team, int part) {
    const Slice rows = equal_slice(n, team, part);
    const int end = rows.first + rows.count;
    return {rows, {end, n - end}};
}

} // namespace qrv
