// A host that has functions of its own with names of the library's: the library calls its own.
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "qrv/providers.hpp"

#define HOSTS_OWN(name)                                                                                                \
    extern "C" [[gnu::visibility("default")]] void name() {                                                            \
        std::puts("the host's " #name " was called");                                                                  \
        std::exit(1);                                                                                                  \
    }
HOSTS_OWN(SGEMM)
HOSTS_OWN(SAXPY)
HOSTS_OWN(SGETRF)
HOSTS_OWN(qrv_serv_allocate)
HOSTS_OWN(qrv_serv_get_cpu_type)
HOSTS_OWN(qrv_serv_get_max_threads)

using namespace Corvex::Mathematics::LinearAlgebra;
using namespace Corvex::Mathematics::LinearAlgebra::Providers;

int main() {
    const ParallelX86SingleLinearAlgebraProvider provider;
    constexpr int n = 300;
    std::vector<float> a(n * n, 1), c(n * n);
    std::vector<int> pivots(n);
    provider.BlasLevel3()->Sgemm(TransposeOperation::None, TransposeOperation::None, n, n, n, 1, a, 0, n, a, 0, n, 0, c,
                                 0, n);
    provider.BlasLevel1()->Saxpy(n, 2, a, 0, 1, c, 0, 1);
    if (c[0] != n + 2) {
        std::printf("wrong result %g\n", static_cast<double>(c[0]));
        return 1;
    }
    int info = 0;
    provider.Lapack()->Sgetrf(n, n, a, 0, n, pivots, info);
    try { // types of the two modules are one
        provider.BlasLevel1()->Sasum(1, nullptr, 0, 1);
    } catch (const NullReferenceError&) {
        return 0;
    }
    return 1;
}
