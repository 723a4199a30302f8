// LAPACK of the real provider: encode, bring workspace, call one native entry. Results go through locals into the
// caller's variables, `info` before others, after the native routine has returned.
#include "provider/encoding.hpp"
#include "provider/workspace.hpp"
#include "qrv/native.h"
#include "qrv/providers.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

ParallelX86SingleLapack::ParallelX86SingleLapack() = default;

float ParallelX86SingleLapack::Slange(MatrixNorm norm, int m, int n, ProviderArray<const float> a, int aOffset,
                                      int lda) {
    const float* a0 = element(a, aOffset);
    return with_norm_work(norm, m, a0,
                          [&](float* work) { return SLANGE(qrv::provider::norm(norm), &m, &n, a0, &lda, work); });
}

float ParallelX86SingleLapack::Slantr(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int m,
                                      int n, ProviderArray<const float> a, int aOffset, int lda) {
    const float* a0 = element(a, aOffset);
    return with_norm_work(norm, m, a0, [&](float* work) {
        return SLANTR(qrv::provider::norm(norm), triangle(triangleMode), diagonal(diag), &m, &n, a0, &lda, work);
    });
}

void ParallelX86SingleLapack::Slacpy(MatrixTriangleMode triangleMode, int m, int n, ProviderArray<const float> a,
                                     int aOffset, int lda, ProviderArray<float> b, int bOffset, int ldb) {
    const float* a0 = element(a, aOffset);
    float* b0 = element(b, bOffset);
    SLACPY(triangle_or_both(triangleMode), &m, &n, a0, &lda, b0, &ldb);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
