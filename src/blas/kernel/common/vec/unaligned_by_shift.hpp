// Vectors at addresses off a 16-byte boundary: an aligned load each, joined by a byte shift with what is left of the
// one before. For processors that take several steps for an unaligned load. Needs SSSE3.
#pragma once

#include <tmmintrin.h>

#include "blas/kernel/common/vec/vec4f.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

// x lies `distance` floats past a boundary. The first vector of an operand is loaded as it is, so that nothing in front
// of x is read; behind the last vector handed out, up to `readsPast` floats are.
template <int distance>
class Joins {
public:
    static constexpr int readsPast = Vec4f::lanes - distance;

    explicit Joins(const float* x)
        : x_(x - distance), rest_(_mm_slli_si128(_mm_castps_si128(_mm_loadu_ps(x)), distance * sizeof(float))) {}
    [[gnu::always_inline]] Vec4f next() {
        x_ += Vec4f::lanes;
        const __m128i read = _mm_castps_si128(_mm_load_ps(x_));
        const __m128i joined = _mm_alignr_epi8(read, rest_, distance * sizeof(float));
        rest_ = read;
        return {_mm_castsi128_ps(joined)};
    }

private:
    const float* x_; // where rest_ comes from
    __m128i rest_;
};

// Calls use(source) with a source of the vectors at x.
template <class Use>
[[gnu::always_inline]] inline void with_unaligned_source(const float* x, const Use& use) {
    switch (past_boundary(x)) {
    case 1:
        return use(Joins<1>(x));
    case 2:
        return use(Joins<2>(x));
    case 3:
        return use(Joins<3>(x));
    }
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
