// The plan of the plan-driven SGEMM: rows, block rules, buffers, and the blocked core in every mode.
#include <gtest/gtest.h>

#include "blas/kernel/common/gemm_blocks.hpp"
#include "service/work_pool.hpp"
#include "support/packing.hpp"
#include "support/plans.hpp"

namespace qrv::test {
namespace {

using Plan = GemmPlan<float>;

Plan loaded(const PlanBuild& build) {
    Plan plan{};
    build.load(&plan);
    return plan;
}

// ---- Block rules -------------------------------------------------------------------------------------------

TEST(GemmBlocks, DepthOfABlock) {
    struct Row {
        int k, byFours, byPairs;
    };
    const Row rows[] = {{1, 128, 128},   {100, 128, 128}, {128, 128, 128}, {129, 132, 130}, {253, 256, 254},
                        {255, 256, 256}, {256, 256, 256}, {257, 128, 128}, {258, 132, 130}, {300, 152, 150},
                        {510, 256, 256}, {511, 256, 256}, {512, 256, 256}, {513, 256, 256}, {100000, 256, 256}};
    for (const Row& row : rows) {
        EXPECT_EQ(k_block(sgemmBlocksSse42, row.k, 4), row.byFours) << row.k;
        EXPECT_EQ(k_block(sgemmBlocksSsse3, row.k, 4), row.byFours) << row.k;
        EXPECT_EQ(k_block(sgemmBlocksPairs, row.k, 2), row.byPairs) << row.k;
    }
}

TEST(GemmBlocks, RowsByTheCacheThatHoldsThem) {
    const auto caches = [](int second, int third) { return CacheTable{third ? 3 : 2, {32768, second, third, 0}}; };
    constexpr int l2 = 3145728, l3 = 4194304;
    EXPECT_EQ(row_block(sgemmBlocksSse42, caches(262144, l3)), 768);
    EXPECT_EQ(row_block(sgemmBlocksSse42, caches(262144, l3 + 1)), 1280);
    EXPECT_EQ(row_block(sgemmBlocksSse42, caches(262144, 0)), 768) << "no third level";
    EXPECT_EQ(row_block(sgemmBlocksSse42, CacheTable{}), 1280) << "nothing known";
    EXPECT_EQ(row_block(sgemmBlocksSsse3, caches(l2, 0)), 896);
    EXPECT_EQ(row_block(sgemmBlocksSsse3, caches(l2 + 1, 0)), 2000);
    EXPECT_EQ(row_block(sgemmBlocksSsse3, CacheTable{}), 2000);
    for (const int second : {262144, l2, 2 * l2})
        EXPECT_EQ(row_block(sgemmBlocksPairs, caches(second, 0)), 1024);
}

TEST(GemmBlocks, ColumnsOfABlock) {
    struct Row {
        int n, filled, plain;
    };
    for (const Row& row : {Row{1, 4, 2},
                           {2, 4, 2},
                           {3, 4, 3},
                           {4, 4, 4},
                           {5, 8, 5},
                           {4997, 5000, 4997},
                           {4999, 5000, 4999},
                           {5000, 5000, 5000},
                           {5001, 5000, 5000},
                           {90000, 5000, 5000}}) {
        EXPECT_EQ(column_block(sgemmBlocksSse42, row.n, 4), row.filled) << row.n;
        EXPECT_EQ(column_block(sgemmBlocksPairs, row.n, 2), row.plain) << row.n;
    }
}

TEST(GemmBlocks, PresetBlocksSurvive) {
    const int m = 1000, n = 1000, k = 1000;
    for (const PlanBuild& build : plan_builds())
        for (int preset = 0; preset < 8; ++preset) {
            Plan plan = loaded(build), free = plan;
            free.setBlocks(&m, &n, &k, &free);
            plan.mb = preset & 1 ? 24 : 0;
            plan.nb = preset & 2 ? 40 : 0;
            plan.kb = preset & 4 ? 56 : 0;
            plan.setBlocks(&m, &n, &k, &plan);
            EXPECT_EQ(plan.mb, preset & 1 ? 24 : free.mb) << build.name;
            EXPECT_EQ(plan.nb, preset & 2 ? 40 : 1000) << build.name;
            EXPECT_EQ(plan.kb, preset & 4 ? 56 : 256) << build.name;
        }
}

// ---- Rows --------------------------------------------------------------------------------------------------

TEST(GemmPlanRows, Constants) {
    for (const PlanBuild& build : plan_builds()) {
        const bool pairs = std::string(build.name) == "ssse3 row 0";
        const Plan plan = loaded(build);
        SCOPED_TRACE(build.name);
        EXPECT_EQ(plan.rowIndex, std::string(build.name) == "ssse3 row 1" ? 1 : 0);
        EXPECT_EQ(plan.tableTag, 126);
        EXPECT_EQ(plan.mUnit, 4);
        EXPECT_EQ(plan.nUnit, pairs ? 2 : 4);
        EXPECT_EQ(plan.kUnit, pairs ? 2 : 4);
        EXPECT_EQ(plan.smallM, 4);
        EXPECT_EQ(plan.smallN, pairs ? 8 : 4);
        EXPECT_EQ(plan.smallK, pairs ? 2 : 4);
        if (build.form == VectorForm::sse) {
            EXPECT_EQ(plan.smallFactor, pairs ? 8 : 2);
        }
        EXPECT_EQ(plan.copyAC, plan.copyAT);
        EXPECT_EQ(plan.copyBC, plan.copyBT);
        EXPECT_EQ(plan.mb + plan.nb + plan.kb, 0);
    }
}

TEST(GemmPlanRows, Sse41ChoosesTheRow) {
    EXPECT_EQ(kernel::ssse3::plan_row(false), 0);
    EXPECT_EQ(kernel::ssse3::plan_row(true), 1);
    if (cpu_type_of(cpuid(1)) < 4)
        GTEST_SKIP() << "this processor has no SSSE3";
    Plan plan{};
    kernel::ssse3::blas_sgemm_plan_load(&plan);
    EXPECT_EQ(plan.rowIndex, bit(cpuid(1).ecx, 19) ? 1 : 0);
}

TEST(GemmPlanRows, ResetForgetsAndSetBlocksStores) {
    if (cpu_type_of(cpuid(1)) < 5)
        GTEST_SKIP() << "this processor has no SSE4.2";
    using namespace kernel::sse42;
    Plan plan{};
    blas_sgemm_plan_load(&plan);
    blas_sgemm_plan_set_blocks(8, 12, 16, &plan);
    EXPECT_EQ(plan.mb, 8);
    EXPECT_EQ(plan.nb, 12);
    EXPECT_EQ(plan.kb, 16);
    blas_sgemm_plan_reset(&plan);
    EXPECT_EQ(plan.mb + plan.nb + plan.kb + plan.mUnit + plan.tableTag, 0);
    EXPECT_EQ(plan.micro, nullptr);
}

TEST(VectorForms, NeedProcessorAndSystem) {
    constexpr std::uint32_t fma = 1U << 12, osxsave = 1U << 27, avx = 1U << 28;
    constexpr std::uint32_t avx2 = 1U << 5, f = 1U << 16, dq = 1U << 17, bw = 1U << 30, vl = 1U << 31;
    const auto form = [](std::uint32_t ecx1, std::uint32_t ebx7, std::uint32_t xcr0) {
        CpuidWords leaf1, leaf7;
        leaf1.ecx = ecx1;
        leaf7.ebx = ebx7;
        return vector_form_of(leaf1, leaf7, xcr0);
    };
    constexpr std::uint32_t all1 = fma | osxsave | avx, all7 = avx2 | f | dq | bw | vl, allStates = 0xE7;
    EXPECT_EQ(form(all1, all7, allStates), VectorForm::avx512);
    for (const std::uint32_t missing : {fma, osxsave, avx})
        EXPECT_EQ(form(all1 & ~missing, all7, allStates), VectorForm::sse) << missing;
    EXPECT_EQ(form(all1, all7 & ~avx2, allStates), VectorForm::sse);
    for (const std::uint32_t missing : {f, dq, bw, vl})
        EXPECT_EQ(form(all1, all7 & ~missing, allStates), VectorForm::avx2) << missing;
    for (const std::uint32_t missing : {0x20U, 0x40U, 0x80U})
        EXPECT_EQ(form(all1, all7, allStates & ~missing), VectorForm::avx2) << missing;
    for (const std::uint32_t missing : {0x2U, 0x4U})
        EXPECT_EQ(form(all1, all7, allStates & ~missing), VectorForm::sse) << missing;
}

TEST(VectorForms, CanBeRestricted) {
    const VectorForm widest = vector_form();
    restrict_vector_form(VectorForm::sse);
    EXPECT_EQ(vector_form(), VectorForm::sse);
    restrict_vector_form(VectorForm::avx512);
    EXPECT_EQ(vector_form(), widest);
}

// ---- Buffers -----------------------------------------------------------------------------------------------

constexpr GemmBuffer<float> untouched{nullptr, -1, 77, -1};

bool same(const GemmBuffer<float>& x, const GemmBuffer<float>& y) {
    return x.data == y.data && x.stride == y.stride && x.bytes == y.bytes && x.alignShift == y.alignShift;
}

Plan with_marked_buffers(const PlanBuild& build, int mb, int nb, int kb) {
    Plan plan = loaded(build);
    plan.mb = mb;
    plan.nb = nb;
    plan.kb = kb;
    plan.aBuffer = plan.bBuffer = plan.sliver = untouched;
    return plan;
}

struct SetRow {
    BufferSet set;
    const char* order; // of the one allocation
};
constexpr SetRow sets[] = {{BufferSet::aSliverB, "asb"}, {BufferSet::a, "a"},        {BufferSet::b, "b"},
                           {BufferSet::aB, "ab"},        {BufferSet::sliverB, "sb"}, {BufferSet::aSliver, "as"},
                           {BufferSet::sliver, "s"}};

TEST(GemmBuffers, SizesOfEachSet) {
    const int m = 30, n = 9, k = 21; // smaller than the blocks in some directions, larger in others
    struct ClipRow {
        BlockClip clip;
        int mb, nb, kb;
        int mm, nn, kk; // before filling up
    };
    for (const ClipRow& row : {ClipRow{BlockClip::toProblem, 64, 40, 128, 30, 9, 21},
                               {BlockClip::toProblem, 22, 6, 10, 22, 6, 10},
                               {BlockClip::none, 62, 41, 127, 62, 41, 127}})
        for (const PlanBuild& build : plan_builds())
            for (const SetRow& set : sets) {
                Plan plan = with_marked_buffers(build, row.mb, row.nb, row.kb);
                ASSERT_EQ(plan.bufferSizes(set.set, row.clip, &m, &n, &k, &plan), 0);
                const auto fill = [](int x, int unit) { return (x + unit - 1) / unit * unit; };
                const int mm = fill(row.mm, plan.mUnit), nn = fill(row.nn, plan.nUnit), kk = fill(row.kk, plan.kUnit);
                const auto has = [&](char c) { return std::string(set.order).find(c) != std::string::npos; };
                const auto bytes = [](int floats) { return static_cast<std::size_t>(floats) * 4 + 512; };
                const GemmBuffer<float> a{nullptr, plan.mUnit * kk, bytes(mm * kk), 12};
                const GemmBuffer<float> b{nullptr, plan.nUnit * kk, bytes(nn * kk), 12};
                const GemmBuffer<float> sliver{nullptr, -1, bytes(kk * plan.nUnit * plan.smallFactor), 7};
                EXPECT_TRUE(same(plan.aBuffer, has('a') ? a : untouched)) << build.name << ' ' << set.order;
                EXPECT_TRUE(same(plan.bBuffer, has('b') ? b : untouched)) << build.name << ' ' << set.order;
                EXPECT_TRUE(same(plan.sliver, has('s') ? sliver : untouched)) << build.name << ' ' << set.order;
            }
}

TEST(GemmBuffers, UnknownCodesChangeNothing) {
    const int m = 30, n = 9, k = 21;
    for (const PlanBuild& build : plan_builds())
        for (const auto& [set, clip] : {std::pair{99, 107}, {107, 107}, {0, 108}, {100, 106}, {100, 109}, {106, 0}}) {
            Plan plan = with_marked_buffers(build, 64, 64, 64);
            EXPECT_EQ(plan.bufferSizes(static_cast<BufferSet>(set), static_cast<BlockClip>(clip), &m, &n, &k, &plan),
                      1);
            EXPECT_TRUE(same(plan.aBuffer, untouched) && same(plan.bBuffer, untouched) && same(plan.sliver, untouched))
                << build.name << ' ' << set << ' ' << clip;
        }
}

TEST(GemmBuffers, StandInOneBlockInTheirOrder) {
    const int m = 30, n = 9, k = 21;
    for (const PlanBuild& build : plan_builds())
        for (const SetRow& set : sets) {
            Plan plan = with_marked_buffers(build, 64, 64, 64);
            plan.bufferSizes(set.set, BlockClip::toProblem, &m, &n, &k, &plan);
            void* block = nullptr;
            const int result = plan.allocateBuffers(set.set, &block, &plan);
            if (set.set == BufferSet::aB) {
                EXPECT_EQ(result, 1) << "these are sized only";
                EXPECT_EQ(block, nullptr);
                continue;
            }
            ASSERT_EQ(result, 0);
            ASSERT_NE(block, nullptr);
            auto address = reinterpret_cast<std::uintptr_t>(block);
            std::size_t total = 0;
            for (const char* c = set.order; *c; ++c) {
                const GemmBuffer<float>& buffer = *c == 'a' ? plan.aBuffer : *c == 'b' ? plan.bBuffer : plan.sliver;
                const std::uintptr_t unit = std::uintptr_t{1} << buffer.alignShift;
                address = (address + unit - 1) / unit * unit;
                EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.data), address) << build.name << ' ' << set.order;
                address += buffer.bytes;
                total += buffer.bytes + 2 * unit;
            }
            EXPECT_LE(address, reinterpret_cast<std::uintptr_t>(block) + total);
            qrv_serv_deallocate(block);
        }
}

