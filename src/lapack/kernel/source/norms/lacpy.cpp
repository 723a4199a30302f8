// SLACPY, CLACPY: a matrix, or a triangle of it, copied.
#include <cstring>

#include "blas/complex.hpp"
#include "blas/options.hpp"
#include "lapack/lapack.hpp"

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

template <class T>
void lacpy(char uplo, int m, int n, Matrix<const T> a, Matrix<T> b) {
    const bool upper = is_option(uplo, 'U'), lower = is_option(uplo, 'L');
    for (int j = 0; j < n; ++j) {
        const int first = lower ? j : 0, last = upper ? smaller(j + 1, m) : m;
        if (first < last)
            copy_column(last - first, &a(first, j), &b(first, j));
    }
}

} // namespace
} // namespace qrv::lapack

using namespace qrv;

void qrv_lapack_slacpy(const char* uplo, const int* m, const int* n, const float* a, const int* lda, float* b,
                       const int* ldb) {
    lapack::lacpy<float>(*uplo, *m, *n, {a, *lda}, {b, *ldb});
}
void qrv_lapack_clacpy(const char* uplo, const int* m, const int* n, const qrv_complex* a, const int* lda,
                       qrv_complex* b, const int* ldb) {
    lapack::lacpy<SingleComplex>(*uplo, *m, *n, {a, *lda}, {b, *ldb});
}
