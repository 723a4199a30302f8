// SLASET, CLASET: a matrix, or a triangle of it, set to one value and its diagonal to another.
#include "lapack/calls/norms.hpp"

namespace qrv::lapack {

template <class T>
void laset(Part part, int m, int n, T offDiagonal, T diagonal, Matrix<T> a) {
    for (int j = 0; j < n; ++j) {
        const int first = part == Part::lower ? smaller(j + 1, m) : 0, last = part == Part::upper ? smaller(j, m) : m;
        for (int i = first; i < last; ++i)
            a(i, j) = offDiagonal;
        if (j < m)
            a(j, j) = diagonal;
    }
}

template void laset(Part, int, int, float, float, Matrix<float>);
template void laset(Part, int, int, SingleComplex, SingleComplex, Matrix<SingleComplex>);

} // namespace qrv::lapack
