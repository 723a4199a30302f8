// A model fitted to a picture by least squares.
#pragma once

#include <filesystem>

#include "support/picture.hpp"

// Fits a polynomial in two variables to the gray values, prints how well it went, and writes the fit and what it
// leaves, beside the original, into the folder. A fit that is wrong raises an exception.
void show_fit(const support::Picture& original, const std::filesystem::path& folder);
