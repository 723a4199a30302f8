// Triangular product on a team: B := alpha*op(A)*B or B := alpha*B*op(A).
#include "blas/blas.hpp"
#include "blas/thread/32/level3/triangular_team_omp.hpp"

namespace qrv {
namespace {

template <class T>
void trmm(TriangularKernel<T>* kernel, QRV_TRSM_PARAMETERS(T)) {
    if (*n == 0)
        return;
    const int threads = *m == 0 ? 1 : sliced_threads(*m, *n, ThisMachine{});
    if (threads > 1)
        triangular_region<T>(threads, kernel, QRV_TRSM_ARGUMENTS);
    else
        kernel(QRV_TRSM_ARGUMENTS);
}

} // namespace
} // namespace qrv

using namespace qrv;

void qrv_blas_strmm(QRV_TRSM_PARAMETERS(float)) {
    trmm<float>(qrv_blas_strmm_kernel, QRV_TRSM_ARGUMENTS);
}
void qrv_blas_ctrmm(QRV_TRSM_PARAMETERS(SingleComplex)) {
    trmm<SingleComplex>(qrv_blas_ctrmm_kernel, QRV_TRSM_ARGUMENTS);
}
