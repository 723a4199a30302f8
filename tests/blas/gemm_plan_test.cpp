// The plan of the plan-driven GEMM: rows, block rules, buffers, and the blocked core in every mode.
#include <array>
#include <string_view>

#include "blas/kernel/common/gemm/gemm_blocks.hpp"
#include "support/packing.hpp"
#include "support/subjects.hpp"
#include "support/work_memory.hpp"

namespace qrv::test {
namespace {

template <class T>
class GemmPlans : public testing::Test {};
TYPED_TEST_SUITE(GemmPlans, Elements);
template <class T>
class GemmBuffers : public GemmPlans<T> {};
TYPED_TEST_SUITE(GemmBuffers, Elements);
template <class T>
class GemmCore : public GemmPlans<T> {};
TYPED_TEST_SUITE(GemmCore, Elements);

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
    struct ComplexRow {
        int k, full, plain;
    };
    const ComplexRow complexRows[] = {{1, 64, 64},   {64, 64, 64},   {65, 66, 66},   {79, 80, 80},   {80, 80, 80},
                                      {81, 82, 40},  {127, 128, 64}, {128, 128, 64}, {129, 64, 64},  {159, 80, 80},
                                      {160, 80, 80}, {255, 128, 80}, {256, 128, 80}, {1000, 128, 80}};
    for (const ComplexRow& row : complexRows) {
        EXPECT_EQ(k_block(cgemmBlocksSse42, row.k, 2), row.full) << row.k;
        EXPECT_EQ(k_block(cgemmBlocksSsse3, row.k, 2), row.full) << row.k;
        EXPECT_EQ(k_block(cgemmBlocksPlain, row.k, 2), row.plain) << row.k;
    }
}

TEST(GemmBlocks, RowsByTheCacheThatHoldsThem) {
    const auto caches = [](int second, int third) { return CacheTable{third ? 3 : 2, {32768, second, third, 0}}; };
    constexpr int l2 = 3145728, l3 = 4194304;
    struct Row {
        const BlockRule &sse42, &ssse3, &plain;
        int small42, large42, small3, large3, any;
    };
    for (const Row& row : {Row{sgemmBlocksSse42, sgemmBlocksSsse3, sgemmBlocksPairs, 768, 1280, 896, 2000, 1024},
                           {cgemmBlocksSse42, cgemmBlocksSsse3, cgemmBlocksPlain, 320, 1536, 448, 1536, 1424}}) {
        EXPECT_EQ(row_block(row.sse42, caches(262144, l3)), row.small42);
        EXPECT_EQ(row_block(row.sse42, caches(262144, l3 + 1)), row.large42);
        EXPECT_EQ(row_block(row.sse42, caches(262144, 0)), row.small42) << "no third level";
        EXPECT_EQ(row_block(row.sse42, CacheTable{}), row.large42) << "nothing known";
        EXPECT_EQ(row_block(row.ssse3, caches(l2, 0)), row.small3);
        EXPECT_EQ(row_block(row.ssse3, caches(l2 + 1, 0)), row.large3);
        EXPECT_EQ(row_block(row.ssse3, CacheTable{}), row.large3);
        for (const int second : {262144, l2, 2 * l2})
            EXPECT_EQ(row_block(row.plain, caches(second, 0)), row.any);
    }
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
        EXPECT_EQ(column_block(cgemmBlocksSse42, row.n, 2), row.plain) << row.n;
    }
}

TYPED_TEST(GemmPlans, PresetBlocksSurvive) {
    const int m = 1000, n = 1000, k = 1000;
    for (const PlanBuild<TypeParam>& build : plan_builds<TypeParam>())
        for (int preset = 0; preset < 8; ++preset) {
            GemmPlan<TypeParam> plan = build.loaded(), free = plan;
            free.setBlocks(&m, &n, &k, &free);
            plan.mb = preset & 1 ? 24 : 0;
            plan.nb = preset & 2 ? 40 : 0;
            plan.kb = preset & 4 ? 56 : 0;
            plan.setBlocks(&m, &n, &k, &plan);
            EXPECT_EQ(plan.mb, preset & 1 ? 24 : free.mb) << build;
            EXPECT_EQ(plan.nb, preset & 2 ? 40 : 1000) << build;
            EXPECT_EQ(plan.kb, preset & 4 ? 56 : free.kb) << build;
            EXPECT_EQ(free.kb, !isComplex<TypeParam> ? 256 : build.firstRow ? 80 : 128) << build;
        }
}

