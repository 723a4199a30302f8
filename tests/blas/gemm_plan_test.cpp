// The plan-driven GEMM from the inside: block rules, buffers, packing, the micro-kernel and the blocked core in every
// mode.
#include <memory>
#include <string_view>

#include "blas/kernel/common/gemm/gemm_blocks.hpp"
#include "support/gemm.hpp"
#include "support/work_memory.hpp"

namespace qrv::test {
namespace {

// ---- Block rules ---------------------------------------------------------------------------------------------------

struct NamedRule {
    const BlockRule& rule;
    int kUnit, nUnit;
};
constexpr NamedRule rules[] = {{sgemmBlocksSse42, 4, 4}, {sgemmBlocksSsse3, 4, 4}, {sgemmBlocksPairs, 2, 2},
                               {cgemmBlocksSse42, 2, 2}, {cgemmBlocksSsse3, 2, 2}, {cgemmBlocksPlain, 2, 2}};

// Whole units, never beyond the largest block; what is a little too deep for one block goes in two equal ones.
TEST(GemmBlocks, AreUnitsWithinTheirLimits) {
    for (const auto& [rule, kUnit, nUnit] : rules)
        for (int size = 1; size < 6000; size += size < 600 ? 1 : 97) {
            const int kb = k_block(rule, size, kUnit), nb = column_block(rule, size, nUnit);
            EXPECT_TRUE(kb % kUnit == 0 && kb >= std::min(rule.kbLeast, rule.kbFull / 2) && kb <= rule.kbFull)
                << size << ' ' << kb;
            const int even = even_k_block(rule, size, kUnit), blocks = (size + rule.kbFull - 1) / rule.kbFull;
            EXPECT_TRUE(even % kUnit == 0 && even <= rule.kbFull && (size + even - 1) / even <= blocks &&
                        blocks * even < size + blocks * kUnit)
                << size << ' ' << even;
            if (size > rule.kbFull && size < 2 * rule.kbFull) {
                EXPECT_TRUE(2 * kb >= size - 1 && 2 * kb < size + 2 * kUnit) << size << ' ' << kb;
            }
            EXPECT_TRUE(nb >= std::min(size, rule.nbMost) && nb < std::max(size, nUnit) + nUnit && nb <= rule.nbMost)
                << size << ' ' << nb;
            EXPECT_TRUE(!rule.nbFilled || nb % nUnit == 0);
        }
    EXPECT_EQ(k_block(sgemmBlocksSse42, 300, 4), 152);
    EXPECT_EQ(k_block(cgemmBlocksPlain, 81, 2), 40);
    EXPECT_EQ(column_block(sgemmBlocksSse42, 4997, 4), 5000);
}

// ---- Plans ---------------------------------------------------------------------------------------------------------

// Each buffer of a set holds whole panels of what a block can be, 512 bytes more for what kernels may read, aligned as
// it says, and behind the one before it in a single block.
TEST_OF_ELEMENTS(GemmPlans, BuffersOfEachSet) {
    const int m = 30, n = 9, k = 21; // smaller than the blocks in some directions, larger in others
    constexpr std::pair<BufferSet, std::string_view> sets[] = {
        {BufferSet::aSliverB, "asb"}, {BufferSet::a, "a"},        {BufferSet::b, "b"},     {BufferSet::aB, "ab"},
        {BufferSet::sliverB, "sb"},   {BufferSet::aSliver, "as"}, {BufferSet::sliver, "s"}};
    for (const PlanBuild<T>& build : plan_builds<T>())
        for (const auto& [set, order] : sets)
            for (const auto& [clip, mb, nb, kb, mm, nn, kk] : {std::tuple{BlockClip::toProblem, 64, 40, 128, m, n, k},
                                                               {BlockClip::toProblem, 22, 6, 10, 22, 6, 10},
                                                               {BlockClip::none, 62, 41, 127, 62, 41, 127}}) {
                GemmPlan<T> plan = build.loaded();
                plan.mb = mb, plan.nb = nb, plan.kb = kb;
                ASSERT_EQ(plan.bufferSizes(set, clip, &m, &n, &k, &plan), 0);
                const int kp = fill_up(kk, plan.kUnit);
                void* block = nullptr;
                const int result = plan.allocateBuffers(set, &block, &plan);
                EXPECT_EQ(result, set == BufferSet::aB) << "these are sized only";
                const char* from = static_cast<const char*>(block);
                for (const char which : order) {
                    const GemmBuffer<T>& buffer = which == 'a'   ? plan.aBuffer
                                                  : which == 'b' ? plan.bBuffer
                                                                 : plan.sliver;
                    const int width = which == 'a' ? plan.mUnit : plan.nUnit;
                    const int lanes = which == 'a' ? fill_up(mm, width) : fill_up(nn, width);
                    const int elements = which == 's' ? kp * width * plan.smallFactor : lanes * kp;
                    EXPECT_TRUE(buffer.bytes == std::size_t(elements) * sizeof(T) + 512 &&
                                (which == 's' || buffer.stride == width * kp))
                        << build << ' ' << order << ' ' << which;
                    if (result == 0) {
                        const auto* const data = reinterpret_cast<const char*>(buffer.data);
                        const std::ptrdiff_t unit = std::ptrdiff_t{1} << buffer.alignShift;
                        EXPECT_TRUE(data >= from && data < from + unit &&
                                    reinterpret_cast<std::uintptr_t>(data) % std::uintptr_t(unit) == 0)
                            << build << ' ' << order << ' ' << which;
                        from = data + buffer.bytes;
                    }
                }
                qrv_serv_deallocate(block);
            }
}

// ---- Packing, micro-kernel and the blocked core --------------------------------------------------------------------

constexpr GemmMode selfPacking[] = {GemmMode::choose, GemmMode::packBoth, GemmMode::packA};
constexpr GemmMode given[] = {GemmMode::packBGivenA, GemmMode::directBGivenA, GemmMode::packAGivenB,
                              GemmMode::givenBoth};

struct Blocks {
    int mb = 0, nb = 0, kb = 0;
};

// Runs the core, with operands packed by the plan's own routines where the mode wants them.
template <class T>
int run_core(const PlanBuild<T>& build, GemmMode mode, const Blocks& blocks, Call<T> v) {
    GemmPlan<T> plan = build.loaded();
    plan.mb = blocks.mb, plan.nb = blocks.nb, plan.kb = blocks.kb;
    std::unique_ptr<Packed<T>> a, b;
    if (mode == GemmMode::packBGivenA || mode == GemmMode::directBGivenA || mode == GemmMode::givenBoth) {
        a.reset(new Packed<T>(packed_a(plan, v)));
        v.a = a->data(), v.lda = a->stride;
    }
    if (mode == GemmMode::packAGivenB || mode == GemmMode::givenBoth) {
        b.reset(new Packed<T>(packed_b(plan, v)));
        v.b = b->data(), v.ldb = b->stride;
    }
    return call_gemm(build.blocked, v, mode, &plan);
}

template <class T>
void check_core(const PlanBuild<T>& build, GemmMode mode, const Shape& p, const Blocks& blocks = {}) {
    GemmCase<T>(p).check([&](const Call<T>& v) { EXPECT_EQ(run_core(build, mode, blocks, v), 0); },
                         std::string(build.name) + " mode " + std::to_string(static_cast<int>(mode)));
}

// body(build, mode, p) with p of any options.
template <class T, class Body>
void each_mode(const Body& body) {
    for (const PlanBuild<T>& build : plan_builds<T>())
        for (const GemmMode mode :
             {selfPacking[0], selfPacking[1], selfPacking[2], given[0], given[1], given[2], given[3]})
            for (const Shape& p : every_option<T>({What::product}))
                body(build, mode, p);
}

// Small ones, and every edge of tile, panel group and micro-kernel pass, in one direction at a time.
TEST_OF_ELEMENTS(GemmPlans, EveryModeOnSmallShapesAndEdges) {
    Turns turns;
    each_mode<T>([&](const PlanBuild<T>& build, GemmMode mode, Shape p) {
        const auto at = [&](int m, int n, int k) {
            p.m = m, p.n = n, p.k = k;
            if (turns.one_in(isComplex<T> ? 4 : 3))
                check_core(build, mode, turns.vary(p));
        };
        for (int m = 1; m <= 9; ++m)
            for (int n = 1; n <= 9; ++n)
                at(m, n, turns.pick({1, 2, 3, 4, 5, 8, 11, 12}));
        for (const int edge : {10, 15, 16, 17, 22, 23, 24, 31, 32, 33, 35, 47, 48, 49, 63, 65, 97, 127, 129}) {
            at(edge, 13, 18);
            at(14, edge, 19);
            at(21, 15, edge);
        }
    });
}

// Blocks so small that every loop of every mode runs more than once and ends in a shorter block. Where an operand is
// given, k is one block all the same.
TEST_OF_ELEMENTS(GemmPlans, SeveralBlocksInEachDirection) {
    Turns turns;
    each_mode<T>([&](const PlanBuild<T>& build, GemmMode mode, Shape p) {
        p.m = 45, p.n = 39, p.k = 50;
        for (const Blocks& blocks : {Blocks{16, 12, 20}, {16, 12, 256}, {8, 8, 8}})
            check_core(build, mode, turns.vary(p, true), blocks);
    });
    for (const PlanBuild<T>& build : plan_builds<T>())
        check_core(build, GemmMode::packBoth, {.transb = 'T', .m = 9, .n = 5003, .k = 10});
}

// Rows and columns at an edge of the 4 x 4 tile are summed like the others, so a result does not depend on where an
// element lies.
TEST_OF_ELEMENTS(GemmPlans, EdgesSumLikeTiles) {
    for (const PlanBuild<T>& build : plan_builds<T>())
        for (const char option : {'N', 'T'}) {
            if (build.pairs())
                continue;
            GemmCase<T> x({.transb = option, .m = 24, .n = 24, .k = 150});
            const auto product = [&, &build = build] {
                return x.result([&](const Call<T>& v) { run_core(build, GemmMode::directBGivenA, {}, v); });
            };
            const Operand<T> whole = product();
            for (const auto& [m, n] : {std::pair{23, 23}, {22, 22}, {21, 21}, {13, 9}, {7, 3}, {3, 2}, {1, 1}}) {
                x.p.m = m, x.p.n = n;
                const Operand<T> part = product();
                EXPECT_EQ(part.count_bad([&, m = m, n = n](int i, int j, T c) {
                    return c == (i < m && j < n ? whole(i, j) : x.before(i, j));
                }),
                          0)
                    << build << ' ' << option << " m=" << m << " n=" << n;
            }
        }
}

TEST_OF_ELEMENTS(GemmPlans, PickModeByTheBlockOfB) {
    for (const PlanBuild<T>& build : plan_builds<T>()) {
        const auto picked = [&](int nb, int n, int k) {
            GemmPlan<T> plan = build.loaded();
            plan.mb = 64, plan.nb = nb, plan.kb = 256;
            return call_gemm(build.pickMode, Call<T>{.trans = 'N', .transb = 'N', .m = 64, .n = n, .k = k}, &plan);
        };
        constexpr int depth = 1024 / sizeof(T); // 6144 columns of it are the limit
        EXPECT_EQ(picked(6144, 90000, depth), GemmMode::packA) << build;
        EXPECT_EQ(picked(6145, 90000, depth), GemmMode::packBoth) << build;
        EXPECT_EQ(picked(6145, 6144, depth), GemmMode::packA) << build;
        EXPECT_EQ(picked(6145, 90000, depth - 1), GemmMode::packA) << build;
        EXPECT_EQ(picked(2000000000, 2000000000, depth), GemmMode::packBoth) << build;
    }
}

// Without work memory a mode that packs for itself goes unpacked; the others say so and leave C as it is.
TEST_OF_ELEMENTS(GemmPlans, RefusedMemory) {
    const WorkMemoryProbe refusing(0, anySize);
    const Shape p{.transb = 'T', .m = 33, .n = 29, .k = 31, .alpha = 1.5F, .beta = 1};
    for (const PlanBuild<T>& build : plan_builds<T>()) {
        for (const GemmMode mode : selfPacking)
            check_core(build, mode, p);
        for (const GemmMode mode : given) {
            const GemmCase<T> x(p);
            const auto c = x.result([&](const Call<T>& v) { EXPECT_EQ(run_core(build, mode, {}, v), 1); });
            EXPECT_TRUE(c.same_bits(x.before)) << build << ' ' << static_cast<int>(mode);
        }
    }
}

} // namespace
} // namespace qrv::test