// ---- The blocked core ----------------------------------------------------------------------------------------

TEST(GemmCore, PickModeByTheBlockOfB) {
    for (const PlanBuild& build : plan_builds()) {
        const auto picked = [&](int nb, int n, int k) {
            Plan plan = loaded(build);
            plan.mb = 64;
            plan.kb = 256;
            plan.nb = nb;
            const char op = 'N';
            const int m = 64, ld = 100000;
            const float one = 1;
            return build.pickMode(&op, &op, &m, &n, &k, &one, nullptr, &ld, nullptr, &ld, &one, nullptr, &ld, &plan);
        };
        EXPECT_EQ(picked(6144, 90000, 256), GemmMode::packA) << build.name;
        EXPECT_EQ(picked(6145, 90000, 256), GemmMode::packBoth) << build.name;
        EXPECT_EQ(picked(6145, 6144, 256), GemmMode::packA) << build.name;
        EXPECT_EQ(picked(6145, 90000, 255), GemmMode::packA) << build.name;
        EXPECT_EQ(picked(2000000000, 2000000000, 256), GemmMode::packBoth) << build.name;
    }
}

constexpr char options[] = {'N', 'T'};
constexpr GemmMode selfPacking[] = {GemmMode::choose, GemmMode::packBoth, GemmMode::packA};
constexpr GemmMode given[] = {GemmMode::packBGivenA, GemmMode::directBGivenA, GemmMode::packAGivenB,
                              GemmMode::givenBoth};

