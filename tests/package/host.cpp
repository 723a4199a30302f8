// A host outside the project's tree: obtains the provider, multiplies, and sees a failure as an exception.
#include <cstdio>
#include <qrv/native.h>
#include <qrv/providers.hpp>
#include <qrv/service.h>
#include <vector>

int main() {
    using namespace Corvex::Mathematics::LinearAlgebra;
    const Providers::ParallelX86SingleLinearAlgebraProvider provider;
    std::vector<float> a{1, 2, 3, 4}, c(4);
    provider.BlasLevel3()->Sgemm(TransposeOperation::None, TransposeOperation::Transpose, 2, 2, 2, 1, a, 0, 2, a, 0, 2,
                                 0, c, 0, 2);
    try {
        provider.BlasLevel3()->Sgemm(TransposeOperation::None, TransposeOperation::None, 1, 1, 1, 1, nullptr, 0, 1, a,
                                     0, 1, 0, c, 0, 1);
    } catch (const Providers::NullReferenceError& error) {
        std::printf("qrv %s: %g %g %g %g, %s\n", qrv_serv_get_version(), c[0], c[1], c[2], c[3], error.what());
        return c == std::vector<float>{10, 14, 14, 20} ? 0 : 1;
    }
    return 1;
}
