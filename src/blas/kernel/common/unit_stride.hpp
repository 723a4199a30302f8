// Walks over vectors with unit stride in 128-bit registers: what every routine does with x and y in four lanes is its
// Step, the walk brings the lanes.
//
// A Step tells by constants
//   readsX, readsY, writesX, writesY   what it wants loaded and stored
//   unit                               floats of an element that belong together: 1, or 2 if it is complex
//   pass                               floats of one pass of the main loop, a multiple of 8
// and step(slot, x, y) computes on one vector of each. `slot` counts the vectors within a pass, so that sums can use
// several registers. Lanes that do not exist are 0 and are not stored.
//
// Nothing outside the n floats of x and of y is read.
#pragma once

#include <cstddef>
#include <cstdint>

#include "blas/kernel/common/level1_strided.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

template <class Step, class X, class Y>
class UnitStride {
public:
    [[gnu::always_inline]] UnitStride(std::ptrdiff_t n, X* x, Y* y, Step& step)
        : n_(n), x_(x), y_(y), step_(step) {}

    [[gnu::always_inline]] void walk() {
        if (n_ >= Step::pass + Vec::lanes && past_boundary(y_) % Step::unit == 0) {
            while (past_boundary(y_ + done_) != 0)
                lanes<Step::unit>(0);
            main_loop();
        }
        while (done_ + 2 * Vec::lanes <= n_) {
            lanes<Vec::lanes>(0);
            lanes<Vec::lanes>(1);
        }
        if (done_ + Vec::lanes <= n_)
            lanes<Vec::lanes>(0);
        while (done_ < n_)
            lanes<Step::unit>(1);
    }

private:
    // The next `count` floats, anywhere.
    template <int count>
    [[gnu::always_inline]] void lanes(int slot) {
        Vec x = Step::readsX ? load_first<count>(x_ + done_) : Vec::zero();
        Vec y = Step::readsY ? load_first<count>(y_ + done_) : Vec::zero();
        step_(slot, x, y);
        if constexpr (Step::writesX)
            store_first<count>(x_ + done_, x);
        if constexpr (Step::writesY)
            store_first<count>(y_ + done_, y);
        done_ += count;
    }

    // y is on a boundary.
    [[gnu::always_inline]] void main_loop() {
        if (!Step::readsX || past_boundary(x_ + done_) == 0)
            return passes(Loads<true>(x_ + done_));
        with_unaligned_source(x_ + done_, [this](auto source) __attribute__((always_inline)) { passes(source); });
    }
    template <class Source>
    [[gnu::always_inline]] void passes(Source source) {
        for (; done_ + Step::pass + Source::readsPast <= n_; done_ += Step::pass) {
#pragma GCC unroll 16
            for (int slot = 0; slot < Step::pass / Vec::lanes; ++slot) {
                Y* const yi = y_ + done_ + slot * Vec::lanes;
                Vec x = Step::readsX ? source.next() : Vec::zero();
                Vec y = Step::readsY ? Vec::load_aligned(yi) : Vec::zero();
                step_(slot, x, y);
                if constexpr (Step::writesX)
                    x.store(x_ + done_ + slot * Vec::lanes);
                if constexpr (Step::writesY)
                    y.store_aligned(yi);
            }
        }
    }

    std::ptrdiff_t n_, done_ = 0;
    X* x_;
    Y* y_;
    Step& step_;
};

} // namespace qrv::kernel::QRV_KERNEL_BUILD
