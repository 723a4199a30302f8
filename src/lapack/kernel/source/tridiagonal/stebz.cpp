// SSTEBZ: chosen eigenvalues of a symmetric tridiagonal matrix by bisection.
//
// The matrix is cut where elements beside its diagonal are negligible; the rest is larrd.cpp.
// Source: W. Kahan, Accurate eigenvalues of a symmetric tri-diagonal matrix, Stanford CS41 (1966).
#include <algorithm>
#include <cmath>

#include "lapack/calls/symmetric.hpp"
#include "lapack/kernel/source/tridiagonal/bisection.hpp"
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

void sort_ascending(Found& found) {
    for (int i = 0; i < found.count - 1; ++i) {
        int least = i;
        for (int j = i + 1; j < found.count; ++j)
            if (found.w[j] < found.w[least])
                least = j;
        std::swap(found.w[i], found.w[least]);
        std::swap(found.iblock[i], found.iblock[least]);
    }
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
    Found found{w, iblock};
    const SearchResult search =
        larrd({whole, d, e, isplit, result.blocks, abstol, 2 * ulp}, wanted, {work + n, iwork}, found);
    if (!byBlock && result.blocks > 1)
        sort_ascending(found);
    result.found = found.count;
    result.info = search.lost ? 4 : (found.allConverged ? 0 : 1) + (search.tooFew ? 2 : 0);
    return result;
}

} // namespace qrv::lapack
