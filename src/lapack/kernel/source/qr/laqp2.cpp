// SLAQP2, CLAQP2: QR with column pivoting, a column at a time.
#include "lapack/calls/qr.hpp"
#include "lapack/kernel/source/qr/pivoted_columns.hpp"

namespace qrv::lapack {

template <class T>
void laqp2(int m, int n, int offset, Matrix<T> a, int* jpvt, T* tau, float* vn1, float* vn2, T* work) {
    const PivotedColumns<T> columns{m, n, a, jpvt, vn1, vn2};
    for (int i = 0; i < std::min(m - offset, n); ++i) {
        const int r = offset + i;
        columns.exchange(columns.longest(i, n), i);
        tau[i] = larfp(m - r, a(r, i), a.column(std::min(r + 1, m - 1), i));
        if (i + 1 == n)
            break;
        const T diagonal = a(r, i);
        a(r, i) = scalar<T>(1);
        larf<T>(Side::left, m - r, n - i - 1, a.column(r, i), conj(tau[i]), a.block(r, i + 1), work);
        a(r, i) = diagonal;
        for (int j = i + 1; j < n; ++j)
            if (!columns.shorten(r, r + 1, j))
                columns.measure(r + 1, j);
    }
}

template void laqp2(int, int, int, Matrix<float>, int*, float*, float*, float*, float*);
template void laqp2(int, int, int, Matrix<SingleComplex>, int*, SingleComplex*, float*, float*, SingleComplex*);

} // namespace qrv::lapack
