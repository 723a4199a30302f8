// Reflectors as the columns of a matrix V, in whichever way they are stored: what SLARFT and SLARFB see.
//
//   forward   [ V1 ] unit lower triangular      backward   [ V2 ] the rest
//             [ V2 ] the rest                              [ V1 ] unit upper triangular
//
// Stored by rows, it is V^H that lies there.
#pragma once

#include "lapack/calls/reflectors.hpp"
#include "lapack/elements.hpp"

namespace qrv::lapack {

// Of 'N' and the option that makes an adjoint, the other one.
template <class T>
constexpr Op other(Op op) {
    return op == Op::none ? adjoint<T> : Op::none;
}

template <class T>
struct StoredReflectors {
    Direct direct;
    StoreV store;
    Matrix<const T> v;

    bool by_columns() const { return store == StoreV::columns; }
    // From row i and column j of V on.
    StoredReflectors from(int i, int j) const { return {direct, store, by_columns() ? v.block(i, j) : v.block(j, i)}; }
    // What makes V of what is stored, and its adjoint.
    Op op() const { return by_columns() ? Op::none : adjoint<T>; }
    Op adjoint_op() const { return other<T>(op()); }
    // Where V1 lies in what is stored.
    Uplo triangle() const { return (direct == Direct::forward) == by_columns() ? Uplo::lower : Uplo::upper; }
};

constexpr Uplo triangle_of_t(Direct direct) {
    return direct == Direct::forward ? Uplo::upper : Uplo::lower;
}

} // namespace qrv::lapack
