// SLASDT: the tree of subproblems of divide and conquer.
#include "lapack/calls/svd.hpp"

namespace qrv::lapack {

DivisionTree lasdt(int n, int* center, int* left, int* right, int leaf) {
    center[0] = n / 2 + 1;
    left[0] = n / 2;
    right[0] = n - left[0] - 1;
    const int levels = division_levels(n, leaf), nodes = (1 << levels) - 1;
    for (int parent = 0, child = 1; child < nodes; ++parent, child += 2) {
        left[child] = left[parent] / 2;
        right[child] = left[parent] - left[child] - 1;
        center[child] = center[parent] - right[child] - 1;
        left[child + 1] = right[parent] / 2;
        right[child + 1] = right[parent] - left[child + 1] - 1;
        center[child + 1] = center[parent] + left[child + 1] + 1;
    }
    return {levels, nodes};
}

} // namespace qrv::lapack
