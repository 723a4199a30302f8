// Argument checks of the BLAS level 2 and 3 entries, told once as a table.
//
// Each row names a routine and the rules that its arguments must meet, in the order in which they are tested:
// options, sizes, then leading dimensions and increments; the first that fails decides. A rule tests the argument
// at its own position (counted from 1) against a constant or against other arguments. The checks belong to the
// entries: native routines that call each other's drivers are not checked.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <type_traits>
#include <utility>

#include "service/options.hpp"

namespace qrv {

enum class RuleKind { option, size, increment, leading, band };

struct Rule {
    RuleKind kind;
    int position;
    const char* letters; // option: the letters allowed
    // leading: at least max(1, argument `first`), or argument `second` if the option at `choice` is not `letter`.
    // band: at least argument `first` + argument `second` + 1, where position 0 counts as 0.
    int choice;
    char letter;
    int first;
    int second;
};

constexpr Rule option(int position, const char* letters) {
    return {RuleKind::option, position, letters, 0, 0, 0, 0};
}
constexpr Rule size(int position) {
    return {RuleKind::size, position, nullptr, 0, 0, 0, 0};
}
constexpr Rule increment(int position) {
    return {RuleKind::increment, position, nullptr, 0, 0, 0, 0};
}
constexpr Rule leading(int position, int rows) {
    return {RuleKind::leading, position, nullptr, 0, 0, rows, rows};
}
constexpr Rule leading(int position, int choice, char letter, int rowsIfLetter, int rowsOtherwise) {
    return {RuleKind::leading, position, nullptr, choice, letter, rowsIfLetter, rowsOtherwise};
}
constexpr Rule band(int position, int kl, int ku = 0) {
    return {RuleKind::band, position, nullptr, 0, 0, kl, ku};
}

struct RuleList {
    std::array<Rule, 9> rules{};
    int count = 0;
    template <class... R>
    constexpr RuleList(R... r) : rules{r...}, count(sizeof...(r)) {}
};

struct EntryRow {
    std::string_view name; // blank-padded to 6
    int arguments;         // how many the entry takes
    RuleList list;
};

namespace rules {

constexpr RuleList gemm{option(1, "NCT"),         option(2, "NCT"),          size(3),       size(4), size(5),
                        leading(8, 1, 'N', 3, 5), leading(10, 2, 'N', 5, 4), leading(13, 3)};
constexpr RuleList symm{option(1, "LR"),          option(2, "UL"), size(3),       size(4),
                        leading(7, 1, 'L', 3, 4), leading(9, 3),   leading(12, 3)};
constexpr RuleList trmm{option(1, "LR"), option(2, "UL"), option(3, "NTC"),         option(4, "UN"),
                        size(5),         size(6),         leading(9, 1, 'L', 5, 6), leading(11, 5)};
constexpr RuleList syrk(const char* trans) {
    return {option(1, "UL"), option(2, trans), size(3), size(4), leading(7, 2, 'N', 3, 4), leading(10, 3)};
}
constexpr RuleList syr2k(const char* trans) {
    return {option(1, "UL"),          option(2, trans),         size(3),       size(4),
            leading(7, 2, 'N', 3, 4), leading(9, 2, 'N', 3, 4), leading(12, 3)};
}
constexpr RuleList gemv{option(1, "NTC"), size(2), size(3), leading(6, 2), increment(8), increment(11)};
constexpr RuleList gbmv{option(1, "NTC"), size(2),       size(3),       size(4),
                        size(5),          band(8, 4, 5), increment(10), increment(13)};
constexpr RuleList symv{option(1, "UL"), size(2), leading(5, 2), increment(7), increment(10)};
constexpr RuleList sbmv{option(1, "UL"), size(2), size(3), band(6, 3), increment(8), increment(11)};
constexpr RuleList trmv{option(1, "UL"), option(2, "NTC"), option(3, "UN"), size(4), leading(6, 4), increment(8)};
constexpr RuleList tbmv{option(1, "UL"), option(2, "NTC"), option(3, "UN"), size(4), size(5), band(7, 5), increment(9)};
constexpr RuleList ger{size(1), size(2), increment(5), increment(7), leading(9, 1)};
constexpr RuleList syr{option(1, "UL"), size(2), increment(5), leading(7, 2)};
constexpr RuleList syr2{option(1, "UL"), size(2), increment(5), increment(7), leading(9, 2)};

} // namespace rules

// clang-format off
constexpr EntryRow entryRows[] = {
    {"SGEMM ", 13, rules::gemm},           {"CGEMM ", 13, rules::gemm},
    {"SSYMM ", 12, rules::symm},           {"CSYMM ", 12, rules::symm},         {"CHEMM ", 12, rules::symm},
    {"STRMM ", 11, rules::trmm},           {"STRSM ", 11, rules::trmm},
    {"CTRMM ", 11, rules::trmm},           {"CTRSM ", 11, rules::trmm},
    {"SSYRK ", 10, rules::syrk("NTC")},    {"CSYRK ", 10, rules::syrk("NT")},   {"CHERK ", 10, rules::syrk("NC")},
    {"SSYR2K", 12, rules::syr2k("NTC")},   {"CSYR2K", 12, rules::syr2k("NT")},  {"CHER2K", 12, rules::syr2k("NC")},
    {"SGEMV ", 11, rules::gemv},           {"CGEMV ", 11, rules::gemv},
    {"SGBMV ", 13, rules::gbmv},
    {"SSYMV ", 10, rules::symv},           {"CHEMV ", 10, rules::symv},
    {"SSBMV ", 11, rules::sbmv},
    {"STRMV ", 8, rules::trmv},            {"STRSV ", 8, rules::trmv},
    {"CTRMV ", 8, rules::trmv},            {"CTRSV ", 8, rules::trmv},
    {"STBMV ", 9, rules::tbmv},            {"STBSV ", 9, rules::tbmv},
    {"SGER  ", 9, rules::ger},             {"CGERU ", 9, rules::ger},           {"CGERC ", 9, rules::ger},
    {"SSYR  ", 7, rules::syr},             {"CHER  ", 7, rules::syr},
    {"SSYR2 ", 9, rules::syr2},            {"CHER2 ", 9, rules::syr2},
};
// clang-format on

// The arguments of a call as their addresses; argument p stands at index p - 1.
using ArgumentAddresses = const void* const*;

// Always inlined: with a constant rule, as in an entry, all that remains is one comparison.
[[gnu::always_inline]] constexpr bool rule_fails(const Rule& rule, ArgumentAddresses arguments) {
    const auto letter_at = [&](int p) { return *static_cast<const char*>(arguments[p - 1]); };
    const auto int_at = [&](int p) { return p == 0 ? 0 : *static_cast<const int*>(arguments[p - 1]); };
    switch (rule.kind) {
    case RuleKind::option: {
        const char given = letter_at(rule.position);
        const char* const allowed = rule.letters;
        // Not a loop: with letters that are constants, nothing of this is left but comparisons.
        return !(same_letter(given, allowed[0]) || same_letter(given, allowed[1]) ||
                 (allowed[2] && same_letter(given, allowed[2])));
    }
    case RuleKind::size:
        return int_at(rule.position) < 0;
    case RuleKind::increment:
        return int_at(rule.position) == 0;
    case RuleKind::leading: {
        const bool second = rule.choice != 0 && !same_letter(letter_at(rule.choice), rule.letter);
        const int first = int_at(rule.first), other = int_at(rule.second);
        const int rows = second ? other : first;
        return int_at(rule.position) < (rows > 1 ? rows : 1);
    }
    case RuleKind::band:
        return int_at(rule.position) < static_cast<long long>(int_at(rule.first)) + int_at(rule.second) + 1;
    }
    return false;
}

// Position of the first bad argument of a call of the row's routine, 0 if all are good.
constexpr int first_bad_argument(const EntryRow& row, ArgumentAddresses arguments) {
    for (int r = 0; r < row.list.count; ++r)
        if (rule_fails(row.list.rules[static_cast<std::size_t>(r)], arguments))
            return row.list.rules[static_cast<std::size_t>(r)].position;
    return 0;
}

// Reports argument `position` of the routine through XERBLA. Result: 1.
int report_bad_argument(std::string_view name, int position);

constexpr std::size_t entry_row(std::string_view name) {
    for (std::size_t r = 0; r < std::size(entryRows); ++r)
        if (entryRows[r].name.substr(0, name.size()) == name &&
            entryRows[r].name.find_first_not_of(' ', name.size()) == std::string_view::npos)
            return r;
    return std::size(entryRows);
}

// A rule must find a character where it reads an option and an int where it reads a size.
template <class... Args>
consteval bool rules_fit(const EntryRow& row) {
    constexpr bool isChar[] = {std::is_same_v<Args, char>...};
    constexpr bool isInt[] = {std::is_same_v<Args, int>...};
    if (row.arguments != static_cast<int>(sizeof...(Args)))
        return false;
    for (int r = 0; r < row.list.count; ++r) {
        const Rule& rule = row.list.rules[static_cast<std::size_t>(r)];
        const bool* wanted = rule.kind == RuleKind::option ? isChar : isInt;
        if (!wanted[rule.position - 1] || (rule.choice && !isChar[rule.choice - 1]) ||
            (rule.first && !isInt[rule.first - 1]) || (rule.second && !isInt[rule.second - 1]))
            return false;
    }
    return true;
}

// Entry check of the routine in row Row, with the arguments of its entry: 0 if they are valid, 1 after a report.
// The row is a constant here, so its rules unroll into plain comparisons.
template <std::size_t Row, class... Args>
inline int entry_check(const Args*... args) {
    static_assert(rules_fit<std::remove_const_t<Args>...>(entryRows[Row]));
    const void* const addresses[] = {args...};
    int bad = 0;
    [&]<std::size_t... R>(std::index_sequence<R...>) {
        (void)((rule_fails(entryRows[Row].list.rules[R], addresses)
                    ? (bad = entryRows[Row].list.rules[R].position, true)
                    : false) ||
               ...);
    }
    (std::make_index_sequence<static_cast<std::size_t>(entryRows[Row].list.count)>{});
    return bad == 0 ? 0 : report_bad_argument(entryRows[Row].name, bad);
}

} // namespace qrv
