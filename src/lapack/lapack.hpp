// LAPACK routines in the native calling form: every argument by address. Those of published routines take the
// published arguments and check them; entries frame them. Callers in C++ use calls.hpp.
#pragma once

#include "qrv/native.h"

extern "C" {

// Of a row, by the types of its entry.
#define DECLARE_MEMBER(NAME, name) decltype(QRV_MEMBER(NAME)) QRV_LAPACK_MEMBER(name);
#define CHECKED(NAME, name, ...) DECLARE_MEMBER(NAME, name)
#define ROUTE(NAME, name, ...) DECLARE_MEMBER(NAME, name)
#define UNCHECKED(Result, NAME, name, ...) DECLARE_MEMBER(NAME, name)
#define QRV_ROUTINES "routines/lapack.def"
#include "routines/complex_members.def"
#include "routines/real_members.def"
#undef DECLARE_MEMBER
#undef CHECKED
#undef ROUTE
#undef UNCHECKED
#undef QRV_ROUTINES

// ---- LU factorization: the routes of SGETRF, see kernel/source/lu/getrf.hpp ----------------------------------------

decltype(SGETRF) qrv_lapack_sgetrf_serial, qrv_lapack_sgetrf_unblocked;
decltype(CGETRF) qrv_lapack_cgetrf_serial, qrv_lapack_cgetrf_unblocked;

// The thread and the first column are for the progress routine only. Result: 0, or 1 if that asked to stop.
int qrv_lapack_sgetrf_recursive(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info,
                                const int* thread, const int* offset);
int qrv_lapack_cgetrf_recursive(const int* m, const int* n, qrv_complex* a, const int* lda, int* ipiv, int* info,
                                const int* thread, const int* offset);
}
