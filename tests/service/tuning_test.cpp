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
constexpr struct {
    int ispec;
    const char* names;
    const char* arguments; // n1 n2 n3 n4, those left out are -1
    const char* values;
    const char* opts = " ";
} ladders[] = {
    // One row a rule and a few values of each.
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
    {1, "SGEQRF", "500 500 ?", "2:2 -1:48", "B"}, // blocks in a job
    {12, "SGETRF", "?", "-1:16"},
    {12, "SGEQRF", "-1 ?", "401:16", "N"},
    {12, "CGEQRF", "-1 ?", "400:24 401:32 1900:96 1901:128", "P"},
    // The QR iteration: ilo and ihi are n2 and n3.
    {15, "SHSEQR", "0 11 ?", "5:2 39:2 40:4 69:4 70:10 159:10 160:20 510:54 599:64 3009:64 3010:128 6010:256"},
    {13, "SLAQR0", "0 11 ?", "5:2 159:10 160:20 510:54 511:81 599:96 3010:192 6010:384"},
    {16, "SHSEQR", "0 11 ?", "5:0 159:0 160:2 6010:2"},
    // Names: six letters count, in the case of the first, and z is as c.
    {1, "SGEQRF sgeqrf sGEqrF DGEQRF SGEQRFXY", "9 ?", "301:24"},
    {1, "Sgeqrf ZSGEQRF SNOROW CSYTRD XGETRF 1GETRF ?", "9 ?", "301:1"},
    {1, "CUNMQR zunmqr", "9 ?", "301:32"},
    {2, "SGETRF CUNGQR SNOROW S", "9 ?", "301:2"},
    {3, "XGETRF 1GETRF ?", "9 ?", "301:1"},
    {3, "SNOROW", "9 ?", "301:0"},
    {17, "SPOTRF", "9 ? 2", "100:1"},
    {18, "SPOTRF", "9 ? 2", "100:0"},
    {17, "sgetrf", "9 ? 2", "100:3"},
};

TEST(Tuning, ValuesAtTheirBounds) {
    for (const auto& ladder : ladders) {
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
                EXPECT_EQ(ilaenv(ladder.ispec, name, n[0], n[1], n[2], n[3], ladder.opts), expected)
                    << ladder.ispec << ' ' << name << '(' << ladder.arguments << ") with " << size;
            }
        }
    }
    EXPECT_EQ(tuning::crossover("SGEQRF", 100, 250), 256) << "by value";
    EXPECT_EQ(tuning::lu_span("SGETRF", 4001, 4), 2);
}

TEST(Tuning, OtherValues) {
    const int type = qrv_serv_get_cpu_type();
    const int expected[] = {-1, 1, 2, 0, 6, 2, 1600, 1, 50, 25, 1, 1, 75, 2, 14, 2, 0, 1, 0, type, -1, -1};
    for (int ispec = 0; ispec < 22; ++ispec)
        EXPECT_EQ(ilaenv(ispec, "SHSEQR", 1000, 1000), expected[ispec]) << ispec;
    EXPECT_EQ(ilaenv(-1, "SGETRF"), -1);
    EXPECT_EQ(ilaenv(1, "", 5, 5), 1);
    EXPECT_EQ(ilaenv(19, "?"), type);
    EXPECT_EQ(ilaenv(7, "SHGEQZ"), type == 5 ? 32 : 2);
    const int unused = -1, ilo = 11, ihi = 110;
    for (const auto& [ispec, value] : {std::pair{11, -1}, {12, 75}, {13, 10}, {14, 14}, {15, 10}, {16, 0}, {17, -1}})
        EXPECT_EQ(IPARMQ(&ispec, "SHSEQR", "EN", &unused, &ilo, &ihi, &unused, 6, 2), value) << ispec;
}

TEST(MachineConstants, Bits) {
    const std::pair<std::string, std::uint32_t> rows[] = {
        {"Ee", 0x33800000}, {"SsUu", 0x00800000}, {"Bb", 0x40000000}, {"Pp", 0x34000000}, {"Nn", 0x41C00000},
        {"Rr", 0x3F800000}, {"Mm", 0xC2FA0000},   {"Ll", 0x43000000}, {"Oo", 0x7F7FFFFF}, {"Aa", 0x2A800000},
        {"Ff", 0x26000000}, {"Ii", 0x54800000},   {"Xx", 0x59000000}, {"Tt", 0x41000000}};
    std::string known;
    for (const auto& [letters, bits] : rows) {
        for (const char& letter : letters)
            EXPECT_EQ(std::bit_cast<std::uint32_t>(SLAMCH(&letter)), bits) << letter;
        known += letters;
    }
    for (int c = 0; c < 256; ++c) {
        const char text[] = {static_cast<char>(c), '\0'};
        EXPECT_EQ(SLAMCH(text) == 0, known.find(text[0]) == std::string::npos) << c;
    }
    EXPECT_EQ(SLAMCH("Epsilon"), machine::epsilon);
}

} // namespace
} // namespace qrv::test
