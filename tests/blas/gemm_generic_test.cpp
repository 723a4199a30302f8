// The generic build sums in extended precision and rounds once for each block of k.
#include "support/gemm.hpp"

namespace qrv::test {
namespace {

using Long = std::complex<long double>;
template <class T>
Long lengthen(const T& x) {
    return Long(widen(x));
}

TEST_OF_ELEMENTS(GemmGeneric, RoundsOncePerBlockOfK) {
    if (!in_this_run(0))
        return;
    const std::vector<std::vector<int>> blocks = {{64},     {58},     {63},     {48, 9}, {16, 5},
                                                  {32, 15}, {64, 64}, {64, 58}, {64, 6}, {15}};
    for (const std::vector<int>& sizes : blocks)
        for (const char transb : {'N', 'C'}) {
            const int k = std::accumulate(sizes.begin(), sizes.end(), 0);
            const GemmCase<T> x( // tiles, a shorter one, a single row
                {.transb = transb, .m = 25, .n = 3, .k = k, .alpha = 0.7F});
            Operand<T> expected = x.before;
            int l = 0;
            for (const int size : sizes) {
                expected.set([&](int i, int j) {
                    Long terms = 0;
                    for (int step = l; step < l + size; ++step)
                        terms += lengthen(x.alpha * x.a(i, step)) *
                                 lengthen(transb == 'N' ? x.b(step, j) : conj(x.b(j, step)));
                    const Long sum = lengthen(expected(i, j)) + terms;
                    T rounded = scalar<T>(static_cast<float>(sum.real()));
                    set_imaginary(rounded, static_cast<float>(sum.imag()));
                    return rounded;
                });
                l += size;
            }
            const Operand<T> c = x.result([](const Call<T>& v) { call_gemm(subjects<T>()[0].gemm, v); });
            EXPECT_TRUE(c.same_bits(expected)) << "k=" << k << " B " << transb;
        }
}

} // namespace
} // namespace qrv::test