struct CoreCase {
    GemmMode mode;
    char transa, transb;
    int m, n, k;
    float alpha = 1, beta = 1;
    int ldExtra = 0, offset = 0;
    int mb = 0, nb = 0, kb = 0; // preset blocks
};

// A call of the core, with operands packed by the plan's own routines where the mode wants them.
class CoreCall {
public:
    CoreCall(const PlanBuild& build, const CoreCase& p)
        : build_(build), p_(p), plan_(loaded(build)), a_(matrix(p.transa, p.m, p.k)), b_(matrix(p.transb, p.k, p.n)),
          c_(p.m, p.n, p.m + p.ldExtra, p.offset), before_(c_) {
        plan_.mb = p.mb;
        plan_.nb = p.nb;
        plan_.kb = p.kb;
        std::mt19937 random(5);
        a_.fill_random(random);
        b_.fill_random(random);
        if (p.beta == 0)
            c_.fill(nan);
        else
            c_.fill_random(random);
    }

    GuardedMatrix& a() { return a_; }
    GuardedMatrix& b() { return b_; }
    const GuardedMatrix& c() const { return c_; }
    const GuardedMatrix& before() const { return before_; }
    const Plan& plan() const { return plan_; }

    int run() {
        before_ = c_;
        const int kp = (p_.k + plan_.kUnit - 1) / plan_.kUnit * plan_.kUnit;
        const bool givenA =
            p_.mode == GemmMode::packBGivenA || p_.mode == GemmMode::directBGivenA || p_.mode == GemmMode::givenBoth;
        const bool givenB = p_.mode == GemmMode::packAGivenB || p_.mode == GemmMode::givenBoth;
        const int aStride = plan_.mUnit * kp, bStride = plan_.nUnit * kp;
        PackBuffer aPacked(static_cast<std::size_t>((p_.m + 3) / plan_.mUnit * aStride + 64));
        PackBuffer bPacked(static_cast<std::size_t>((p_.n + 3) / plan_.nUnit * bStride + 64));
        int lda = a_.ld(), ldb = b_.ld();
        const int ldc = c_.ld();
        const float* a = a_.data();
        const float* b = b_.data();
        if (givenA) {
            (is_transposed(p_.transa) ? plan_.copyAT : plan_.copyAN)(&p_.m, &p_.k, a, &lda, aPacked.data(), &aStride,
                                                                     &p_.alpha);
            a = aPacked.data();
            lda = aStride;
        }
        if (givenB) {
            (is_transposed(p_.transb) ? plan_.copyBT : plan_.copyBN)(&p_.k, &p_.n, b, &ldb, bPacked.data(), &bStride);
            b = bPacked.data();
            ldb = bStride;
        }
        return build_.blocked(&p_.transa, &p_.transb, &p_.m, &p_.n, &p_.k, &p_.alpha, a, &lda, b, &ldb, &p_.beta,
                              c_.data(), &ldc, p_.mode, &plan_);
    }

