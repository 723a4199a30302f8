// What the kernels do at the ends: sizes near the largest int, and how much stack they take.
#include <climits>
#include <memory>
#include <sys/mman.h>
#include <unistd.h>

#include "support/gemm.hpp"
#include "support/routines.hpp"
#include "support/stack.hpp"

namespace qrv::test {
namespace {

// Addresses that all lie over the same memory of 2 MB, full of zeros; null if there are none.
std::unique_ptr<Reserved> repeated(std::size_t bytes) {
    constexpr std::size_t piece = 2 << 20;
    auto addresses = std::make_unique<Reserved>(bytes + piece, false);
    const int file = memfd_create("repeated", 0);
    bool good = addresses->ok() && ftruncate(file, piece) == 0;
    for (std::size_t at = 0; good && at < bytes; at += piece)
        good = mmap(reinterpret_cast<char*>(addresses->floats()) + at, piece, PROT_READ | PROT_WRITE,
                    MAP_SHARED | MAP_FIXED, file, 0) != MAP_FAILED;
    close(file);
    return good ? std::move(addresses) : nullptr;
}

// ---- Sizes ----------------------------------------------------------------------------------------------------------

// A walk by blocks counts what is left: an index one block further would not be an int. Updates with nothing to add
// read nothing of x.
TEST(Limits, LargestSizes) {
    if (sizeof(void*) == 4)
        GTEST_SKIP() << "no room for such a vector";
    const int most = INT_MAX, one = 1;
    const SingleComplex alpha{2, 1}, zero{0, 0};
    const Reserved x(std::size_t{INT_MAX} * sizeof(SingleComplex), false);
    if (!x.ok())
        GTEST_SKIP() << "no such address space";
    const auto* const z = reinterpret_cast<const SingleComplex*>(x.floats());
    for (const VectorBuild& build : vector_builds()) {
        SingleComplex c{3, 4};
        build.blas_sger_kernel(&most, &one, &alpha.re, x.floats(), &one, &zero.re, &one, &c.re, &most);
        build.blas_cgeru_kernel(&most, &one, &alpha, z, &one, &zero, &one, &c, &most);
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
    const auto zeros = repeated(std::size_t{INT_MAX} * sizeof(float));
    if (build.cpuType == 0 || !zeros)
        GTEST_SKIP() << "they take too long, or there are no such addresses";
    const int most = INT_MAX, one = 1, none = 0;
    const float alpha = 2, zero = 0, beta = 1;
    float c = 3, *const b = zeros->floats();
    build.blas_sgemv_kernel("T", &most, &one, &alpha, b, &most, b, &one, &beta, &c, &one);
    build.blas_strsm_kernel("R", "U", "N", "U", &most, &one, &beta, &zero, &one, b, &most);
    if (build.form != VectorForm::sse) {
        build.blas_sgemv_kernel("T", &one, &most, &alpha, &zero, &none, &beta, &one, &beta, &c, &none);
        build.blas_ssyr2k_kernel("U", "N", &one, &most, &alpha, &zero, &none, &zero, &none, &beta, &c, &one);
    }
    EXPECT_EQ(c, 3) << build;
}

// ---- The stack ------------------------------------------------------------------------------------------------------

// More than any block on the stack holds, as columns and as rows.
constexpr int beyondBlocks = 270;

TEST(Limits, Stack) {
#if defined(QRV_CHECKED)
    GTEST_SKIP() << "sanitizers and asserts take stack of their own";
#endif
    const std::size_t empty = stack_taken([] {});
    for (const bool vectors : {true, false})
        each_routine(vectors, [=]<class T>(const Routine<T>& routine) {
            for (Shape p : every_option<T>(routine.operation)) {
                p.m = p.n = p.k = beyondBlocks, p.ku = 3, p.incx = 2, p.incy = -2;
                const Problem<T> problem(routine.operation, p);
                for (const VectorBuild& build : vector_builds()) {
                    Operand<T> c = problem.before;
                    const Call<T> call = problem.on(c);
                    EXPECT_LE(stack_taken([&] { routine.kernel(build, call); }), stackOfACall + empty)
                        << build << ' ' << routine.name << ' ' << p;
                }
            }
        });
    for (const Subject<SingleComplex>& gemm : subjects<SingleComplex>())
        for (const char trans : {'N', 'C'}) {
            const GemmCase<SingleComplex> x(
                {.trans = trans, .transb = trans, .m = beyondBlocks, .n = beyondBlocks, .k = beyondBlocks});
            Operand<SingleComplex> c = x.before;
            const auto call = x.on(c);
            EXPECT_LE(stack_taken([&] { call_gemm(gemm.gemm, call); }), stackOfACall + empty) << gemm.name << trans;
        }
}

} // namespace
} // namespace qrv::test
