// LU factorization with partial pivoting, A = P L U: the routes of SGETRF and CGETRF and what they share.
//
// A is m x n. U takes the upper triangle or trapezoid, L without its unit diagonal the rest; row i was interchanged
// with row ipiv[i - 1], in this order for i from 1 to min(m, n). info is 0, or the position of the first pivot that
// is exactly 0: the factors are complete then too, but U is singular. A NaN or an infinity spreads through the factors
// and pivots stay within range.
//
//   unblocked   column by column; the leaf of all others         getrf_unblocked.cpp
//   recursive   left-looking over blocks, recursive in the block  getrf_serial.cpp
//   ib          right-looking on a team that shares each update  getrf_ib_omp.cpp
//   dynamic     tasks on block columns, handed out as they ripen  getrf_omp.cpp, getrf_schedule.hpp
//
// The progress routine is called after each leaf. If it asks to stop, the routes return at once: the leaves until then
// are factored, what lies between and behind them is in the state that the route had reached.
//
// A panel is factored as a matrix of its own, so its pivots and its info count from its first row, until getrf_append
// takes it into the matrix that it is part of.
#pragma once

#include <cstdint>

#include "blas/complex.hpp"
#include "blas/matrix.hpp"
#include "lapack/factorization.hpp"

namespace qrv::lapack {

// The block of columns [k, end()) from its diagonal down.
struct Panel {
    int k = 0, width = 0;
    int end() const { return k + width; }
};

// ---- Routes: m and n are at least 1 -------------------------------------------------------------------------------

// Whether a matrix is one leaf, which takes loops without kernels: those made AVX-512 2 to 3 times as fast from order 2
// to 11, 1.4 times at 24 and 1.03 times at 32, complex ones 1.4 times at 16 and 1.05 times at 22; the generic and SSSE3
// kernels more.
template <class T>
constexpr bool getrf_is_small(int m, int n) {
    constexpr int mostRows = 32, mostFloats = 1024;
    return m <= mostRows && std::int64_t{m} * n * floatsIn<T> <= mostFloats;
}

// Result: info.
template <class T>
int getrf_unblocked(int m, int n, Matrix<T> a, int* ipiv);

// `alone`: its products take no threads.
template <class T>
FactorResult getrf_recursive(int m, int n, Matrix<T> a, int* ipiv, FactorPlace place, bool alone = false);

// On a team of at most `threads`.
template <class T>
FactorResult getrf_ib(int threads, int m, int n, Matrix<T> a, int* ipiv);

// The same, in block columns of nb < min(m, n).
template <class T>
FactorResult getrf_dynamic(int threads, int nb, int m, int n, Matrix<T> a, int* ipiv);

// ---- What they share ------------------------------------------------------------------------------------------------

// The widest block of a descending table that is narrower than n columns; 0, which ends the table, if there is none.
constexpr int getrf_block_width(const int* widths, int n) {
    while (*widths >= n && *widths > 0)
        ++widths;
    return *widths;
}

// getrf_unblocked, and the progress call after it.
template <class T>
FactorResult getrf_leaf(int m, int n, Matrix<T> a, int* ipiv, FactorPlace place);

// The panel was factored: its info, and its pivots at ipiv[k], count from row k until then.
void getrf_append(FactorResult& whole, FactorResult result, Panel panel, int* ipiv);

// Brings `count` columns from `first` on, which are to the right of the panel, up to date with it: interchanges, the
// rows of U, and the product below them.
template <class T>
void getrf_apply_panel(int m, Matrix<T> a, const int* ipiv, Panel panel, int first, int count);

} // namespace qrv::lapack
