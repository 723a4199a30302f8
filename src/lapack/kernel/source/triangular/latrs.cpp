// SLATRS, CLATRS: solution of a triangular system, scaled so that it does not overflow. The method is told in
// scaled_solve.hpp.
#include "lapack/calls/triangular.hpp"
#include "lapack/kernel/source/triangular/scaled_solve.hpp"

namespace qrv::lapack {
namespace {

template <class T>
struct DenseTriangle {
    using Element = T;

    Uplo uplo;
    Diag diag;
    int n;
    Matrix<const T> a;

    T diagonal(int j) const { return a(j, j); }
    StoredColumn<T> column(int j) const {
        const int first = uplo == Uplo::upper ? 0 : j + 1;
        return {first, uplo == Uplo::upper ? j : n - 1 - j, a.block(first, j).data};
    }
    void solve(Op op, T* x) const { kernel::trsv(uplo, op, diag, n, a, Vector{x}); }
};

} // namespace

template <class T>
float latrs(Uplo uplo, Op op, Diag diag, bool cnormGiven, int n, Matrix<const T> a, T* x, float* cnorm) {
    return scaled_solve(DenseTriangle<T>{uplo, diag, n, a}, op, cnormGiven, x, cnorm);
}

template float latrs(Uplo, Op, Diag, bool, int, Matrix<const float>, float*, float*);
template float latrs(Uplo, Op, Diag, bool, int, Matrix<const SingleComplex>, SingleComplex*, float*);

} // namespace qrv::lapack