    void check() {
        ASSERT_EQ(run(), 0) << describe();
        const double error = gemm_error(p_.transa, p_.transb, p_.k, p_.alpha, a_, b_, p_.beta, before_, c_);
        EXPECT_TRUE(error <= 1 && c_.guards_intact()) << describe() << " error=" << error;
    }

    std::string describe() const {
        std::ostringstream text;
        text << build_.name << " mode=" << static_cast<int>(p_.mode) << ' ' << p_.transa << p_.transb << " m=" << p_.m
             << " n=" << p_.n << " k=" << p_.k << " alpha=" << p_.alpha << " beta=" << p_.beta << " ld+" << p_.ldExtra
             << " offset=" << p_.offset;
        return text.str();
    }

    bool c_untouched() const {
        for (int j = 0; j < p_.n; ++j)
            for (int i = 0; i < p_.m; ++i)
                if (c_(i, j) != before_(i, j))
                    return false;
        return c_.guards_intact();
    }

private:
    GuardedMatrix matrix(char option, int rows, int columns) const {
        const bool t = is_transposed(option);
        return GuardedMatrix(t ? columns : rows, t ? rows : columns, (t ? columns : rows) + p_.ldExtra, p_.offset);
    }

    const PlanBuild& build_;
    CoreCase p_;
    Plan plan_;
    GuardedMatrix a_, b_, c_, before_;
};

