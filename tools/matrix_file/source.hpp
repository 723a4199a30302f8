// What the readers of matrix files read from, and what they refuse alike.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace tools {

// Puts the next bytes of a file, at most so many, at an address. Result: how many; 0 at the end.
using Source = std::function<std::size_t(char* to, std::size_t most)>;

// Why a matrix of this size cannot be held so many times, if it cannot: the system would end the program when its
// memory is touched.
std::optional<std::string> lack_of_memory(int rows, int columns, std::size_t elementSize, double copies);

// Beyond it a double rounds to infinity in single precision.
bool fits_single(double value);

// A part of a file for a message: short, and nothing that a terminal would obey.
std::string quoted(std::string_view part);

} // namespace tools
