// The bidiagonal panel on a team (labrd.hpp): which works twice a step: first each thread has a share of
// the columns behind, then of the rows.
#include "blas/thread/common/kept_team.hpp"
#include "lapack/kernel/source/bidiagonal/labrd.hpp"
#include "lapack/workspace.hpp"

namespace qrv::lapack {
namespace {

template <class T>
struct Threads {
    KeptTeam& team;
    T* sums; // of all threads but the last one

    template <class... Phases>
    void run(const Phases&... phases) const {
        team.run(phases...);
    }
    T* sum(int number, int length) const { return sums + std::ptrdiff_t{length} * number; }
};

} // namespace

template <class T>
bool labrd_on_team(int threads, const BidiagonalPanel<T>& panel, int nb, float* d, float* e, T* tauq, T* taup) {
    const WorkArea<T> sums(nullptr, 0, std::int64_t{std::max(1, threads - 1)} * panel.m);
    if (!sums.data())
        return false;
    KeptTeam::form(threads, [&](KeptTeam& team) {
        PanelReduction(panel, Threads<T>{team, sums.data()}).run(nb, d, e, tauq, taup);
    });
    return true;
}

template bool labrd_on_team(int, const BidiagonalPanel<float>&, int, float*, float*, float*, float*);
template bool labrd_on_team(int, const BidiagonalPanel<SingleComplex>&, int, float*, float*, SingleComplex*,
                            SingleComplex*);

} // namespace qrv::lapack
