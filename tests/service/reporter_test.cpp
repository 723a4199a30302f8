// Reports, messages, the option compare, and the table of entry checks.
#include <array>
#include <chrono>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "service/entry.hpp"
#include "service/messages.hpp"
#include "service/options.hpp"
#include "service/reporter.hpp"

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
    EXPECT_EQ(report("SGEMM ", 8, 6), "\nQRV ERROR: Parameter 8 was incorrect on entry to SGEMM \n");
    EXPECT_EQ(report("SGETRF", 0, 6), "\nQRV INTERNAL ERROR: Condition 0 detected in function SGETRF\n");
    EXPECT_EQ(report("SGETRF", -3, 6), "\nQRV INTERNAL ERROR: Condition 3 detected in function SGETRF\n");
    EXPECT_EQ(report("SGETRF", 1000, 6), "\nQRV INTERNAL ERROR: Not enough work memory in function SGETRF\n");
    EXPECT_EQ(report("SGETRF", 1001, 6), "\nQRV ERROR: Incompatible optional parameters on entry to SGETRF\n");
    EXPECT_EQ(report("SGETRF", 1079, 6), "\nQRV INTERNAL ERROR: Not enough work memory in function SGETRF\n");
    EXPECT_EQ(report("ABCDEFGHIJKLMNOPQRSTUVWXY", 1, 25),
              "\nQRV ERROR: Parameter 1 was incorrect on entry to ABCDEFGHIJKLMNOPQRST\n");
    EXPECT_EQ(report("100%s%n", 2, 7), "\nQRV ERROR: Parameter 2 was incorrect on entry to 100%s%n\n")
        << "a name is text, not a format";
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
int stop_after_five(const int*, const int* step, const char*, int) {
    return *step > 5;
}

TEST(Slots, ReporterAndProgress) {
    const int info = 4, thread = 0, early = 5, late = 6;
    qrv_serv_set_xerbla(listener);
    EXPECT_EQ(printed([&] { qrv_serv_xerbla("SGETRF", &info, 6); }), "");
    EXPECT_EQ(heard, "SGETRF4");
    EXPECT_NE(report("SGEMM ", 1, 6), "") << "XERBLA itself looks at no slot";
    qrv_serv_set_xerbla(nullptr);
    EXPECT_NE(printed([&] { qrv_serv_xerbla("SGETRF", &info, 6); }), "");

    EXPECT_EQ(qrv_serv_progress(&thread, &late, "SGETRF", 6), 0) << "no routine set";
    qrv_serv_set_progress(stop_after_five);
    EXPECT_EQ(qrv_serv_progress(&thread, &early, "SGETRF", 6), 0);
    EXPECT_EQ(qrv_serv_progress(&thread, &late, "SGETRF", 6), 1);
    qrv_serv_set_progress(nullptr);
}

int lapack_like(const int* n) {
    const int info = 1, thread = 0, late = 6;
    qrv_serv_xerbla("SFAKE ", &info, 6);
    return *n + qrv_serv_progress(&thread, &late, "SFAKE ", 6);
}

TEST(EntryShapes, FramedEntryResetsBothSlots) {
    qrv_serv_set_xerbla(listener);
    qrv_serv_set_progress(stop_after_five);
    heard.clear();
    const int n = 7;
    int result = 0;
    EXPECT_NE(printed([&] { result = framed(lapack_like, &n); }), "") << "the default report, not the listener's";
    EXPECT_EQ(result, 7);
    EXPECT_EQ(heard, "");
}

// ---- Entry checks -----------------------------------------------------------------------------------------