// ---- Rows --------------------------------------------------------------------------------------------------

TYPED_TEST(GemmPlans, Constants) {
    constexpr bool isReal = !isComplex<TypeParam>;
    for (const PlanBuild<TypeParam>& build : plan_builds<TypeParam>()) {
        const GemmPlan<TypeParam> plan = build.loaded();
        SCOPED_TRACE(build);
        const std::array constants{plan.rowIndex, plan.tableTag, plan.mUnit,  plan.nUnit,
                                   plan.kUnit,    plan.smallM,   plan.smallN, plan.smallK};
        const int row = build.cpuType == 4 && !build.firstRow ? 1 : 0;
        EXPECT_EQ(constants, isReal && !build.firstRow ? (std::array{row, 126, 4, 4, 4, 4, 4, 4})
                                                       : (std::array{row, 126, 4, 2, 2, 4, 8, 2}));
        if (build.form == VectorForm::sse) {
            EXPECT_EQ(plan.smallFactor, isReal ? build.firstRow ? 8 : 2 : build.firstRow ? 16 : 8);
        }
        EXPECT_EQ(plan.copyAC == plan.copyAT, isReal);
        EXPECT_EQ(plan.copyBC == plan.copyBT, isReal);
        EXPECT_EQ(plan.mb + plan.nb + plan.kb, 0);
    }
}

TEST(GemmPlanRows, Sse41ChoosesTheRow) {
    EXPECT_EQ(kernel::ssse3::plan_row(false), 0);
    EXPECT_EQ(kernel::ssse3::plan_row(true), 1);
    if (!in_this_run(4))
        return;
    GemmPlan<float> plan{};
    GemmPlan<SingleComplex> complexPlan{};
    kernel::ssse3::blas_sgemm_plan_load(&plan);
    kernel::ssse3::blas_cgemm_plan_load(&complexPlan);
    EXPECT_EQ(plan.rowIndex, bit(cpuid(1).ecx, 19) ? 1 : 0);
    EXPECT_EQ(complexPlan.rowIndex, plan.rowIndex);
}

TEST(GemmPlanRows, ResetForgetsAndSetBlocksStores) {
    if (!in_this_run(5))
        return;
    using namespace kernel::sse42;
    GemmPlan<float> plan{};
    blas_sgemm_plan_load(&plan);
    blas_sgemm_plan_set_blocks(8, 12, 16, &plan);
    EXPECT_EQ(plan.mb, 8);
    EXPECT_EQ(plan.nb, 12);
    EXPECT_EQ(plan.kb, 16);
    blas_sgemm_plan_reset(&plan);
    EXPECT_EQ(plan.mb + plan.nb + plan.kb + plan.mUnit + plan.tableTag, 0);
    EXPECT_EQ(plan.micro, nullptr);
}

// ---- Buffers -----------------------------------------------------------------------------------------------

template <class T>
constexpr GemmBuffer<T> untouched{nullptr, -1, 77, -1};

template <class T>
bool same(const GemmBuffer<T>& x, const GemmBuffer<T>& y) {
    return x.data == y.data && x.stride == y.stride && x.bytes == y.bytes && x.alignShift == y.alignShift;
}

template <class T>
GemmPlan<T> with_marked_buffers(const PlanBuild<T>& build, int mb, int nb, int kb) {
    GemmPlan<T> plan = build.loaded();
    plan.mb = mb;
    plan.nb = nb;
    plan.kb = kb;
    plan.aBuffer = plan.bBuffer = plan.sliver = untouched<T>;
    return plan;
}

