// The QR factorization in the calling thread: a panel is factored with its T and applied to all columns behind it; the
// last columns, too few to pay for that, go one by one.
#include "lapack/elements.hpp"
#include "lapack/factorization.hpp"
#include "lapack/kernel/source/qr/geqrf.hpp"
#include "lapack/kernel/source/reflectors/small_columns.hpp"

namespace qrv::lapack {
namespace {

template <class T>
int block_of(int m, int k) {
    return tuning::block_size(geqrfName<T>, m, k);
}
template <class T>
int crossover_of(int m, int k) {
    return tuning::crossover(geqrfName<T>, m, k);
}

// Factors columns in panels of at most nb. Result: how many, or -1 on a stop. area: T, and behind it the work for the
// columns to the right, together nb*n.
template <class T>
int factor_in_panels(int m, int n, int nb, int tail, Matrix<T> a, T* tau, T* area) {
    const int k = std::min(m, n);
    int i = 0;
    while (k - i > tail) {
        if (i > 0)
            nb = std::min(nb, block_of<T>(m - i, k - i));
        const int ib = std::min(k - i, nb), rest = n - i - ib;
        const Matrix<T> panel = a.block(i, i), t{area, ib}, w{area + ib * ib, ib};
        laqrf(m - i, ib, panel, tau + i, t);
        if (tell_progress(geqrfName<T>, ib, {0, i}, 0).stopped)
            return -1;
        larfb<T>(Side::left, adjoint<T>, {Direct::forward, StoreV::columns, ib, panel, t}, m - i, rest,
                 a.block(i, i + ib), w, BlockWork::upright);
        i += ib;
        tail = crossover_of<T>(m - i, k - i);
    }
    return i;
}

} // namespace

template <class T>
std::int64_t geqrf_serial_work(int m, int n) {
    if (is_small<T>(m, n)) // asked before all tables, which take as long as a few columns
        return n;
    const int k = std::min(m, n), nb = block_of<T>(m, k);
    const bool blocked = nb < k && std::max(nb, crossover_of<T>(m, k)) < k;
    return blocked ? std::int64_t{nb} * n : n;
}

template <class T>
void geqrf_serial(int m, int n, Matrix<T> a, T* tau, T* work, int lwork) {
    const int k = std::min(m, n);
    const std::int64_t wanted = geqrf_serial_work<T>(m, n);
    int done = 0;
    if (wanted > n) {
        int nb = block_of<T>(m, k);
        const WorkArea<T> own(work, lwork, wanted);
        if (!own.data())
            nb = lwork / n;
        done = factor_in_panels(m, n, nb, std::max(nb, crossover_of<T>(m, k)), a, tau, own.data() ? own.data() : work);
        if (done < 0)
            return;
    }
    if (done < k)
        geqr2(m - done, n - done, a.block(done, done), tau + done, work);
    if (!tell_progress(geqrfName<T>, k, {}, 0).stopped)
        work[0] = work_size<T>(wanted);
}

template std::int64_t geqrf_serial_work<float>(int, int);
template std::int64_t geqrf_serial_work<SingleComplex>(int, int);
template void geqrf_serial(int, int, Matrix<float>, float*, float*, int);
template void geqrf_serial(int, int, Matrix<SingleComplex>, SingleComplex*, SingleComplex*, int);

} // namespace qrv::lapack
