// Gray pictures as column-major matrices: rows are scan lines, values are 0 (black) to 255 (white).
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

struct Picture {
    int rows = 0;
    int columns = 0;
    std::vector<float> pixels; // leading dimension `rows`

    float& operator()(int i, int j) {
        return pixels[static_cast<std::size_t>(i) + static_cast<std::size_t>(rows) * static_cast<std::size_t>(j)];
    }
    float operator()(int i, int j) const {
        return pixels[static_cast<std::size_t>(i) + static_cast<std::size_t>(rows) * static_cast<std::size_t>(j)];
    }
};

// Why a picture could not be read or written, as one line for a person.
class PictureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Reads a PNG of any kind as gray.
Picture read_png(const std::string& path);

// Writes a gray PNG; values outside 0 to 255 are clipped. The file appears whole or not at all.
void write_png(const std::string& path, const Picture& picture);

// The pictures side by side with a white gap. All have the same number of rows.
Picture beside(const std::vector<Picture>& pictures);
