// Files of matrices, read into full single-precision matrices and written from them: Matrix Market (matrix_market.hpp)
// and NumPy's .npy (npy.hpp).
//
// A file named *.npy is NumPy's; of any other the first byte tells which it is. The name "-" stands for standard input
// and standard output. Values are rounded to single precision; infinities, NaN and what single precision cannot hold
// are refused, as are matrices without elements.
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

enum class Format { array, coordinate, npy }; // the first two are those of Matrix Market
enum class Symmetry { general, symmetric, hermitian, skewSymmetric };

struct MatrixFile {
    AnyMatrix matrix; // complex if the file's elements are; both triangles are filled
    Format format = Format::array;
    Symmetry symmetry = Symmetry::general;
    long long entries = 0; // in the file
};

// `copies` of the full matrix the caller will hold at a time: what does not fit this process is refused by the sizes
// alone. Raises InputError; std::bad_alloc if memory runs out after all. An endless stream is refused where it stops to
// be a matrix file.
MatrixFile read_matrix(const std::string& path, double copies = 1);

// The same from the content of a file; `name` stands for it in messages.
MatrixFile parse_matrix(const std::string& name, const std::string& content);

// Writes a general matrix, and commits the file; a coordinate file leaves zeros out, and NumPy's has no comment.
// Numbers have as many digits as give the same floats back. `comment` is one line or more, or empty. Raises
// OutputError.
void write_matrix(OutputFile& file, const AnyMatrix& matrix, Format format, const std::string& comment);

bool is_npy_name(const std::string& path);

// Bytes that so many elements take in a file, about.
constexpr double file_bytes(Format format, double elements, bool isComplex) {
    return elements * (format == Format::npy ? 4 : 12) * (isComplex ? 2 : 1);
}

} // namespace tools
