// BLAS level 3 of the complex provider: encode, call one native entry.
#include "provider/encoding.hpp"
#include "qrv/native.h"
#include "qrv/providers.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

NativeComplexBlasLevel3::NativeComplexBlasLevel3() = default;

void NativeComplexBlasLevel3::Cgemm(TransposeOperation transA, TransposeOperation transB, int m, int n, int k,
                                    SingleComplex alpha, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                                    ProviderArray<const SingleComplex> b, int bOffset, int ldb, SingleComplex beta,
                                    ProviderArray<SingleComplex> c, int cOffset, int ldc) {
    const qrv_complex* a0 = element(a, aOffset);
    const qrv_complex* b0 = element(b, bOffset);
    qrv_complex* c0 = element(c, cOffset);
    CGEMM(rule_c(transA), rule_c(transB), &m, &n, &k, native(&alpha), a0, &lda, b0, &ldb, native(&beta), c0, &ldc);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
