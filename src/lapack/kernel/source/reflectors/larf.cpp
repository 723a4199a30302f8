// SLARF, CLARF: a reflector applied to a matrix from either side. Trailing zeros of v, and rows or columns of C that
// meet nothing but zeros, are left out.
#include "blas/calls.hpp"
#include "lapack/calls/reflectors.hpp"
#include "lapack/elements.hpp"

namespace qrv::lapack {
namespace {

// v without its trailing zeros. Counted down, the last element is the first one in memory.
template <class T>
Vector<const T> without_trailing_zeros(int& n, Vector<const T> v) {
    const auto last = [&] { return v.inc < 0 ? v.data[0] : v[n - 1]; };
    while (n > 0 && last() == scalar<T>(0)) {
        --n;
        if (v.inc < 0)
            v.data -= v.inc;
    }
    return v;
}

} // namespace

template <class T>
void larf(Side side, int m, int n, Vector<const T> v, T tau, Matrix<T> c, T* work) {
    if (tau == scalar<T>(0) || m <= 0 || n <= 0)
        return;
    const T one = scalar<T>(1), zero = scalar<T>(0);
    const Vector<T> w{work};
    if (side == Side::left) { // C - tau v (C^H v)^H
        v = without_trailing_zeros(m, v);
        n = ilaslc(m, n, c);
        if (n == 0)
            return;
        blas::gemv(adjoint<T>, m, n, one, c, v, zero, w);
        blas::gerc(m, n, -tau, v, w, c);
    } else { // C - tau (C v) v^H
        v = without_trailing_zeros(n, v);
        m = ilaslr(m, n, c);
        if (m == 0)
            return;
        blas::gemv(Op::none, m, n, one, c, v, zero, w);
        blas::gerc(m, n, -tau, w, v, c);
    }
}

template void larf(Side, int, int, Vector<const float>, float, Matrix<float>, float*);
template void larf(Side, int, int, Vector<const SingleComplex>, SingleComplex, Matrix<SingleComplex>, SingleComplex*);

} // namespace qrv::lapack
