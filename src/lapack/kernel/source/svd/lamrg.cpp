// SLAMRG: the permutation that merges two sorted runs.
#include "lapack/calls/svd.hpp"

namespace qrv::lapack {

void lamrg(int n1, int n2, const float* a, int step1, int step2, int* index) {
    int i1 = step1 > 0 ? 0 : n1 - 1, i2 = n1 + (step2 > 0 ? 0 : n2 - 1);
    for (int left1 = n1, left2 = n2; left1 > 0 || left2 > 0; ++index) {
        const bool first = left2 == 0 || (left1 > 0 && a[i1] <= a[i2]);
        int& next = first ? i1 : i2;
        *index = next + 1;
        next += first ? step1 : step2;
        --(first ? left1 : left2);
    }
}

} // namespace qrv::lapack