// A call: its arguments as texts, '.' for one that no check looks at. Numbers stand for ints, letters for options,
// '~' for an empty option.
struct Call {
    explicit Call(const std::string& line) {
        std::istringstream words(line);
        for (std::string word; words >> word;)
            set(static_cast<int>(kinds.size()) + 1, word);
    }
    void set(int position, const std::string& word) {
        const auto index = static_cast<std::size_t>(position - 1);
        if (index == kinds.size())
            kinds.push_back(' ');
        const bool number = std::isdigit(word.back()) != 0;
        kinds[index] = word == "." ? '.' : number ? 'i' : 'c';
        if (number)
            ints[index] = std::stoi(word);
        else
            letters[index] = word[0] == '~' ? '\0' : word[0];
    }
    int first_bad(const EntryRow& row) const {
        std::array<const void*, 13> addresses{};
        for (std::size_t p = 0; p < kinds.size(); ++p)
            addresses[p] = kinds[p] == 'i'   ? static_cast<const void*>(&ints[p])
                           : kinds[p] == 'c' ? static_cast<const void*>(&letters[p])
                                             : nullptr;
        return first_bad_argument(row, addresses.data());
    }
    std::string kinds;
    std::array<int, 13> ints{};
    std::array<char, 13> letters{};
};

// Changes of a good call, "position=value" each, and the position that must be reported.
struct Fault {
    const char* changes;
    int reported;
};

struct Family {
    const char* names;
    std::vector<const char*> good; // calls that pass, at the limits; the faults change the first
    std::vector<Fault> faults;
};

const Family families[] = {
    {"SGEMM CGEMM",
     {"N N 3 4 5 . . 3 . 5 . . 3", "t c 3 4 5 . . 5 . 4 . . 3", "C n 0 0 0 . . 1 . 1 . . 1"},
     {{"1=X", 1},
      {"2=?", 2},
      {"3=-1", 3},
      {"4=-1", 4},
      {"5=-1", 5},
      {"8=2", 8},
      {"10=4", 10},
      {"13=2", 13},
      {"1=T 8=4", 8},
      {"2=T 10=3", 10},
      {"3=-1 2=X", 2},
      {"3=0 8=0", 8},
      {"8=2 10=1 13=1", 8}}},
    {"SSYMM CSYMM CHEMM",
     {"L U 3 4 . . 3 . 3 . . 3", "r l 3 4 . . 4 . 3 . . 3"},
     {{"1=U", 1}, {"2=R", 2}, {"3=-1", 3}, {"4=-1", 4}, {"7=2", 7}, {"1=R 7=3", 7}, {"9=2", 9}, {"12=2", 12}}},
    {"STRMM STRSM CTRMM CTRSM",
     {"L U N N 3 4 . . 3 . 3", "R L C U 3 4 . . 4 . 3"},
     {{"1=X", 1},
      {"2=X", 2},
      {"3=X", 3},
      {"4=X", 4},
      {"5=-1", 5},
      {"6=-1", 6},
      {"9=2", 9},
      {"1=R 9=3", 9},
      {"11=2", 11}}},
    {"SSYRK", {"U N 3 4 . . 3 . . 3", "L C 3 4 . . 4 . . 3"}, {{"2=X", 2}}},
    {"CSYRK", {"U N 3 4 . . 3 . . 3", "L T 3 4 . . 4 . . 3"}, {{"2=C", 2}}},
    {"CHERK", {"U N 3 4 . . 3 . . 3", "L C 3 4 . . 4 . . 3"}, {{"2=T", 2}}},
    {"SSYRK CSYRK CHERK", {"U N 3 4 . . 3 . . 3"}, {{"1=X", 1}, {"3=-1", 3}, {"4=-1", 4}, {"7=2", 7}, {"10=2", 10}}},
    {"SSYR2K", {"U N 3 4 . . 3 . 3 . . 3", "L C 3 4 . . 4 . 4 . . 3"}, {{"2=X", 2}, {"2=T 7=4", 9}}},
    {"CSYR2K", {"U N 3 4 . . 3 . 3 . . 3", "L T 3 4 . . 4 . 4 . . 3"}, {{"2=C", 2}}},
    {"CHER2K", {"U N 3 4 . . 3 . 3 . . 3", "L C 3 4 . . 4 . 4 . . 3"}, {{"2=T", 2}}},
    {"SSYR2K CSYR2K CHER2K",
     {"U N 3 4 . . 3 . 3 . . 3"},
     {{"1=X", 1}, {"3=-1", 3}, {"4=-1", 4}, {"7=2", 7}, {"9=2", 9}, {"12=2", 12}}},
    {"SGEMV CGEMV",
     {"N 3 4 . . 3 . 1 . . -1", "C 0 0 . . 1 . 1 . . 1"},
     {{"1=X", 1}, {"2=-1", 2}, {"3=-1", 3}, {"6=2", 6}, {"8=0", 8}, {"11=0", 11}, {"6=2 8=0", 6}}},
    {"SGBMV",
     {"N 3 4 1 2 . . 4 . 1 . . 1", "T 3 4 0 0 . . 1 . -1 . . 1"},
     {{"1=X", 1},
      {"2=-1", 2},
      {"3=-1", 3},
      {"4=-1", 4},
      {"5=-1", 5},
      {"8=3", 8},
      {"4=0 5=0 8=0", 8},
      {"10=0", 10},
      {"13=0", 13},
      {"4=2147483647 5=2147483647", 8}}},
    {"SSYMV CHEMV",
     {"U 3 . . 3 . 1 . . 1"},
     {{"1=X", 1}, {"2=-1", 2}, {"5=2", 5}, {"2=0 5=0", 5}, {"7=0", 7}, {"10=0", 10}}},
    {"SSBMV",
     {"U 3 1 . . 2 . 1 . . 1", "l 3 0 . . 1 . 1 . . 1"},
     {{"1=X", 1}, {"2=-1", 2}, {"3=-1", 3}, {"6=1", 6}, {"3=0 6=0", 6}, {"8=0", 8}, {"11=0", 11}}},
    {"STRMV STRSV CTRMV CTRSV",
     {"U N N 3 . 3 . 1", "L c u 3 . 3 . -2"},
     {{"1=X", 1}, {"2=X", 2}, {"3=X", 3}, {"4=-1", 4}, {"6=2", 6}, {"8=0", 8}}},
    {"STBMV STBSV",
     {"U N N 3 1 . 2 . 1"},
     {{"1=X", 1}, {"2=X", 2}, {"3=X", 3}, {"4=-1", 4}, {"5=-1", 5}, {"7=1", 7}, {"9=0", 9}}},
    {"SGER CGERU CGERC",
     {"3 4 . . 1 . 1 . 3"},
     {{"1=-1", 1}, {"2=-1", 2}, {"5=0", 5}, {"7=0", 7}, {"9=2", 9}, {"5=0 9=2", 5}}},
    {"SSYR CHER", {"U 3 . . 1 . 3"}, {{"1=X", 1}, {"2=-1", 2}, {"5=0", 5}, {"7=2", 7}}},
    {"SSYR2 CHER2", {"U 3 . . 1 . 1 . 3"}, {{"1=~", 1}, {"1=X", 1}, {"2=-1", 2}, {"5=0", 5}, {"7=0", 7}, {"9=2", 9}}},
};

