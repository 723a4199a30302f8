// The estimates behind condition numbers, on matrices on which each of their steps counts.
#include <gtest/gtest.h>

#include "qrv/native.h"
#include "support/call.hpp"
#include "support/oracle.hpp"

namespace qrv::test {
namespace {

// A factor whose first solve is harmless, while those that follow pass the largest float with both signs: only the sums
// of its own columns tell that they must be scaled, so as not to be NaN.
TEST_OF_ELEMENTS(Condition, SumsOfEachFactorOfItsOwn) {
    constexpr int n = 5;
    const float b = 0x1p100F;
    for (const char norm : {'1', 'I'}) { // the lower factor, the upper factor
        std::vector<T> lu(n * n);
        const auto put = [&](int i, int j, float x) {
            lu[std::size_t(norm == 'I' ? i + n * j : j + n * i)] = scalar<T>(x);
        };
        for (int i = 0; i < n; ++i)
            put(i, i, 1);
        put(0, 1, 1);
        put(1, 2, b), put(1, 3, 2 * b);
        put(2, 4, -b), put(3, 4, b);
        std::vector<T> work(4 * n);
        std::vector<std::conditional_t<isComplex<T>, float, int>> second(2 * n);
        float rcond = -1;
        call_for<T>(SGECON, CGECON, norm, n, lu, n, 1.0F, &rcond, work, second);
        EXPECT_EQ(rcond, 0) << norm;
    }
}

// A solve with the first factor alone passes what can be computed with, and the inverse does not: both scales count.
// The elements are powers of two, the largest one of the inverse is 2^124.
TEST_OF_ELEMENTS(Condition, ScalesOfBothFactors) {
    constexpr int n = 2, kd = 1;
    const float anorm = 1;
    for (const char uplo : {'U', 'L'}) {
        const float first = 0x1p-50F, beside = 0x1p58F, second = 0x1p46F;
        const std::vector<T> full{scalar<T>(first), scalar<T>(beside), scalar<T>(beside), scalar<T>(second)};
        std::vector<T> work(3 * n);
        std::vector<std::conditional_t<isComplex<T>, float, int>> more(n);
        float rcond = -1;
        call_for<T>(SPOCON, CPOCON, uplo, n, full, n, anorm, &rcond, work, more);
        if constexpr (!isComplex<T>) {
            const std::vector<float> upper{nan, first, beside, second}, lower{first, beside, second, nan};
            float banded = -1;
            call(SPBCON, uplo, n, kd, uplo == 'U' ? upper : lower, n, anorm, &banded, work, more);
            EXPECT_EQ(banded, rcond) << uplo;
        }
        EXPECT_EQ(rcond, 0x1p-124F) << uplo;
    }
}

TEST(BandCondition, ScaleOfTheSolve) {
    const float small = 0x1p-120F; // a solve with this is scaled
    std::vector<float> a{small}, work(3);
    std::vector<int> ipiv{1}, iwork(1);
    float rcond = -1;
    call(SGBCON, '1', 1, 0, 0, a, 1, ipiv, 1.0F, &rcond, work, iwork);
    EXPECT_EQ(rcond, small);
}

// Every multiplier and interchange of a band's L, to the last: U is the unit matrix.
TEST(BandCondition, EveryMultiplierCounts) {
    constexpr int n = 3, ldab = 3;
    for (const int column : {0, 1})
        for (const bool interchanged : {false, true})
            for (const char norm : {'1', 'I'}) {
                std::vector<float> ab{nan, 1, 0, 0, 1, 0, 0, 1, nan}, work(3 * n);
                ab[std::size_t(ldab * column + 2)] = 4;
                std::vector<int> ipiv{1, 2, 3}, iwork(n);
                ipiv[std::size_t(column)] += interchanged ? 1 : 0;
                float rcond = -1;
                call(SGBCON, norm, n, 1, 0, ab, ldab, ipiv, 1.0F, &rcond, work, iwork);
                EXPECT_EQ(rcond, 0.2F) << column << interchanged << norm;
            }
}

} // namespace
} // namespace qrv::test
