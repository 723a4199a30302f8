// Arrays of vectors that must live in registers: every loop over them is unrolled, every function that takes them is
// inlined.
#pragma once

#define QRV_UNROLL _Pragma("GCC unroll 32")
#define QRV_INLINE [[gnu::always_inline]] inline
// A function with a frame of its own, whose arguments come as they are written.
#ifdef __clang__
#define QRV_AS_WRITTEN [[gnu::noinline]]
#else
#define QRV_AS_WRITTEN [[gnu::noipa]]
#endif

namespace qrv::kernel::QRV_KERNEL_BUILD {

// A number as a type: it chooses the instance of a generic lambda.
template <int count>
struct Lanes {
    constexpr int operator()() const { return count; }
};

// each(Lanes<0>()) to each(Lanes<count - 1>()), without a loop at any level of optimisation.
template <int count, class Each>
[[gnu::always_inline]] inline void repeat(const Each& each) {
    if constexpr (count > 0) {
        repeat<count - 1>(each);
        each(Lanes<count - 1>());
    }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
