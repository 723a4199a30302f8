// The shapes of a native entry routine. No shape reorders or rewrites an argument.
//
//   guarded   BLAS level 2 and 3: the entry check, then the driver
//   framed    LAPACK: both service slots set to their defaults (of which a program can set one), then the routine,
//   which checks for itself direct    BLAS level 1: a plain call of the driver, which needs no helper
#pragma once

#include "service/entry_checks.hpp"
#include "service/reporter.hpp"

namespace qrv {

// Result: 0 after the driver ran, 1 if an argument was bad and nothing was done.
template <std::size_t Row, class Driver, class... Args>
inline int guarded(Driver* driver, Args*... args) {
    if (const int bad = entry_check<Row>(args...))
        return bad;
    driver(args...);
    return 0;
}

template <class Routine, class... Args>
inline auto framed(Routine* routine, Args*... args) {
    qrv_serv_set_xerbla(XERBLA);
    qrv_serv_set_progress(default_progress());
    return routine(args...);
}

} // namespace qrv
