// Walks over vectors with unit stride in registers of 256 or 512 bits. What a Step is: see unit_stride.hpp; its `pass`
// has no meaning here, every pass has as many vectors.
//
// Nothing outside the n floats of x and of y is read.
#pragma once

#include <cstddef>
#include <cstdint>

#include "blas/kernel/common/level1/level1_strided.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

constexpr int passVectors = 4;  // of the main loop: as many sums as hide the latency of an addition
constexpr int alignsFrom = 128; // floats: below, the first vector up to a boundary costs more than lines read twice

template <class Step, class X, class Y>
class UnitStride {
public:
    [[gnu::always_inline]] UnitStride(std::ptrdiff_t n, X* x, Y* y, Step& step) : n_(n), x_(x), y_(y), step_(step) {}

    [[gnu::always_inline]] void walk() {
        if (n_ < Vec::lanes) // a short call feels each question
            return some(static_cast<int>(n_));
        if (n_ >= alignsFrom)
            align();
        constexpr int pass = passVectors * Vec::lanes;
        for (const std::ptrdiff_t last = n_ - pass; done_ <= last; done_ += pass)
            repeat<passVectors>([&](auto slot) __attribute__((always_inline)) { vector(slot()); });
        for (const std::ptrdiff_t last = n_ - Vec::lanes; done_ <= last; done_ += Vec::lanes)
            vector(0);
        some(static_cast<int>(n_ - done_));
    }

private:
    [[gnu::always_inline]] void align() {
        const auto past = reinterpret_cast<std::uintptr_t>(y_) / sizeof(float) % Vec::lanes;
        if (past % Step::unit == 0)
            some((Vec::lanes - static_cast<int>(past)) % Vec::lanes);
    }
    // The next `count` floats, fewer than a vector. Where y is both read and written they go in pieces of whole loads
    // and stores: the next call may read what this one wrote, and a masked load waits until it is in the cache.
    [[gnu::always_inline]] void some(int count) {
        if constexpr (Step::readsY && Step::writesY)
            pieces<Vec::lanes / 2>(count);
        else if (count != 0)
            part(count);
    }
    // A whole vector, `slot` vectors on.
    [[gnu::always_inline]] void vector(int slot) {
        const std::ptrdiff_t at = done_ + slot * Vec::lanes;
        Vec x = Step::readsX ? Vec::load(x_ + at) : Vec::zero();
        Vec y = Step::readsY ? Vec::load(y_ + at) : Vec::zero();
        step_(slot, x, y);
        if constexpr (Step::writesX)
            x.store(x_ + at);
        if constexpr (Step::writesY)
            y.store(y_ + at);
    }
    template <int size>
    [[gnu::always_inline]] void pieces(int count) {
        if (count & size) {
            Vec x = Step::readsX ? load_piece<size>(x_ + done_) : Vec::zero();
            Vec y = Step::readsY ? load_piece<size>(y_ + done_) : Vec::zero();
            step_(1, x, y);
            if constexpr (Step::writesX)
                store_piece<size>(x_ + done_, x);
            if constexpr (Step::writesY)
                store_piece<size>(y_ + done_, y);
            done_ += size;
        }
        if constexpr (size > Step::unit)
            pieces<size / 2>(count);
    }
    [[gnu::always_inline]] void part(int count) {
        Vec x = Step::readsX ? load_part<Vec>(x_ + done_, count) : Vec::zero();
        Vec y = Step::readsY ? load_part<Vec>(y_ + done_, count) : Vec::zero();
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
