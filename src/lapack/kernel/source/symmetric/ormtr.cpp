// SORMTR: products with the Q of SSYTRD.
//
// Q is the product of n - 1 reflectors H(i) on all rows but one. For a lower triangle it is H(1) H(2) .., and v(i)
// begins with its 1: the Q of a QR factorization; for an upper triangle it is .. H(2) H(1), and v(i) ends with it: the
// Q of a QL factorization.
#include "lapack/calls/qr.hpp"
#include "lapack/calls/symmetric.hpp"
#include "lapack/workspace.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {

std::int64_t ormtr_work(Side side, Uplo uplo, int m, int n) {
    const bool left = side == Side::left;
    const int order = left ? m : n, across = left ? n : m;
    if (m == 0 || n == 0 || order == 1)
        return 1;
    const int nb = tuning::block_size(uplo == Uplo::upper ? "SORMQL" : "SORMQR", left ? m - 1 : m, left ? n : n - 1);
    return std::int64_t{larger(1, across)} * nb;
}

void ormtr(Side side, Uplo uplo, Op op, int m, int n, Matrix<const float> a, const float* tau, Matrix<float> c,
           float* work, int lwork) {
    const bool left = side == Side::left, upper = uplo == Uplo::upper;
    const int order = left ? m : n;
    if (m > 0 && n > 0 && order > 1)
        orm<float>(upper ? QForm::ql : QForm::qr, side, op, left ? m - 1 : m, left ? n : n - 1, order - 1,
                   upper ? a.block(0, 1) : a.block(1, 0), tau,
                   upper  ? c
                   : left ? c.block(1, 0)
                          : c.block(0, 1),
                   work, lwork);
    work[0] = work_size<float>(ormtr_work(side, uplo, m, n));
}

} // namespace qrv::lapack
