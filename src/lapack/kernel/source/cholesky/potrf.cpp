// SPOTRF, CPOTRF: the choice of a route.
#include "lapack/kernel/source/cholesky/potrf.hpp"

#include "blas/complex.hpp"
#include "blas/thread/common/work_threads.hpp"
#include "lapack/calls/cholesky.hpp"
#include "lapack/kernel/source/cholesky/potrf_aside.hpp"
#include "lapack/kernel/source/cholesky/potrf_route.hpp"
#include "lapack/routine_name.hpp"
#include "qrv/service.h"
#include "service/tuning.hpp"
#include "service/vector_form.hpp"

namespace qrv::lapack {
namespace {

// No crossover lies below, nor do columns that go aside: small calls ask for neither.
constexpr int surelyUnblocked = 64;

template <class T>
struct PotrfMachine {
    int n;
    int threads() const { return qrv_serv_get_max_threads(); }
    bool wide() const { return vector_form_in_use() != VectorForm::sse; }
    int crossover() const { return wide() ? wideCrossover : tuning::crossover(RoutineName<T>("POTRF"), n); }
    PotrfGrain grain(int threadCount) const {
        const bool tuned = !wide() && qrv_serv_get_cpu_ma() != newestClass;
        return tuned ? tuned_grain(RoutineName<T>("POTRF"), n, threadCount) : wide_grain(n, threadCount);
    }
};

} // namespace

template <class T>
FactorResult potrf_any(Uplo uplo, int n, Matrix<T> a) {
    if (n <= surelyUnblocked)
        return {potf2(uplo, n, a)};
    using Kind = PotrfRoute::Kind;
    const PotrfRoute route = potrf_route(n, PotrfMachine<T>{n});
    switch (route.kind) {
    case Kind::tiles:
        return potrf_tiles(route.threads, route.grain, uplo, n, a);
    case Kind::serial:
        return potrf_serial(uplo, n, a, {});
    case Kind::unblocked:
        break;
    }
    const auto leaf = [uplo](int, int size, Matrix<T> block) { return FactorResult{potf2(uplo, size, block)}; };
    return factor_aside(uplo, n, a, leaf, [&] { return leaf(0, n, a); });
}

template <class T>
int potrf(Uplo uplo, int n, Matrix<T> a) {
    return n > 0 ? potrf_any(uplo, n, a).info : 0;
}

template FactorResult potrf_any(Uplo, int, Matrix<float>);
template FactorResult potrf_any(Uplo, int, Matrix<SingleComplex>);
template int potrf(Uplo, int, Matrix<float>);
template int potrf(Uplo, int, Matrix<SingleComplex>);

} // namespace qrv::lapack
