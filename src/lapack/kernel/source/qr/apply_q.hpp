// How the reflectors of a Q lie, and in which order they are applied: what SORMQR, SORMQL and SORMLQ differ in.
#pragma once

#include "lapack/calls/qr.hpp"
#include "lapack/kernel/source/reflectors/stored_reflectors.hpp"

namespace qrv::lapack {

// Reflectors [first, first + count) of a Q, and the rows of Q that they touch.
template <class T>
struct QPanel {
    int first, count;
    Matrix<const T> v;
    int row, length;
};

template <class T>
struct ReflectorsOfQ {
    QForm form;
    int order, k; // of Q; reflectors
    Matrix<const T> a;
    const T* tau;

    Direct direct() const { return form == QForm::ql ? Direct::backward : Direct::forward; }
    StoreV store() const { return form == QForm::lq ? StoreV::rows : StoreV::columns; }
    // What is applied of the product of the reflectors for op(Q): that of LQ is its adjoint.
    Op op_of_product(Op op) const {
        const Op sense = op == Op::none ? Op::none : adjoint<T>;
        return form == QForm::lq ? other<T>(sense) : sense;
    }
    // Whether the first reflectors meet C first.
    bool first_comes_first(Side side, Op op) const {
        return (form == QForm::qr) == ((side == Side::left) != (op == Op::none));
    }
    QPanel<T> panel(int first, int count) const {
        if (form == QForm::ql)
            return {first, count, a.block(0, first), 0, order - k + first + count};
        return {first, count, a.block(first, first), first, order - first};
    }
};

} // namespace qrv::lapack
