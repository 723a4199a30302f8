// SSTEBZ: chosen eigenvalues of a symmetric tridiagonal matrix by bisection.
//
// The matrix is cut where elements beside its diagonal are negligible; the rest is larrd.cpp.
// Source: W. Kahan, Accurate eigenvalues of a symmetric tri-diagonal matrix, Stanford CS41 (1966).
#include <algorithm>
#include <cmath>

#include "lapack/calls/bisection.hpp"
#include "lapack/calls/symmetric.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

constexpr float ulp = machine::precision;

// Squares the elements beside the diagonal, with 0 where the matrix comes apart, and stores the last row of each block,
// from 1. Result: the number of blocks.
int split(int n, const float* d, const float* e, float* e2, int* ends) {
    int blocks = 0;
    for (int i = 0; i < n - 1; ++i) {
        e2[i] = e[i] * e[i];
        if (std::fabs(d[i + 1] * d[i]) * (ulp * ulp) + machine::safeMinimum > e2[i]) {
            e2[i] = 0;
            ends[blocks++] = i + 1;
        }
    }
    ends[blocks++] = n;
    return blocks;
}

float least_pivot(int n, const float* e2) {
    float largest = 1;
    for (int i = 0; i < n - 1; ++i)
        largest = std::max(largest, e2[i]);
    return machine::safeMinimum * largest;
}

} // namespace

StebzResult stebz(const Wanted& wanted, bool byBlock, int n, float abstol, const float* d, const float* e, float* w,
                  int* iblock, int* isplit, float* work, int* iwork) {
    if (n == 0)
        return {};
    float* const e2 = work;
    StebzResult result;
    result.blocks = split(n, d, e, e2, isplit);
    const Sturm whole{n, d, e2, least_pivot(n, e2)};
    const SearchResult search =
        larrd({whole, d, e, isplit, result.blocks, abstol, 2 * ulp}, wanted, byBlock, {work + n, iwork}, {w, iblock});
    result.found = search.count;
    result.info = search.info;
    return result;
}

} // namespace qrv::lapack
