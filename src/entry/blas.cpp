// The entries of BLAS, from their rows.
#include "blas/stored_columns.hpp"
#include "entry/checks.hpp"
#include "entry/short_calls.hpp"

namespace qrv::entry {

using namespace blas;

extern "C" {

#define GUARDED(NAME, PARAMETERS, CHECKS, ...)                                                                         \
    QRV_API int QRV_MEMBER(NAME) PARAMETERS {                                                                          \
        if (!Guard{QRV_MEMBER_TEXT(NAME)} CHECKS)                                                                      \
            return 1;                                                                                                  \
        __VA_ARGS__;                                                                                                   \
        return 0;                                                                                                      \
    }
#define DIRECT_NAMED(Result, FULL_NAME, PARAMETERS, ...)                                                               \
    QRV_API Result FULL_NAME PARAMETERS {                                                                              \
        __VA_ARGS__;                                                                                                   \
    }
#define DIRECT(Result, NAME, PARAMETERS, ...) DIRECT_NAMED(Result, QRV_MEMBER(NAME), PARAMETERS, __VA_ARGS__)
#define QRV_ROUTINES "routines/blas.def"
#include "routines/members.def"

} // extern "C"
} // namespace qrv::entry
