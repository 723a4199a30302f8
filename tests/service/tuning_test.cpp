// Tuning values at the bounds of their tables, names as programs write them, and the machine constants.
#include <bit>
#include <cstdint>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <utility>

#include "qrv/native.h"
#include "qrv/service.h"
#include "service/machine_constants.hpp"
#include "service/tuning.hpp"

namespace qrv::test {
namespace {

int ilaenv(int ispec, const std::string& name, int n1 = -1, int n2 = -1, int n3 = -1, int n4 = -1,
           const std::string& opts = " ") {
    return ILAENV(&ispec, name.data(), opts.data(), &n1, &n2, &n3, &n4, static_cast<int>(name.size()),
                  static_cast<int>(opts.size()));
}

// Values along one size: "300:16 301:24" says that 300 gives 16 and 301 gives 24. The size is '?' in `arguments`.
struct Ladder {
    int ispec;
    const char* names;
    const char* arguments; // n1 n2 n3 n4, those left out are -1
    const char* values;
};

// One row a rule and a few values of each.
constexpr Ladder ladders[] = {
    {1, "SGETRF CGETRF STRTRI CTRTRI SGETRI CGETRI SLAUUM CLAUUM", "? ?", "1:64 9999:64"},
    {3, "SGETRI STRTRI CLAUUM CUNMQR SLAQPS SORMQR SORMTR", "? ?", "1:0 9999:0"},
    {1, "SGEHRD SGELQF CGELQF CUNGQR CUNGLQ CUNGBR CUNMQR CUNMLQ CUNMBR SLAQPS SLATRD", "? ?", "1:32 9999:32"},
    {3, "SGEHRD SGELQF CGELQF CUNGQR CUNGLQ CUNGBR SGEBRD CLABRD CGEBRD SORGQR SORGLQ SORGHR", "? ?", "1:32 9999:32"},
    {1, "SGEQRF CGEQRF", "9 ?", "1:16 300:16 301:24 3400:96 3401:128"},
    {3, "SGEQRF", "1000 ?", "8:128 9:256 25:256 26:8"},
    {3, "SGEQRF CGEQRF", "? 100 2", "99:199 100:0"},
    {1, "SORGQR SORGLQ SORGHR SORMQR SORMLQ SORMQL SORMBR SORMTR", "? 5000", "-1:128 64:16 65:32 1499:64 1500:128"},
    {1, "SPOTRF CPOTRF", "?", "128:128 129:24 1051:128 3001:512"},
    {1, "SPOTRF CPOTRF", "? 4", "128:128 129:16 700:8 1950:12"},
    {1, "SSYTRD", "?", "1399:20 1400:24"},
    {3, "SSYTRD", "5000 ?", "-1:250 1:250 2:600"},
    {1, "SGBTRF", "500 500 90 ?", "-1:1 64:1 65:32"},
    {1, "SGBTRS", "1000 200 ?", "2:1 3:128 7:128 8:128"},
    {1, "CGEBRD", "? ?", "127:128 128:8 4001:32"},
    {1, "SBDSQR SSTEQR", "?", "210:4 211:100 6201:200"},
    {1, "SLARFT CLARFT", "? 65", "64:32 14999:32 15000:16"},
    {6, "SGESDD", "? 1000", "1000:1600 7:11 2147483647:1600"},
    {17, "SGETRF", "0 ? 4", "4000:3 4001:2 6001:1"},
    {18, "SGETRF", "0 ? 8", "3600:4 3601:8"},
    {18, "SGETRF CGETRF", "0 6500 ?", "11:0 12:12 13:0"},
};

TEST(Tuning, ValuesAtTheirBounds) {
    for (const Ladder& ladder : ladders) {
        std::istringstream names(ladder.names);
        for (std::string name; names >> name;) {
            std::istringstream values(ladder.values);
            int size = 0, expected = 0;
            for (char colon = 0; values >> size >> colon >> expected;) {
                std::istringstream arguments(ladder.arguments);
                int n[4] = {-1, -1, -1, -1};
                std::string word;
                for (int i = 0; arguments >> word; ++i)
                    n[i] = word == "?" ? size : std::stoi(word);
                EXPECT_EQ(ilaenv(ladder.ispec, name, n[0], n[1], n[2], n[3]), expected)
                    << ladder.ispec << ' ' << name << '(' << ladder.arguments << ") with " << size;
            }
        }
    }
    EXPECT_EQ(tuning::crossover("SGEQRF", 100, 250), 256) << "by value";
    EXPECT_EQ(tuning::lu_span("SGETRF", 4001, 4), 2);
}

TEST(Tuning, NamesAsTheyAreRead) {
    const struct {
        int ispec;
        const char* names;
        int value;                                               // of two unequal sizes
    } rows[] = {{1, "SGEQRF sgeqrf sGEqrF DGEQRF SGEQRFXY", 24}, // six letters count, in the case of the first
                {1, "Sgeqrf ZSGEQRF SNOROW CSYTRD XGETRF 1GETRF ?", 1},
                {1, "CUNMQR zunmqr", 32}, // z as c
                {2, "SGETRF CUNGQR SNOROW S", 2},
                {3, "XGETRF 1GETRF ?", 1},
                {3, "SNOROW", 0}};
    for (const auto& [ispec, names, value] : rows) {
        std::istringstream words(names);
        for (std::string name; words >> name;)
            EXPECT_EQ(ilaenv(ispec, name, 9, 301), value) << ispec << ' ' << name;
    }
    EXPECT_EQ(ilaenv(1, "", 5, 5), 1);
    EXPECT_EQ(ilaenv(17, "SPOTRF", 9, 100, 2), 1);
    EXPECT_EQ(ilaenv(18, "SPOTRF", 9, 100, 2), 0);
    EXPECT_EQ(ilaenv(17, "sgetrf", 9, 100, 2), 3);
    EXPECT_EQ(ilaenv(1, "SGEQRF", 500, 500, 2, -1, "B"), 2) << "blocks in a job";
    EXPECT_EQ(ilaenv(1, "SGEQRF", 500, 500, -1, -1, "B"), 48);
}

TEST(Tuning, OtherValues) {
    const int type = qrv_serv_get_cpu_type();
    const int expected[] = {-1, 1, 2, 0, 6, 2, 1600, 1, 50, 25, 1, 1, 75, 2, 14, 2, 0, 1, 0, type, -1, -1};
    for (int ispec = 0; ispec < 22; ++ispec)
        EXPECT_EQ(ilaenv(ispec, "SHSEQR", 1000, 1000), expected[ispec]) << ispec;
    EXPECT_EQ(ilaenv(-1, "SGETRF"), -1);
    EXPECT_EQ(ilaenv(19, "?"), type);
    EXPECT_EQ(ilaenv(7, "SHGEQZ"), type == 5 ? 32 : 2);
    EXPECT_EQ(ilaenv(12, "SGETRF"), 16);
    EXPECT_EQ(ilaenv(12, "SGEQRF", -1, 401, -1, -1, "N"), 16);
    for (const auto& [n, panel] : {std::pair{400, 24}, {401, 32}, {1900, 96}, {1901, 128}})
        EXPECT_EQ(ilaenv(12, "CGEQRF", -1, n, -1, -1, "P"), panel) << n;
    EXPECT_EQ(ilaenv(13, "SLAQR0", 501, 1, 501), 3 * 54 / 2) << "ilo and ihi are n2 and n3";
}

TEST(Tuning, QrIteration) {
    const auto iparmq = [](int ispec, int nh) {
        const int unused = -1, ilo = 11, ihi = 10 + nh;
        return IPARMQ(&ispec, "SHSEQR", "EN", &unused, &ilo, &ihi, &unused, 6, 2);
    };
    // nh, shifts
    const int rows[][2] = {{-5, 2},   {29, 2},   {30, 4},   {59, 4},   {60, 10},   {149, 10},   {150, 20},
                           {500, 54}, {501, 54}, {589, 64}, {590, 64}, {2999, 64}, {3000, 128}, {6000, 256}};
    for (const auto& [nh, ns] : rows) {
        EXPECT_EQ(iparmq(15, nh), ns) << nh;
        EXPECT_EQ(iparmq(13, nh), nh <= 500 ? ns : 3 * ns / 2) << nh;
        EXPECT_EQ(iparmq(16, nh), ns >= 14 ? 2 : 0) << nh;
    }
    for (const auto& [ispec, value] : {std::pair{11, -1}, {12, 75}, {14, 14}, {17, -1}})
        EXPECT_EQ(iparmq(ispec, 100), value) << ispec;
}

TEST(MachineConstants, Bits) {
    const struct {
        const char* letters;
        std::uint32_t bits;
    } rows[] = {{"Ee", 0x33800000}, {"SsUu", 0x00800000}, {"Bb", 0x40000000}, {"Pp", 0x34000000}, {"Nn", 0x41C00000},
                {"Rr", 0x3F800000}, {"Mm", 0xC2FA0000},   {"Ll", 0x43000000}, {"Oo", 0x7F7FFFFF}, {"Aa", 0x2A800000},
                {"Ff", 0x26000000}, {"Ii", 0x54800000},   {"Xx", 0x59000000}, {"Tt", 0x41000000}};
    std::string known;
    for (const auto& row : rows)
        for (const char* letter = row.letters; *letter; ++letter) {
            EXPECT_EQ(std::bit_cast<std::uint32_t>(SLAMCH(letter)), row.bits) << *letter;
            known += *letter;
        }
    for (int c = 0; c < 256; ++c) {
        const char text[] = {static_cast<char>(c), '\0'};
        EXPECT_EQ(SLAMCH(text) == 0, known.find(text[0]) == std::string::npos) << c;
    }
    EXPECT_EQ(SLAMCH("Epsilon"), machine::epsilon);
}

} // namespace
} // namespace qrv::test
