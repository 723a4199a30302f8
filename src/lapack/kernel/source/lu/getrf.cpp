// SGETRF, CGETRF: argument checks and the choice of a route.
#include <algorithm>

#include "lapack/arguments.hpp"
#include "lapack/kernel/source/lu/getrf.hpp"
#include "lapack/kernel/source/lu/getrf_route.hpp"
#include "lapack/lapack.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

template <class T>
struct GetrfMachine {
    int m, n;
    int threads() const { return qrv_serv_get_max_threads(); }
    int crossover(int threadCount) const { return tuning::crossover(RoutineName<T>("GETRF"), m, n, threadCount); }
    int block_size(int threadCount) const { return tuning::block_size(RoutineName<T>("GETRF"), m, n, threadCount); }
};

// Reports a bad argument. Whether there is something to factor; if not, *info is the result.
template <class T>
bool begin(int m, int n, int lda, int* info) {
    const int bad = m < 0 ? 1 : n < 0 ? 2 : lda < std::max(1, m) ? 4 : 0;
    return arguments_good(RoutineName<T>("GETRF"), bad, info) && m > 0 && n > 0;
}

template <class T>
int factor(const GetrfRoute& route, int m, int n, Matrix<T> a, int* ipiv) {
    switch (route.kind) {
    case GetrfRoute::Kind::ib:
        return getrf_ib(route.threads, m, n, a, ipiv).info;
    case GetrfRoute::Kind::dynamic:
        return getrf_dynamic(route.threads, route.blockSize, m, n, a, ipiv).info;
    case GetrfRoute::Kind::unblocked:
        return getrf_unblocked(m, n, a, ipiv);
    default:
        return getrf_recursive(m, n, a, ipiv, {}).info;
    }
}

template <class T>
void getrf(int m, int n, T* a, int lda, int* ipiv, int* info) {
    if (begin<T>(m, n, lda, info))
        *info = factor<T>(getrf_route(m, n, GetrfMachine<T>{m, n}), m, n, {a, lda}, ipiv);
}

template <class T>
void getrf_ib_checked(int m, int n, T* a, int lda, int* ipiv, int* info) {
    if (begin<T>(m, n, lda, info))
        *info = factor<T>(getrf_ib_route(qrv_serv_get_max_threads()), m, n, {a, lda}, ipiv);
}

} // namespace
} // namespace qrv::lapack

using namespace qrv;

void qrv_lapack_sgetrf(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info) {
    lapack::getrf(*m, *n, a, *lda, ipiv, info);
}
void qrv_lapack_cgetrf(const int* m, const int* n, qrv_complex* a, const int* lda, int* ipiv, int* info) {
    lapack::getrf(*m, *n, a, *lda, ipiv, info);
}
void qrv_lapack_sgetrf_ib_omp(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info) {
    lapack::getrf_ib_checked(*m, *n, a, *lda, ipiv, info);
}
void qrv_lapack_cgetrf_ib_omp(const int* m, const int* n, qrv_complex* a, const int* lda, int* ipiv, int* info) {
    lapack::getrf_ib_checked(*m, *n, a, *lda, ipiv, info);
}
