// The sse42 GEMM in each vector form that the machine has: whole products against the double-precision oracle, and
// the micro-kernel by itself.
#include <gtest/gtest.h>

#include "blas/kernel/gemm_plan_pieces.hpp"
#include "service/processor.hpp"
#include "support/guard_page.hpp"
#include "support/matrices.hpp"

namespace qrv::test {
namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr char options[] = {'N', 'T'};

const char* name_of(VectorForm form) {
    return form == VectorForm::avx512 ? "avx512" : form == VectorForm::avx2 ? "avx2" : "sse";
}

class GemmForms : public testing::TestWithParam<VectorForm> {
protected:
    void SetUp() override {
        if (cpu_type_of(cpuid(1)) < 5 || GetParam() > vector_form())
            GTEST_SKIP() << "this machine has no " << name_of(GetParam());
        restrict_vector_form(GetParam());
    }
    void TearDown() override { restrict_vector_form(VectorForm::avx512); }
};
INSTANTIATE_TEST_SUITE_P(, GemmForms, testing::Values(VectorForm::sse, VectorForm::avx2, VectorForm::avx512),
                         [](const auto& form) { return std::string(name_of(form.param)); });

// The serial entry works in place where that pays; the blocked core packs A, or both operands.
enum class Route { entry, packA, packBoth };
constexpr Route routes[] = {Route::entry, Route::packA, Route::packBoth};

struct Product {
    char transa, transb;
    int m, n, k;
    float alpha, beta;
    int ldExtra; // added to every leading dimension
    int offset;  // start of A, B and C in floats past a 64-byte boundary

