// SSTEIN: eigenvectors of a symmetric tridiagonal matrix for given eigenvalues, by inverse iteration.
//
// A solve with T - w blows up the part of a random vector that is near the eigenvector. Values that are too close are
// moved apart, and vectors of close values of a block are made orthogonal to each other after each solve.
// Source: J. Wilkinson, The Algebraic Eigenvalue Problem, Oxford (1965), 5.53 to 5.58.
#include <algorithm>
#include <cmath>

#include "blas/calls.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/symmetric.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

constexpr float eps = machine::precision;
constexpr int mostSolves = 5, moreSolves = 2; // more ones after the vector has grown
constexpr float closeness = 1e-3F;            // of values, beside the norm, whose vectors are made orthogonal
constexpr float growth = 0.1F;                // that shows the eigenvector, times the root of the size

// One block of T, and the work of its solves.
struct Block {
    int first, n;
    const float *d, *e;
    ShiftedLuOut lu;
    float* x;
    float norm;
};

// Scales x so that a solve that hits the eigenvector makes it about n, whatever the norm.
void scale_right_side(const Block& block) {
    const float last = std::fabs(block.lu.a[block.n - 1]);
    const float size = std::fabs(block.x[kernel::iamax(block.n, Vector{block.x}) - 1]);
    kernel::scal(block.n, static_cast<float>(block.n) * std::max(eps * block.norm, last) / size, Vector{block.x});
}

void make_orthogonal(const Block& block, Matrix<const float> z, int from, int to) {
    for (int k = from; k < to; ++k) {
        const Vector<const float> other = z.column(block.first, k);
        const float product = kernel::dotu(block.n, Vector<const float>{block.x}, other);
        kernel::axpy(block.n, -product, other, Vector{block.x});
    }
}

// Leaves in x the vector for w, orthogonal to columns [groupStart, j) of z; whether it has converged.
bool inverse_iteration(const Block& block, float w, Matrix<const float> z, int groupStart, int j) {
    const auto [a, b, c, d, in] = block.lu;
    const int n = block.n;
    kernel::copy(n, {block.d}, Vector{a});
    kernel::copy(n - 1, {block.e}, Vector{b});
    kernel::copy(n - 1, {block.e}, Vector{c});
    lagtf(n, w, 0, block.lu);
    const float enough = std::sqrt(growth / static_cast<float>(n));
    float tolerance = 0;
    int good = 0;
    for (int solve = 0; solve < mostSolves && good <= moreSolves; ++solve) {
        scale_right_side(block);
        lagts(n, Solve::perturbed, {a, b, c, d, in}, block.x, tolerance);
        make_orthogonal(block, z, groupStart, j);
        const float size = std::fabs(block.x[kernel::iamax(n, Vector{block.x}) - 1]);
        good += size >= enough;
    }
    return good > moreSolves;
}

// Length 1, largest element positive.
void normalize(int n, float* x) {
    const float largest = x[kernel::iamax(n, Vector{x}) - 1];
    kernel::scal(n, std::copysign(1 / kernel::nrm2(n, Vector{x}), largest), Vector{x});
}

} // namespace

int stein(int n, const float* d, const float* e, int m, const float* w, const int* iblock, const int* isplit,
          Matrix<float> z, float* work, int* iwork, int* ifail) {
    for (int j = 0; j < m; ++j)
        ifail[j] = 0;
    int seed[] = {1, 1, 1, 1}, failed = 0;
    const ShiftedLuOut lu{work + n, work + 2 * std::ptrdiff_t{n}, work + 3 * std::ptrdiff_t{n},
                          work + 4 * std::ptrdiff_t{n}, iwork};
    for (int j = 0; j < m;) {
        const int number = iblock[j], first = number > 1 ? isplit[number - 2] : 0, size = isplit[number - 1] - first;
        Block block{first, size, d + first, e + first, lu, work, 0};
        block.norm = lanst(Norm::one, size, block.d, block.e);
        int groupStart = j;
        float previous = 0; // value, as it was moved
        for (const int firstOfBlock = j; j < m && iblock[j] == number; ++j) {
            float value = w[j];
            if (size == 1) {
                block.x[0] = 1;
            } else {
                if (j > firstOfBlock) {
                    value = std::max(value, previous + 10 * std::fabs(eps * value));
                    if (std::fabs(value - previous) > closeness * block.norm)
                        groupStart = j;
                }
                larnv(Distribution::uniform11, seed, size, block.x);
                if (!inverse_iteration(block, value, z, groupStart, j))
                    ifail[failed++] = j + 1;
                normalize(size, block.x);
            }
            laset(Part::whole, n, 1, 0.0F, 0.0F, z.block(0, j));
            kernel::copy(size, {block.x}, z.column(first, j));
            previous = value;
        }
    }
    return failed;
}

} // namespace qrv::lapack