struct SetRow {
    BufferSet set;
    const char* order; // of the one allocation
};
constexpr SetRow sets[] = {{BufferSet::aSliverB, "asb"}, {BufferSet::a, "a"},        {BufferSet::b, "b"},
                           {BufferSet::aB, "ab"},        {BufferSet::sliverB, "sb"}, {BufferSet::aSliver, "as"},
                           {BufferSet::sliver, "s"}};

TYPED_TEST(GemmBuffers, SizesOfEachSet) {
    const int m = 30, n = 9, k = 21; // smaller than the blocks in some directions, larger in others
    struct ClipRow {
        BlockClip clip;
        int mb, nb, kb;
        int mm, nn, kk; // before filling up
    };
    for (const ClipRow& row : {ClipRow{BlockClip::toProblem, 64, 40, 128, 30, 9, 21},
                               {BlockClip::toProblem, 22, 6, 10, 22, 6, 10},
                               {BlockClip::none, 62, 41, 127, 62, 41, 127}})
        for (const PlanBuild<TypeParam>& build : plan_builds<TypeParam>())
            for (const SetRow& set : sets) {
                GemmPlan<TypeParam> plan = with_marked_buffers(build, row.mb, row.nb, row.kb);
                ASSERT_EQ(plan.bufferSizes(set.set, row.clip, &m, &n, &k, &plan), 0);
                const auto fill = [](int x, int unit) { return (x + unit - 1) / unit * unit; };
                const int mm = fill(row.mm, plan.mUnit), nn = fill(row.nn, plan.nUnit), kk = fill(row.kk, plan.kUnit);
                const auto has = [&](char c) { return std::string_view(set.order).find(c) != std::string_view::npos; };
                const auto bytes = [](int elements) {
                    return static_cast<std::size_t>(elements) * sizeof(TypeParam) + 512;
                };
                const GemmBuffer<TypeParam> a{nullptr, plan.mUnit * kk, bytes(mm * kk), 12};
                const GemmBuffer<TypeParam> b{nullptr, plan.nUnit * kk, bytes(nn * kk), 12};
                const GemmBuffer<TypeParam> sliver{nullptr, -1, bytes(kk * plan.nUnit * plan.smallFactor), 7};
                EXPECT_TRUE(same(plan.aBuffer, has('a') ? a : untouched<TypeParam>)) << build << ' ' << set.order;
                EXPECT_TRUE(same(plan.bBuffer, has('b') ? b : untouched<TypeParam>)) << build << ' ' << set.order;
                EXPECT_TRUE(same(plan.sliver, has('s') ? sliver : untouched<TypeParam>)) << build << ' ' << set.order;
            }
}

TYPED_TEST(GemmBuffers, UnknownCodesChangeNothing) {
    const int m = 30, n = 9, k = 21;
    for (const PlanBuild<TypeParam>& build : plan_builds<TypeParam>())
        for (const auto& [set, clip] : {std::pair{99, 107}, {107, 107}, {0, 108}, {100, 106}, {100, 109}, {106, 0}}) {
            GemmPlan<TypeParam> plan = with_marked_buffers(build, 64, 64, 64);
            EXPECT_EQ(plan.bufferSizes(static_cast<BufferSet>(set), static_cast<BlockClip>(clip), &m, &n, &k, &plan),
                      1);
            EXPECT_TRUE(same(plan.aBuffer, untouched<TypeParam>) && same(plan.bBuffer, untouched<TypeParam>) &&
                        same(plan.sliver, untouched<TypeParam>))
                << build << ' ' << set << ' ' << clip;
        }
}

