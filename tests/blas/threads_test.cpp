// How many threads operations get, on machines of every class.
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "blas/thread/32/level3/level3_threads.hpp"
#include "blas/thread/common/level1/level1_threads.hpp"
#include "blas/thread/common/level2/level2_threads.hpp"
#include "service/vector_form.hpp"

namespace qrv::test {
namespace {

struct RecordedMachine {
    int cpuMa, threads;
    bool dynamicThreads = true;
    int cache = -1;             // bytes of the second level
    mutable bool asked = false; // anything

    int answer(int fact) const { return asked = true, fact; }
    int cpu_ma() const { return answer(cpuMa); }
    VectorForm form() const { return asked = true, VectorForm::sse; }
    int budget() const { return answer(threads); }
    int dynamic() const { return answer(dynamicThreads); }
    int second_cache_bytes() const { return answer(cache); }
};

constexpr int longest = std::numeric_limits<int>::max();

struct Decision {
    const char* name;
    int large; // a size at which a machine of class 64 gives all its threads
    std::function<int(int n, const RecordedMachine& machine)> threads;
    bool newestOnly = false; // serial on all but CpuMa 66
};

std::vector<Decision> decisions() {
    std::vector<Decision> all{
        {"sgemv N", 20000, [](int n, const auto& on) { return gemv_threads(sgemvRule, Op::none, n, n, on); }},
        {"sgemv T", 20000, [](int n, const auto& on) { return gemv_threads(sgemvRule, Op::transpose, n, n, on); }},
        {"cgemv C", 20000, [](int n, const auto& on) { return gemv_threads(cgemvRule, Op::adjoint, n, n, on); }},
        {"ssymv", 2000, [](int n, const auto& on) { return symv_threads(ssymvRule, n, on); }},
        {"strmv", 20000, [](int n, const auto& on) { return trmv_threads(strmvRule, n, on); }},
        {"ctrmv", 20000, [](int n, const auto& on) { return trmv_threads(ctrmvRule, n, on); }},
        {"ssyr", 20000, [](int n, const auto& on) { return syr_threads(ssyrRule, n, on); }},
        {"ssyr2", 20000, [](int n, const auto& on) { return syr_threads(ssyr2Rule, n, on); }},
        {"sger", 20000, [](int n, const auto& on) { return ger_threads(sgerRule, n, n, on); }, true},
        {"chemv", 20000, [](int n, const auto& on) { return symv_threads(chemvRule, n, on); }, true},
        {"cher", 20000, [](int n, const auto& on) { return syr_threads(cherRule, n, on); }, true},
        {"strmm", 20000,
         [](int n, const auto& on) { return sliced_team(product_call<float>(Side::left, n, n), on).threads; }},
        {"ssyrk", 20000, [](int n, const auto& on) { return update_team(n, work_of<float>(n, n, n), on).threads; }}};
    for (const VectorRow* row : {&saxpyRow, &scopyRow, &sdotRow, &srotRow, &sswapRow, &caxpyRow, &ccopyRow, &cdotcRow,
                                 &cswapRow, &snrm2Row, &icamaxRow})
        all.push_back({"a vector", longest, [row](int n, const auto& on) { return vector_threads(*row, n, 1, -2, on); },
                       row == &snrm2Row || row == &icamaxRow});
    return all;
}

// What is small asks the machine for nothing. The longer a call the more threads, and no more than there are.
TEST(LevelThreads, GrowWithTheSizeUpToTheBudget) {
    for (const Decision& d : decisions())
        for (const int cpuMa : {0, 32, 33, 34, 64, 66})
            for (const int cache : {-1, smallCacheBytes, smallCacheBytes + 1})
                for (const int budget : {1, 2, 3, 4, 8, 12, 13, 40, 100'000'000})
                    for (const bool dynamic : {true, false}) {
                        const RecordedMachine machine{cpuMa, budget, dynamic, cache};
                        SCOPED_TRACE(testing::Message() << d.name << " CpuMa " << cpuMa << " budget " << budget
                                                        << " dynamic " << dynamic << " cache " << cache);
                        ASSERT_EQ(d.threads(1, machine), 1);
                        ASSERT_FALSE(machine.asked);
                        int before = 1;
                        for (std::int64_t n = 2; n < d.large; n += 1 + n / 20) {
                            const int threads = d.threads(static_cast<int>(n), machine);
                            ASSERT_TRUE(before <= threads && threads <= budget) << "n=" << n << ": " << threads;
                            before = threads;
                        }
                        const int most = d.newestOnly ? 66 : 64;
                        ASSERT_TRUE(cpuMa != most || budget > 1000 || d.threads(d.large, machine) == budget);
                        ASSERT_TRUE(cpuMa == 66 || !d.newestOnly || before == 1);
                    }
}

// Of narrow matrices each thread gets enough rows or columns; increments of 0 name one element, of which each step
// needs the one before it.
TEST(LevelThreads, FewForNarrowOperands) {
    const RecordedMachine older{64, 16}, newest{66, 16};
    EXPECT_EQ(vector_threads(saxpyRow, longest, 1, 0, older), 1);
    EXPECT_EQ(gemv_threads(sgemvRule, Op::transpose, 100000, 7, older), 1);
    EXPECT_EQ(gemv_threads(sgemvRule, Op::none, 40, 100000, newest), 1);
    EXPECT_EQ(sliced_team(symmetric_call<float>(Side::right, 3 * leastSlice, 5000), newest).threads, 3);
}

} // namespace
} // namespace qrv::test
