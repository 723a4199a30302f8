// SLARF, CLARF: a reflector applied to a matrix from either side. Trailing zeros of v, and rows or columns of C that
// meet nothing but zeros, are left out.
#include <algorithm>
#include <cstddef>
#include <cstdint>

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

constexpr int fewElements = 64; // for which loops are faster than calls of kernels

void apply_to_few(Side side, int m, int n, Vector<const float> v, float tau, Matrix<float> c, float* w) {
    // With a negative increment the first element is the last one in memory.
    const float* const first = v.inc < 0 ? v.data - std::ptrdiff_t{(side == Side::left ? m : n) - 1} * v.inc : v.data;
    const auto x = [&](int i) { return first[std::ptrdiff_t{i} * v.inc]; };
    if (side == Side::left) {
        for (int j = 0; j < n; ++j) {
            float sum = 0;
            for (int i = 0; i < m; ++i)
                sum += c(i, j) * x(i);
            for (int i = 0; i < m; ++i)
                c(i, j) -= tau * sum * x(i);
        }
        return;
    }
    std::fill_n(w, m, 0.0F);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i)
            w[i] += c(i, j) * x(j);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i)
            c(i, j) -= w[i] * (tau * x(j));
}

} // namespace

template <class T>
void larf(Side side, int m, int n, Vector<const T> v, T tau, Matrix<T> c, T* work) {
    if (tau == scalar<T>(0) || m <= 0 || n <= 0)
        return;
    const bool left = side == Side::left;
    v = without_trailing_zeros(left ? m : n, v);
    (left ? n : m) = left ? ilaslc(m, n, c) : ilaslr(m, n, c);
    if (m == 0 || n == 0)
        return;
    if constexpr (!isComplex<T>)
        if (std::int64_t{m} * n <= fewElements)
            return apply_to_few(side, m, n, v, tau, c, work);
    const T one = scalar<T>(1), zero = scalar<T>(0);
    const Vector<T> w{work};
    if (left) { // C - tau v (C^H v)^H
        blas::gemv(adjoint<T>, m, n, one, c, v, zero, w);
        blas::gerc(m, n, -tau, v, w, c);
    } else { // C - tau (C v) v^H
        blas::gemv(Op::none, m, n, one, c, v, zero, w);
        blas::gerc(m, n, -tau, w, v, c);
    }
}

template void larf(Side, int, int, Vector<const float>, float, Matrix<float>, float*);
template void larf(Side, int, int, Vector<const SingleComplex>, SingleComplex, Matrix<SingleComplex>, SingleComplex*);

} // namespace qrv::lapack
