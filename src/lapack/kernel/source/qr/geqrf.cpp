// SGEQRF, CGEQRF: the choice of a route.
#include "lapack/kernel/source/qr/geqrf.hpp"

#include "lapack/factorization.hpp"
#include "lapack/kernel/source/reflectors/small_columns.hpp"
#include "qrv/service.h"

namespace qrv::lapack {
namespace {

// What is behind the first columns, which are done.
template <class T>
void factor_rest(int m, int n, int done, Matrix<T> a, T* tau, T* work, int lwork) {
    if (done > 0 && done < n)
        geqrf_serial(m - done, n - done, a.block(done, done), tau + done, work, lwork);
    else if (done == n)
        tell_progress(geqrfName<T>, n, {}, 0);
}

} // namespace

template <class T>
GeqrfPlan geqrf_plan(int m, int n) {
    const int threads = std::max(1, qrv_serv_get_max_threads());
    const auto block_size = [&](const char* which) {
        return std::max(1, tuning::value(1, geqrfName<T>, which, {m, n, threads, -1}));
    };
    return {m,
            n,
            threads,
            block_size(" "),
            block_size("B"),
            std::max(2, tuning::minimum_block_size(geqrfName<T>)),
            tuning::crossover(geqrfName<T>, m, n, threads)};
}

template <class T>
std::int64_t geqrf_team_work(int m, int n) {
    return geqrf_plan<T>(m, n).work();
}

template <class T>
std::int64_t geqrf_work(int m, int n) {
    if (m == 0 || n == 0)
        return 1;
    if (is_small<T>(m, n))
        return geqrf_serial_work<T>(m, n);
    const GeqrfPlan plan = geqrf_plan<T>(m, n);
    return plan.wants_team() ? plan.work() : geqrf_serial_work<T>(m, n);
}

template <class T>
void geqrf(int m, int n, Matrix<T> a, T* tau, T* work, int lwork) {
    if (m == 0 || n == 0)
        return;
    if (is_small<T>(m, n))
        return geqrf_serial(m, n, a, tau, work, lwork);
    const GeqrfPlan plan = geqrf_plan<T>(m, n);
    const int done = geqrf_is_tall(m, n) ? geqrf_tall(plan.threads, m, n, a, tau) : 0;
    if (done != 0)
        factor_rest(m, n, done, a, tau, work, lwork);
    else if (!plan.wants_team())
        return geqrf_serial(m, n, a, tau, work, lwork);
    else if (const WorkArea<T> area(work, lwork, plan.blocked() ? plan.work() : 0);
             !plan.blocked() || !area.data() || !geqrf_team(plan, a, tau, area.data()))
        geqrf_serial(m, n, a, tau, work, lwork);
    work[0] = work_size<T>(geqrf_work<T>(m, n));
}

template GeqrfPlan geqrf_plan<float>(int, int);
template GeqrfPlan geqrf_plan<SingleComplex>(int, int);
template std::int64_t geqrf_team_work<float>(int, int);
template std::int64_t geqrf_team_work<SingleComplex>(int, int);
template std::int64_t geqrf_work<float>(int, int);
template std::int64_t geqrf_work<SingleComplex>(int, int);
template void geqrf(int, int, Matrix<float>, float*, float*, int);
template void geqrf(int, int, Matrix<SingleComplex>, SingleComplex*, SingleComplex*, int);

} // namespace qrv::lapack
