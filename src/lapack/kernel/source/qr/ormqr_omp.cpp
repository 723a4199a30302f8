// SORMQR, CUNMQR, SORMQL, CUNMQL, SORMLQ, CUNMLQ: a Q from QR, QL or LQ applied to a matrix, in blocks on a team.
//
//   factors    all T first: panels are taken as threads come free
//   barrier
//   strips     each thread has a share of the columns (left) or rows (right) of C, and walks it in strips: all panels
//              are applied to a strip, in their order, while it is in the cache
//
// Threads share no element of C. One thread does the same without a region.
#include <algorithm>
#include <atomic>

#include "blas/thread/common/team_omp.hpp"
#include "lapack/kernel/source/qr/apply_q.hpp"
#include "lapack/routine_name.hpp"
#include "qrv/service.h"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

constexpr int widestStrip = 256;

// Of complex elements only QR and LQ have tuning values.
template <class T>
RoutineName<T> name_of(QForm form) {
    if (isComplex<T>)
        return RoutineName<T>(form == QForm::lq ? "UNMLQ" : "UNMQR");
    return RoutineName<T>(form == QForm::lq ? "ORMLQ" : form == QForm::ql ? "ORMQL" : "ORMQR");
}

struct OrmPlan {
    int threads, nb;
    std::int64_t across, k; // columns or rows of C, reflectors
    std::int64_t work() const { return (across * threads + k) * nb; }
};

template <class T>
OrmPlan orm_plan(QForm form, Side side, int m, int n, int k) {
    return {std::max(1, qrv_serv_get_max_threads()), tuning::block_size(name_of<T>(form), m, n, k),
            side == Side::left ? n : m, k};
}

// Whether reflectors that are no more than one block are better applied as one than one by one.
constexpr bool one_block_pays(int m, int n, int k) {
    return k >= 8 && std::int64_t{m} * n >= 1024;
}
// Whether to wake a team takes longer than it saves.
template <class T>
constexpr bool is_too_small_for_team(int m, int n, int k) {
    return (isComplex<T> ? 4.0 : 1.0) * m * n * k < 100'000;
}

template <class T>
struct BlockedQ {
    ReflectorsOfQ<T> q;
    Side side;
    Op op;
    int nb, across;
    Matrix<T> c;
    T* area; // T of all panels, and behind them the work of each thread

    int panels() const { return (q.k - 1) / nb + 1; }
    QPanel<T> panel(int number) const { return q.panel(number * nb, std::min(nb, q.k - number * nb)); }
    Matrix<T> t(int number) const { return {area + std::int64_t{number} * nb * nb, nb}; }

    void factor(int number) const {
        const QPanel<T> p = panel(number);
        larft(q.direct(), q.store(), p.length, p.count, p.v, q.tau + p.first, t(number));
    }
    void apply_share(int thread, int team) const {
        const std::int64_t share = (across - 1) / team + 1, begin = share * thread;
        const int first = static_cast<int>(std::min<std::int64_t>(across, begin));
        const int end = static_cast<int>(std::min<std::int64_t>(across, begin + share));
        T* const work = area + (std::int64_t{q.k} + std::int64_t{across} * thread) * nb;
        for (int at = first; at < end; at += widestStrip)
            apply_strip(at, std::min(end - at, widestStrip), work);
    }

private:
    void apply_strip(int first, int width, T* work) const {
        const bool left = side == Side::left, up = q.first_comes_first(side, op);
        for (int step = 0; step < panels(); ++step) {
            const int number = up ? step : panels() - 1 - step;
            const QPanel<T> p = panel(number);
            const Matrix<T> strip = left ? c.block(p.row, first) : c.block(first, p.row);
            larfb<T>(side, q.op_of_product(op), {q.direct(), q.store(), p.count, p.v, t(number)},
                     left ? p.length : width, left ? width : p.length, strip, {work, left ? p.count : width},
                     BlockWork::upright);
        }
    }
};

template <class T>
void apply_on_team(int threads, const BlockedQ<T>& x) {
    std::atomic<int> next = 0;
    const auto factor_all = [&](int, int) {
        for (int number; (number = next++) < x.panels();)
            x.factor(number);
    };
    on_team(threads, factor_all, [&](int team, int thread) { x.apply_share(thread, team); });
}

template <class T>
void apply_alone(const BlockedQ<T>& x) {
    for (int number = 0; number < x.panels(); ++number)
        x.factor(number);
    x.apply_share(0, 1);
}

} // namespace

template <class T>
std::int64_t orm_work(QForm form, Side side, int m, int n, int k) {
    return orm_plan<T>(form, side, m, n, k).work();
}

template <class T>
void orm(QForm form, Side side, Op op, int m, int n, int k, Matrix<const T> a, const T* tau, Matrix<T> c, T* work,
         int lwork) {
    if (m == 0 || n == 0 || k == 0) {
        work[0] = scalar<T>(1);
        return;
    }
    const OrmPlan plan = orm_plan<T>(form, side, m, n, k);
    const int nb = std::min(plan.nb, k), least = std::max(2, tuning::minimum_block_size(name_of<T>(form)));
    const bool blocked = plan.nb >= least && (plan.nb < k || one_block_pays(m, n, k));
    if (const WorkArea<T> area(work, lwork, blocked ? plan.work() : 0); blocked && area.data()) {
        const BlockedQ<T> x{
            {form, side == Side::left ? m : n, k, a, tau}, side, op, nb, int(plan.across), c, area.data()};
        if (plan.threads == 1 || is_too_small_for_team<T>(m, n, k))
            apply_alone(x);
        else
            apply_on_team(plan.threads, x);
    } else {
        orm2(form, side, op, m, n, k, a, tau, c, work);
    }
    work[0] = work_size<T>(plan.work());
}

template std::int64_t orm_work<float>(QForm, Side, int, int, int);
template std::int64_t orm_work<SingleComplex>(QForm, Side, int, int, int);
template void orm(QForm, Side, Op, int, int, int, Matrix<const float>, const float*, Matrix<float>, float*, int);
template void orm(QForm, Side, Op, int, int, int, Matrix<const SingleComplex>, const SingleComplex*,
                  Matrix<SingleComplex>, SingleComplex*, int);

} // namespace qrv::lapack