void check(const PlanBuild& build, const CoreCase& p) {
    CoreCall(build, p).check();
}

TEST(GemmCore, EveryModeOnSmallShapes) {
    for (const PlanBuild& build : plan_builds())
        for (const char ta : options)
            for (const char tb : options)
                for (int m = 1; m <= 9; ++m)
                    for (int n = 1; n <= 9; ++n)
                        for (const int k : {1, 2, 3, 4, 5, 8, 11, 12}) {
                            const auto at = [&](GemmMode mode) {
                                check(build, {mode, ta, tb, m, n, k, 0.5F, (m + n) % 3 * 0.5F, k % 4, n % 4});
                            };
                            for (const GemmMode mode : selfPacking)
                                at(mode);
                            for (const GemmMode mode : given)
                                at(mode);
                        }
}

// Every edge of tile, panel group and micro-kernel pass, in one direction at a time.
TEST(GemmCore, EveryModeAroundTheEdges) {
    for (const PlanBuild& build : plan_builds())
        for (const char ta : options)
            for (const char tb : options)
                for (const int edge : {10, 15, 16, 17, 22, 23, 24, 31, 32, 33, 35, 47, 48, 49, 63, 65, 97, 127, 129}) {
                    const auto at = [&](GemmMode mode) {
                        check(build, {mode, ta, tb, edge, 13, 18, -1, 1, 3, 1});
                        check(build, {mode, ta, tb, 14, edge, 19, 2, 0, 1, 2});
                        check(build, {mode, ta, tb, 21, 15, edge, 1, 0.25F, 2, 3});
                    };
                    for (const GemmMode mode : selfPacking)
                        at(mode);
                    for (const GemmMode mode : given)
                        at(mode);
                }
}

