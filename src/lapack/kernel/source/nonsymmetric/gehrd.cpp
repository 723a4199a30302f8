// SGEHRD: Hessenberg form H = Q' A Q of a general matrix, in blocks of columns.
//
// Before step i, in blocks of i, ib and the rest of the active range:
//
//   [ A00 A01 A02 ]     panel    V, T and Y = A V T of columns A11, A21          (lahr2.cpp)
//   [     A11 A12 ]     right    [A02; A12; A22] -= Y V',  A01 -= Y V1'
//   [     A21 A22 ]     left     [A12; A22] := (I - V T' V') [A12; A22]
//
// The last columns are reduced one by one.
#include <algorithm>

#include "blas/calls.hpp"
#include "blas/thread/common/far_cores.hpp"
#include "lapack/calls/nonsymmetric.hpp"
#include "lapack/calls/reflectors.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

// Two threads took 0.89 of the time of one for n = 300, 0.73 for 500 and 0.62 for 700; 1.35 and 1.4 for 300 and 500 as
// long as their cores were far from each other.
constexpr int teamOrder = 450;
// On far cores two threads took 1.23, 1.31, 1.14 and 1.11 of the time of one for n = 300, 500, 700 and 1000, what one
// does for both 1.01 to 1.05.
constexpr int farTeamOrder = 1024;

constexpr int mostColumns = 32, heightOfT = mostColumns + 1; // T is on the stack: the block size of the tuning values

int block_size(int n, ActiveRange range) {
    return std::min(mostColumns, tuning::block_size("SGEHRD", n, range.begin + 1, range.end, -1));
}
// Columns that are left to be reduced one by one: never fewer than pay off, 32 of them took 2.4 times as long at n =
// 34, 1.7 at 46, 1.3 at 70 and 1.1 at 120.
int crossover(int nb, int n, ActiveRange range) {
    constexpr int fewest = 96;
    return std::max({nb, fewest, tuning::crossover("SGEHRD", n, range.begin + 1, range.end, -1)});
}

// What fits into the work, of which a block takes n floats a column.
int block_size_for(int lwork, int nb, int n) {
    if (lwork / n >= nb)
        return nb;
    return lwork / n >= std::max(2, tuning::minimum_block_size("SGEHRD")) ? lwork / n : 1;
}

void reduce_block(int threads, int i, int ib, int n, int end, Matrix<float> a, float* tau, Matrix<float> t,
                  Matrix<float> y) {
    const int rest = end - i - ib;
    const Matrix<float> v = a.block(i + 1, i);
    lahr2(threads, end, i + 1, ib, a.block(0, i), tau + i, t, y);

    float& corner = a(i + ib, i + ib - 1); // the 1 of the last reflector
    const float beta = corner;
    corner = 1;
    blas::gemm(Op::none, Op::transpose, end, rest, ib, -1, y, a.block(i + ib, i), 1, a.block(0, i + ib));
    corner = beta;
    blas::trmm(Side::right, Uplo::lower, Op::transpose, Diag::unit, i + 1, ib - 1, 1, v, y);
    for (int j = 0; j + 1 < ib; ++j)
        kernel::axpy(i + 1, -1, y.column(0, j), a.column(0, i + j + 1));

    const BlockReflector<float> h{Direct::forward, StoreV::columns, ib, v, t};
    larfb(Side::left, Op::transpose, h, end - i - 1, n - i - ib, a.block(i + 1, i + ib), {y.data, ib},
          BlockWork::upright);
}

} // namespace

std::int64_t gehrd_work(int n, ActiveRange range) {
    return std::int64_t{std::max(1, n)} * block_size(n, range);
}

void gehrd(int n, ActiveRange range, Matrix<float> a, float* tau, float* work, int lwork) {
    const auto [begin, end] = range;
    std::fill(tau, tau + begin, 0.0F);
    std::fill(tau + std::max(0, end - 1), tau + std::max(0, n - 1), 0.0F);
    if (range.size() <= 1)
        return;
    const NearTeams teams(range.size(), farTeamOrder);
    float tData[heightOfT * mostColumns];
    const Matrix<float> t{tData, heightOfT}, y{work, n};
    int i = begin;
    if (int nb = block_size(n, range); nb > 1 && nb < range.size()) {
        const int last = crossover(nb, n, range); // columns that are reduced one by one
        if (last < range.size())
            nb = block_size_for(lwork, nb, n);
        if (nb > 1)
            for (; i + 1 + last < end; i += nb)
                reduce_block(n < teamOrder ? 1 : lahr2_threads(end, i + 1), i, nb, n, end, a, tau, t, y);
    }
    gehd2(n, {i, end}, a, tau, work);
}

} // namespace qrv::lapack
