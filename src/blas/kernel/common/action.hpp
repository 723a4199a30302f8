// What is done with a triangular matrix: x := op(A)*x, or x := inverse(op(A))*x.
#pragma once

namespace qrv::kernel::QRV_KERNEL_BUILD {

enum class Action { multiply, solve };

} // namespace qrv::kernel::QRV_KERNEL_BUILD
