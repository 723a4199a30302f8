// SLACPY, CLACPY: a matrix, or a triangle of it, copied.
#include <cstring>

#include "lapack/calls/norms.hpp"

namespace qrv::lapack {
namespace {

// From this length on a column is worth the call of a memory copy.
constexpr int longColumn = 25;

template <class T>
void copy_column(int rows, const T* from, T* to) {
    if (rows >= longColumn)
        std::memcpy(to, from, static_cast<std::size_t>(rows) * sizeof(T));
    else
        for (int i = 0; i < rows; ++i)
            to[i] = from[i];
}

} // namespace

template <class T>
void lacpy(Part part, int m, int n, Matrix<const T> a, Matrix<T> b) {
    const bool upper = part == Part::upper, lower = part == Part::lower;
    for (int j = 0; j < n; ++j) {
        const int first = lower ? j : 0, last = upper ? smaller(j + 1, m) : m;
        if (first < last)
            copy_column(last - first, &a(first, j), &b(first, j));
    }
}

template void lacpy(Part, int, int, Matrix<const float>, Matrix<float>);
template void lacpy(Part, int, int, Matrix<const SingleComplex>, Matrix<SingleComplex>);

} // namespace qrv::lapack
