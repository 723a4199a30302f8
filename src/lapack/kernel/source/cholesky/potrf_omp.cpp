// The Cholesky factorization on a team: the triangle is cut into square tiles, and threads take tasks (potrf_tiles.hpp)
// from a schedule (potrf_schedule.hpp), which says who owns what and in which order steps are taken.
//
//   factor the leading block   caller; its tiles are finished then
//   tasks                      region
//
// The schedule belongs to the call and is given back on every path out of it.
#include "lapack/kernel/source/cholesky/potrf_tiles.hpp"

#include "blas/complex.hpp"
#include "lapack/kernel/source/cholesky/potrf_route.hpp"
#include "lapack/task_team.hpp"
#include "lapack/workspace.hpp"
#include "service/work_pool.hpp"

namespace qrv::lapack {
namespace {

// Tiles of the leading cell, which is factored.
void finish_leading_cell(PotrfTable& table) {
    const PotrfTask leading{1, 1, 0, table.cell};
    qrv_lapack_potrf_sched_release(&table, &leading);
}

template <class T>
FactorResult factor(TiledMatrix<T>& x, int threads, PotrfGrain grain) {
    PotrfTable& table = *x.table;
    table.cell = first_span(table.cell, grain);
    x.steps = std::max(x.steps / table.cell, 1) * table.cell;
    const PotrfTask cell{1, 1, 1, table.cell};
    x.copy(cell, x.home, x.a);
    const FactorResult leading = potrf_any(x.uplo, x.length(1, table.cell), x.a);
    x.copy(cell, x.a, x.home);
    if (leading.info != 0 || leading.stopped)
        return leading;
    finish_leading_cell(table);
    TaskTeam(x).run(threads);
    return x.result;
}

} // namespace

template <class T>
FactorResult potrf_tiles(int threads, PotrfGrain grain, Uplo uplo, int n, Matrix<T> a) {
    const int tiles = (n - 1) / grain.tile + 1;
    const auto words = static_cast<std::size_t>(qrv_lapack_potrf_sched_size(&tiles));
    void* const block = qrv_serv_allocate(words * sizeof(std::int32_t), 128);
    if (!block)
        return potrf_serial(uplo, n, a, {});
    TiledMatrix<T> x{uplo, n, grain.tile, grain.steps, a, static_cast<PotrfTable*>(block)};
    const bool aside = team_goes_aside(uplo, n, a.ld, sizeof(T));
    const int ld = dimension_aside(n, sizeof(T));
    const WorkArea<T> copy(nullptr, 0, aside ? std::int64_t{n} * ld : 0);
    if (aside && copy.data()) {
        x.home = a;
        x.a = {copy.data(), ld};
    }
    qrv_lapack_potrf_sched_init(x.table, &tiles, &threads);
    const FactorResult result = factor(x, threads, grain);
    qrv_serv_deallocate(block);
    return result;
}

template FactorResult potrf_tiles(int, PotrfGrain, Uplo, int, Matrix<float>);
template FactorResult potrf_tiles(int, PotrfGrain, Uplo, int, Matrix<SingleComplex>);

} // namespace qrv::lapack
