// The floating-point flags that a host may have trapped.
#pragma once

#include <cfenv>

namespace qrv::test {

// Those that run() raises on this thread.
template <class Run>
int flags_raised(const Run& run) {
    std::feclearexcept(FE_ALL_EXCEPT);
    run();
    return std::fetestexcept(FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW);
}

} // namespace qrv::test
