// A picture of vectors: their elements over the index, as SVG.
#pragma once

#include <string>

#include "matrix_market/matrix_market.hpp"

namespace tools {

// Draws the columns of x, of complex ones real and imaginary parts, as many as there are colours, and commits the file.
// Raises OutputError.
void write_picture(OutputFile& file, const AnyMatrix& x, const std::string& title);

// The first column of b, A x and b - A x, over the row or over a column of A, from 1.
template <class T>
void write_fit_picture(OutputFile& file, const Matrix<T>& a, const Matrix<T>& x, const Matrix<T>& b, int over,
                       const std::string& title);

} // namespace tools
