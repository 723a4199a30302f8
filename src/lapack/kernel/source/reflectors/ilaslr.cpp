// ILASLR, ILACLR: the last row of a matrix that is not zero; ILASLC, ILACLC: the last column.
//
// Most matrices have a corner that is not zero, so the corners are looked at first.
#include "lapack/calls/reflectors.hpp"
#include "qrv/native/qr.h"

namespace qrv::lapack {
namespace {

template <class T>
bool is_zero(T x) {
    return x == scalar<T>(0);
}

} // namespace

template <class T>
int ilaslr(int m, int n, Matrix<T> a) {
    if (m <= 0 || n <= 0)
        return 0;
    if (!is_zero(a(m - 1, 0)) || !is_zero(a(m - 1, n - 1)))
        return m;
    int last = 0;
    for (int j = 0; j < n; ++j)
        for (int i = m; i > last; --i)
            if (!is_zero(a(i - 1, j)))
                last = i;
    return last;
}

template <class T>
int ilaslc(int m, int n, Matrix<T> a) {
    if (m <= 0 || n <= 0)
        return 0;
    if (!is_zero(a(0, n - 1)) || !is_zero(a(m - 1, n - 1)))
        return n;
    for (int j = n; j > 0; --j)
        for (int i = 0; i < m; ++i)
            if (!is_zero(a(i, j - 1)))
                return j;
    return 0;
}

template int ilaslr(int, int, Matrix<float>);
template int ilaslr(int, int, Matrix<const float>);
template int ilaslr(int, int, Matrix<SingleComplex>);
template int ilaslr(int, int, Matrix<const SingleComplex>);
template int ilaslc(int, int, Matrix<float>);
template int ilaslc(int, int, Matrix<const float>);
template int ilaslc(int, int, Matrix<SingleComplex>);
template int ilaslc(int, int, Matrix<const SingleComplex>);

} // namespace qrv::lapack

using namespace qrv;

// Their names are not made as those of rows are.
int ILASLR(const int* m, const int* n, const float* a, const int* lda) {
    return lapack::ilaslr(*m, *n, Matrix<const float>{a, *lda});
}
int ILACLR(const int* m, const int* n, const qrv_complex* a, const int* lda) {
    return lapack::ilaslr(*m, *n, Matrix<const SingleComplex>{a, *lda});
}
int ILASLC(const int* m, const int* n, const float* a, const int* lda) {
    return lapack::ilaslc(*m, *n, Matrix<const float>{a, *lda});
}
int ILACLC(const int* m, const int* n, const qrv_complex* a, const int* lda) {
    return lapack::ilaslc(*m, *n, Matrix<const SingleComplex>{a, *lda});
}
