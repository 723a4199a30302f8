// The provider object.
#include "qrv/providers.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

using Provider = ParallelX86SingleLinearAlgebraProvider;

Provider::ParallelX86SingleLinearAlgebraProvider()
    : blasLevel1(std::make_unique<ParallelX86SingleBlasLevel1>()),
      blasLevel2(std::make_unique<ParallelX86SingleBlasLevel2>()),
      blasLevel3(std::make_unique<ParallelX86SingleBlasLevel3>()), lapack(std::make_unique<ParallelX86SingleLapack>()),
      sparseBlas(nullptr), complexBlasLevel1(std::make_unique<NativeComplexBlasLevel1>()),
      complexBlasLevel2(std::make_unique<NativeComplexBlasLevel2>()),
      complexBlasLevel3(std::make_unique<NativeComplexBlasLevel3>()),
      complexLapack(std::make_unique<NativeComplexLapack>()), complexSparseBlas(nullptr) {}

Provider::~ParallelX86SingleLinearAlgebraProvider() = default;

SingleBlasLevel1* Provider::BlasLevel1() const {
    return blasLevel1.get();
}
SingleBlasLevel2* Provider::BlasLevel2() const {
    return blasLevel2.get();
}
SingleBlasLevel3* Provider::BlasLevel3() const {
    return blasLevel3.get();
}
SingleLapack* Provider::Lapack() const {
    return lapack.get();
}
SingleSparseBlas* Provider::SparseBlas() const {
    return sparseBlas.get();
}
SingleComplexBlasLevel1* Provider::ComplexBlasLevel1() const {
    return complexBlasLevel1.get();
}
SingleComplexBlasLevel2* Provider::ComplexBlasLevel2() const {
    return complexBlasLevel2.get();
}
SingleComplexBlasLevel3* Provider::ComplexBlasLevel3() const {
    return complexBlasLevel3.get();
}
SingleComplexLapack* Provider::ComplexLapack() const {
    return complexLapack.get();
}
SingleComplexSparseBlas* Provider::ComplexSparseBlas() const {
    return complexSparseBlas.get();
}

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
