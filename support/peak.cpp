#include "peak.hpp"

#include <cstddef>
#include <immintrin.h>
#include <thread>
#include <utility>

namespace support {
namespace {

constexpr int steps = 2'000'000; // several milliseconds: starting a thread does not count beside them

// Enough independent chains to cover latency times throughput on every processor so far (10 for FMA, 12 to 16 for
// a multiplication and an addition one after the other); with the two constants they fill 16 registers.
constexpr std::size_t chainCount = 14;
using Chains = std::make_index_sequence<chainCount>;

// x := x * scale + shift tends to 1 from any start, so nothing overflows or becomes denormal. The compiler must not
// know the values, and the starts differ, or it would fold the chains into one.
volatile float scaleValue = 0.999F, shiftValue = 0.001F;

template <std::size_t... I>
[[gnu::noinline]] float sse_mul_add(std::index_sequence<I...>) {
    const __m128 scale = _mm_set1_ps(scaleValue), shift = _mm_set1_ps(shiftValue);
    __m128 x[] = {_mm_set1_ps(1.0F + static_cast<float>(I))...};
    for (int step = 0; step < steps; ++step)
        ((x[I] = _mm_add_ps(_mm_mul_ps(x[I], scale), shift)), ...);
    return (_mm_cvtss_f32(x[I]) + ...);
}

template <std::size_t... I>
[[gnu::noinline, gnu::target("avx2,fma")]] float avx2_fma(std::index_sequence<I...>) {
    const __m256 scale = _mm256_set1_ps(scaleValue), shift = _mm256_set1_ps(shiftValue);
    __m256 x[] = {_mm256_set1_ps(1.0F + static_cast<float>(I))...};
    for (int step = 0; step < steps; ++step)
        ((x[I] = _mm256_fmadd_ps(x[I], scale, shift)), ...);
    return (_mm256_cvtss_f32(x[I]) + ...);
}

template <std::size_t... I>
[[gnu::noinline, gnu::target("avx512f")]] float avx512_fma(std::index_sequence<I...>) {
    const __m512 scale = _mm512_set1_ps(scaleValue), shift = _mm512_set1_ps(shiftValue);
    __m512 x[] = {_mm512_set1_ps(1.0F + static_cast<float>(I))...};
    for (int step = 0; step < steps; ++step)
        ((x[I] = _mm512_fmadd_ps(x[I], scale, shift)), ...);
    return (_mm512_cvtss_f32(x[I]) + ...);
}

template <float loop(Chains)>
void run(int threads) {
    const auto work = [] {
        const float sum = loop(Chains{});
        asm volatile("" : : "x"(sum)); // somebody wants to know
    };
    std::vector<std::jthread> others;
    for (int t = 1; t < threads; ++t)
        others.emplace_back(work);
    work();
}

constexpr double flops(int lanes) {
    return 2.0 * lanes * chainCount * steps;
}

} // namespace

std::vector<Peak> machine_peaks() {
    std::vector<Peak> peaks = {{"SSE", flops(4), run<sse_mul_add>}};
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"))
        peaks.push_back({"AVX2", flops(8), run<avx2_fma>});
    if (__builtin_cpu_supports("avx512f"))
        peaks.push_back({"AVX512", flops(16), run<avx512_fma>});
    return peaks;
}

} // namespace support
