// A picture of vectors: their elements over the index, as SVG.
#pragma once

#include <string>

#include "matrix_market/matrix.hpp"

namespace tools {

// Draws the columns of x, of complex ones real and imaginary parts; at most the first `mostCurves` curves. The file
// appears whole or not at all. Raises OutputError.
void write_picture(const std::string& path, const AnyMatrix& x, const std::string& title);

} // namespace tools
