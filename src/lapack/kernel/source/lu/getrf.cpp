// SGETRF, CGETRF: the choice of a route.
#include "lapack/kernel/source/lu/getrf.hpp"

#include "blas/thread/common/machine.hpp"
#include "lapack/calls/lu.hpp"
#include "lapack/kernel/source/lu/getrf_route.hpp"
#include "lapack/routine_name.hpp"
#include "qrv/service.h"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

template <class T>
struct GetrfMachine : ThisMachine {
    int m, n;
    GetrfMachine(int rows, int columns) : m(rows), n(columns) {}
    static int budget() { return qrv_serv_get_max_threads(); }
    static double products() { return work_of<T>(1, 1, 1); }
    int crossover(int threadCount) const { return tuning::crossover(RoutineName<T>("GETRF"), m, n, threadCount); }
    int block_size(int threadCount) const { return tuning::block_size(RoutineName<T>("GETRF"), m, n, threadCount); }
};

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
        return getrf_recursive(m, n, a, ipiv, {}, route.alone).info;
    }
}

} // namespace

template <class T>
int getrf(int m, int n, Matrix<T> a, int* ipiv) {
    if (m <= 0 || n <= 0)
        return 0;
    if (getrf_is_small<T>(m, n)) // before numbers are looked up
        return getrf_leaf(m, n, a, ipiv, {}).info;
    return factor<T>(getrf_route(m, n, GetrfMachine<T>(m, n)), m, n, a, ipiv);
}

template <class T>
int getrf_ib_omp(int m, int n, Matrix<T> a, int* ipiv) {
    return m > 0 && n > 0 ? factor<T>(getrf_ib_route(qrv_serv_get_max_threads()), m, n, a, ipiv) : 0;
}

template int getrf(int, int, Matrix<float>, int*);
template int getrf(int, int, Matrix<SingleComplex>, int*);
template int getrf_ib_omp(int, int, Matrix<float>, int*);
template int getrf_ib_omp(int, int, Matrix<SingleComplex>, int*);

} // namespace qrv::lapack
