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
struct Alone {
    template <class... Phases>
    void run(const Phases&... phases) const {
        (phases(1, 0), ...);
    }
    T* sum(int, int) const { return nullptr; } // the only one is in X
};

// Columns from which a team pays where wide vectors run: for n = 300 two threads took 0.95 and, complex ones, 0.65 of
// the time of one.
constexpr int wideTeamColumns = 250;

template <class T>
int labrd_threads(int m, int n) {
    const bool wide = vector_form_in_use() != VectorForm::sse;
    const int least = wide ? wideTeamColumns : tuning::crossover(RoutineName<T>("LABRD"), m, n);
    return n < least ? 1 : qrv_serv_get_max_threads();
}

} // namespace

template <class T>
void labrd(int m, int n, int nb, Matrix<T> a, float* d, float* e, T* tauq, T* taup, Matrix<T> x, Matrix<T> y) {
    if (m <= 0 || n <= 0)
        return;
    const BidiagonalPanel<T> panel{m, n, a, x, y};
    const int threads = labrd_threads<T>(m, n);
    if (threads < 2 || !labrd_on_team(threads, panel, nb, d, e, tauq, taup))
        PanelReduction(panel, Alone<T>{}).run(nb, d, e, tauq, taup);
}

template void labrd(int, int, int, Matrix<float>, float*, float*, float*, float*, Matrix<float>, Matrix<float>);
template void labrd(int, int, int, Matrix<SingleComplex>, float*, float*, SingleComplex*, SingleComplex*,
                    Matrix<SingleComplex>, Matrix<SingleComplex>);

} // namespace qrv::lapack
