// The tuning tables, one file each, and what they are made of. The name is that of a row (Name::row).
#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "service/tuning.hpp"

namespace qrv::tuning {

int block_size_of(std::uint64_t name, std::string_view opts, const Sizes& n); // blocks.cpp
int crossover_of(std::uint64_t name, const Sizes& n);                         // crossovers.cpp

struct Step {
    int upTo; // inclusive
    int value;
};

constexpr int by_size(int size, std::initializer_list<Step> ladder, int above) {
    for (const Step& step : ladder)
        if (size <= step.upTo)
            return step.value;
    return above;
}

// Of two sizes of which -1 is unset.
constexpr int smaller_set(int n1, int n2) {
    return n1 == -1 ? n2 : n2 == -1 ? n1 : std::min(n1, n2);
}

constexpr std::int64_t product(int n1, int n2) {
    return std::int64_t{n1} * n2;
}

} // namespace qrv::tuning
