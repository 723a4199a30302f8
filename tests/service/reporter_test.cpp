// Reports, messages, the option compare, and the slots.
#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

#include "service/messages.hpp"
#include "service/options.hpp"
#include "service/reporter.hpp"
#include "support/progress.hpp"

namespace qrv::test {
namespace {

template <class Action>
std::string printed(Action action) {
    testing::internal::CaptureStdout();
    action();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

std::string report(const char* name, int info, int length) {
    return printed([&] { XERBLA(name, &info, length); });
}

TEST(Options, FirstLettersWithoutCase) {
    const auto same = [](const char* a, const char* b) { return qrv_serv_lsame(a, b, 1, 1); };
    EXPECT_EQ(same("n", "No transpose"), 1);
    EXPECT_EQ(same("Z", "z"), 1);
    EXPECT_EQ(same("[", "{"), 0) << "only letters are folded";
    EXPECT_EQ(same("@", "`"), 0);
    EXPECT_EQ(same("", "N"), 0);
    EXPECT_EQ(same("\xE9", "\xC9"), 0) << "no locale";
}

TEST(Report, TextByValue) {
    const struct {
        std::string name;
        int info;
        std::string text;
    } rows[] = {{"SGEMM ", 8, "ERROR: Parameter 8 was incorrect on entry to SGEMM "},
                {"SGETRF", 0, "INTERNAL ERROR: Condition 0 detected in function SGETRF"},
                {"SGETRF", -3, "INTERNAL ERROR: Condition 3 detected in function SGETRF"},
                {"SGETRF", 1000, "INTERNAL ERROR: Not enough work memory in function SGETRF"},
                {"SGETRF", 1001, "ERROR: Incompatible optional parameters on entry to SGETRF"},
                {"SGETRF", 1079, "INTERNAL ERROR: Not enough work memory in function SGETRF"},
                {"ABCDEFGHIJKLMNOPQRSTUVWXY", 1, "ERROR: Parameter 1 was incorrect on entry to ABCDEFGHIJKLMNOPQRST"},
                {"100%s%n", 2, "ERROR: Parameter 2 was incorrect on entry to 100%s%n"}}; // a name is no format
    for (const auto& [name, info, text] : rows)
        EXPECT_EQ(report(name.data(), info, static_cast<int>(name.size())), "\nQRV " + text + '\n');
}

TEST(Report, OverlongMessageEndsTheProcess) {
    const std::string fits(513 - std::string(message_text(MESSAGE_NO_MEMORY)).size() + 2, 'x');
    EXPECT_EQ(printed([&] { qrv_serv_print_message(0, MESSAGE_NO_MEMORY, 1, fits.c_str()); }).size(), 514U);
    const std::string tooLong = fits + 'x';
    const auto overflow = [&] {
        dup2(STDERR_FILENO, STDOUT_FILENO); // a death test reads standard error
        qrv_serv_print_message(0, MESSAGE_NO_MEMORY, 1, tooLong.c_str());
    };
    EXPECT_EXIT(overflow(), testing::ExitedWithCode(8),
                "QRV INTERNAL ERROR: message buffer overflow.\n       Message N 8   Lenght: 513   Buffer size: 512");
}

// Another thread may be reading a stream of the host's for as long as it likes.
TEST(Report, WaitsForNoStreamOfTheHost) {
    std::FILE* busy = std::tmpfile();
    const std::string text = printed([&] {
        flockfile(busy);
        const int info = 8;
        auto done = std::async(std::launch::async, [&] { XERBLA("SGEMM ", &info, 6); });
        EXPECT_EQ(done.wait_for(std::chrono::seconds(20)), std::future_status::ready);
        funlockfile(busy);
    });
    EXPECT_NE(text, "");
    std::fclose(busy);
}

std::string heard;
void listener(const char* name, const int* info, int length) {
    heard = std::string(name, static_cast<std::size_t>(length)) + std::to_string(*info);
}

TEST(Slots, ReporterAndProgress) {
    const int info = 4, thread = 0, step = 5;
    qrv_serv_set_xerbla(listener);
    EXPECT_EQ(printed([&] { qrv_serv_xerbla("SGETRF", &info, 6); }), "");
    EXPECT_EQ(heard, "SGETRF4");
    EXPECT_NE(report("SGEMM ", 1, 6), "") << "XERBLA itself looks at no slot";
    qrv_serv_set_xerbla(nullptr);
    EXPECT_NE(printed([&] { qrv_serv_xerbla("SGETRF", &info, 6); }), "");

    EXPECT_EQ(qrv_serv_progress(&thread, &step, "SGETRF", 6), 0) << "no routine set";
    const ProgressHook hook(2);
    for (const int stops : {0, 1})
        EXPECT_EQ(qrv_serv_progress(&thread, &step, "SGETRF", 6), stops);
}

TEST(Slots, LapackEntriesSetBothToTheirDefaults) {
    const int n = -1, info = 1, thread = 0, step = 6;
    for (const bool checks : {true, false}) {
        qrv_serv_set_xerbla(listener);
        const ProgressHook hook(1);
        heard.clear();
        const auto call = [&] {
            int result = 0;
            checks ? SGETRF(&n, &n, nullptr, &n, nullptr, &result) : SLASWP(&n, nullptr, &n, &n, &n, nullptr, &n);
            qrv_serv_xerbla("SFAKE ", &info, 6);
        };
        EXPECT_NE(printed(call), "") << "the default report, not the listener's";
        EXPECT_EQ(heard, "");
        EXPECT_EQ(qrv_serv_progress(&thread, &step, "SFAKE ", 6), 0);
    }
}

// Programs hear of progress and can stop an LU factorization.
TEST(Slots, ProgramsHearOfProgressAndStop) {
    static constexpr int n = 300;
    const auto steps_told = [](int stopAt, qrv_progress_routine routine) {
        std::vector<float> a(n * n);
        for (std::size_t i = 0; i < a.size(); ++i)
            a[i] = static_cast<float>(i * 7919 % 1009);
        std::vector<int> pivots(n);
        int info = -7;
        progress = {};
        progress.stopAt = stopAt;
        qrv_serv_set_default_progress(routine);
        SGETRF(&n, &n, a.data(), &n, pivots.data(), &info);
        EXPECT_EQ(info, 0);
        return progress.steps;
    };
    EXPECT_EQ(steps_told(0, on_progress).back(), n);
    EXPECT_EQ(progress.stages, std::set<std::string>{"SGETRF"});
    EXPECT_EQ(steps_told(2, on_progress).size(), 2U);
    EXPECT_TRUE(steps_told(0, nullptr).empty()) << "null is no routine";
}

} // namespace
} // namespace qrv::test
