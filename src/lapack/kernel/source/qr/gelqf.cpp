// SGELQF, CGELQF: A = L Q in blocks of rows. A block is factored by itself, and what lies below it is multiplied by its
// reflectors from the right.
#include <algorithm>

#include "lapack/calls/qr.hpp"
#include "lapack/routine_name.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

template <class T>
constexpr RoutineName<T> gelqfName("GELQF");

} // namespace

template <class T>
std::int64_t gelqf_work(int m, int n) {
    return std::int64_t{m} * tuning::block_size(gelqfName<T>, m, n);
}

template <class T>
void gelqf(int m, int n, Matrix<T> a, T* tau, T* work, int lwork) {
    const int k = std::min(m, n);
    if (k == 0) {
        work[0] = scalar<T>(1);
        return;
    }
    int nb = tuning::block_size(gelqfName<T>, m, n), least = 2, tail = 0;
    std::int64_t used = m;
    if (nb > 1 && nb < k) {
        tail = std::max(0, tuning::crossover(gelqfName<T>, m, n));
        if (tail < k) {
            used = std::int64_t{m} * nb;
            if (lwork < used) {
                nb = lwork / m;
                least = std::max(least, tuning::minimum_block_size(gelqfName<T>));
            }
        }
    }
    int i = 0;
    if (nb >= least && nb < k && tail < k)
        for (int ib; i < k - tail; i += ib) {
            ib = std::min(k - i, nb);
            const Matrix<T> panel = a.block(i, i);
            gelq2(ib, n - i, panel, tau + i, work);
            const int below = m - i - ib;
            if (below == 0)
                continue;
            const Matrix<T> t{work, ib};
            larft<T>(Direct::forward, StoreV::rows, n - i, ib, panel, tau + i, t);
            larfb<T>(Side::right, Op::none, {Direct::forward, StoreV::rows, ib, panel, t}, below, n - i,
                     a.block(i + ib, i), {work + ib * ib, below});
        }
    if (i < k)
        gelq2(m - i, n - i, a.block(i, i), tau + i, work);
    work[0] = work_size<T>(used);
}

template std::int64_t gelqf_work<float>(int, int);
template std::int64_t gelqf_work<SingleComplex>(int, int);
template void gelqf(int, int, Matrix<float>, float*, float*, int);
template void gelqf(int, int, Matrix<SingleComplex>, SingleComplex*, SingleComplex*, int);

} // namespace qrv::lapack
