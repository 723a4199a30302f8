// The vectors of the build that is being compiled. Each build has a header of its own, which CMake names: it says by
// QRV_VECTOR_LANES how many floats a vector has, and brings
//
//   Vec                  the vector, with the operations of common/vec/vec4f.hpp, vec8f.hpp or vec16f.hpp
//   Peak                 the largest of the magnitudes taken in
//   horizontal_sums, with_unaligned_source    builds of four lanes: what they do in different ways
//
// The generic build has "vectors" of one float, with what level 3 needs of them.
#pragma once

#include QRV_KERNEL_VECTORS

static_assert(qrv::kernel::QRV_KERNEL_BUILD::Vec::lanes == QRV_VECTOR_LANES);
