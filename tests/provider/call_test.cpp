// How methods call native routines: work arrays and results, with routines made up for it.
#include <string>

#include "provider/call.hpp"
#include "support/operand.hpp"

namespace qrv::test {
namespace {

using namespace provider;
using namespace Corvex::Mathematics::LinearAlgebra::Providers;

std::string calls; // what the routines saw

// A work array of the length told, written to its end; its first element answers a query.
float answered;
void answer(float& element) {
    element = answered;
}
void answer(qrv_complex& element) {
    element = {answered, 100};
}
template <class T>
void working(T* work, const int* lwork, int* info) {
    calls += std::to_string(*lwork) + ' ';
    *info = *lwork == -1 ? -7 : 3;
    for (int i = 0; i < (*lwork == -1 ? 1 : *lwork); ++i)
        answer(work[i]);
}

template <class WorkKind, class T>
std::string seen(WorkKind work, void (*routine)(T*, const int*, int*)) {
    int info = 99;
    calls.clear();
    try {
        call(routine, work, Info(info));
    } catch (const IndexOutOfRangeError&) {
        calls += "empty ";
    } catch (const InvalidArraySizeError&) {
        calls += "invalid ";
    }
    return calls + std::to_string(info);
}

TEST(Work, OfAnySizeOrNone) {
    const auto sized = [](int factor, int n) { return seen(SizedWork<float>(factor, n), working<float>); };
    EXPECT_EQ(sized(1, 1), "1 3");
    EXPECT_EQ(sized(3, 1000), "3000 3");
    EXPECT_EQ(sized(4, 0), "empty 99") << "like an empty array; info is not stored";
    EXPECT_EQ(sized(4, -1), "invalid 99");
    EXPECT_EQ(sized(4, 1 << 30), "invalid 99") << "not 0, as the product in 32 bits";
}

TEST(Work, QueriedThenUsed) {
    const std::pair<float, const char*> rows[] = {
        {25, "-1 25 3"},          {25.9F, "-1 25 3"},          {16777218, "-1 16777218 3"}, {0, "-1 empty 99"},
        {0.9F, "-1 empty 99"},    {-0.9F, "-1 empty 99"},      {-1, "-1 invalid 99"},       {3e9F, "-1 invalid 99"},
        {-3e9F, "-1 invalid 99"}, {infinity, "-1 invalid 99"}, {nan, "-1 invalid 99"}};
    for (const auto& [told, expected] : rows) {
        answered = told;
        EXPECT_EQ(seen(Queried<float>(), working<float>), expected) << told;
        EXPECT_EQ(seen(Queried<qrv_complex>(), working<qrv_complex>), expected) << told;
    }
}

int hostInfo, hostFound;
void finding(int* found, int* info) {
    *found = 5;
    *info = 6;
    calls += std::to_string(hostInfo) + std::to_string(hostFound);
}

TEST(Results, AreStoredAfterTheCallAndInfoFirst) {
    hostInfo = 1, hostFound = 2;
    calls.clear();
    call(finding, Result(hostFound), Info(hostInfo));
    EXPECT_EQ(calls, "12");
    EXPECT_EQ(hostInfo * 10 + hostFound, 65);
    int same = 0;
    call(finding, Result(same), Info(same));
    EXPECT_EQ(same, 5);
}

TEST(Options, ValuesBeyondTheHostsOwn) {
    using namespace Corvex::Mathematics::LinearAlgebra;
    EXPECT_EQ(*rule_r(TransposeOperation{-1}), 'T');
    EXPECT_EQ(*rule_c(TransposeOperation{99}), '\0') << "stays inside the table";
    EXPECT_EQ(*rule_c(TransposeOperation{-1}), '\0');
    EXPECT_EQ(*option(MatrixNorm{-1}), '\0');
    EXPECT_EQ(*triangle_or_both(MatrixTriangleMode{-1}), 'B');
    EXPECT_EQ(narrow(u'\x0156'), 'V') << "the low eight bits";
}

} // namespace
} // namespace qrv::test
