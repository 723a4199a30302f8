// Matrix Market exchange format, read into full single-precision matrices and written from them.
//
// A file is a banner, comments, a line of sizes, and one entry a line:
//
//     %%MatrixMarket matrix coordinate real general        array: every element, column by column
//     % a comment                                          coordinate: row, column (from 1), value; others are 0
//     3 3 2
//     1 1 2.5
//     3 2 -1e-3
//
// Fields are real, integer and complex (two numbers an entry); symmetries general, symmetric, hermitian and
// skew-symmetric, of which a file holds the lower triangle only. Values are rounded to single precision; entries of a
// coordinate file that name the same element are summed, and the sum is rounded with each.
//
// Taken beyond the published format: words of the banner in any case, comments and blank lines everywhere, exponents
// with D. Refused: pattern files, which have no values, infinities, NaN, and what single precision cannot hold.
//
// Source: R. Boisvert, R. Pozo, K. Remington, The Matrix Market Exchange Formats, NISTIR 5935 (1996).
#pragma once

#include <stdexcept>
#include <string>

#include "output_file.hpp"
#include "support/matrix.hpp"

namespace tools {

using support::AnyMatrix, support::Matrix, support::SingleComplex;
using support::isComplex, support::to_complex;

// A file that cannot be read, or does not hold what it should. The message begins with its name and, where there is
// one, the number of the line.
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class Format { array, coordinate };
enum class Symmetry { general, symmetric, hermitian, skewSymmetric };

struct MatrixFile {
    AnyMatrix matrix; // complex if the file's field is; both triangles are filled
    Format format = Format::array;
    Symmetry symmetry = Symmetry::general;
    long long entries = 0; // in the file
};

// `copies` of the full matrix the caller will hold at a time: what does not fit this process is refused by the sizes
// alone. Raises InputError; std::bad_alloc if memory runs out after all. An endless stream is refused where it stops to
// be a matrix file.
MatrixFile read_matrix_market(const std::string& path, double copies = 1);

// The same from the text of a file; `name` stands for it in messages.
MatrixFile parse_matrix_market(const std::string& name, const std::string& text);

// Writes a general matrix, and commits the file; a coordinate file leaves zeros out. Numbers have as many digits as
// give the same floats back. `comment` is one line or more, or empty. Raises OutputError.
void write_matrix_market(OutputFile& file, const AnyMatrix& matrix, Format format, const std::string& comment);

// Bytes that so many elements take in an array file, about.
constexpr double array_bytes(double elements, bool isComplex) {
    return elements * (isComplex ? 24 : 12);
}

} // namespace tools
