// Matrices without a form, under the name that LAPACK's tests use.
#pragma once

#include "support/operand.hpp"

namespace qrv::test {

constexpr char transposeOptions[] = {'N', 'T'};

template <class T>
using BasicGuardedMatrix = Operand<T>;
using GuardedMatrix = Operand<float>;

// A copy of a matrix at a page.
template <class T>
struct PageMatrix : Operand<T> {
    PageMatrix(const Operand<T>& x, bool atFront)
        : Operand<T>(x.form(), {x.ld() - std::max(1, x.rows()), 0, atFront ? Guard::pageInFront : Guard::pageBehind}) {
        this->set(x);
    }
};

} // namespace qrv::test
