// What the kernels do at the ends: sizes near the largest int, elements far apart, and how much stack they take.
#include <climits>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include "support/builds.hpp"
#include "support/gemm.hpp"
#include "support/reserved.hpp"
#include "support/stack.hpp"

namespace qrv::test {
namespace {

// Addresses that all lie over the same memory of 2 MB, full of zeros.
class Repeated {
public:
    explicit Repeated(std::size_t bytes) : reserved_(bytes + piece, false), file_(memfd_create("repeated", 0)) {
        bool good = reserved_.ok() && ftruncate(file_, piece) == 0;
        for (std::size_t at = 0; good && at < bytes; at += piece)
            good = mmap(reinterpret_cast<char*>(floats()) + at, piece, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED,
                        file_, 0) != MAP_FAILED;
        ok_ = good;
    }
    Repeated(const Repeated&) = delete;
    ~Repeated() { close(file_); }
    bool ok() const { return ok_; }
    float* floats() const { return reserved_.floats(); }

private:
    static constexpr std::size_t piece = 2 << 20;
    Reserved reserved_;
    int file_;
    bool ok_;
};

// ---- Sizes ----------------------------------------------------------------------------------------------------------

// A walk by blocks counts what is left: an index one block further would not be an int. Updates with nothing to add
// read nothing of x.
TEST(Limits, LargestSizes) {
    if (sizeof(void*) == 4)
        GTEST_SKIP() << "no room for such a vector";
    const int most = INT_MAX, one = 1;
    const float alpha = 2, zero = 0;
    const SingleComplex complexAlpha{2, 1};
    const Reserved x(std::size_t{INT_MAX} * sizeof(SingleComplex), false);
    if (!x.ok())
        GTEST_SKIP() << "no such address space";
    const auto* const z = reinterpret_cast<const SingleComplex*>(x.floats());
    for (const VectorBuild& build : vector_builds()) {
        float a = 3;
        build.blas_sger_kernel(&most, &one, &alpha, x.floats(), &one, &zero, &one, &a, &most);
        EXPECT_EQ(a, 3) << build;
        SingleComplex c{3, 4};
        const SingleComplex y{0, 0};
        build.blas_cgeru_kernel(&most, &one, &complexAlpha, z, &one, &y, &one, &c, &most);
        EXPECT_TRUE(c.re == 3 && c.im == 4) << build;
    }
}

// Walks of that length to their end, each seconds long: on the newest kernels of this run only, and few on older ones.
// Columns that are all the same are none to the asserts of checked builds.
TEST(Limits, LongestWalks) {
    const VectorBuild& build = vector_builds().back();
#ifdef QRV_CHECKED
    GTEST_SKIP() << "they take too long";
#endif
    if (sizeof(void*) == 4)
        GTEST_SKIP() << "no room for such a vector";
    const Repeated b(std::size_t{INT_MAX} * sizeof(float));
    if (build.cpuType == 0 || !b.ok())
        GTEST_SKIP() << "they take too long, or there are no such addresses";
    const int most = INT_MAX, one = 1, none = 0;
    const float alpha = 2, zero = 0, beta = 1;
    float c = 3;
    build.blas_sgemv_kernel("T", &most, &one, &alpha, b.floats(), &most, b.floats(), &one, &beta, &c, &one);
    build.blas_strsm_kernel("R", "U", "N", "U", &most, &one, &beta, &zero, &one, b.floats(), &most);
    if (build.form != VectorForm::sse) {
        build.blas_sgemv_kernel("T", &one, &most, &alpha, &zero, &none, &beta, &one, &beta, &c, &none);
        build.blas_ssyr2k_kernel("U", "N", &one, &most, &alpha, &zero, &none, &zero, &none, &beta, &c, &one);
    }
    EXPECT_EQ(c, 3) << build;
}

// Elements of vectors and columns of matrices 4 MB apart: their offsets are no ints. With small whole numbers every sum
// is exact, so that results are those of the same elements next to each other.
TEST(Limits, FarApart) {
    if (sizeof(void*) == 4)
        GTEST_SKIP() << "no room for such a matrix";
    constexpr int n = 2100, far = 1 << 20, unit = 1;
    const float alpha = 1, beta = 1;
    const Reserved aFar(sizeof(float) * n * far), xFar(sizeof(float) * n * far), yFar(sizeof(float) * n * far);
    if (!aFar.ok() || !xFar.ok() || !yFar.ok())
        GTEST_SKIP() << "no such address space";
    std::vector<float> aNear(std::size_t{n} * n), xNear(n), yNear(n);
    // Three diagonals and the corners, so that most pages stay untouched.
    const auto each_element = [&](const auto& each) {
        for (int j = 0; j < n; ++j)
            for (const int i : {0, j - 1, j, j + 1, n - 1})
                if (i >= 0 && i < n)
                    each(aNear[static_cast<std::size_t>(j) * n + i], aFar.floats()[std::ptrdiff_t{far} * j + i], i, j);
    };
    struct Row {
        const char* name;
        std::function<void(const VectorBuild&, float* a, int lda, float* x, float* y, int inc)> run;
    };
    const auto gemv = [&](const char* trans) {
        return [&, trans](const VectorBuild& build, float* a, int lda, float* x, float* y, int inc) {
            build.blas_sgemv_kernel(trans, &n, &n, &alpha, a, &lda, x, &inc, &beta, y, &inc);
        };
    };
    const auto triangular = [&](const char* uplo, const char* trans) {
        return [&, uplo, trans](const VectorBuild& build, float* a, int lda, float* x, float*, int inc) {
            build.blas_strmv_kernel(uplo, trans, "N", &n, a, &lda, x, &inc);
        };
    };
    const Row rows[] = {
        {"gemv N", gemv("N")},
        {"gemv T", gemv("T")},
        {"symv U", [&](const VectorBuild& build, float* a, int lda, float* x, float* y,
                       int inc) { build.blas_ssymv_kernel("U", &n, &alpha, a, &lda, x, &inc, &beta, y, &inc); }},
        {"trmv U N", triangular("U", "N")},
        {"trmv L T", triangular("L", "T")},
        {"tbmv",
         [&](const VectorBuild& build, float* a, int lda, float* x, float*, int inc) {
             const int k = 1;
             build.blas_stbmv_kernel("L", "N", "N", &n, &k, a, &lda, x, &inc);
         }},
        {"ger",
         [&](const VectorBuild& build, float* a, int lda, float* x, float* y, int inc) {
             const int two = 2, last = n - 2;
             build.blas_sger_kernel(&n, &two, &alpha, x, &inc, y + std::ptrdiff_t{inc} * last, &inc,
                                    a + std::ptrdiff_t{lda} * last, &lda);
         }},
        {"axpy", [&](const VectorBuild& build, float*, int, float* x, float* y,
                     int inc) { build.blas_saxpy_kernel(&n, &alpha, x, &inc, y, &inc); }},
    };
    for (const VectorBuild& build : vector_builds())
        for (const Row& row : rows) {
            each_element([](float& near, float& apart, int i, int j) {
                near = apart = static_cast<float>((i + 2 * j) % 5 - 2);
            });
            for (std::ptrdiff_t i = 0; i < n; ++i) {
                xNear[i] = xFar.floats()[far * i] = static_cast<float>(i % 7 - 3);
                yNear[i] = yFar.floats()[far * i] = static_cast<float>(i % 3 - 1);
            }
            row.run(build, aNear.data(), n, xNear.data(), yNear.data(), unit);
            row.run(build, aFar.floats(), far, xFar.floats(), yFar.floats(), far);
            bool same = true;
            for (std::ptrdiff_t i = 0; i < n; ++i)
                same = same && xNear[i] == xFar.floats()[far * i] && yNear[i] == yFar.floats()[far * i];
            each_element([&](float& near, float& apart, int, int) { same = same && near == apart; });
            EXPECT_TRUE(same) << build << ' ' << row.name;
        }
}

// ---- The stack ------------------------------------------------------------------------------------------------------

TEST(Limits, Stack) {
#if defined(QRV_CHECKED)
    GTEST_SKIP() << "sanitizers and asserts take stack of their own";
#endif
    constexpr int n = 270, unit = 1, twice = 2; // more than any block on the stack holds
    std::vector<SingleComplex> ca(n * n, {1e-3F, 0}), cb(2 * n * n, {1, 0}), cc(2 * n * n, {1, 0});
    for (int i = 0; i < n; ++i)
        ca[i * n + i] = {1, 0};
    auto* const a = &ca[0].re;
    auto* const b = &cb[0].re;
    auto* const c = &cc[0].re;
    const float one = 1, half = 0.5F;
    const SingleComplex complexOne{1, 0};
    const std::size_t empty = stack_taken([] {});
    const auto expect_little = [&](const auto& build, const char* name, const std::function<void()>& call) {
        EXPECT_LE(stack_taken(call), stackOfACall + empty) << build << ' ' << name;
    };
    for (const VectorBuild& build : vector_builds()) {
        for (const char* const side : {"L", "R"})
            for (const char* const trans : {"N", "T"}) {
                expect_little(build, "strsm",
                              [&] { build.blas_strsm_kernel(side, "U", trans, "U", &n, &n, &half, a, &n, b, &n); });
                expect_little(build, "ctrmm", [&] {
                    build.blas_ctrmm_kernel(side, "L", trans, "N", &n, &n, &complexOne, ca.data(), &n, cb.data(), &n);
                });
            }
        expect_little(build, "cherk",
                      [&] { build.blas_cherk_kernel("U", "N", &n, &n, &one, ca.data(), &n, &one, cc.data(), &n); });
        expect_little(build, "ssyr2k",
                      [&] { build.blas_ssyr2k_kernel("L", "T", &n, &n, &one, a, &n, b, &n, &one, c, &n); });
        expect_little(build, "chemm", [&] {
            build.blas_chemm_kernel("L", "U", &n, &n, &complexOne, ca.data(), &n, cb.data(), &n, &complexOne, cc.data(),
                                    &n);
        });
        expect_little(build, "chemv", [&] {
            build.blas_chemv_kernel("U", &n, &complexOne, ca.data(), &n, cb.data(), &twice, &complexOne, cc.data(),
                                    &twice);
        });
        expect_little(build, "ctrsv",
                      [&] { build.blas_ctrsv_kernel("U", "C", "N", &n, ca.data(), &n, cb.data(), &unit); });
        expect_little(build, "ssyr2", [&] { build.blas_ssyr2_kernel("U", &n, &one, b, &twice, c, &twice, a, &n); });
    }
    for (const Subject<SingleComplex>& gemm : subjects<SingleComplex>())
        for (const char* const trans : {"N", "C"})
            expect_little(gemm.name, "cgemm", [&] {
                gemm.gemm(trans, trans, &n, &n, &n, &complexOne, ca.data(), &n, cb.data(), &n, &complexOne, cc.data(),
                          &n);
            });
}

} // namespace
} // namespace qrv::test
