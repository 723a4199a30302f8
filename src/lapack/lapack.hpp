// LAPACK routines in the native calling form: every argument by address. Those of published routines take the
// published arguments and check them; entries frame them. Callers in C++ use calls.hpp.
#pragma once

#include "qrv/native.h"

extern "C" {

// Of a row, by the types of its entry.
#define DECLARE_MEMBER(NAME, name) decltype(QRV_MEMBER(NAME)) QRV_LAPACK_MEMBER(name);
#define CHECKED(NAME, name, ...) DECLARE_MEMBER(NAME, name)
#define REPORTED(NAME, name, ...) DECLARE_MEMBER(NAME, name)
#define ROUTE(NAME, name, ...) DECLARE_MEMBER(NAME, name)
#define UNCHECKED(Result, NAME, name, ...) DECLARE_MEMBER(NAME, name)
#define QRV_ROUTINES "routines/lapack.def"
#include "routines/complex_members.def"
#include "routines/real_members.def"
#undef DECLARE_MEMBER
#undef CHECKED
#undef REPORTED
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

// ---- Reduction to tridiagonal form: SSYTD2 on a team ---------------------------------------------------------------

decltype(qrv_lapack_ssytd2) qrv_lapack_ssytd3;

// ---- Work sizes ----------------------------------------------------------------------------------------------------

// n as a float that is not below it.
float qrv_lapack_sroundup_work(const int* n);

// ---- Rotations ------------------------------------------------------------------------------------------------------

// k sequences of rotations one after the other on an m x n matrix, in the planes of neighbouring rows (side 'L') or
// columns: sequence j has its cosines in column 2j - 1 of cs and its sines in column 2j, both from row 1 on. Options
// are upper-case letters; with another pivot than 'V', or another direction than 'F' and 'B', nothing is done. work:
// 4*k*k + k*(n from the left, m from the right) elements, of which nothing is checked; info is not touched.
void qrv_lapack_slasr3(const char* side, const char* pivot, const char* direct, const int* m, const int* n,
                       const int* k, const float* cs, const int* ldcs, float* a, const int* lda, float* work,
                       const int* lwork, int* info);
}
