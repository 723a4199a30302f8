// Walks over vectors with unit stride in registers of 256 or 512 bits. What a Step is: see unit_stride.hpp; here its
// `pass` and `realigns` have no meaning.
#pragma once

#include <cstddef>
#include <cstdint>

#include "blas/kernel/common/level1_strided.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

constexpr int passVectors = 4;   // of the main loop: as many sums as hide the latency of an addition
constexpr int alignsFrom = 256;  // floats: below, the first vector up to a boundary costs more than lines read twice

template <class Step, class X, class Y>
class UnitStride {
public:
    [[gnu::always_inline]] UnitStride(std::ptrdiff_t n, X* x, Y* y, Step& step)
        : n_(n), x_(x), y_(y), step_(step) {}

    [[gnu::always_inline]] void walk() {
        if (n_ >= alignsFrom)
            align();
        while (done_ + passVectors * Vec::lanes <= n_) {
#pragma GCC unroll 4
            for (int slot = 0; slot < passVectors; ++slot)
                vector(slot);
        }
        while (done_ + Vec::lanes <= n_)
            vector(0);
        if (done_ < n_)
            part(static_cast<int>(n_ - done_));
    }

private:
    [[gnu::always_inline]] void align() {
        const auto past = reinterpret_cast<std::uintptr_t>(y_) / sizeof(float) % Vec::lanes;
        if (past != 0 && past % Step::unit == 0)
            part(Vec::lanes - static_cast<int>(past));
    }
    [[gnu::always_inline]] void vector(int slot) {
        Vec x = Step::readsX ? Vec::load(x_ + done_) : Vec::zero();
        Vec y = Step::readsY ? Vec::load(y_ + done_) : Vec::zero();
        step_(slot, x, y);
        if constexpr (Step::writesX)
            x.store(x_ + done_);
        if constexpr (Step::writesY)
            y.store(y_ + done_);
        done_ += Vec::lanes;
    }
    // The next `count` floats, fewer than a vector.
    [[gnu::always_inline]] void part(int count) {
        Vec x = Step::readsX ? load_part(x_ + done_, count) : Vec::zero();
        Vec y = Step::readsY ? load_part(y_ + done_, count) : Vec::zero();
        step_(1, x, y);
        if constexpr (Step::writesX)
            store_part(x_ + done_, x, count);
        if constexpr (Step::writesY)
            store_part(y_ + done_, y, count);
        done_ += count;
    }

    std::ptrdiff_t n_, done_ = 0;
    X* x_;
    Y* y_;
    Step& step_;
};

} // namespace qrv::kernel::QRV_KERNEL_BUILD
