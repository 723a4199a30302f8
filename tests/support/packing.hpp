// What tests of packed operands share: a buffer that shows what was not written, and operands by element.
#pragma once

#include <gtest/gtest.h>

#include "support/matrices.hpp"

namespace qrv::test {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();

// A buffer at a 64-byte boundary, full of NaN: what is NaN afterwards was not written, and what should not be read
// spoils the result.
class PackBuffer {
public:
    explicit PackBuffer(std::size_t count) : count_(count), storage_(count + 16, nan) {
        first_ = (64 - reinterpret_cast<std::uintptr_t>(storage_.data()) % 64) % 64 / sizeof(float);
    }
    float* data() { return storage_.data() + first_; }
    std::size_t size() const { return count_; }
    float operator[](std::size_t p) const { return storage_[first_ + p]; }

private:
    std::size_t count_;
    std::vector<float> storage_;
    std::size_t first_;
};

inline testing::AssertionResult holds(float actual, float expected) {
    if (std::isnan(expected) ? std::isnan(actual) : actual == expected)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << actual << " instead of " << expected;
}

// op(X) of the given size with random elements; the stored matrix has 3 more rows than needed and starts odd.
inline GuardedMatrix operand(char option, int rows, int columns) {
    std::mt19937 random(7);
    const bool t = is_transposed(option);
    GuardedMatrix x(t ? columns : rows, t ? rows : columns, (t ? columns : rows) + 3, 1);
    x.fill_random(random);
    return x;
}
inline float element(const GuardedMatrix& x, char option, int i, int j) {
    return is_transposed(option) ? x(j, i) : x(i, j);
}

} // namespace qrv::test
