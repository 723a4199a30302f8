#pragma once

#include <filesystem>
#include <string>

// Approximates a photograph by matrices of three ranks (Sgesdd), and writes the pictures beside each other.
void show_low_rank(const std::string& image, const std::filesystem::path& pictures);