TYPED_TEST(GemmBuffers, StandInOneBlockInTheirOrder) {
    const int m = 30, n = 9, k = 21;
    for (const PlanBuild<TypeParam>& build : plan_builds<TypeParam>())
        for (const SetRow& set : sets) {
            GemmPlan<TypeParam> plan = with_marked_buffers(build, 64, 64, 64);
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
                const GemmBuffer<TypeParam>& buffer = *c == 'a' ? plan.aBuffer : *c == 'b' ? plan.bBuffer : plan.sliver;
                const std::uintptr_t unit = std::uintptr_t{1} << buffer.alignShift;
                address = (address + unit - 1) / unit * unit;
                EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.data), address) << build << ' ' << set.order;
                address += buffer.bytes;
                total += buffer.bytes + 2 * unit;
            }
            EXPECT_LE(address, reinterpret_cast<std::uintptr_t>(block) + total);
            qrv_serv_deallocate(block);
        }
}

// ---- The blocked core ----------------------------------------------------------------------------------------

TYPED_TEST(GemmCore, PickModeByTheBlockOfB) {
    for (const PlanBuild<TypeParam>& build : plan_builds<TypeParam>()) {
        const auto picked = [&](int nb, int n, int k) {
            GemmPlan<TypeParam> plan = build.loaded();
            plan.mb = 64;
            plan.kb = 256;
            plan.nb = nb;
            const char op = 'N';
            const int m = 64, ld = 100000;
            const auto one = scalar<TypeParam>(1);
            return build.pickMode(&op, &op, &m, &n, &k, &one, nullptr, &ld, nullptr, &ld, &one, nullptr, &ld, &plan);
        };
        constexpr int depth = 1024 / sizeof(TypeParam); // 6144 columns of it are the limit
        EXPECT_EQ(picked(6144, 90000, depth), GemmMode::packA) << build;
        EXPECT_EQ(picked(6145, 90000, depth), GemmMode::packBoth) << build;
        EXPECT_EQ(picked(6145, 6144, depth), GemmMode::packA) << build;
        EXPECT_EQ(picked(6145, 90000, depth - 1), GemmMode::packA) << build;
        EXPECT_EQ(picked(2000000000, 2000000000, depth), GemmMode::packBoth) << build;
    }
}

constexpr GemmMode selfPacking[] = {GemmMode::choose, GemmMode::packBoth, GemmMode::packA};
constexpr GemmMode given[] = {GemmMode::packBGivenA, GemmMode::directBGivenA, GemmMode::packAGivenB,
                              GemmMode::givenBoth};

struct Blocks {
    int mb = 0, nb = 0, kb = 0;
};

// A call of the core, with operands packed by the plan's own routines where the mode wants them.
template <class T>
struct CoreCall {
    const PlanBuild<T>& build;
    GemmMode mode;
    GemmCase<T> x;
    GemmPlan<T> plan;
    BasicGuardedMatrix<T> c;

    CoreCall(const PlanBuild<T>& in, GemmMode how, const GemmShape& p, Blocks blocks = {})
        : build(in), mode(how), x(p), plan(in.loaded()), c(x.before) {
        plan.mb = blocks.mb;
        plan.nb = blocks.nb;
        plan.kb = blocks.kb;
    }

    int run() {
        GemmShape& p = x.p;
        const int kp = (p.k + plan.kUnit - 1) / plan.kUnit * plan.kUnit;
        const bool givenA =
            mode == GemmMode::packBGivenA || mode == GemmMode::directBGivenA || mode == GemmMode::givenBoth;
        const bool givenB = mode == GemmMode::packAGivenB || mode == GemmMode::givenBoth;
        const int aStride = plan.mUnit * kp, bStride = plan.nUnit * kp;
        PackBuffer<T> aPacked((p.m + 3) / plan.mUnit * aStride + 64), bPacked((p.n + 3) / plan.nUnit * bStride + 64);
        int lda = x.a.ld(), ldb = x.b.ld();
        const int ldc = c.ld();
        const T *a = x.a.data(), *b = x.b.data();
        if (givenA) {
            auto* copy = !is_transposed(p.transa) ? plan.copyAN : conjugates(p.transa) ? plan.copyAC : plan.copyAT;
            copy(&p.m, &p.k, a, &lda, aPacked.data(), &aStride, &x.alpha);
            a = aPacked.data();
            lda = aStride;
        }
        if (givenB) {
            auto* copy = !is_transposed(p.transb) ? plan.copyBN : conjugates(p.transb) ? plan.copyBC : plan.copyBT;
            copy(&p.k, &p.n, b, &ldb, bPacked.data(), &bStride);
            b = bPacked.data();
            ldb = bStride;
        }
        c.set(x.before);
        return build.blocked(&p.transa, &p.transb, &p.m, &p.n, &p.k, &x.alpha, a, &lda, b, &ldb, &x.beta, c.data(),
                             &ldc, mode, &plan);
    }
    void check() {
        ASSERT_EQ(run(), 0) << *this;
        const double error = x.reference().error(c);
        EXPECT_TRUE(error <= 1 && c.guards_intact()) << *this << " error=" << error;
    }
    bool c_untouched() const {
        return c.guards_intact() && c.count_bad([&](int i, int j, T z) { return z == x.before(i, j); }) == 0;
    }
    friend std::ostream& operator<<(std::ostream& out, const CoreCall& call) {
        return out << call.build << " mode=" << static_cast<int>(call.mode) << ' ' << call.x.p;
    }
};

