// SLABRD, CLABRD: which form of the panel, and that on one thread (labrd.hpp).
#include "lapack/kernel/source/bidiagonal/labrd.hpp"

#include "lapack/calls/bidiagonal.hpp"
#include "lapack/routine_name.hpp"
#include "qrv/service.h"
#include "service/tuning.hpp"
#include "service/vector_form.hpp"

namespace qrv::lapack {
namespace {

template <class T>
struct WholeProducts {
    const BidiagonalPanel<T>& p;

    void front(int i, T tau) const {
        p.tall() ? multiply_y(i) : multiply_x(i);
        for (const auto which : p.bothShort)
            p.form_short_of_front(i, which);
        p.finish_front(i, tau, {0, p.front_length(i)});
        update_front_by(p, i, [&] { p.update_front(i, {0, p.front_length(i)}); });
    }
    void back(int i, T tau) const {
        p.tall() ? multiply_x(i) : multiply_y(i);
        for (const auto which : p.bothShort)
            p.form_short_of_back(i, which);
        p.finish_back(i, tau, {0, p.back_length(i)});
    }

private:
    void multiply_y(int i) const {
        multiply_by_lines(adjoint<T>, p.length_of_v(i), p.columns_behind(i), p.a.block(p.row(i), i + 1), p.v(i),
                          scalar<T>(0), p.y.column(i + 1, i));
    }
    void multiply_x(int i) const {
        multiply_by_lines(Op::none, p.rows_behind(i), p.length_of_u(i), p.a.block(i + 1, p.column(i)), p.u(i),
                          scalar<T>(0), p.x.column(i + 1, i));
    }
};

// Columns from which a team pays where wide vectors run: for n = 260 two threads took as long as one, complex ones too;
// for n = 700 they took 0.62 and 0.68 of it.
template <class T>
constexpr int wideTeamColumns = isComplex<T> ? 300 : 400;

template <class T>
int labrd_threads(int m, int n) {
    const bool wide = vector_form_in_use() != VectorForm::sse;
    const int least = wide ? wideTeamColumns<T> : tuning::crossover(RoutineName<T>("LABRD"), m, n);
    return n < least ? 1 : qrv_serv_get_max_threads();
}

} // namespace

template <class T>
void labrd(int m, int n, int nb, Matrix<T> a, float* d, float* e, T* tauq, T* taup, Matrix<T> x, Matrix<T> y) {
    if (m <= 0 || n <= 0)
        return;
    const RoutineName<T> name("LABRD");
    const BidiagonalPanel<T> panel{m, n, a, x, y};
    const int threads = labrd_threads<T>(m, n);
    if (threads < 2 || !labrd_on_team(threads, tuning::block_size(name, m, n, threads), panel, nb, d, e, tauq, taup))
        reduce_panel(panel, nb, d, e, tauq, taup, WholeProducts<T>{panel});
}

template void labrd(int, int, int, Matrix<float>, float*, float*, float*, float*, Matrix<float>, Matrix<float>);
template void labrd(int, int, int, Matrix<SingleComplex>, float*, float*, SingleComplex*, SingleComplex*,
                    Matrix<SingleComplex>, Matrix<SingleComplex>);

} // namespace qrv::lapack
