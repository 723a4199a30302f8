// SLAQRF, CLAQRF: a panel of QR with its T, recursively.
//
// Before step i, in blocks of what is done, this block and the rest:
//
//   A = [ V0 R0 R0 ]   this block is factored with its T1, and     T = [ T0 T01  . ]   T01 = -T0 (V0^H V1) T1
//       [ V0 A1 A2 ]   applied to the rest                             [    T1   W ]   W: work for the rest
//
// The corner of T that is not made yet has the size of the work of that.
#include "blas/assert.hpp"
#include "blas/calls.hpp"
#include "lapack/kernel/source/qr/geqrf.hpp"
#include "lapack/kernel/source/reflectors/larft.hpp"

namespace qrv::lapack {
namespace {

constexpr int widestStep = 256;

} // namespace

template <class T>
void laqrf(int m, int n, Matrix<T> a, T* tau, Matrix<T> t) {
    const int width = std::min(tuning::block_size(RoutineName<T>("LAQRF"), m, n), widestStep), k = std::min(m, n);
    if (width >= n) {
        geqr2(m, n, a, tau, t.data);
        larft<T>(Direct::forward, StoreV::columns, m, k, a, tau, t);
        return;
    }
    QRV_ASSERT(m >= n); // what is wider than high is a last panel, of so few rows that it takes no steps
    const StoredReflectors<T> v{Direct::forward, StoreV::columns, a};
    for (int i = 0, ib; i < k; i += ib) {
        ib = std::min(width, k - i);
        const Matrix<T> block = a.block(i, i), tOfBlock = t.block(i, i);
        laqrf(m - i, ib, block, tau + i, tOfBlock);
        larfb<T>(Side::left, adjoint<T>, {Direct::forward, StoreV::columns, ib, block, tOfBlock}, m - i, n - i - ib,
                 a.block(i, i + ib), t.block(i, i + ib), BlockWork::upright);
        if (i > 0)
            larft_couple<T>(v.from(i, 0), i, v.from(i, i), ib, m - i - ib, t, tOfBlock, t.block(0, i));
    }
}

template void laqrf(int, int, Matrix<float>, float*, Matrix<float>);
template void laqrf(int, int, Matrix<SingleComplex>, SingleComplex*, Matrix<SingleComplex>);

} // namespace qrv::lapack
