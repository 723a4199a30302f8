// Buffers for packed operands that show what was not written.
#pragma once

#include <gtest/gtest.h>

#include "support/matrices.hpp"

namespace qrv::test {

// `count` elements from a page boundary up to a guarded page at most 63 bytes behind them, all NaN: what is NaN
// afterwards was not written, and what should not be read spoils the result.
template <class T>
class PackBuffer {
public:
    explicit PackBuffer(int count)
        : floats_(count * static_cast<int>(sizeof(T) / sizeof(float))),
          storage_((static_cast<std::size_t>(floats_) + 15) / 16 * 16) {
        std::fill_n(storage_.data(), floats_, nan);
    }
    T* data() { return reinterpret_cast<T*>(storage_.data()); }
    const T* data() const { return reinterpret_cast<const T*>(storage_.data()); }
    // Float by float.
    int floats() const { return floats_; }
    float operator[](int p) const { return storage_.data()[p]; }

private:
    int floats_;
    GuardPageArray storage_;
};

} // namespace qrv::test
