// The widest vector instructions that kernels of class sse42 may use. Kernel sources include this header, so it
// holds declarations only; the decision is in processor.hpp.
#pragma once

namespace qrv {

enum class VectorForm : int {
    sse,    // 128 bits
    avx2,   // 256 bits with fused multiply-add
    avx512, // 512 bits: F, VL, DQ and BW
};

// Of this machine, or less if restricted. A build without wide kernels always answers `sse`.
VectorForm vector_form();

// That of the kernels that run: older processor classes have no wider ones.
VectorForm vector_form_in_use();

// No form wider than `most` from now on, so that tests reach the narrower ones.
void restrict_vector_form(VectorForm most);

} // namespace qrv
