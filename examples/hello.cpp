// The shortest host: obtain the provider, multiply two matrices.
#include <cstdio>
#include <qrv/providers.hpp>
#include <vector>

int main() {
    using namespace Corvex::Mathematics::LinearAlgebra;
    const Providers::ParallelX86SingleLinearAlgebraProvider provider;
    std::vector<float> a{1, 2, 3, 4}, b{5, 6, 7, 8}, c(4); // 2 x 2, column by column
    provider.BlasLevel3()->Sgemm(TransposeOperation::None, TransposeOperation::None, 2, 2, 2, 1.0F, a, 0, 2, b, 0, 2,
                                 0.0F, c, 0, 2);
    std::printf("%g %g\n%g %g\n", c[0], c[2], c[1], c[3]);
}