template <class T, class Body>
void each_mode(const Body& body) {
    for (const PlanBuild<T>& build : plan_builds<T>()) {
        for (const GemmMode mode : selfPacking)
            body(build, mode);
        for (const GemmMode mode : given)
            body(build, mode);
    }
}

// Small ones, and every edge of tile, panel group and micro-kernel pass, in one direction at a time.
TYPED_TEST(GemmCore, EveryModeOnSmallShapesAndEdges) {
    constexpr int depths[] = {1, 2, 3, 4, 5, 8, 11, 12};
    each_mode<TypeParam>([&](const PlanBuild<TypeParam>& build, GemmMode mode) {
        each_transposition<TypeParam>([&](char ta, char tb) {
            const auto at = [&](int m, int n, int k) {
                const float beta = static_cast<float>((m + n + k) % 3) * 0.5F;
                CoreCall<TypeParam>(build, mode, {ta, tb, m, n, k, 0.5F, beta, k % 4, n % 3, m % 4, 1, 2, n % 4})
                    .check();
            };
            for (int m = 1; m <= 9; ++m)
                for (int n = 1; n <= 9; ++n)
                    for (const int turn : {0, 3})
                        at(m, n, depths[(m + 2 * n + turn) % 8]);
            for (const int edge : {10, 15, 16, 17, 22, 23, 24, 31, 32, 33, 35, 47, 48, 49, 63, 65, 97, 127, 129}) {
                at(edge, 13, 18);
                at(14, edge, 19);
                at(21, 15, edge);
            }
        });
    });
}

// Blocks so small that every loop of every mode runs more than once and ends in a shorter block. Where an operand is
// given, k is one block all the same.
TYPED_TEST(GemmCore, SeveralBlocksInEachDirection) {
    each_mode<TypeParam>([&](const PlanBuild<TypeParam>& build, GemmMode mode) {
        each_transposition<TypeParam>([&](char ta, char tb) {
            CoreCall<TypeParam>(build, mode, {ta, tb, 45, 39, 50, 1.5F, 1, 1, 1, 1}, {16, 12, 20}).check();
            CoreCall<TypeParam>(build, mode, {ta, tb, 45, 39, 50, 1.5F, 0.5F, 1, 1, 1}, {16, 12, 256}).check();
            CoreCall<TypeParam>(build, mode, {ta, tb, 33, 25, 41, 1.5F, 0, 1, 1, 1}, {8, 8, 8}).check();
        });
    });
    for (const PlanBuild<TypeParam>& build : plan_builds<TypeParam>())
        CoreCall<TypeParam>(build, GemmMode::packBoth, {'N', 'T', 9, 5003, 10, 1, 0}).check();
}

