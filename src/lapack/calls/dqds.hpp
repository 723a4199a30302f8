// The state of the dqds iteration for the eigenvalues of a qd array: SLASQ2 to SLASQ6.
//
// A symmetric positive definite tridiagonal matrix as the product of its Cholesky factors has the qd array q(k), e(k),
// the squares of the elements of the bidiagonal factor. A dqds transform with shift tau makes that of the matrix minus
// tau, if this is still positive definite, without a subtraction but that of tau: all values keep their relative
// accuracy. Values are split off at the end as the last e become negligible.
// Source: B. Parlett, O. Marques, An implementation of the dqds algorithm (positive case), Linear Algebra Appl. 309
// (2000).
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "service/machine_constants.hpp"

namespace qrv::lapack {

struct Dqds {
    static constexpr float tolerance = 100 * machine::precision, tolerance2 = tolerance * tolerance;

    float* z;                       // four floats for each k: q of array 0, q of array 1, e of array 0, e of array 1
    int first, last;                // the block that is worked on
    int now = 0;                    // the array that holds it; a transform writes the other one
    bool flipped = false;           // just turned round: the other array does not fit
    float shift = 0, shiftTail = 0; // the sum of the shifts, and what it lost by rounding
    float qmax = 0;

    // Of the last transform: its shift, the least d, the least without the last one and without the last two, and the
    // last three themselves. -d is to be the first shift where dmin is not positive.
    float tau = 0, dmin = 0, dmin1 = 0, dmin2 = 0, dn = 0, dn1 = 0, dn2 = 0;

    // How tau was chosen, by the numbers of the published table; 11 or 12 less for each time it was too large.
    int choice = 0;
    float damping = 0;

    // Of all transforms so far: how many there were, those whose shift was too large, and divisions.
    int iterations = 0, failures = 0;
    std::int64_t divisions = 0;
    void count_one() {
        ++iterations;
        divisions += last - first + 2;
    }

    float& q(int k) const { return z[4 * std::ptrdiff_t{k} + now]; }
    float& e(int k) const { return z[4 * std::ptrdiff_t{k} + 2 + now]; }
    float& other_q(int k) const { return z[4 * std::ptrdiff_t{k} + 1 - now]; }
    float& other_e(int k) const { return z[4 * std::ptrdiff_t{k} + 3 - now]; }

    // From the last to the first, in both arrays.
    void flip() const;
    // Chooses tau, after `deflated` values were split off since the last transform.
    void choose_shift(int deflated);
    // The transforms, into the other array: with shift tau; without shift and safe from division by 0.
    void transform();
    void transform_unshifted();

private:
    bool add_ratios(float& sum, float product, int k, float enough) const;
    float shift_of_last();
    float shift_after_one();
    float shift_after_two();
};

// Splits off what has converged at the end; then, if anything is left, one transform with a shift that is small enough,
// after which `now` is the array that it wrote (SLASQ3).
void lasq3(Dqds& x);

// Rows i0 to n0, from 1, of which array pp is the present one; 2: array 0, just turned round.
inline Dqds dqds_of(float* z, int i0, int n0, int pp) {
    return {.z = z, .first = i0 - 1, .last = n0 - 1, .now = pp == 1, .flipped = pp == 2};
}
// Transforms and the choice of a shift take three rows at least.
constexpr int leastRows = 3;

// Where a caller has what the last transform left.
template <class Float>
struct DqdsLeast {
    Float *dmin, *dmin1, *dmin2, *dn, *dn1, *dn2;

    void load(Dqds& x) const {
        x.dmin = *dmin, x.dmin1 = *dmin1, x.dmin2 = *dmin2;
        x.dn = *dn, x.dn1 = *dn1, x.dn2 = *dn2;
    }
    void store(const Dqds& x) const {
        *dmin = x.dmin, *dmin1 = x.dmin1, *dmin2 = x.dmin2;
        *dn = x.dn, *dn1 = x.dn1, *dn2 = x.dn2;
    }
    // One transform of enough rows, which changes these; what it does not get to stays as it was.
    void change(Dqds x, void (Dqds::*transform)()) const {
        if (x.last - x.first + 1 < leastRows)
            return;
        load(x);
        (x.*transform)();
        store(x);
    }
};

// NaN stays.
inline float least(float x, float y) {
    return y < x || y != y ? y : x;
}

} // namespace qrv::lapack
