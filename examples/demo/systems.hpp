// Linear systems with matrices from practice.
#pragma once

#include <filesystem>

// Solves the systems whose matrices lie in the folder and prints a line for each. A file that is wrong, or a solution
// that is, raises an exception.
void show_systems(const std::filesystem::path& folder);
