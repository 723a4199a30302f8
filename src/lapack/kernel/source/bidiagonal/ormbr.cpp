// SORMBR, CUNMBR: Q or P of a reduction to bidiagonal form, applied to a matrix.
#include <algorithm>

#include "lapack/calls/bidiagonal.hpp"
#include "lapack/calls/qr.hpp"
#include "lapack/elements.hpp"
#include "lapack/routine_name.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {

template <class T>
std::int64_t ormbr_work(BidiagonalFactor factor, Side side, int m, int n) {
    const bool q = factor == BidiagonalFactor::q, left = side == Side::left;
    const RoutineName<T> name(isComplex<T> ? (q ? "UNMQR" : "UNMLQ") : (q ? "ORMQR" : "ORMLQ"));
    const int nb = left ? tuning::block_size(name, m - 1, n, m - 1) : tuning::block_size(name, m, n - 1, n - 1);
    return std::int64_t{std::max(1, left ? n : m)} * nb;
}

template <class T>
void ormbr(BidiagonalFactor factor, Side side, Op op, int m, int n, int k, Matrix<const T> a, const T* tau, Matrix<T> c,
           T* work, int lwork) {
    const bool q = factor == BidiagonalFactor::q, left = side == Side::left;
    const QForm form = q ? QForm::qr : QForm::lq;
    const int order = left ? m : n;
    if (!q) // the rows of the factorization are those of P^H
        op = op == Op::none ? adjoint<T> : Op::none;
    if (q ? order >= k : order > k)
        orm<T>(form, side, op, m, n, k, a, tau, c, work, lwork);
    else if (order > 1) // the first row and column are those of the identity
        orm<T>(form, side, op, left ? m - 1 : m, left ? n : n - 1, order - 1, q ? a.block(1, 0) : a.block(0, 1), tau,
               left ? c.block(1, 0) : c.block(0, 1), work, lwork);
}

template std::int64_t ormbr_work<float>(BidiagonalFactor, Side, int, int);
template std::int64_t ormbr_work<SingleComplex>(BidiagonalFactor, Side, int, int);
template void ormbr(BidiagonalFactor, Side, Op, int, int, int, Matrix<const float>, const float*, Matrix<float>, float*,
                    int);
template void ormbr(BidiagonalFactor, Side, Op, int, int, int, Matrix<const SingleComplex>, const SingleComplex*,
                    Matrix<SingleComplex>, SingleComplex*, int);

} // namespace qrv::lapack