// Blocks so small that every loop of every mode runs more than once and ends in a shorter block.
TEST(GemmCore, SeveralBlocksInEachDirection) {
    for (const PlanBuild& build : plan_builds())
        for (const char ta : options)
            for (const char tb : options) {
                for (const GemmMode mode : selfPacking) {
                    check(build, {mode, ta, tb, 45, 39, 50, 1.5F, 1, 1, 0, 16, 12, 20});
                    check(build, {mode, ta, tb, 33, 25, 41, 1.5F, 0, 1, 0, 8, 8, 8});
                }
                for (const GemmMode mode : given) {
                    check(build, {mode, ta, tb, 45, 39, 50, 1.5F, 1, 1, 0, 16, 12, 256});
                    check(build, {mode, ta, tb, 45, 39, 50, 1.5F, 1, 1, 0, 16, 12, 8}); // k is one block all the same
                }
            }
}

TEST(GemmCore, DeepAndWide) {
    for (const PlanBuild& build : plan_builds()) {
        for (const int k : {255, 256, 257, 300, 511, 513})
            check(build, {GemmMode::choose, 'N', 'T', 21, 19, k, 1, 1, 1, 1});
        check(build, {GemmMode::choose, 'T', 'N', 9, 5003, 10, 1, 1});
        check(build, {GemmMode::choose, 'N', 'N', 2051, 7, 10, 1, 1});
        check(build, {GemmMode::packBoth, 'N', 'T', 9, 5003, 10, 1, 0});
    }
}

TEST(GemmCore, AnyAlignmentOfC) {
    for (const PlanBuild& build : plan_builds())
        for (const GemmMode mode : {GemmMode::packBoth, GemmMode::packA})
            for (int offset = 0; offset < 4; ++offset)
                for (int ldExtra = 0; ldExtra < 4; ++ldExtra)
                    for (const int m : {16, 19})
                        check(build, {mode, 'N', 'N', m, 11, 12, 1, 1, ldExtra, offset});
}

TEST(GemmCore, QuickReturns) {
    for (const PlanBuild& build : plan_builds())
        for (const GemmMode mode : {GemmMode::packBoth, GemmMode::packA, GemmMode::directBGivenA}) {
            for (const auto& [alpha, beta, k] : {std::tuple{0.0F, 1.0F, 8}, {1.0F, 1.0F, 0}, {0.0F, 1.0F, 0}}) {
                CoreCall call(build, {mode, 'N', 'N', 8, 8, k, alpha, beta});
                call.a().fill(nan);
                EXPECT_EQ(call.run(), 0);
                EXPECT_TRUE(call.c_untouched()) << call.describe();
            }
            check(build, {mode, 'N', 'N', 9, 7, 0, 1, 0.5F});
            CoreCall zeroed(build, {mode, 'N', 'N', 9, 7, 8, 0, 0}); // C full of NaN
            zeroed.a().fill(nan);
            EXPECT_EQ(zeroed.run(), 0);
            for (int j = 0; j < 7; ++j)
                for (int i = 0; i < 9; ++i)
                    EXPECT_EQ(zeroed.c()(i, j), 0);
        }
}

TEST(GemmCore, UnknownModeDoesNothing) {
    for (const PlanBuild& build : plan_builds())
        for (const int mode : {-1, 1, 3, 12, 128}) {
            CoreCall call(build, {static_cast<GemmMode>(mode), 'N', 'N', 8, 8, 8, 1, 2});
            EXPECT_EQ(call.run(), 1);
            EXPECT_TRUE(call.c_untouched()) << call.describe();
            EXPECT_EQ(call.plan().kb, 0) << "the plan is left alone as well";
        }
}

