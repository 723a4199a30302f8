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
