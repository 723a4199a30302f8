// The bidiagonal panel on a team (labrd.hpp): two regions a step.
//
// A thread has the same share of the columns behind i in both products with A, so that the second one finds in its
// cache what the first one left there: the front goes through the chunks of a share from the last to the first, the
// back from the first on. Of a wide matrix all is told for its adjoint.
//
//   front   each thread its own elements of y, from its columns: nothing is summed
//   back    x is a sum over all columns: each thread's part of it in a vector of its own, the last thread's in X itself
//
// What holds:
//   - Before the barrier in a region the short products are formed, by one thread each, and the products with A.
//     Nothing that they read is written: v or u, A behind i, columns before i of V, Y and X, rows before i of U.
//   - They write the tops of columns i of Y and X, elements 0 to i, and below them what the other region of the step
//     does not read again: y before the barrier of the front, the partial sums before that of the back.
//   - Behind the barrier each thread writes its own elements only:
//     of y and of row i in the front, and of x in the back,
//     where the elements are dealt anew. It adds the partial sums in the order of the threads.
//   - The number of threads is that of the team, which may be smaller than asked: the barrier is behind all that counts
//     on it.
// Complex rows are conjugated between regions, by the caller: their update is a region by itself.
#include <omp.h>

#include "lapack/kernel/source/bidiagonal/labrd.hpp"
#include "lapack/workspace.hpp"

namespace qrv::lapack {
namespace {

template <class T>
struct TeamProducts {
    const BidiagonalPanel<T>& p;
    int threads, chunk;
    T* sums; // of all threads but the last one

    void front(int i, T tau) const {
#pragma omp parallel num_threads(threads)
        {
            const Slice share = even_slice(p.front_length(i), omp_get_num_threads(), omp_get_thread_num());
            for (int first = last_chunk(share.count); first >= 0; first -= chunk)
                multiply_front(i, {share.first + first, smaller(chunk, share.count - first)});
#pragma omp for schedule(static)
            for (int which = 0; which < 2; ++which)
                p.form_short_of_front(i, p.bothShort[which]);
            p.finish_front(i, tau, share);
            if constexpr (!isComplex<T>)
                p.update_front(i, share);
        }
        if constexpr (isComplex<T>)
            update_front_by(p, i, [&] {
#pragma omp parallel num_threads(threads)
                p.update_front(i, even_slice(p.front_length(i), omp_get_num_threads(), omp_get_thread_num()));
            });
    }

    void back(int i, T tau) const {
        const int length = p.back_length(i);
        const Vector<T> to = p.tall() ? p.x.column(i + 1, i) : p.y.column(i + 1, i);
#pragma omp parallel num_threads(threads)
        {
            const int team = omp_get_num_threads(), thread = omp_get_thread_num();
            const Slice share = even_slice(p.front_length(i), team, thread);
            const Vector<T> sum = thread == team - 1 ? to : Vector<T>{sum_of(thread, length)};
            if (share.count == 0)
                std::fill_n(sum.data, length, scalar<T>(0));
            for (int first = 0; first < share.count; first += chunk)
                add_back(i, {share.first + first, smaller(chunk, share.count - first)}, scalar<T>(first > 0), sum);
#pragma omp for schedule(static)
            for (int which = 0; which < 2; ++which)
                p.form_short_of_back(i, p.bothShort[which]);
            const Slice part = even_slice(length, team, thread);
            for (int other = 0; other < team - 1; ++other)
                kernel::axpy(part.count, scalar<T>(1), Vector<T>{sum_of(other, length)}.from(part.first),
                             to.from(part.first));
            p.finish_back(i, tau, part);
        }
    }

private:
    T* sum_of(int thread, int length) const {
        return sums + std::ptrdiff_t{length} * thread;
    }
    int last_chunk(int count) const {
        return (count - 1) / chunk * chunk;
    }

    // Elements `part` behind i of y, or of x if the matrix is wide.
    void multiply_front(int i, Slice part) const {
        const int first = i + 1 + part.first;
        if (p.tall())
            multiply_by_lines(adjoint<T>, p.length_of_v(i), part.count, p.a.block(p.row(i), first), p.v(i),
                              scalar<T>(0), p.y.column(first, i));
        else
            multiply_by_lines(Op::none, part.count, p.length_of_u(i), p.a.block(first, p.column(i)), p.u(i),
                              scalar<T>(0), p.x.column(first, i));
    }
    // sum := beta*sum + what columns `part` behind i do for x, or rows for y.
    void add_back(int i, Slice part, T beta, Vector<T> sum) const {
        const int first = i + 1 + part.first;
        if (p.tall())
            multiply_by_lines(Op::none, p.rows_behind(i), part.count, p.a.block(i + 1, first), p.u(i).from(part.first),
                              beta, sum);
        else
            multiply_by_lines(adjoint<T>, part.count, p.columns_behind(i), p.a.block(first, i + 1),
                              p.v(i).from(part.first), beta, sum);
    }
};

} // namespace

template <class T>
bool labrd_on_team(int threads, int chunk, const BidiagonalPanel<T>& panel, int nb, float* d, float* e, T* tauq,
                   T* taup) {
    const WorkArea<T> sums(nullptr, 0, std::int64_t{std::max(1, threads - 1)} * std::max(panel.m, panel.n));
    if (!sums.data())
        return false;
    reduce_panel(panel, nb, d, e, tauq, taup, TeamProducts<T>{panel, threads, chunk, sums.data()});
    return true;
}

template bool labrd_on_team(int, int, const BidiagonalPanel<float>&, int, float*, float*, float*, float*);
template bool labrd_on_team(int, int, const BidiagonalPanel<SingleComplex>&, int, float*, float*, SingleComplex*,
                            SingleComplex*);

} // namespace qrv::lapack
