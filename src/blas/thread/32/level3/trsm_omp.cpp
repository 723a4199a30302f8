// Triangular solve on a team: op(A)*X = alpha*B or X*op(A) = alpha*B.
#include "blas/blas.hpp"
#include "blas/thread/32/level3/triangular_team_omp.hpp"

namespace qrv {
namespace {

template <class T>
void trsm(TriangularKernel<T>* kernel, QRV_TRSM_PARAMETERS(T)) {
    if (*n == 0)
        return;
    const int threads = sliced_threads(*m, *n, ThisMachine{});
    if (threads > 1)
        triangular_region<T>(threads, kernel, QRV_TRSM_ARGUMENTS);
    else
        kernel(QRV_TRSM_ARGUMENTS);
}

} // namespace
} // namespace qrv

using namespace qrv;

void qrv_blas_strsm(QRV_TRSM_PARAMETERS(float)) {
    trsm<float>(qrv_blas_strsm_kernel, QRV_TRSM_ARGUMENTS);
}
void qrv_blas_ctrsm(QRV_TRSM_PARAMETERS(SingleComplex)) {
    trsm<SingleComplex>(qrv_blas_ctrsm_kernel, QRV_TRSM_ARGUMENTS);
}
