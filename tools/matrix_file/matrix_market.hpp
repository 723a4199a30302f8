// Matrix Market exchange format.
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
// skew-symmetric, of which a file holds the lower triangle only. Entries of a coordinate file that name the same
// element are summed, and the sum is rounded with each.
//
// Taken beyond the published format: words of the banner in any case, comments and blank lines everywhere, exponents
// with D. Refused: pattern files, which have no values.
//
// Source: R. Boisvert, R. Pozo, K. Remington, The Matrix Market Exchange Formats, NISTIR 5935 (1996).
#pragma once

#include "matrix_file.hpp"
#include "source.hpp"

namespace tools {

MatrixFile read_matrix_market(const std::string& name, const Source& source, double copies);

void write_matrix_market(OutputFile& file, const AnyMatrix& matrix, Format format, const std::string& comment);

} // namespace tools
