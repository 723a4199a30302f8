// Workspace of LAPACK methods, with routines made up for it.
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

#include "provider/workspace.hpp"
#include "support/matrices.hpp"

namespace qrv::test {
namespace {

using namespace Corvex::Mathematics::LinearAlgebra;
using namespace Corvex::Mathematics::LinearAlgebra::Providers;
using namespace provider;

TEST(Workspace, ArraysOfAnySizeOrNone) {
    const WorkArray<int> one(1);
    *one.data() = 5;
    const WorkArray<float> three(3, 1000);
    three.data()[2999] = 1;
    EXPECT_THROW(WorkArray<float>(4, 0), IndexOutOfRangeError) << "like an empty array";
    EXPECT_THROW(WorkArray<float>(4, -1), InvalidArraySizeError);
    EXPECT_THROW(WorkArray<float>(4, 1 << 30), InvalidArraySizeError) << "not 0, as the product in 32 bits";
}

// A routine with a workspace query, whose answer is `size`: it notes how it was called.
template <class T>
struct Queried {
    T size;
    std::string calls{};
    int firstInfo = -7, secondInfo = 3;

    void operator()(T* work, const int* lwork, int* info) {
        calls += std::to_string(*lwork) + ' ';
        if (*lwork == -1) {
            *work = size;
            *info = firstInfo;
        } else {
            for (int i = 0; i < *lwork; ++i)
                work[i] = size; // a stray write for the sanitizer, if the array is too small
            *info = secondInfo;
        }
    }
};

template <class T>
std::string calls_for(T size) {
    Queried<T> routine{size};
    try {
        const int info = with_queried_work<T>([&](auto... arguments) { routine(arguments...); });
        return routine.calls + "info " + std::to_string(info);
    } catch (const IndexOutOfRangeError&) {
        return routine.calls + "empty";
    } catch (const InvalidArraySizeError&) {
        return routine.calls + "invalid";
    }
}

TEST(Workspace, QueryThenCall) {
    EXPECT_EQ(calls_for(25.0F), "-1 25 info 3") << "info of the query is ignored";
    EXPECT_EQ(calls_for(25.9F), "-1 25 info 3") << "truncated";
    EXPECT_EQ(calls_for(qrv_complex{7, 100}), "-1 7 info 3") << "the real part";
    EXPECT_EQ(calls_for(16777218.0F), "-1 16777218 info 3");
    EXPECT_EQ(calls_for(0.0F), "-1 empty");
    EXPECT_EQ(calls_for(0.9F), "-1 empty");
    EXPECT_EQ(calls_for(-0.9F), "-1 empty");
    EXPECT_EQ(calls_for(-1.0F), "-1 invalid");
    for (const float huge : {3e9F, -3e9F, infinity, nan})
        EXPECT_EQ(calls_for(huge), "-1 invalid") << huge;
}

TEST(Workspace, NormsHaveRowSumsForTheInfinityNormOnly) {
    const qrv_complex a[2] = {};
    int calls = 0;
    const auto matrix = [&](float* work) {
        EXPECT_EQ(static_cast<const void*>(work), a);
        return static_cast<float>(++calls);
    };
    const auto sums = [&](float* work) {
        EXPECT_NE(static_cast<const void*>(work), a);
        for (int i = 0; i < 1000; ++i)
            work[i] = 1;
        return 0.5F;
    };
    for (const MatrixNorm kind : {MatrixNorm::Frobenius, MatrixNorm::One, MatrixNorm::MaximumAbsolute})
        EXPECT_GT(with_norm_work(kind, 0, a, matrix), 0);
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(with_norm_work(MatrixNorm::Infinity, 1000, a, sums), 0.5F);
    EXPECT_THROW(with_norm_work(MatrixNorm::Infinity, 0, a, sums), IndexOutOfRangeError);
}

} // namespace
} // namespace qrv::test
