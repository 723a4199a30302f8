// Walks over vectors with unit stride in 128-bit registers. What a routine does with the lanes of x and y is its Step;
// the walk brings them: up to three elements until y is on a 16-byte boundary, long passes with y aligned and x as the
// build's with_unaligned_source() reads it, then vectors wherever they lie, then what is left.
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

#include "blas/kernel/common/level1/level1_strided.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

template <class Step, class X, class Y>
class UnitStride {
public:
    [[gnu::always_inline]] UnitStride(std::ptrdiff_t n, X* x, Y* y, Step& step) : n_(n), x_(x), y_(y), step_(step) {}

    [[gnu::always_inline]] void walk() {
        if (n_ >= Step::pass) { // a short call feels each question
            const int head = (Vec::lanes - past_boundary(y_)) % Vec::lanes;
            if (n_ >= head + Step::pass && head % Step::unit == 0) {
                part(head);
                main_loop();
            }
        }
        // What a long pass leaves over is worth a step between.
        constexpr int vectors = Step::pass > 16 ? 4 : 2;
        for (const std::ptrdiff_t last = n_ - vectors * Vec::lanes; done_ <= last;)
            repeat<vectors>([this](auto slot)
                                __attribute__((always_inline)) { this->template lanes<Vec::lanes>(slot()); });
        const int rest = static_cast<int>(n_ - done_);
        if (vectors == 4 && rest & 2 * Vec::lanes) {
            lanes<Vec::lanes>(0);
            lanes<Vec::lanes>(1);
        }
        if (rest & Vec::lanes)
            lanes<Vec::lanes>(0);
        part(rest);
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

    // The next `count` floats, fewer than a vector.
    [[gnu::always_inline]] void part(int count) {
        if (count & 2)
            lanes<2>(1);
        if constexpr (Step::unit == 1)
            if (count & 1)
                lanes<1>(0);
    }

    // y is on a boundary.
    [[gnu::always_inline]] void main_loop() {
        if (!Step::readsX || past_boundary(x_ + done_) == 0)
            return passes(Loads<true>(x_ + done_));
        with_unaligned_source(
            x_ + done_, [this](auto source) __attribute__((always_inline)) { this->passes(source); });
    }
    template <class Source>
    [[gnu::always_inline]] void passes(Source source) {
        const std::ptrdiff_t last = n_ - Step::pass - Source::readsPast;
        for (; done_ <= last; done_ += Step::pass) {
            repeat<Step::pass / Vec::lanes>([&](auto slot) __attribute__((always_inline)) {
                const std::ptrdiff_t at = done_ + slot() * Vec::lanes;
                Vec x = Step::readsX ? source.next() : Vec::zero();
                Vec y = Step::readsY ? Vec::load_aligned(y_ + at) : Vec::zero();
                step_(slot(), x, y);
                if constexpr (Step::writesX)
                    x.store(x_ + at);
                if constexpr (Step::writesY)
                    y.store_aligned(y_ + at);
            });
        }
    }

    std::ptrdiff_t n_, done_ = 0;
    X* x_;
    Y* y_;
    Step& step_;
};

} // namespace qrv::kernel::QRV_KERNEL_BUILD
