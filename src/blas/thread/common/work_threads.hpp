// Threads by work: how many a call gets on the processors of the newest class, whose kernels are so fast
// that sizes alone tell little.
#pragma once

#include <algorithm>

#include "blas/complex.hpp"
#include "service/vector_form.hpp"

namespace qrv {

inline constexpr int newestClass = 66; // CpuMa

// Whether this class has threads by work; the others have the sizes that their routines name.
template <class Machine>
constexpr bool goes_by_work(const Machine& machine) {
    return machine.cpu_ma() == newestClass;
}

// A thread of the budget for each share of the work, if that is two or more; 1 for a serial call. The budget is asked
// for last.
//
//   shares   1.9   2.0   2.9   7   7
//   budget   8     8     8     4   1
//   threads  1     2     2     4   1
template <class Machine>
constexpr int threads_for_shares(double shares, const Machine& machine) {
    return shares < 2 ? 1 : std::max(1, static_cast<int>(std::min<double>(shares, machine.budget())));
}

// Multiply-adds of real numbers that each thread must get: a team must gain where its cores are far from each other,
// too, and a region costs 3 us, not 1. With AVX-512 two threads took 0.66 to 0.78 of the time of one for squares of 72
// to 80 where they were near, but 1.05 to 1.3 where they were not, and from 84 on at most 0.9. On cores that are busy a
// team costs a time slice, however small the call.
constexpr double least_share(VectorForm form) {
    switch (form) {
    case VectorForm::avx512:
        return 280000;
    case VectorForm::avx2:
        return 120000;
    case VectorForm::sse:
        break;
    }
    return 50000;
}

// Threads for `work`.
//
//   form      work        budget   threads
//   avx512    80^3        4        1
//   avx512    84^3        4        2
//   avx512    128^3       16       7
//   sse       48^3        4        2
template <class Machine>
constexpr int threads_by_work(double work, const Machine& machine) {
    return threads_for_shares(work / least_share(machine.form()), machine);
}

// The work of m*n*k products of elements.
template <class T>
constexpr double work_of(int m, int n, int k) {
    constexpr double products = isComplex<T> ? 4 : 1;
    return products * m * n * k;
}

} // namespace qrv