// ---- Memory ----------------------------------------------------------------------------------------------------

int allocations = 0;

void* counted(std::size_t size) {
    ++allocations;
    return std::malloc(size);
}
void* refused(std::size_t) {
    return nullptr;
}
void* refused_array(std::size_t, std::size_t) {
    return nullptr;
}

// The pool emptied and the allocator replaced, so that every taking of work memory is seen.
class AllocatorInPlace {
public:
    explicit AllocatorInPlace(void* (*allocate)(std::size_t)) : before_(allocatorSlots) {
        qrv_serv_free_buffers();
        allocatorSlots.malloc = allocate;
        if (allocate == refused)
            allocatorSlots.calloc = refused_array;
        allocations = 0;
    }
    ~AllocatorInPlace() {
        qrv_serv_free_buffers();
        allocatorSlots = before_;
    }

private:
    AllocatorSlots before_;
};

TEST(GemmMemory, SelfPackingModesDoWithoutIt) {
    for (const PlanBuild& build : plan_builds())
        for (const GemmMode mode : selfPacking) {
            const AllocatorInPlace refusing(refused);
            check(build, {mode, 'N', 'T', 33, 29, 31, 1.5F, 0.5F, 1, 1});
        }
}

TEST(GemmMemory, OtherModesReportItsLackAndLeaveC) {
    for (const PlanBuild& build : plan_builds())
        for (const GemmMode mode : given) {
            CoreCall call(build, {mode, 'N', 'T', 33, 29, 31, 1.5F, 1, 1, 1});
            const AllocatorInPlace refusing(refused);
            EXPECT_EQ(call.run(), 1) << call.describe();
            EXPECT_TRUE(call.c_untouched()) << call.describe();
        }
}

// A problem right at the limits is small for the mode that packs both, and is not for the one that packs A.
TEST(GemmMemory, SmallProblemsTakeNone) {
    for (const PlanBuild& build : plan_builds()) {
        const Plan row = loaded(build);
        const auto takes = [&](GemmMode mode, int m, int n, int k) {
            const AllocatorInPlace counting(counted);
            check(build, {mode, 'N', 'N', m, n, k});
            return allocations > 0;
        };
        for (int side = 0; side < 3; ++side) {
            const auto size = [&](int which, int limit, int excess) { return which == side ? limit + excess : 40; };
            for (const int excess : {-1, 0, 1}) {
                const int m = size(0, row.smallM, excess), n = size(1, row.smallN, excess);
                const int k = size(2, row.smallK, excess);
                EXPECT_EQ(takes(GemmMode::packBoth, m, n, k), excess > 0) << build.name << m << ' ' << n << ' ' << k;
                EXPECT_EQ(takes(GemmMode::packA, m, n, k), excess >= 0) << build.name << m << ' ' << n << ' ' << k;
            }
        }
    }
}

// ---- NaN ---------------------------------------------------------------------------------------------------------

// One NaN in op(A) reaches one row of C and no more, one in op(B) one column, wherever it stands.
TEST(GemmCore, NanReachesItsRowOrColumn) {
    const int m = 22, n = 15, k = 13;
    for (const PlanBuild& build : plan_builds())
        for (const char ta : options)
            for (const char tb : options)
                for (const GemmMode mode : {GemmMode::packBoth, GemmMode::packA, GemmMode::givenBoth})
                    for (int l = 0; l < k; l += 3)
                        for (int hit = 0; hit < m + n; ++hit) {
                            CoreCall call(build, {mode, ta, tb, m, n, k, 1, 1, 1, 1});
                            const int i = hit, j = hit - m;
                            if (hit < m)
                                (ta == 'T' ? call.a()(l, i) : call.a()(i, l)) = nan;
                            else
                                (tb == 'T' ? call.b()(j, l) : call.b()(l, j)) = nan;
                            ASSERT_EQ(call.run(), 0);
                            int wrong = 0;
                            for (int column = 0; column < n; ++column)
                                for (int row = 0; row < m; ++row)
                                    wrong += std::isnan(call.c()(row, column)) != (hit < m ? row == i : column == j);
                            EXPECT_EQ(wrong, 0) << call.describe() << " l=" << l << " hit=" << hit;
                        }
}

} // namespace
} // namespace qrv::test
