// Routine names as the tuning tables read them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "service/options.hpp"

namespace qrv::tuning {

// The first six characters of a name as one number, missing ones as blanks. No loop, so that nothing is left of it
// where the name is written out.
constexpr std::uint64_t key(std::string_view name) {
    const auto letter = [&](std::size_t i) {
        return std::uint64_t{static_cast<unsigned char>(i < name.size() ? name[i] : ' ')} << 8 * (5 - i);
    };
    return letter(0) | letter(1) | letter(2) | letter(3) | letter(4) | letter(5);
}

// Six letters, folded to upper case if the first one is lower case.
struct Name {
    char letters[6] = {' ', ' ', ' ', ' ', ' ', ' '};

    constexpr explicit Name(std::string_view given) {
        const bool fold = !given.empty() && given[0] >= 'a' && given[0] <= 'z';
        for (std::size_t i = 0; i < std::min<std::size_t>(given.size(), 6); ++i)
            letters[i] = fold ? static_cast<char>(fold_case(given[i])) : given[i];
    }
    constexpr std::string_view routine() const { return {letters, 6}; }
    constexpr std::string_view without_precision() const { return {letters + 1, 5}; }
    constexpr std::string_view operation() const { return {letters + 3, 3}; }

    // The row of the tables: those of S serve for D, those of C for Z. 0 if the first letter tells no precision.
    constexpr std::uint64_t row() const {
        const char first = letters[0];
        const char precision = first == 'S' || first == 'D' ? 'S' : first == 'C' || first == 'Z' ? 'C' : ' ';
        const char names[] = {precision, letters[1], letters[2], letters[3], letters[4], letters[5]};
        return precision == ' ' ? 0 : key({names, 6});
    }
};

} // namespace qrv::tuning
