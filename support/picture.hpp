// Pictures as column-major matrices: rows are scan lines, values are 0 (black) to 255 (white).
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "support/matrix.hpp"

namespace support {

using Picture = Matrix<float>;

// Why a picture could not be read or written, as one line for a person.
class PictureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Reads a PNG of any kind, from standard input if the path is "-": as gray; and as it is, in one plane if it is gray,
// else red, green and blue beside each other, in columns. Transparency is lost.
Picture read_png(const std::string& path);
struct Planes {
    Picture all;
    int count; // 1 or 3

    int columns() const { return all.columns / count; }
};
Planes read_planes(const std::string& path);

// The content of a PNG file, and one written; values outside 0 to 255 are clipped. The file appears whole or not at
// all.
std::string png(const Planes& planes);
void write_png(const std::string& path, const Picture& gray);
void write_planes(const std::string& path, const Planes& planes);

// The pictures side by side with a white gap. All have the same number of rows.
Picture beside(const std::vector<Picture>& pictures);

} // namespace support
