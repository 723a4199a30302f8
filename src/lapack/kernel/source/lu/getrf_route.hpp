// Which route SGETRF and CGETRF take.
#pragma once

#include <algorithm>

#include "blas/thread/common/work_threads.hpp"

namespace qrv::lapack {

struct GetrfRoute {
    enum class Kind { serial, ib, dynamic, unblocked };
    Kind kind = Kind::serial;
    int threads = 1;
    int blockSize = 0;
    bool alone = false; // the products of the serial route are the calling thread's too
};

// The static route alone: on one thread there is nothing to share.
constexpr GetrfRoute getrf_ib_route(int threads) {
    using Kind = GetrfRoute::Kind;
    return {threads > 1 ? Kind::ib : Kind::serial, threads};
}

// Where threads go by work, the multiply-adds that each must get: much more than in a product, for the panels that it
// waits for and the lock. With AVX-512 two threads took 0.98 of the time of one at n = 192, 0.86 at 256, 0.77 at 320
// and 0.70 at 384, complex ones 0.88 at 192 and 0.70 at 256. Below, teams in the products alone gained a twentieth at
// 256, and cost a time slice each where a core is busy.
constexpr double getrf_share(VectorForm form) {
    return form == VectorForm::avx512 ? 7200000 : form == VectorForm::avx2 ? 5760000 : 2400000;
}

// Where threads go by work, block columns are twice as wide as soon as each thread has seven of the narrow ones: fewer
// passes over the matrix, and fewer packed copies. On two threads n = 900, 1300 and 2048 took 0.97, 0.90 and 0.95 of
// the time with AVX-512, 0.98, 0.96 and 0.95 with AVX2; n = 768 took 1.07 and 1.01.
template <class Machine>
constexpr int getrf_block(int n, int threads, int tuned, const Machine& machine) {
    return goes_by_work(machine) && n / 7 / tuned >= threads ? 2 * tuned : tuned;
}

// Multiply-adds of the elements.
constexpr double getrf_work(double m, double n) {
    const double k = std::min(m, n);
    return k * (m * n - k * (m + n) / 2 + k * k / 3);
}

// `machine` tells class, vectors and thread budget, products of real numbers in one of elements and, for m x n, the
// tuned crossover and block size, asked in the order that keeps a small call short: a crossover for -1 threads is that
// of the serial route.
//
//   m x n       threads   crossovers, serial and threaded   block   route
//   500 x 64    4         64, 64                            64      serial
//   500 x 100   4         64, 100                           64      ib
//   500 x 101   4         64, 100                           64      dynamic
//   64 x 500    2         64, 64                            64      unblocked
//   350 x 350   2, by work with AVX-512                             serial
//   351 x 351   2, by work with AVX-512                             dynamic
template <class Machine>
GetrfRoute getrf_route(int m, int n, const Machine& machine) {
    using Kind = GetrfRoute::Kind;
    if (machine.crossover(-1) >= n)
        return {};
    const int threads =
        goes_by_work(machine)
            ? threads_for_shares(machine.products() * getrf_work(m, n) / getrf_share(machine.form()), machine)
            : machine.budget();
    if (threads <= 1)
        return {.alone = goes_by_work(machine)};
    if (machine.crossover(threads) >= n)
        return {Kind::ib, threads};
    const int nb = getrf_block(std::min(m, n), threads, machine.block_size(threads), machine);
    if (nb > 1 && nb < std::min(m, n))
        return {Kind::dynamic, threads, nb};
    return {Kind::unblocked};
}

} // namespace qrv::lapack
