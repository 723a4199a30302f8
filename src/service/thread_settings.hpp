// What the environment asks of the thread budget: parsing only, no state.
#pragma once

#include "qrv/service.h"
#include "service/environment.hpp"

namespace qrv {

constexpr int threadDomains = 4; // QRV_DOMAIN_ALL, _BLAS, _FFT, _VEC

// A negative word has not been set.
struct ThreadSettings {
    int requested[threadDomains] = {-1, -1, -1, -1}; // threads requested, by QRV_DOMAIN_
    int dynamic = -1;                                // dynamic adjustment: 1 on, 0 off
    int ompNumThreads = -1;                          // above 0 if OMP_NUM_THREADS was given
    int mpiProcsPerNode = -1;                        // processes per node, from a message-passing launcher
    int mpiThreadLevel = -1;                         // thread support level, from the same
    bool numThreadsUnreadable = false;               // QRV_NUM_THREADS holds more than digits, so it counts as 1
};

// Number of a text that asks for threads: its digits' value, or 1 for a text with any other character.
int thread_number(const char* first, const char* last);

// Fills the request words that are still negative from a list such as QRV_ALL=4,QRV_BLAS=2;QRV_FFT 3. The first
// occurrence of a key wins; unknown keys are passed over; a number below 1 requests nothing.
void parse_domain_list(const char* text, ThreadSettings& settings);

// `given` with every word that is still negative filled from the environment.
ThreadSettings read_thread_settings(ThreadSettings given, EnvironmentReader read);

} // namespace qrv
