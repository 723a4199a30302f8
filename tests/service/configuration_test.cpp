// The text that tells what is running.
#include <cstring>
#include <gtest/gtest.h>
#include <string>
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
    const ChildResult run = run_program(
        QRV_PROBE, {"configuration"},
        {{"QRV_DEBUG_CPU_TYPE", "2"}, {"QRV_NUM_THREADS", "3"}, {"QRV_DYNAMIC", "FALSE"}, {"QRV_MM_DISABLE", "1"}});
    for (const char* expected :
         {qrv_serv_get_version(), "2 (sse2), forced by QRV_DEBUG_CPU_TYPE", "dynamic           off",
          "3: dynamic adjustment is off: taken as requested", "work memory pool  off"})
        EXPECT_NE(run.out.find(expected), std::string::npos) << expected << "\n" << run.out;
}

} // namespace
} // namespace qrv::test
