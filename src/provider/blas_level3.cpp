// BLAS level 3 of the real provider: encode, call one native entry.
#include "provider/encoding.hpp"
#include "qrv/native.h"
#include "qrv/providers.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

ParallelX86SingleBlasLevel3::ParallelX86SingleBlasLevel3() = default;

void ParallelX86SingleBlasLevel3::Sgemm(TransposeOperation transA, TransposeOperation transB, int m, int n, int k,
                                        float alpha, ProviderArray<const float> a, int aOffset, int lda,
                                        ProviderArray<const float> b, int bOffset, int ldb, float beta,
                                        ProviderArray<float> c, int cOffset, int ldc) {
    const float* a0 = element(a, aOffset);
    const float* b0 = element(b, bOffset);
    float* c0 = element(c, cOffset);
    SGEMM(rule_r(transA), rule_r(transB), &m, &n, &k, &alpha, a0, &lda, b0, &ldb, &beta, c0, &ldc);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
