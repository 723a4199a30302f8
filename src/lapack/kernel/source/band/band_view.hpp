// Band storage as a dense matrix.
//
// In an array AB with leading dimension LDAB, element (i, j) of the band stands in column j, at the row of the main
// diagonal plus i - j. So it is element (i, j) of an ordinary column-major matrix that begins at the main diagonal and
// has the leading dimension LDAB - 1. Every rectangle that lies within the band is a dense operand as it stands; an
// element outside the band has no storage, and its place belongs to another one or to nobody.
#pragma once

#include "blas/matrix.hpp"

namespace qrv::lapack {

// `diagonal`: the row of AB that holds the main diagonal, counted from 0. ldab is at least 1: with 1 the dense leading
// dimension is 0, and there are no rectangles but single elements.
template <class T>
Matrix<T> band_view(T* ab, int ldab, int diagonal) {
    return {ab + diagonal, ldab - 1};
}

// The triangle at the far end of a block of `columns` columns of a band, `height` x `columns` at `from`, is in the band
// on one side of its diagonal only. Copies that part to `to` or back.
enum class Corner { lower, upper }; // elements (r, c) with r >= c; with r <= c

template <class Copy>
void for_corner(Corner corner, int height, int columns, const Copy& copy) {
    for (int c = 0; c < columns; ++c) {
        const int first = corner == Corner::lower ? c : 0;
        const int end = corner == Corner::lower ? height : smaller(c + 1, height);
        for (int r = first; r < end; ++r)
            copy(r, c);
    }
}

} // namespace qrv::lapack
