// The micro-kernel with AVX-512.
//
// 32 registers would hold more than 4 panels x 4 slivers, but larger tiles ran slower: 16 sums cover the latency of
// the multiply-add, and four panels, which lie a power of two apart, leave the innermost cache to the slivers. With
// 8 registers it is 3 x 2.
#include "blas/gemm_call.hpp"
#include "blas/kernel/common/gemm/gemm_direct.hpp"
#include "blas/kernel/common/gemm/gemm_panels.hpp"
#include "blas/kernel/common/gemm/gemm_wide_complex.hpp"
#include "blas/kernel/common/gemm/gemm_wide_form.hpp"
#include "blas/kernel/common/level3/own_kernels.hpp"
#include "blas/kernel/common/level3/trmm_panels.hpp"
#include "blas/kernel/sse42/wide.hpp"
#include "blas/kernel/vec.hpp"

namespace qrv::kernel::sse42_avx512 {

constexpr bool manyRegisters = sizeof(void*) == 8;

// 24 sums of 32 registers, respectively 6 of 8: with three rows of A, or one, and an element of B.
template <>
struct DirectTiles<Vec16f, float> {
    static constexpr int vectors = manyRegisters ? 3 : 1;
    static constexpr int columns = manyRegisters ? 8 : 6, columnsOfOne = manyRegisters ? 16 : 6;
    using Half = LowerHalf16f;
};

// The same with two sums for each vector and column.
template <>
struct DirectTiles<Vec16f, SingleComplex> {
    static constexpr int vectors = manyRegisters ? 2 : 1;
    static constexpr int columns = manyRegisters ? 6 : 3, columnsOfOne = columns;
    using Half = LowerHalf16f;
};

namespace {

// Four steps of each of four columns.
__m512 four_quads(const float* const* column, int l) {
    return join_quads(_mm_loadu_ps(column[0] + l), _mm_loadu_ps(column[1] + l), _mm_loadu_ps(column[2] + l),
                      _mm_loadu_ps(column[3] + l));
}

// Two slivers side by side: b0 b0 b1 b1 | b2 b2 b3 b3 | b4 b4 b5 b5 | b6 b6 b7 b7
struct SliverPair {
    using Vector = Vec16f;
    using Element = float;
    static constexpr int columns = 8;
    static constexpr int quads = 2;
    static constexpr int rowsAtOnce = 2;

    static Vec16f repeat_rows(const float* a) { return Vec16f::repeat_pair(a); }
    // Columns 0, 2, 4, 6, respectively 1, 3, 5, 7.
    static Vec16f whole_columns(const Vec16f (&sums)[2], int part) {
        return part == 0 ? low_halves(sums[0], sums[1]) : high_halves(sums[0], sums[1]);
    }

    static Vec16f step(const __m128 (&x)[quads]) {
        const __m512i twice = _mm512_setr_epi32(0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7);
        return {_mm512_permutexvar_ps(twice, _mm512_castps256_ps512(_mm256_set_m128(x[1], x[0])))};
    }
    // Columns 0 to 3 and 4 to 7 of four steps in a vector each; a two-source permutation then picks a step of both.
    static void four_steps(const float* const (&column)[columns], int l, float* out, std::ptrdiff_t outStep) {
        const __m512 low = four_quads(column, l);
        const __m512 high = four_quads(column + 4, l);
        const __m512i first = _mm512_setr_epi32(0, 0, 4, 4, 8, 8, 12, 12, 16, 16, 20, 20, 24, 24, 28, 28);
        QRV_UNROLL
        for (int s = 0; s < kStep; ++s) {
            const __m512i pick = _mm512_add_epi32(first, _mm512_set1_epi32(s));
            _mm512_store_ps(out + s * outStep, _mm512_permutex2var_ps(low, pick, high));
        }
    }
};

// Four columns in a whole vector: b0 b0 b0 b0 | b1 b1 b1 b1 | b2 b2 b2 b2 | b3 b3 b3 b3
struct QuadSliver {
    using Vector = Vec16f;
    using Element = float;
    static constexpr int columns = 4;
    static constexpr int quads = 1;
    static constexpr int rowsAtOnce = 4;

