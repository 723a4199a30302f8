// Names of LAPACK routines, as tuning values and the progress routine know them.
#pragma once

#include <array>
#include <string_view>

#include "blas/complex.hpp"

namespace qrv::lapack {

// The name of the routine for an element type: "TRTRI" as STRTRI or CTRTRI.
template <class T>
struct RoutineName {
    std::array<char, 6> letters;

    constexpr explicit RoutineName(const char (&stem)[6])
        : letters{isComplex<T> ? 'C' : 'S', stem[0], stem[1], stem[2], stem[3], stem[4]} {}
    constexpr operator std::string_view() const { return {letters.data(), letters.size()}; }
};

} // namespace qrv::lapack
