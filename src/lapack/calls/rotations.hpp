// Plane rotations by value, for the rows of their routines and for other families.
#pragma once

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

} // namespace qrv::lapack
