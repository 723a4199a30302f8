// The text that tells what is running.
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "qrv/service.h"
#include "support/child.hpp"

namespace qrv::test {
namespace {

TEST(Configuration, FitsTheRoomGiven) {
    const int length = qrv_serv_get_configuration(nullptr, 0);
    ASSERT_GT(length, 100);
    for (const int size : {1, 2, 50, length, length + 1, length + 10}) {
        std::vector<char> text(static_cast<std::size_t>(size) + 8, '#');
        EXPECT_EQ(qrv_serv_get_configuration(text.data(), size), length);
        EXPECT_EQ(static_cast<int>(std::strlen(text.data())), std::min(size - 1, length));
        EXPECT_EQ(text[static_cast<std::size_t>(size)], '#') << "nothing is written past the room";
    }
}

TEST(Configuration, TellsWhatWasAskedFor) {
    const struct {
        std::vector<std::string> steps;
        Environment environment;
        std::vector<const char*> expected;
    } rows[] = {
        {{"configuration"},
         {{"QRV_DEBUG_CPU_TYPE", "2"}, {"QRV_NUM_THREADS", "3"}, {"QRV_DYNAMIC", "FALSE"}, {"QRV_MM_DISABLE", "1"}},
         {qrv_serv_get_version(), "2 (sse2), forced by QRV_DEBUG_CPU_TYPE", "dynamic           off",
          "3: dynamic adjustment is off: taken as requested", "work memory pool  off"}},
        {{"configuration"},
         {{"QRV_NUM_THREADS", "99999999999"}, {"QRV_DYNAMIC", "FALSE"}, {"OMP_THREAD_LIMIT", "7"}},
         {"7: dynamic adjustment is off: as requested, within the limit of threads", "limit of threads  7"}},
        {{"configuration"}, {{"QRV_NUM_THREADS", "3,2"}}, {"holds more than digits, so it counts as 1"}},
        {{"pin", "configuration"},
         {{"QRV_NUM_THREADS", "8"}},
         {"confined to some", "QRV_DYNAMIC=FALSE takes the request as it is"}},
    };
    for (const auto& row : rows) {
        if (row.steps[0] == "pin" && std::thread::hardware_concurrency() < 2)
            continue;
        const ChildResult run = run_program(QRV_PROBE, row.steps, row.environment);
        for (const char* expected : row.expected)
            EXPECT_NE(run.out.find(expected), std::string::npos) << expected << "\n" << run.out;
    }
}

} // namespace
} // namespace qrv::test