TEST(EntryChecks, EveryPositionOfEveryRoutine) {
    std::map<std::string, int> positionsSeen;
    for (const Family& family : families) {
        std::istringstream names(family.names);
        for (std::string name; names >> name;) {
            ASSERT_LT(entry_row(name), std::size(entryRows)) << name;
            const EntryRow& row = entryRows[entry_row(name)];
            EXPECT_EQ(row.name.size(), 6U);
            for (const char* good : family.good) {
                EXPECT_EQ(Call(good).first_bad(row), 0) << name << ' ' << good;
                EXPECT_EQ(static_cast<int>(Call(good).kinds.size()), row.arguments) << name;
            }
            for (const Fault& fault : family.faults) {
                Call call(family.good[0]);
                std::istringstream changes(fault.changes);
                for (std::string change; changes >> change;) {
                    const auto equals = change.find('=');
                    call.set(std::stoi(change), change.substr(equals + 1));
                }
                EXPECT_EQ(call.first_bad(row), fault.reported) << name << ' ' << fault.changes;
                positionsSeen[name] |= 1 << fault.reported;
            }
        }
    }
    // Every rule of every routine was seen to fail.
    EXPECT_EQ(positionsSeen.size(), 34U);
    for (const EntryRow& row : entryRows) {
        int rules = 0;
        for (int r = 0; r < row.list.count; ++r)
            rules |= 1 << row.list.rules[static_cast<std::size_t>(r)].position;
        const std::string name(row.name.substr(0, row.name.find(' ')));
        EXPECT_EQ(positionsSeen[name], rules) << name;
    }
}

} // namespace
} // namespace qrv::test
