// QR factorization of an m x n matrix, A = Q R: the routes of SGEQRF and CGEQRF and what they share.
//
// The k = min(m, n) reflectors lie below the diagonal, R on it and above, with a diagonal that is not negative.
//
//   unblocked   column by column; the leaf              geqr2.cpp
//   panel       recursive, with T                       laqrf.cpp
//   serial      panel after panel, right-looking        geqrf_serial.cpp
//   team        dataflow over block columns             geqrf_omp.cpp, geqrf_schedule.hpp
//   tall        by blocks of rows, on any team          geqrf_tall.cpp
//
// The progress routine is called after each panel. If it asks to stop, the routes return at once, with A as it is then.
#pragma once

#include <algorithm>
#include <cstdint>

#include "lapack/calls/qr.hpp"
#include "lapack/routine_name.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {

template <class T>
constexpr RoutineName<T> geqrfName("GEQRF");

// What a team would do: it cuts the columns into blocks of nb, and a job of one thread takes `group` of them at most.
// The work of a team is T of each panel, and for each thread what the reflectors of a panel take for a job.
struct GeqrfPlan {
    int m, n;
    int threads; // of the budget
    int nb, group, least, crossover;

    int k() const { return std::min(m, n); }
    int blocks() const { return (n - 1) / nb + 1; }
    int panels() const { return (k() - 1) / nb + 1; }
    std::int64_t factors() const { return std::int64_t{k()} * nb; }
    std::int64_t scratch() const { return std::int64_t{group} * nb * nb; }
    std::int64_t work() const { return std::max(std::int64_t{n}, factors() + threads * scratch()); }

    bool wants_team() const { return threads > 1 && crossover < k(); }
    bool blocked() const { return nb >= least && k() >= nb; }
};

template <class T>
GeqrfPlan geqrf_plan(int m, int n);

// A panel, with its T in the upper triangle of t; what is below the diagonal there is overwritten.
template <class T>
void laqrf(int m, int n, Matrix<T> a, T* tau, Matrix<T> t);

// One panel after the other, in the calling thread but for what products of matrices share out. It tells work[0].
template <class T>
std::int64_t geqrf_serial_work(int m, int n);
template <class T>
void geqrf_serial(int m, int n, Matrix<T> a, T* tau, T* work, int lwork);

// Result: false if there is no memory for it, and nothing is done.
template <class T>
bool geqrf_team(const GeqrfPlan& plan, Matrix<T> a, T* tau, T* area);

// For matrices that are high and narrow, of their first columns. Result: how many are done; 0 without memory, -1 on a
// stop.
bool geqrf_is_tall(int m, int n);
int geqrf_tall_strip(); // columns after which the progress routine is told
template <class T>
int geqrf_tall(int threads, int m, int n, Matrix<T> a, T* tau);

} // namespace qrv::lapack
