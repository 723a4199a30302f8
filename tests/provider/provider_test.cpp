// The provider frame: the object and its getters, arrays and their two failures, complex numbers, the sparse class.
#include <array>
#include <gtest/gtest.h>
#include <vector>

#include "provider/call.hpp"
#include "qrv/providers.hpp"

namespace qrv::test {
namespace {

using namespace Corvex::Mathematics;
using namespace Corvex::Mathematics::LinearAlgebra;
using namespace Corvex::Mathematics::LinearAlgebra::Providers;

TEST(Provider, GettersGiveTheSameObjects) {
    const ParallelX86SingleLinearAlgebraProvider provider;
    const SingleLinearAlgebraProvider& host = provider;
    const auto all = [&] {
        return std::array<const void*, 10>{
            host.BlasLevel1(),    host.BlasLevel2(),        host.BlasLevel3(),        host.Lapack(),
            host.SparseBlas(),    host.ComplexBlasLevel1(), host.ComplexBlasLevel2(), host.ComplexBlasLevel3(),
            host.ComplexLapack(), host.ComplexSparseBlas()};
    };
    EXPECT_EQ(all(), all());
    for (std::size_t i = 0; i < all().size(); ++i)
        EXPECT_EQ(all()[i] == nullptr, i == 4 || i == 9) << i;
    EXPECT_NE(dynamic_cast<ParallelX86SingleBlasLevel3*>(host.BlasLevel3()), nullptr);
    EXPECT_NE(dynamic_cast<NativeComplexLapack*>(host.ComplexLapack()), nullptr);
}

TEST(ProviderArray, MadeFromWhatUsersHave) {
    std::vector<float> vector{1, 2};
    const std::vector<float> constant{3};
    std::array<float, 2> array{4, 5};
    float plain[] = {6, 7};
    EXPECT_EQ(ProviderArray<float>(vector).Address(), vector.data());
    EXPECT_EQ(ProviderArray<const float>(constant).Address(), constant.data());
    EXPECT_EQ(ProviderArray<const float>(vector).Address(), vector.data());
    EXPECT_EQ(ProviderArray<float>(array).Address(), array.data());
    EXPECT_EQ(ProviderArray<float>(plain).Address(), plain);
    EXPECT_EQ(ProviderArray<float>(std::span<float>(plain).subspan(1)).Address(), plain + 1);
    EXPECT_EQ(ProviderArray<float>(plain, 2).Address(), plain);
    const ProviderArray<float> writable(vector);
    EXPECT_EQ(ProviderArray<const float>(writable).Address(), vector.data());
    EXPECT_EQ(provider::At(writable, 1000).address() - vector.data(), 1000) << "an offset is compared with nothing";
}

TEST(ProviderArray, NullAndEmptyAreToldApart) {
    std::vector<float> empty;
    float one = 0;
    EXPECT_THROW(ProviderArray<float>().Address(), NullReferenceError);
    EXPECT_THROW(ProviderArray<float>(nullptr).Address(), NullReferenceError);
    EXPECT_THROW(ProviderArray<float>(nullptr, 5).Address(), NullReferenceError);
    EXPECT_THROW(ProviderArray<float>(empty).Address(), IndexOutOfRangeError) << "empty, though its address is null";
    EXPECT_THROW(ProviderArray<float>(&one, 0).Address(), IndexOutOfRangeError);
}

TEST(SingleComplexValue, ConvertsAsTold) {
    const SingleComplex fromReal = 2.5F;
    EXPECT_EQ(fromReal, SingleComplex(2.5F, 0));
    EXPECT_EQ(static_cast<float>(SingleComplex(3, 4)), 3.0F);
    EXPECT_EQ(SingleComplex(3, 4).Re(), 3.0F);
    EXPECT_EQ(SingleComplex::Zero, SingleComplex(0, 0));
    const SingleComplex pair[2] = {{1, 2}, {3, 4}};
    const float* interleaved = reinterpret_cast<const float*>(pair);
    EXPECT_EQ(interleaved[1], 2.0F);
    EXPECT_EQ(interleaved[2], 3.0F);
    static_assert(std::is_convertible_v<float, SingleComplex> && !std::is_convertible_v<SingleComplex, float>);
}

TEST(SparseBlas, DoesNothingWithAnyArguments) {
    ParallelX86SingleSparseBlas sparse;
    SingleSparseBlas& host = sparse;
    std::vector<float> y{1, 2, 3};
    const TransposeOperation op{77};
    const MatrixStructure structure{-3};
    host.Scscmv(op, -1, -1, 2, structure, MatrixTriangleMode{5}, MatrixDiagonalMode{6}, nullptr, nullptr, nullptr,
                nullptr, nullptr, -9, 0, 3, y, 0, 1);
    host.Scscsv(op, 3, 2, structure, MatrixTriangleMode{5}, MatrixDiagonalMode{6}, nullptr, nullptr, nullptr, nullptr,
                nullptr, 0, 1, y, 0, 1);
    host.Scscmm(op, 3, 1, 3, 2, structure, MatrixTriangleMode{5}, MatrixDiagonalMode{6}, nullptr, nullptr, nullptr,
                nullptr, nullptr, 0, 3, 0, nullptr, 0, 3);
    EXPECT_EQ(y, (std::vector<float>{1, 2, 3}));
}

} // namespace
} // namespace qrv::test
