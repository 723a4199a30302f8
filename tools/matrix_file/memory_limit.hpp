// How much memory this process may use.
#pragma once

#include <filesystem>

namespace tools {

// Bytes: the least of the machine's memory and the limits of the process's control groups, of either version, and of
// the groups that they lie in. `root` stands for the root folder of the system.
double memory_limit(const std::filesystem::path& root = "/");

} // namespace tools
