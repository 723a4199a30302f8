// The generic build sums in extended precision and rounds once for each block of k.
#include "support/gemm.hpp"

namespace qrv::test {
namespace {

// What a sum over l of the four, respectively one, real products of two elements adds to c.
float rounded_once(float c, const std::vector<float>& x, const std::vector<float>& y) {
    long double sum = 0;
    for (std::size_t l = 0; l < x.size(); ++l)
        sum += static_cast<long double>(x[l]) * y[l];
    return static_cast<float>(c + sum);
}
SingleComplex rounded_once(SingleComplex c, const std::vector<SingleComplex>& x, const std::vector<SingleComplex>& y) {
    std::vector<float> left, forRe, forIm;
    for (std::size_t l = 0; l < x.size(); ++l) {
        left.insert(left.end(), {x[l].re, x[l].im});
        forRe.insert(forRe.end(), {y[l].re, -y[l].im});
        forIm.insert(forIm.end(), {y[l].im, y[l].re});
    }
    return {rounded_once(c.re, left, forRe), rounded_once(c.im, left, forIm)};
}

TEST_OF_ELEMENTS(GemmGeneric, RoundsOncePerBlockOfK) {
    if (!in_this_run(0))
        return;
    const std::vector<std::vector<int>> blocks = {{64},     {58},     {63},     {48, 9}, {16, 5},
                                                  {32, 15}, {64, 64}, {64, 58}, {64, 6}, {15}};
    for (const std::vector<int>& sizes : blocks)
        for (const char transb : {'N', 'C'}) {
            int k = 0;
            for (const int size : sizes)
                k += size;
            const GemmCase<T> x(
                {.transb = transb, .m = 25, .n = 3, .k = k, .alpha = 0.7F}); // tiles, a shorter one, a single row
            Operand<T> expected = x.before;
            int l = 0;
            for (const int size : sizes) {
                const int end = l + size;
                expected.set([&](int i, int j) {
                    std::vector<T> left, right;
                    for (int step = l; step < end; ++step) {
                        left.push_back(x.alpha * x.a(i, step));
                        right.push_back(transb == 'N' ? x.b(step, j) : conj(x.b(j, step)));
                    }
                    return rounded_once(expected(i, j), left, right);
                });
                l = end;
            }
            const Operand<T> c = x.result(subjects<T>()[0].gemm);
            EXPECT_EQ(c.count_bad([&](int i, int j, T z) { return z == expected(i, j); }), 0)
                << "k=" << k << " B " << transb;
        }
}

} // namespace
} // namespace qrv::test
