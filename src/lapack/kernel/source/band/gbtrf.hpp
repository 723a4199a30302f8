// LU factorization of a band matrix with partial pivoting: the routes of SGBTRF and what they share.
//
// A is m x n with kl diagonals below the main one and ku above it. The interchanges give U kv = kl + ku diagonals, for
// which AB has kl rows above those of A; what they hold before is not read. Row i was interchanged with row
// ipiv[i - 1], in this order for i from 1 to min(m, n). The multipliers stay where they were computed: L as it is
// stored is not a triangle with permuted rows, so a solve goes on with interchanges and eliminations by turns. info is
// 0, or the position of the first pivot that is exactly 0.
//
//   unblocked   column by column                                        gbtrf_unblocked.cpp
//   blocked     right-looking over blocks; on a team or on one thread   gbtrf_omp.cpp, gbtrf_blocked.hpp
#pragma once

#include "lapack/calls/band.hpp"

namespace qrv::lapack {

// Both take the dense view of the band. Result: info.
int gbtrf_unblocked(const BandShape& shape, Matrix<float> a, int* ipiv);
// In blocks of nb <= kl columns, nb <= gbtrfWidest, on a team of at most `threads`; unblocked without memory for copies
// of two blocks. `stage` is told to the progress routine after each panel; if that asks to stop, info is what it is
// then.
constexpr int gbtrfWidest = 32; // as a square of them lies on the stack
int gbtrf_blocked(int threads, int nb, const char* stage, const BandShape& shape, Matrix<float> a, int* ipiv);

// ---- What they share ------------------------------------------------------------------------------------------------

// Sets the fill-in of U to 0 in the columns that have some from the start.
void clear_first_fill(const BandShape& shape, int column, Matrix<float> a);
// The same of column j + kv, which the pivot row of column j may reach.
void clear_fill(const BandShape& shape, int j, Matrix<float> a);

// x := x / pivot, by the reciprocal where that cannot overflow.
void divide_multipliers(int n, float pivot, float* x);

} // namespace qrv::lapack
