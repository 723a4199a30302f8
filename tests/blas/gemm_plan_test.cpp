// The plan-driven GEMM from the inside: packing, the micro-kernel and the blocked core in every mode.
#include <memory>

#include "support/gemm.hpp"
#include "support/work_memory.hpp"

namespace qrv::test {
namespace {

constexpr GemmMode modes[] = {GemmMode::choose,        GemmMode::packBoth,    GemmMode::packA,    GemmMode::packBGivenA,
                              GemmMode::directBGivenA, GemmMode::packAGivenB, GemmMode::givenBoth};
constexpr bool givenA(GemmMode mode) {
    return mode == GemmMode::packBGivenA || mode == GemmMode::directBGivenA || mode == GemmMode::givenBoth;
}
constexpr bool givenB(GemmMode mode) {
    return mode == GemmMode::packAGivenB || mode == GemmMode::givenBoth;
}

struct Blocks {
    int mb = 0, nb = 0, kb = 0;
};

// Runs the core, with operands packed by the plan's own routines where the mode wants them.
template <class T>
int run_core(const PlanBuild<T>& build, GemmMode mode, const Blocks& blocks, Call<T> v) {
    GemmPlan<T> plan{};
    build.load(&plan);
    plan.mb = blocks.mb, plan.nb = blocks.nb, plan.kb = blocks.kb;
    std::unique_ptr<Packed<T>> a, b;
    if (givenA(mode)) {
        a.reset(new Packed<T>(packed_a(plan, v)));
        v.a = a->data(), v.lda = a->stride;
    }
    if (givenB(mode)) {
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
        for (const GemmMode mode : modes)
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

// Blocks so small that every loop of every mode runs more than once and ends in a shorter block, within work memory of
// their size. Where an operand is given, k is one block all the same.
TEST_OF_ELEMENTS(GemmPlans, SeveralBlocksInEachDirection) {
    Turns turns;
    const WorkMemoryProbe probe;
    each_mode<T>([&](const PlanBuild<T>& build, GemmMode mode, Shape p) {
        p.m = 45, p.n = 39, p.k = 50;
        for (const Blocks& blocks : {Blocks{16, 12, 20}, {16, 12, 256}, {8, 8, 8}})
            check_core(build, mode, turns.vary(p, true), blocks);
    });
    for (const PlanBuild<T>& build : plan_builds<T>())
        check_core(build, GemmMode::packBoth, {.transb = 'T', .m = 9, .n = 5003, .k = 10});
}

// Without work memory a mode that packs for itself goes unpacked; the others say so and leave C as it is.
TEST_OF_ELEMENTS(GemmPlans, RefusedMemory) {
    const WorkMemoryProbe refusing(0, anySize);
    const Shape p{.transb = 'T', .m = 33, .n = 29, .k = 31, .alpha = 1.5F, .beta = 1};
    for (const PlanBuild<T>& build : plan_builds<T>())
        for (const GemmMode mode : modes) {
            const bool packs = !givenA(mode) && !givenB(mode);
            const GemmCase<T> x(p);
            const auto c = x.result([&](const Call<T>& v) { EXPECT_EQ(run_core(build, mode, {}, v), packs ? 0 : 1); });
            EXPECT_TRUE(packs ? x.right(c) : c.same_bits(x.before)) << build << ' ' << static_cast<int>(mode);
        }
}

} // namespace
} // namespace qrv::test
