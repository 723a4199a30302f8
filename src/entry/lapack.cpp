// The entries of LAPACK and the routines that they frame, from their rows.
#include "lapack/lapack.hpp"
#include "blas/calls.hpp"
#include "entry/checks.hpp"
#include "lapack/calls/band.hpp"
#include "lapack/calls/bidiagonal.hpp"
#include "lapack/calls/cholesky.hpp"
#include "lapack/calls/dqds.hpp"
#include "lapack/calls/lu.hpp"
#include "lapack/calls/mrrr.hpp"
#include "lapack/calls/nonsymmetric.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/qr.hpp"
#include "lapack/calls/reflectors.hpp"
#include "lapack/calls/rotations.hpp"
#include "lapack/calls/svd.hpp"
#include "lapack/calls/symmetric.hpp"
#include "lapack/calls/triangular.hpp"

namespace qrv::lapack {

using namespace entry;

extern "C" {

#define ROUTE(NAME, name, PARAMETERS, CHECKS, ...)                                                                     \
    void QRV_LAPACK_MEMBER(name) PARAMETERS {                                                                          \
        if (Arguments{QRV_MEMBER_TEXT(NAME), info} CHECKS)                                                             \
            __VA_ARGS__;                                                                                               \
    }
#define CHECKED(NAME, name, PARAMETERS, CHECKS, ...)                                                                   \
    ROUTE(NAME, name, PARAMETERS, CHECKS, __VA_ARGS__)                                                                 \
    QRV_API void QRV_MEMBER(NAME) PARAMETERS {                                                                         \
        install_default_services();                                                                                    \
        if (Arguments{QRV_MEMBER_TEXT(NAME), info} CHECKS)                                                             \
            __VA_ARGS__;                                                                                               \
    }
#define REPORTED(NAME, name, PARAMETERS, CHECKS, ...)                                                                  \
    void QRV_LAPACK_MEMBER(name) PARAMETERS {                                                                          \
        if (int info; Arguments{QRV_MEMBER_TEXT(NAME), &info} CHECKS)                                                  \
            __VA_ARGS__;                                                                                               \
    }                                                                                                                  \
    QRV_API void QRV_MEMBER(NAME) PARAMETERS {                                                                         \
        install_default_services();                                                                                    \
        if (int info; Arguments{QRV_MEMBER_TEXT(NAME), &info} CHECKS)                                                  \
            __VA_ARGS__;                                                                                               \
    }
#define UNCHECKED(Result, NAME, name, PARAMETERS, ...)                                                                 \
    Result QRV_LAPACK_MEMBER(name) PARAMETERS {                                                                        \
        __VA_ARGS__;                                                                                                   \
    }                                                                                                                  \
    QRV_API Result QRV_MEMBER(NAME) PARAMETERS {                                                                       \
        install_default_services();                                                                                    \
        __VA_ARGS__;                                                                                                   \
    }
#define QRV_ROUTINES "routines/lapack.def"
#include "routines/members.def"

} // extern "C"
} // namespace qrv::lapack
