// Names of LAPACK routines and the report of their bad arguments.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>

#include "blas/complex.hpp"
#include "service/options.hpp"
#include "service/reporter.hpp"

namespace qrv::lapack {

// The name of the routine for an element type: "TRTRI" as STRTRI or CTRTRI.
template <class T>
struct RoutineName {
    std::array<char, 6> letters;

    constexpr explicit RoutineName(const char (&stem)[6])
        : letters{isComplex<T> ? 'C' : 'S', stem[0], stem[1], stem[2], stem[3], stem[4]} {}
    constexpr operator std::string_view() const { return {letters.data(), letters.size()}; }
};

// Sets *info for arguments of which the one at position `bad` (from 1) is the first bad one, or all are good with 0,
// and reports. Whether they are good.
inline bool arguments_good(std::string_view routine, int bad, int* info) {
    *info = -bad;
    if (bad != 0)
        qrv_serv_xerbla(routine.data(), &bad, static_cast<int>(routine.size()));
    return bad == 0;
}

// A work size as a routine returns it, in an element: rounded up, so that whoever takes it for a length gets enough.
template <class T>
T work_size(std::int64_t size) {
    float value = static_cast<float>(size);
    if (static_cast<double>(value) < static_cast<double>(size))
        value = std::nextafter(value, std::numeric_limits<float>::max());
    return scalar<T>(value);
}

constexpr bool is_one_of(char option, std::string_view letters) {
    for (const char letter : letters)
        if (same_letter(option, letter))
            return true;
    return false;
}

} // namespace qrv::lapack
