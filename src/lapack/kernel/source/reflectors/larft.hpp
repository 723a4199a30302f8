// What couples the triangular factors of two blocks of reflectors, for SLARFT and for the panels of QR, which have them
// from elsewhere.
#pragma once

#include "lapack/kernel/source/reflectors/stored_reflectors.hpp"

namespace qrv::lapack {

// x := -ta (Va^H Vb) tb, aCount x bCount, where a and b show the rows that Vb has: its triangle and `rest` others.
template <class T>
void larft_couple(const StoredReflectors<T>& a, int aCount, const StoredReflectors<T>& b, int bCount, int rest,
                  Matrix<const T> ta, Matrix<const T> tb, Matrix<T> x);

} // namespace qrv::lapack
