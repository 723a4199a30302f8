// A picture of vectors: their elements over the index, as SVG.
#pragma once

#include <string>

#include "matrix_file/matrix_file.hpp"

namespace tools {

// The columns of x, of complex ones real and imaginary parts, as many as there are colours.
std::string picture(const AnyMatrix& x, const std::string& title);

// The first column of b, A x and b - A x, over the row or over a column of A, from 1.
template <class T>
std::string fit_picture(const Matrix<T>& a, const Matrix<T>& x, const Matrix<T>& b, int over, const std::string& title);

} // namespace tools
