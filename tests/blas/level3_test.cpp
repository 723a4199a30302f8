// Contract of the kernels of level 3 but GEMM, on every build.
#include "support/call.hpp"
#include "support/combine.hpp"
#include "support/routines.hpp"
#include "support/shapes.hpp"
#include "support/work_memory.hpp"

namespace qrv::test {
namespace {

// One of `every` options of each routine whose square or triangle has the order n and whose other side is `length`.
struct Sizes {
    int n, length;
    unsigned every = 1;
    int extra = 0;            // columns far apart are copied
    bool updatesOnly = false; // deep ones
};

void check_all(const std::vector<Sizes>& sizes, VectorForm least = VectorForm::sse) {
    Turns turns;
    each_routine(false, [&]<class T>(const Routine<T>& routine) {
        const bool updates = routine.operation.updates();
        for (const Sizes& s : sizes)
            for (Shape p : every_option<T>(routine.operation)) {
                if ((s.updatesOnly && !updates) || !turns.one_in(s.every))
                    continue;
                const bool left = p.side == 'L';
                p.m = left ? s.n : s.length;
                p.n = left && !updates ? s.length : s.n;
                p.k = s.length;
                p = turns.vary(p, s.every > 1);
                p.a.extra += s.extra, p.c.extra += s.extra;
                const Problem<T> problem(routine.operation, p);
                for (const VectorBuild& build : vector_builds())
                    if (build.form >= least)
                        problem.check([&](const Call<T>& v) { routine.kernel(build, v); },
                                      std::string(build.name) + ' ' + routine.name);
            }
    });
}

// Orders around those of groups, vectors, blocks and halves.
TEST(Level3, Orders) {
    std::vector<Sizes> sizes;
    for (const int n : {0, 1, 2, 3, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33})
        sizes.insert(sizes.end(), {{n, 1 + n % 3}, {n, 18}});
    for (const int n : {63, 64, 65, 127, 128, 129, 191, 192, 193, 255, 256, 257})
        sizes.insert(sizes.end(), {{n, 1 + n % 4, 3}, {n, 17, 5}});
    for (const int n : {511, 512, 513, 1023, 1024, 1025})
        sizes.push_back({n, 1 + n % 3, n < 600 ? 6U : 12U});
    check_all(sizes);
}

// The other side around the sizes of vectors, strips and chunks; depths of an update beyond a block, in triangles of
// one and of several blocks.
TEST(Level3, Lengths) {
    std::vector<Sizes> sizes;
    for (const int length : {0, 1, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 65})
        sizes.push_back({length % 2 == 0 ? 11 : 20, length, 2});
    for (const int length : {129, 255, 257, 385, 511, 513, 1023, 1025})
        sizes.insert(sizes.end(), {{21, length, 4}, {length % 4 == 1 ? 70 : 135, length, 12}});
    sizes.insert(sizes.end(), {{520, 70, 4, 0, true}, {600, 300, 4, 0, true}});
    check_all(sizes);
}

// Triangles in panels, of one block of rows and of two, the tail of each of its own; one step beyond a block.
TEST(Level3, LargeUpdates) {
    check_all({{660, 250, 7, 0, true}, {1285, 512, 11, 0, true}}, VectorForm::avx512);
    check_all({{1541, 33, 7, 0, true}});
}

// A large product with a triangle against the same in slices, which go another way. Multiples of 1/8 make both exact,
// and NaN stays where it belongs.
TEST_OF_ELEMENTS(Level3, LargeProducts) {
    constexpr int slice = 97;
    std::mt19937 random(1);
    const T alpha = scalar<T>(-0.5F);
    combine(vector_builds(), "LR", "UL", "NTC", "NU")
        .each([&](const auto& build, char side, char uplo, char trans, char diag) {
            if (build.form < (isComplex<T> ? VectorForm::avx512 : VectorForm::avx2))
                return;
            const bool widest = build.form == VectorForm::avx512, left = side == 'L';
            const int order = widest ? 967 : left ? 1500 : 389, count = widest ? 389 : left ? 263 : 1367;
            const auto multiply = routine_for<T>(build.blas_strmm_kernel, build.blas_ctrmm_kernel);
            const int m = left ? order : count, n = left ? count : order;
            const Guard guard = trans == 'N' ? Guard::pageBehind : Guard::pageInFront;
            Operand<T> a({order, order, Form::triangular, uplo, diag}, {5, 0, guard}), b({m, n}, {3, 0, guard});
            a.set([&](int, int) { return eighths<T>(random); });
            b.set([&](int, int) { return eighths<T>(random); });
            b(m / 2, n / 2) = all_parts<T>(nan);
            Operand<T> sliced(b);
            const WorkMemoryProbe memory(0, !left && uplo == 'L' && trans == 'C' ? anySize : 0);
            call(multiply, side, uplo, trans, diag, m, n, alpha, a, b);
            for (int done = 0; done < count; done += slice) {
                const int some = std::min(slice, count - done);
                multiply(&side, &uplo, &trans, &diag, left ? &m : &some, left ? &some : &n, &alpha, a.data(), &a.ld(),
                         &sliced(left ? 0 : done, left ? done : 0), &sliced.ld());
            }
            int unlike = 0;
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < m; ++i)
                    unlike += !(b(i, j) == sliced(i, j) || (b(i, j) != b(i, j) && sliced(i, j) != sliced(i, j)));
            EXPECT_EQ(unlike, 0);
        });
}

TEST(Level3, ColumnsFarApart) {
    check_all({{11, 131, 4, 512}, {64, 131, 4, 512}, {70, 131, 4, 512}, {135, 131, 6, 512}});
}

// A solve divides once for each element of the diagonal: right-hand sides are multiplied by its reciprocal, but for a
// few that are solved one by one. 7 and 3 tell that from a quotient.
TEST_OF_ELEMENTS(Level3, ReciprocalsOfTheDiagonal) {
    const int one = 1;
    const T alpha = scalar<T>(1), huge = all_parts<T>(0x1.8p127F);
    T three = scalar<T>(3), seven = scalar<T>(7);
    if constexpr (isComplex<T>)
        three = {0, 3}, seven = {0, 7};
    for (const VectorBuild& build : vector_builds())
        for (const char* side : {"L", "R"})
            for (const int count : {1, 4}) {
                const int m = *side == 'L' ? 1 : count, n = *side == 'L' ? count : 1;
                const auto last_quotient = [&](const T& pivot, const T& right) {
                    std::vector<T> b(4, right);
                    routine_for<T>(build.blas_strsm_kernel, build.blas_ctrsm_kernel)(
                        side, "L", "N", "N", &m, &n, &alpha, &pivot, &one, b.data(), &m);
                    return b[std::size_t(count - 1)];
                };
                const float quotient = count == 1 ? 7.0F / 3 : 7 * (1.0F / 3);
                EXPECT_TRUE(last_quotient(three, seven) == scalar<T>(quotient)) << build << ' ' << side << count;
                if (isComplex<T>) {
                    EXPECT_LT(std::abs(widen(last_quotient(huge, huge)) - 1.0), 2e-6) << build << ' ' << side << count;
                }
            }
}

} // namespace
} // namespace qrv::test