    static Vec16f repeat_rows(const float* a) { return Vec16f::repeat_quad(a); }
    static Vec16f whole_columns(const Vec16f (&sums)[1], int) { return sums[0]; }

    static Vec16f step(const __m128 (&x)[quads]) {
        const __m512i order = _mm512_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3);
        return {_mm512_permutexvar_ps(order, _mm512_castps128_ps512(x[0]))};
    }
    static void four_steps(const float* const (&column)[columns], int l, float* out, std::ptrdiff_t outStep) {
        const __m512 x = four_quads(column, l);
        _mm512_store_ps(out, _mm512_permute_ps(x, 0x00));
        _mm512_store_ps(out + outStep, _mm512_permute_ps(x, 0x55));
        _mm512_store_ps(out + 2 * outStep, _mm512_permute_ps(x, 0xAA));
        _mm512_store_ps(out + 3 * outStep, _mm512_permute_ps(x, 0xFF));
    }
};

using Wide = TileShape<SliverPair, manyRegisters ? 4 : 3, manyRegisters ? 2 : 1>;
using Middle = TileShape<SliverPair, manyRegisters ? 4 : 3, 1>;
using Narrow = TileShape<QuadSliver, manyRegisters ? 8 : 6, 1>;

// Two sums for each pair of rows; more of them, or more columns, ran slower from 128 up.
using Complex = TileShape<ComplexSliver<Vec16f>, manyRegisters ? 4 : 1, 1>;

} // namespace

void use_form(GemmPlan<float>* plan) {
    use_wide_form<float, Vec16f, Wide, Middle, Narrow>(plan);
}
void use_form(GemmPlan<SingleComplex>* plan) {
    use_wide_form<SingleComplex, Vec16f, Complex>(plan);
}

void direct(QRV_GEMM_PARAMETERS(float)) {
    gemm_direct<Vec16f, float>(QRV_GEMM_ARGUMENTS);
}
void direct(QRV_GEMM_PARAMETERS(SingleComplex)) {
    gemm_direct<Vec16f, SingleComplex>(QRV_GEMM_ARGUMENTS);
}
bool panels(QRV_GEMM_PARAMETERS(float)) {
    return gemm_by_panels<Vec16f, float>(gemm_call<float>(QRV_GEMM_ARGUMENTS), WholeOfC{*n});
}
bool panels(QRV_GEMM_PARAMETERS(SingleComplex)) {
    return gemm_by_panels<Vec16f, SingleComplex>(gemm_call<SingleComplex>(QRV_GEMM_ARGUMENTS), WholeOfC{*n});
}
#define QRV_DEFINE_TRIANGLE(T, gemm)                                                                                   \
    bool blas_##gemm##_triangle(const char* uplo, QRV_GEMM_PARAMETERS(T)) {                                            \
        const auto call = gemm_call<T>(QRV_GEMM_ARGUMENTS);                                                            \
        return gemm_by_panels<Vec16f, T>(call, TriangleOfC{uplo_of(*uplo), *n, call.multiplies_itself()});             \
    }
QRV_DEFINE_TRIANGLE(float, sgemm)
QRV_DEFINE_TRIANGLE(SingleComplex, cgemm)
#undef QRV_DEFINE_TRIANGLE

#define QRV_DEFINE_TRMM(T, name)                                                                                       \
    bool name(QRV_TRSM_PARAMETERS(T)) {                                                                                \
        return TriangleByPanels<Vec16f, T>(side_of(*side), uplo_of(*uplo), op_of(*transa), diag_of(*diag), *m, *n,     \
                                           *alpha, {a, *lda}, {b, *ldb})                                               \
            .multiply();                                                                                               \
    }
QRV_DEFINE_TRMM(float, blas_strmm_panels)
QRV_DEFINE_TRMM(SingleComplex, blas_ctrmm_panels)
#undef QRV_DEFINE_TRMM

} // namespace qrv::kernel::sse42_avx512
