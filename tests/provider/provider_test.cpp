// The provider frame: the object and its getters, arrays and their two failures, the encoding of every option, and
// one call on its whole way.
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

#include "provider/encoding.hpp"
#include "qrv/native.h"
#include "qrv/providers.hpp"
#include "qrv/service.h"

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
    EXPECT_EQ(provider::element(writable, 1), vector.data() + 1);
    EXPECT_EQ(provider::element(writable, 1000) - vector.data(), 1000) << "an offset is compared with nothing";
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

TEST(Encoding, EveryRowOfTheTables) {
    using namespace provider;
    const auto rows = [](auto encode, std::initializer_list<const char*> expected) {
        int value = 0;
        for (const char* text : expected) {
            EXPECT_EQ(encode(value)[0], text[0]) << "value " << value;
            ++value;
        }
    };
    rows([](int v) { return rule_r(TransposeOperation{v}); }, {"N", "T", "T", "N", "T"});
    rows([](int v) { return rule_c(TransposeOperation{v}); }, {"N", "T", "C", ""});
    rows([](int v) { return norm(MatrixNorm{v}); }, {"F", "O", "I", "M"});
    rows([](int v) { return triangle(MatrixTriangleMode{v}); }, {"U", "L", "L"});
    rows([](int v) { return triangle_or_both(MatrixTriangleMode{v}); }, {"U", "L", "B", "B"});
    rows([](int v) { return diagonal(MatrixDiagonalMode{v}); }, {"N", "U", "U"});
    rows([](int v) { return side(MatrixOperationSide{v}); }, {"L", "R", "R"});
    EXPECT_EQ(rule_r(TransposeOperation{-1})[0], 'T');
    EXPECT_EQ(rule_c(TransposeOperation{99})[0], '\0') << "a value beyond the table stays inside it";
    EXPECT_EQ(rule_c(TransposeOperation{-1})[0], '\0');
    EXPECT_EQ(narrow(u'V'), 'V');
    EXPECT_EQ(narrow(u'\x0156'), 'V') << "the low eight bits";
}

// ---- Sgemm ------------------------------------------------------------------------------------------------

// A is 2 x 3 at offset 1 of its array, B 3 x 2 at offset 2, C 2 x 2 at offset 3; leading dimensions one above the
// rows, so that a mistaken offset or leading dimension shows.
struct SgemmCall {
    ParallelX86SingleLinearAlgebraProvider provider;
    std::vector<float> a = {9, 1, 2, 9, 3, 4, 9, 5, 6, 9};
    std::vector<float> b = {9, 9, 1, 0, 2, 9, -1, 3, 1, 9};
    std::vector<float> c = {9, 9, 9, 10, 20, 9, 30, 40, 9};
    void run(TransposeOperation ta, TransposeOperation tb, int m, int n, int k, int lda, int ldb, int ldc,
             float alpha = 1, float beta = 1) {
        provider.BlasLevel3()->Sgemm(ta, tb, m, n, k, alpha, a, 1, lda, b, 2, ldb, beta, c, 3, ldc);
    }
};

using enum TransposeOperation;

TEST(Sgemm, OffsetsOptionsAndScalars) {
    SgemmCall call;
    call.run(None, Conjugate, 2, 2, 3, 3, 4, 3, 2, 0.5F);
    // A = [1 3 5; 2 4 6], B = [1 -1; 0 3; 2 1]; A*B = [11 13; 14 16]
    EXPECT_EQ(call.c, (std::vector<float>{9, 9, 9, 27, 38, 9, 41, 52, 9}));

    SgemmCall transposed; // op(A) = A' of the 2 x 3 array, op(B) = the leading 2 x 2 of it, transposed
    transposed.run(ConjugateTranspose, Transpose, 3, 2, 2, 3, 4, 3, 1, 0);
    // A' = [1 2; 3 4; 5 6], B' = [1 0; -1 3]
    EXPECT_EQ(transposed.c[3], 1 * 1 + 2 * -1);
    EXPECT_EQ(transposed.c[6], 1 * 0 + 2 * 3);
    EXPECT_EQ(transposed.c[8], 5 * 0 + 6 * 3);
}

TEST(Sgemm, NullAndEmptyArraysFailBeforeAnyWork) {
    SgemmCall call;
    std::vector<float> empty;
    auto* blas = call.provider.BlasLevel3();
    const std::vector<float> before = call.c;
    EXPECT_THROW(blas->Sgemm(None, None, 0, 0, 0, 1, nullptr, 0, 1, call.b, 0, 1, 0, call.c, 0, 1), NullReferenceError);
    EXPECT_THROW(blas->Sgemm(None, None, 1, 1, 1, 1, call.a, 0, 1, empty, 0, 1, 0, call.c, 0, 1), IndexOutOfRangeError);
    EXPECT_THROW(blas->Sgemm(None, None, 1, 1, 1, 1, call.a, 0, 1, call.b, 0, 1, 0, nullptr, 0, 1), NullReferenceError);
    EXPECT_EQ(call.c, before);
}

TEST(Sgemm, BadArgumentsAreReportedAndChangeNothing) {
    const struct {
        int m, n, k, lda, ldb, ldc, position;
    } rows[] = {{-1, 2, 3, 3, 4, 3, 3}, {2, -1, 3, 3, 4, 3, 4}, {2, 2, -1, 3, 4, 3, 5},
                {2, 2, 3, 1, 4, 3, 8},  {2, 2, 3, 3, 2, 3, 10}, {2, 2, 3, 3, 4, 1, 13}};
    const auto expected = [](int position) {
        return "\nQRV ERROR: Parameter " + std::to_string(position) + " was incorrect on entry to SGEMM \n";
    };
    SgemmCall call;
    const std::vector<float> before = call.c;
    for (const auto& row : rows) {
        testing::internal::CaptureStdout();
        call.run(None, None, row.m, row.n, row.k, row.lda, row.ldb, row.ldc);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), expected(row.position)) << "provider";

        const float one = 1;
        testing::internal::CaptureStdout();
        EXPECT_EQ(SGEMM("N", "N", &row.m, &row.n, &row.k, &one, call.a.data(), &row.lda, call.b.data(), &row.ldb, &one,
                        call.c.data(), &row.ldc),
                  1);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), expected(row.position)) << "native entry";
        EXPECT_EQ(call.c, before) << "position " << row.position;
    }
    // The provider can send no bad option to SGEMM; the native entry can be given one.
    const int two = 2;
    const float one = 1;
    const struct {
        const char *transa, *transb;
        int position;
    } options[] = {{"", "N", 1}, {"X", "?", 1}, {"n", "Q", 2}};
    for (const auto& row : options) {
        testing::internal::CaptureStdout();
        SGEMM(row.transa, row.transb, &two, &two, &two, &one, call.a.data(), &two, call.b.data(), &two, &one,
              call.c.data(), &two);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), expected(row.position));
        EXPECT_EQ(call.c, before);
    }
}

} // namespace
} // namespace qrv::test
