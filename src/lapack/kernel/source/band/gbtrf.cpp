// SGBTRF: the choice of a route.
#include "lapack/kernel/source/band/gbtrf.hpp"

#include "lapack/calls/band.hpp"
#include "lapack/kernel/source/band/band_view.hpp"
#include "lapack/kernel/source/band/gbtrf_route.hpp"
#include "qrv/service.h"
#include "service/tuning.hpp"
#include "service/vector_form.hpp"

namespace qrv::lapack {

int gbtf2(const BandShape& shape, float* ab, int ldab, int* ipiv) {
    return gbtrf_unblocked(shape, band_view(ab, ldab, shape.kv()), ipiv);
}

int gbtrf(const BandShape& shape, float* ab, int ldab, int* ipiv) {
    if (shape.m == 0 || shape.n == 0)
        return 0;
    const Matrix<float> a = band_view(ab, ldab, shape.kv());
    const int tunedBlock = tuning::block_size("SGBTRF", shape.m, shape.n, shape.kl, shape.ku);
    const bool wide = vector_form_in_use() != VectorForm::sse;
    const GbtrfRoute route = gbtrf_route(shape.kl, shape.ku, qrv_serv_get_max_threads(), tunedBlock, wide);
    if (route.nb == 1)
        return gbtrf_unblocked(shape, a, ipiv);
    return gbtrf_blocked(route.threads, route.nb, route.threads > 1 ? "SGBTRF" : "XSGBTRF", shape, a, ipiv);
}

} // namespace qrv::lapack
