// The plan-driven GEMM from the inside: packing, the micro-kernel and the blocked core in every mode.
#include <optional>

#include "support/gemm.hpp"
#include "support/work_memory.hpp"

namespace qrv::test {
namespace {

constexpr GemmMode modes[] = {GemmMode::choose,        GemmMode::packBoth,    GemmMode::packA,    GemmMode::packBGivenA,
                              GemmMode::directBGivenA, GemmMode::packAGivenB, GemmMode::givenBoth};

// Runs the core, with operands packed by the plan's own routines where the mode wants them.
template <class T>
void check_core(const PlanBuild<T>& build, GemmMode mode, const Shape& p, const GemmBlocks& blocks = {}) {
    GemmPlan<T> plan{};
    build.load(&plan);
    plan.mb = blocks.mb, plan.nb = blocks.nb, plan.kb = blocks.kb;
    const auto run = [&](Call<T> v) {
        using enum GemmMode;
        std::optional<Packed<T>> a, b;
        if (mode == packBGivenA || mode == directBGivenA || mode == givenBoth) {
            auto* copy = !is_transposed(v.trans) ? plan.copyAN : conjugates(v.trans) ? plan.copyAC : plan.copyAT;
            a.emplace(v.m, v.k, plan.mUnit, plan.kUnit,
                      [&](T* to, const int* stride) { copy(&v.m, &v.k, v.a, &v.lda, to, stride, &v.alpha); });
            v.a = a->data(), v.lda = a->stride;
        }
        if (mode == packAGivenB || mode == givenBoth) {
            auto* copy = !is_transposed(v.transb) ? plan.copyBN : conjugates(v.transb) ? plan.copyBC : plan.copyBT;
            b.emplace(v.n, v.k, plan.nUnit, plan.kUnit,
                      [&](T* to, const int* stride) { copy(&v.k, &v.n, v.b, &v.ldb, to, stride); });
            v.b = b->data(), v.ldb = b->stride;
        }
        EXPECT_EQ(call_gemm(build.blocked, v, mode, &plan), 0);
    };
    GemmCase<T>(p).check(run, std::string(build.name) + " mode " + std::to_string(static_cast<int>(mode)));
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

// Blocks so small that every loop of every mode runs more than once and ends in a shorter block, within work memory
// of their size. Where an operand is given, k is one block all the same.
TEST_OF_ELEMENTS(GemmPlans, SeveralBlocksInEachDirection) {
    Turns turns;
    const WorkMemoryProbe probe;
    each_mode<T>([&](const PlanBuild<T>& build, GemmMode mode, Shape p) {
        p.m = 45, p.n = 39, p.k = 50;
        for (const GemmBlocks& blocks : {GemmBlocks{16, 12, 20}, {16, 12, 256}, {8, 8, 8}})
            check_core(build, mode, turns.vary(p, true), blocks);
    });
    for (const PlanBuild<T>& build : plan_builds<T>())
        check_core(build, GemmMode::packBoth, {.transb = 'T', .m = 9, .n = 5003, .k = 10});
}

} // namespace
} // namespace qrv::test
