// LAPACK of the complex provider: encode, bring workspace, call one native entry. Results go through locals into the
// caller's variables, `info` before others, after the native routine has returned.
#include "provider/encoding.hpp"
#include "provider/workspace.hpp"
#include "qrv/native.h"
#include "qrv/providers.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using namespace qrv::provider;

NativeComplexLapack::NativeComplexLapack() = default;

void NativeComplexLapack::Clacpy(MatrixTriangleMode triangleMode, int m, int n, ProviderArray<const SingleComplex> a,
                                 int aOffset, int lda, ProviderArray<SingleComplex> b, int bOffset, int ldb) {
    const qrv_complex* a0 = element(a, aOffset);
    qrv_complex* b0 = element(b, bOffset);
    CLACPY(triangle_or_both(triangleMode), &m, &n, a0, &lda, b0, &ldb);
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
