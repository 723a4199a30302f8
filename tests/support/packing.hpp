// Buffers for packed operands that show what was not written.
#pragma once

#include <gtest/gtest.h>

#include "support/matrices.hpp"

namespace qrv::test {

// `count` floats from a page boundary up to a guarded page at most 63 bytes behind them, all NaN: what is NaN
// afterwards was not written, and what should not be read spoils the result.
class PackBuffer {
public:
    explicit PackBuffer(int count) : count_(count), storage_((static_cast<std::size_t>(count) + 15) / 16 * 16) {
        std::fill_n(data(), count, nan);
    }
    float* data() { return storage_.data(); }
    const float* data() const { return storage_.data(); }
    int size() const { return count_; }
    float operator[](int p) const { return storage_.data()[p]; }

private:
    int count_;
    GuardPageArray storage_;
};

} // namespace qrv::test
