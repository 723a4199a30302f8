// NumPy's format of one array, versions 1.0 to 3.0.
//
//     \x93NUMPY  major  minor  length of the header (2 bytes; from 2.0 on 4)
//     {'descr': '<f4', 'fortran_order': False, 'shape': (3, 2), }        a Python dictionary, padded to its length
//     the elements
//
// Read are arrays of one dimension, which count as one column, and of two, in either order; elements are little-endian
// float32, float64, complex64 or complex128. Written is version 1.0 with float32 or complex64, column by column
// (Fortran's order); one column as an array of one dimension.
//
// Source: R. Kern, NEP 1: A Simple File Format for NumPy Arrays (2007).
#pragma once

#include "matrix_file.hpp"
#include "source.hpp"

namespace tools {

inline constexpr char npyMark = '\x93'; // the first byte, which no text begins with

MatrixFile read_npy(const std::string& name, const Source& source, double copies);

void write_npy(OutputFile& file, const AnyMatrix& matrix);

} // namespace tools
