// The paths of SGESDD and CGESDD, and what work each needs.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

#include "lapack/routine_name.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {

// A matrix with far more rows than columns is factored by QR first, and its triangle decomposed; a wide one by LQ. Of
// complex ones there is a middle kind, whose Q and P are generated and multiplied by the real vectors.
enum class SvdKind { longest, middle, square };

// Sizes at the limit are of the longer kind. The ratio is computed in single precision, as it decides.
template <class T>
SvdKind svd_kind(int m, int n) {
    const int shorter = std::min(m, n), longer = std::max(m, n);
    const auto limit = [&](float over, float under) {
        const float size = static_cast<float>(shorter) * over / under;
        return size < 0x1p31F ? static_cast<int>(size) : std::numeric_limits<int>::max();
    };
    if constexpr (isComplex<T>)
        return longer >= limit(17, 9) ? SvdKind::longest : longer >= limit(5, 3) ? SvdKind::middle : SvdKind::square;
    else
        return longer >= limit(11, 6) ? SvdKind::longest : SvdKind::square;
}

} // namespace qrv::lapack
