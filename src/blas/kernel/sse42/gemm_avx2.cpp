// The micro-kernel with AVX2 and FMA.
//
// 16 registers hold 3 panels x 2 slivers: 12 sums, two sliver steps, two rows of A. With 8 it is 3 x 1.
#include "blas/kernel/common/vec8f.hpp"

#include "blas/kernel/common/gemm_direct.hpp"
#include "blas/kernel/common/gemm_pack_wide.hpp"
#include "blas/kernel/common/gemm_wide.hpp"
#include "blas/kernel/sse42/wide.hpp"

namespace qrv::kernel::sse42_avx2 {
namespace {

// b0 b0 b1 b1 | b2 b2 b3 b3
struct Sliver {
    using Vector = Vec8f;
    static constexpr int columns = 4;
    static constexpr int quads = 1;
    static constexpr int rowsAtOnce = 2;

    static Vec8f repeat_rows(const float* a) { return Vec8f::repeat_pair(a); }
    // Columns 0 and 2, respectively 1 and 3.
    static Vec8f whole_columns(const Vec8f (&sums)[2], int part) {
        return part == 0 ? low_halves(sums[0], sums[1]) : high_halves(sums[0], sums[1]);
    }

    static Vec8f step(const __m128 (&x)[quads]) {
        const __m256 twice = _mm256_set_m128(x[0], x[0]);
        return {_mm256_permutevar_ps(twice, _mm256_setr_epi32(0, 0, 1, 1, 2, 2, 3, 3))};
    }
    static void four_steps(const float* const (&column)[columns], int l, float* out, std::ptrdiff_t outStep) {
        const __m256 even = _mm256_set_m128(_mm_loadu_ps(column[2] + l), _mm_loadu_ps(column[0] + l));
        const __m256 odd = _mm256_set_m128(_mm_loadu_ps(column[3] + l), _mm_loadu_ps(column[1] + l));
        const __m256 low = _mm256_unpacklo_ps(even, odd); // steps 0 and 1
        const __m256 high = _mm256_unpackhi_ps(even, odd);
        _mm256_store_ps(out, _mm256_permute_ps(low, 0x50));
        _mm256_store_ps(out + outStep, _mm256_permute_ps(low, 0xFA));
        _mm256_store_ps(out + 2 * outStep, _mm256_permute_ps(high, 0x50));
        _mm256_store_ps(out + 3 * outStep, _mm256_permute_ps(high, 0xFA));
    }
};

constexpr bool manyRegisters = sizeof(void*) == 8;
using Wide = TileShape<Sliver, 3, manyRegisters ? 2 : 1>;
using Narrow = TileShape<Sliver, manyRegisters ? 6 : 3, 1>;
constexpr int sliverFactor = 4; // sliver floats per float of B, four columns counted
static_assert(Wide::sliverStep <= quadColumns * sliverFactor && Narrow::sliverStep <= quadColumns * sliverFactor);

void micro(const char*, const char* transb, const int* m, const int* n, const int* kp, const float*,
           const float* aPacked, const int* aStride, const float* b, const int* ldb, const float* beta, float* c,
           const int* ldc, float* sliver, MicroForm form) {
    const bool transposedB = (*transb & 0x4E) != 0x4E;
    const MicroCall call =
        micro_call(transposedB, *m, *n, *kp, aPacked, *aStride, b, *ldb, *beta, c, *ldc, sliver, form);
    for (int j = 0; j < *n;) {
        if (*n - j > Narrow::columns) {
            multiply_columns<Wide>(call, j);
            j += Wide::columns;
        } else {
            multiply_columns<Narrow>(call, j);
            j += Narrow::columns;
        }
    }
}

} // namespace

void use_form(GemmPlan<float>* plan) {
    plan->copyAN = copy_an<Vec8f>;
    plan->copyAT = plan->copyAC = copy_at<Vec8f>;
    plan->micro = micro;
    plan->smallFactor = sliverFactor;
    plan->microScalesC = true;
}

bool direct(QRV_GEMM_PARAMETERS(float)) {
    return direct_gemm<DirectShape<Vec8f, manyRegisters ? 2 : 1, 6>>(QRV_GEMM_ARGUMENTS);
}

} // namespace qrv::kernel::sse42_avx2
