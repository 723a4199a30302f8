// Provider classes: the object through which a host library does its dense linear algebra.
//
// Offsets, increments and leading dimensions count elements. No length is checked against a dimension or an offset.
// Methods keep nothing of a call but work buffers for the next one, and may be called from any number of threads at
// once.
//
//   x, xOffset, incx  a vector of n elements (or as many as told): it begins at element xOffset of the array and takes
//                     every incx-th element, 1 + (n - 1)*|incx| of them in all. With a negative increment its elements
//                     are counted from the far end: the first one lies at xOffset + (n - 1)*|incx|.
//   a, aOffset, lda   a column-major matrix: its element (i, j), from 0, is element aOffset + i + j*lda of the array.
//
// Every array argument must hold at least one element, also where the routine would not touch it: a null array
// raises NullReferenceError, an empty one IndexOutOfRangeError, before any work is done. A bad dimension or
// option is reported on standard output (see qrv/native.h) and leaves the outputs unchanged.
//
// Example. The product of two matrices, column by column:
//
//     using namespace Corvex::Mathematics::LinearAlgebra;
//     const Providers::ParallelX86SingleLinearAlgebraProvider provider;
//     std::vector<float> a{1, 2, 3, 4}, b{5, 6, 7, 8}, c(4);
//     provider.BlasLevel3()->Sgemm(TransposeOperation::None, TransposeOperation::None,
//                                  2, 2, 2, 1.0F, a, 0, 2, b, 0, 2, 0.0F,
//                                  c, 0, 2);
//     return c == std::vector<float>{23, 34, 31, 46};
#pragma once
#pragma once

#include "providers/blas.hpp"
#include "providers/lapack.hpp"
#include "providers/sparse.hpp"
#include "providers/types.hpp"
#include "providers/x86.hpp"
