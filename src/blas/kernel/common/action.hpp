// What is done with a triangular matrix, and in which order: x := op(A)*x, or x := inverse(op(A))*x.
#pragma once

#include "blas/options.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

enum class Action { multiply, solve };

// Whether a triangle, taken as it is stored or transposed, is upper.
constexpr bool is_upper(Uplo uplo, bool transposed) {
    return (uplo == Uplo::upper) != transposed;
}
// Whether the unknowns are computed from the first to the last: a product needs those to come as they were, a solve
// needs them solved.
constexpr bool ascends(Action action, bool upper) {
    return upper == (action == Action::multiply);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
