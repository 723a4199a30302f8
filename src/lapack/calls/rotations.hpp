// Plane rotations by value, for the rows of their routines and for other families.
#pragma once

#include <cstdint>

#include "blas/options.hpp"

namespace qrv::lapack {

// [c s; -s c] turns (f, g) into (r, 0).
struct Rotation {
    float c, s, r;
    void store(float* toC, float* toS, float* toR) const {
        *toC = c;
        *toS = s;
        *toR = r;
    }
};

// With c > 0 if |f| > |g|, and r > 0 otherwise, unless one of them is 0.
Rotation lartg(float f, float g);

// Of the triangle [f g; 0 h]: its singular values, and with signs and the rotations that make it diagonal,
//
//   [left.c left.s; -left.s left.c] [f g; 0 h] [right.c -right.s; right.s right.c] = diag(largest, smallest)
struct SingularPair {
    float smallest, largest;
    void store(float* toSmallest, float* toLargest) const {
        *toSmallest = smallest;
        *toLargest = largest;
    }
};
SingularPair las2(float f, float g, float h);

struct SmallSvd {
    struct Turn {
        float c, s;
    };
    float smallest, largest;
    Turn left, right;
    void store(float* toSmallest, float* toLargest, float* snr, float* csr, float* snl, float* csl) const {
        *toSmallest = smallest, *toLargest = largest;
        *snr = right.s, *csr = right.c;
        *snl = left.s, *csl = left.c;
    }
};
SmallSvd lasv2(float f, float g, float h);

// `sequences` sequences of rotations, one after the other, on an m x n matrix, in the planes of neighbouring rows from
// the left or columns from the right. Column 2j of cs has the cosines of sequence j, column 2j + 1 its sines. work:
// lasr3_work(sequences, across) floats, `across` being n from the left and m from the right. The second one runs on the
// calling thread, but for the products in it.
constexpr std::int64_t lasr3_work(int sequences, int across) {
    return std::int64_t{4} * sequences * sequences + std::int64_t{sequences} * across;
}
void lasr3(Side side, Direct direct, int m, int n, int sequences, Matrix<const float> cs, Matrix<float> a, float* work);
void lasr3_serial(Side side, Direct direct, int m, int n, int sequences, Matrix<const float> cs, Matrix<float> a,
                  float* work);

} // namespace qrv::lapack