    GuardedMatrix a() const { return operand(is_transposed(transa) ? k : m, is_transposed(transa) ? m : k); }
    GuardedMatrix b() const { return operand(is_transposed(transb) ? n : k, is_transposed(transb) ? k : n); }
    GuardedMatrix c() const { return operand(m, n); }
    void run(Route route, const GuardedMatrix& a, const GuardedMatrix& b, GuardedMatrix& c) const {
        const int lda = a.ld(), ldb = b.ld(), ldc = c.ld();
        if (route == Route::entry)
            return kernel::sse42::blas_sgemm_kernel(&transa, &transb, &m, &n, &k, &alpha, a.data(), &lda, b.data(),
                                                    &ldb, &beta, c.data(), &ldc);
        GemmPlan<float> plan;
        kernel::sse42::blas_sgemm_plan_load(&plan);
        const GemmMode mode = route == Route::packA ? GemmMode::packA : GemmMode::packBoth;
        EXPECT_EQ(kernel::sse42::blas_sgemm_blocked(&transa, &transb, &m, &n, &k, &alpha, a.data(), &lda, b.data(),
                                                    &ldb, &beta, c.data(), &ldc, mode, &plan),
                  0);
    }

private:
    GuardedMatrix operand(int rows, int columns) const { return {rows, columns, std::max(1, rows) + ldExtra, offset}; }
};

std::ostream& operator<<(std::ostream& out, const Product& p) {
    return out << p.transa << p.transb << " m=" << p.m << " n=" << p.n << " k=" << p.k << " alpha=" << p.alpha
               << " beta=" << p.beta << " ld+" << p.ldExtra << " offset=" << p.offset;
}

void check(const Product& p) {
    std::mt19937 random(1);
    GuardedMatrix a = p.a(), b = p.b(), before = p.c();
    a.fill_random(random);
    b.fill_random(random);
    if (p.beta == 0)
        before.fill(nan);
    else
        before.fill_random(random);
    for (const Route route : routes) {
        GuardedMatrix c = p.c();
        for (int j = 0; j < p.n; ++j)
            std::copy_n(&before(0, j), p.m, &c(0, j));
        p.run(route, a, b, c);
        const double error = gemm_error(p.transa, p.transb, p.k, p.alpha, a, b, p.beta, before, c);
        EXPECT_TRUE(error <= 1) << p << " route " << static_cast<int>(route) << " error=" << error;
        EXPECT_TRUE(c.guards_intact()) << p << " route " << static_cast<int>(route);
    }
}

// Every remainder of rows, columns and steps against the largest tile of any form.
TEST_P(GemmForms, EveryRemainder) {
    for (const char ta : options)
        for (const char tb : options)
            for (int m = 1; m <= 38; ++m)
                for (int n = 1; n <= 26; ++n)
                    check({ta, tb, m, n, 1 + (m + n) % 13, 0.5F, m % 3 * 0.5F, n % 4, m % 5});
}

TEST_P(GemmForms, BlockEdges) {
    for (const char ta : options)
        for (const char tb : options)
            for (const int edge : {63, 64, 65, 127, 128, 129, 151, 152, 255, 256, 257, 300, 511, 512, 513}) {
                check({ta, tb, edge, 21, 27, 1, 1, 1, 0});
                check({ta, tb, 21, edge, 27, -1, 0, 0, 1});
                check({ta, tb, 21, 19, edge, 2, 0.5F, 3, 2});
            }
    check({'N', 'N', 1283, 17, 5, 1, 0, 0, 0});
    check({'N', 'T', 515, 25, 515, 1, 0.5F, 0, 1});
    check({'T', 'N', 515, 25, 261, 1, 0.5F, 0, 1});
    check({'T', 'T', 5, 5003, 5, 1, 0, 0, 0});
}

TEST_P(GemmForms, EveryAlignment) {
    for (int offset = 0; offset < 16; ++offset)
        for (int ldExtra = 0; ldExtra < 4; ++ldExtra)
            for (const char tb : options)
                check({'N', tb, 40, 24, 16, 1, 1, ldExtra, offset});
}

// A NaN or an infinity in one element of an operand reaches its row or column of C, whole, and nothing else. Rows and
// columns are the last ones of an incomplete tile, where neighbouring lanes hold nothing.
void check_special(Route route, float special, const Product& p) {
    GuardedMatrix a = p.a().fill(1), b = p.b().fill(1), c = p.c().fill(1);
    const int row = p.m - 1 - p.n % 2, column = p.n - 1 - p.m % 2;
    (is_transposed(p.transa) ? a(8, row) : a(row, 8)) = special;
    (is_transposed(p.transb) ? b(column, 7) : b(7, column)) = special;
    p.run(route, a, b, c);
    for (int j = 0; j < p.n; ++j)
        for (int i = 0; i < p.m; ++i) {
            const float expected = i == row || j == column ? special : 10;
            ASSERT_TRUE(std::isnan(expected) ? std::isnan(c(i, j)) : c(i, j) == expected)
                << p << " route " << static_cast<int>(route) << " at " << i << ',' << j << ": " << c(i, j);
        }
}

TEST_P(GemmForms, NonFiniteElementsStayInTheirRowAndColumn) {
    for (const Route route : routes)
        for (const float special : {nan, infinity})
            for (const char ta : options)
                for (const char tb : options)
                    for (int m = 29; m <= 33; ++m)
                        for (int n = 14; n <= 18; ++n)
                            check_special(route, special, {ta, tb, m, n, 9, 1, 1, 1, 1});
}

TEST_P(GemmForms, EmptySizes) {
    for (const char ta : options)
        for (int size = 0; size < 27; ++size) {
            check({ta, 'N', 0, size, 5, 1, 0.5F, 1, 0});
            check({ta, 'N', size, 0, 5, 1, 0.5F, 1, 0});
            check({ta, 'N', size, 3, 0, 1, 0.5F, 1, 0});
        }
}

TEST_P(GemmForms, ZeroAlphaReadsNoOperand) {
    for (const Route route : routes) {
        const Product p{'N', 'T', 37, 23, 19, 0, 0, 1, 3};
        GuardedMatrix a = p.a().fill(nan), b = p.b().fill(nan), c = p.c().fill(nan);
        p.run(route, a, b, c);
        for (int j = 0; j < p.n; ++j)
            for (int i = 0; i < p.m; ++i)
                EXPECT_EQ(c(i, j), 0) << i << ',' << j;
    }
}

// Operands that end where readable memory ends, and C whose neighbours must not even be touched.
TEST_P(GemmForms, NothingPastTheOperandsIsRead) {
    for (const char ta : options)
        for (const char tb : options)
            for (int m = 1; m <= 36; m += 3)
                for (int n = 1; n <= 25; ++n)
                    for (const int k : {3, 5, 8}) {
                        GuardPageArray a(static_cast<std::size_t>(m) * k), b(static_cast<std::size_t>(k) * n),
                            c(static_cast<std::size_t>(m) * n);
                        std::fill_n(a.data(), m * k, 1.0F);
                        std::fill_n(b.data(), k * n, 1.0F);
                        const int lda = is_transposed(ta) ? k : m, ldb = is_transposed(tb) ? n : k;
                        const float one = 1, zero = 0;
                        kernel::sse42::blas_sgemm_kernel(&ta, &tb, &m, &n, &k, &one, a.data(), &lda, b.data(), &ldb,
                                                         &zero, c.data(), &m);
                        for (int i = 0; i < m * n; ++i)
                            ASSERT_EQ(c.data()[i], k) << ta << tb << " m=" << m << " n=" << n << " at " << i;
                    }
}

// The micro-kernel on operands packed into memory full of NaN that ends at an inaccessible page: lanes that the packing
// leaves unwritten never reach C, and each buffer needs no more than its layout says.
struct MicroCase {
    char transb;
    MicroForm form;
    int m, n, k;
};

void check_micro(VectorForm vectorForm, const MicroCase& p) {
    GemmPlan<float> plan{};
    kernel::sse42::plan_load_for(vectorForm, &plan);
    const int kp = (p.k + plan.kUnit - 1) / plan.kUnit * plan.kUnit;
    const int stride = plan.mUnit * kp, panelsA = (p.m + plan.mUnit - 1) / plan.mUnit;
    const int panelsB = (p.n + plan.nUnit - 1) / plan.nUnit;
    const bool tb = is_transposed(p.transb);
    std::mt19937 random(1);
    GuardedMatrix a(p.m, p.k, p.m), b(tb ? p.n : p.k, tb ? p.k : p.n, tb ? p.n : p.k), c(p.m, p.n, p.m + 1);
    a.fill_random(random);
    b.fill_random(random);
    c.fill_random(random);
    const GuardedMatrix before = c;
    GuardPageArray packedA(static_cast<std::size_t>(panelsA) * stride);
    GuardPageArray packedB(static_cast<std::size_t>(panelsB) * stride);
    GuardPageArray sliver(static_cast<std::size_t>(kp) * plan.nUnit * plan.smallFactor);
    std::fill_n(packedA.data(), panelsA * stride, nan);
    std::fill_n(packedB.data(), panelsB * stride, nan);
    std::fill_n(sliver.data(), kp * plan.nUnit * plan.smallFactor, nan);
    const float one = 1;
    const int lda = a.ld(), ldb = b.ld(), ldc = c.ld();
    plan.copyAN(&p.m, &p.k, a.data(), &lda, packedA.data(), &stride, &one);
    (tb ? plan.copyBT : plan.copyBN)(&p.k, &p.n, b.data(), &ldb, packedB.data(), &stride);
    const bool packed = p.form == MicroForm::packedB;
    plan.micro("N", &p.transb, &p.m, &p.n, packed ? &kp : &p.k, &one, packedA.data(), &stride,
               packed ? packedB.data() : b.data(), packed ? &stride : &ldb, &one, c.data(), &ldc, sliver.data(),
               p.form);
    const double error = gemm_error('N', p.transb, p.k, 1, a, b, 1, before, c);
    EXPECT_TRUE(error <= 1 && c.guards_intact())
        << p.transb << " form " << static_cast<int>(p.form) << " m=" << p.m << " n=" << p.n << " k=" << p.k
        << " error=" << error << " guards=" << c.guards_intact();
}

TEST_P(GemmForms, MicroKernelOnBothFormsOfB) {
    for (const char tb : options)
        for (const MicroForm form : {MicroForm::packedB, MicroForm::directB})
            for (int m = 1; m <= 37; ++m)
                for (int n = 1; n <= 21; ++n)
                    check_micro(GetParam(), {tb, form, m, n, 4 + (m + n) % 5});
}

} // namespace
} // namespace qrv::test
