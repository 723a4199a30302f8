// The reporter of bad arguments and the progress hook that all native code calls.
#pragma once

#include "qrv/native.h"
#include "qrv/service.h"

// Reports through the routine set by qrv_serv_set_xerbla if there is one, else makes the default report.
// LAPACK routines call this one; entry checks call XERBLA, which looks at no slot.
extern "C" void qrv_serv_xerbla(const char* name, const int* info, int length);

// Asks the progress routine whether to go on: 0 yes (also when none is set), otherwise stop.
extern "C" int qrv_serv_progress(const int* thread, const int* step, const char* stage, int length);

// The progress routine that LAPACK entries install unless the program has set one: 0 at once.
extern "C" int qrv_serv_default_progress(const int* thread, const int* step, const char* stage, int length);

namespace qrv {

// The program's own default, or the one above.
qrv_progress_routine default_progress();

// An empty line and the message that belongs to the value of *info, on standard output.
void default_report(const char* name, const int* info, int length);

} // namespace qrv