TYPED_TEST(GemmCore, NothingToAddScalesC) {
    each_mode<TypeParam>([](const PlanBuild<TypeParam>& build, GemmMode mode) {
        for (const float beta : {0.0F, 1.0F, 0.5F})
            for (const auto& [alpha, k] : {std::pair{0.0F, 8}, {1.0F, 0}, {0.0F, 0}}) {
                CoreCall<TypeParam> call(build, mode, {'N', 'N', 9, 7, k, alpha, beta});
                call.x.a.fill(nan);
                EXPECT_EQ(call.run(), 0);
                const auto good = [&](int i, int j, TypeParam c) { return c == call.x.scaled(i, j); };
                EXPECT_EQ(call.c.count_bad(good), 0) << call;
            }
    });
}

TYPED_TEST(GemmCore, UnknownModeDoesNothing) {
    for (const PlanBuild<TypeParam>& build : plan_builds<TypeParam>())
        for (const int mode : {-1, 1, 3, 12, 128}) {
            CoreCall<TypeParam> call(build, static_cast<GemmMode>(mode), {'N', 'N', 8, 8, 8, 1, 2});
            EXPECT_EQ(call.run(), 1);
            EXPECT_TRUE(call.c_untouched()) << call;
            EXPECT_EQ(call.plan.kb, 0) << "the plan is left alone as well";
        }
}

// One NaN in op(A) reaches one row of C and no more, one in op(B) one column, wherever it stands.
TYPED_TEST(GemmCore, NanReachesItsRowOrColumn) {
    each_mode<TypeParam>([](const PlanBuild<TypeParam>& build, GemmMode mode) {
        each_transposition<TypeParam>([&](char ta, char tb) {
            const int m = 22, n = 15, k = 13;
            for (int hit = 0; hit < m + n; ++hit) {
                CoreCall<TypeParam> call(build, mode, {ta, tb, m, n, k});
                const int l = hit * 5 % k;
                (hit < m ? call.x.a_at(hit, l) : call.x.b_at(l, hit - m)) = all_parts<TypeParam>(nan);
                ASSERT_EQ(call.run(), 0);
                const auto good = [&](int i, int j, TypeParam c) {
                    return has_nan(c) == ((hit < m ? i : j + m) == hit);
                };
                EXPECT_EQ(call.c.count_bad(good), 0) << call << " hit=" << hit;
            }
        });
    });
}

// Without work memory a mode that packs for itself goes unpacked; the others say so and leave C as it is.
TYPED_TEST(GemmCore, RefusedMemory) {
    const WorkMemoryProbe refusing(0, anySize);
    for (const PlanBuild<TypeParam>& build : plan_builds<TypeParam>()) {
        for (const GemmMode mode : selfPacking)
            CoreCall<TypeParam>(build, mode, {'N', 'T', 33, 29, 31, 1.5F, 0.5F, 1, 1, 1}).check();
        for (const GemmMode mode : given) {
            CoreCall<TypeParam> call(build, mode, {'N', 'T', 33, 29, 31, 1.5F, 1, 1, 1, 1});
            EXPECT_EQ(call.run(), 1) << call;
            EXPECT_TRUE(call.c_untouched()) << call;
        }
    }
}

// A problem right at the limits is small for the mode that packs both, and is not for the one that packs A.
TYPED_TEST(GemmCore, SmallProblemsTakeNoMemory) {
    for (const PlanBuild<TypeParam>& build : plan_builds<TypeParam>()) {
        const GemmPlan<TypeParam> row = build.loaded();
        for (int side = 0; side < 3; ++side)
            for (const int excess : {-1, 0, 1}) {
                const auto size = [&](int which, int limit) { return which == side ? limit + excess : 40; };
                const GemmShape p{'N', 'N', size(0, row.smallM), size(1, row.smallN), size(2, row.smallK)};
                const auto takes = [&](GemmMode mode) {
                    const WorkMemoryProbe probe;
                    CoreCall<TypeParam>(build, mode, p).check();
                    return probe.threads() > 0;
                };
                EXPECT_EQ(takes(GemmMode::packBoth), excess > 0) << build << ' ' << p;
                EXPECT_EQ(takes(GemmMode::packA), excess >= 0) << build << ' ' << p;
            }
    }
}

} // namespace
} // namespace qrv::test
