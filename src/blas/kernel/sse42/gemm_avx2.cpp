// The micro-kernel with AVX2 and FMA.
//
// 16 registers hold 3 panels x 2 slivers: 12 sums, two sliver steps, two rows of A. With 8 it is 3 x 1.
#include "blas/gemm_call.hpp"
#include "blas/kernel/common/gemm/gemm_direct.hpp"
#include "blas/kernel/common/gemm/gemm_wide_complex.hpp"
#include "blas/kernel/common/gemm/gemm_wide_form.hpp"
#include "blas/kernel/common/level3/own_kernels.hpp"
#include "blas/kernel/common/level3/trmm_packed.hpp"
#include "blas/kernel/gemm_pieces.hpp"
#include "blas/kernel/sse42/wide.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::sse42_avx2 {
constexpr bool manyRegisters = sizeof(void*) == 8;

// 12 sums of 16 registers, respectively 6 of 8: with two rows of A, or one, and an element of B.
template <>
struct DirectTiles<Vec8f, float> {
    static constexpr int vectors = manyRegisters ? 2 : 1;
    static constexpr int columns = 6, columnsOfOne = manyRegisters ? 12 : 6;
    using Half = Vec8f;
};

// The same with two sums for each vector and column.
template <>
struct DirectTiles<Vec8f, SingleComplex> {
    static constexpr int vectors = manyRegisters ? 2 : 1;
    static constexpr int columns = 3, columnsOfOne = manyRegisters ? 6 : 3;
    using Half = Vec8f;
};

namespace {

// b0 b0 b1 b1 | b2 b2 b3 b3
struct Sliver {
    using Vector = Vec8f;
    using Element = float;
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

using Wide = TileShape<Sliver, 3, manyRegisters ? 2 : 1>;
using Narrow = TileShape<Sliver, manyRegisters ? 6 : 3, 1>;

// Two sums for each pair of rows, two spread steps of the sliver and a pair of A.
using Complex = TileShape<ComplexSliver<Vec8f>, manyRegisters ? 3 : 1, 1>;

} // namespace

void use_form(GemmPlan<float>* plan) {
    use_wide_form<float, Vec8f, Wide, Narrow>(plan);
}
void use_form(GemmPlan<SingleComplex>* plan) {
    use_wide_form<SingleComplex, Vec8f, Complex>(plan);
}

void direct(QRV_GEMM_PARAMETERS(float)) {
    gemm_direct<Vec8f, float>(QRV_GEMM_ARGUMENTS);
}
void direct(QRV_GEMM_PARAMETERS(SingleComplex)) {
    gemm_direct<Vec8f, SingleComplex>(QRV_GEMM_ARGUMENTS);
}
bool blas_sgemm_triangle(const char* uplo, QRV_GEMM_PARAMETERS(float)) {
    return sse42::blas_sgemm_triangle(uplo, QRV_GEMM_ARGUMENTS);
}
bool blas_cgemm_triangle(const char* uplo, QRV_GEMM_PARAMETERS(SingleComplex)) {
    return sse42::blas_cgemm_triangle(uplo, QRV_GEMM_ARGUMENTS);
}
bool blas_strmm_panels(QRV_TRSM_PARAMETERS(float)) {
    GemmPlan<float> plan;
    sse42::plan_load_for(VectorForm::avx2, &plan);
    return TriangleByPlan<Wide>(&plan, side_of(*side), uplo_of(*uplo), op_of(*transa), diag_of(*diag), *m, *n, *alpha,
                                {a, *lda}, {b, *ldb})
        .multiply();
}

} // namespace qrv::kernel::sse42_avx2
