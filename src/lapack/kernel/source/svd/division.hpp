// The tree of divide and conquer walked: its leaves, and then the merges, level by level up to the root.
#pragma once

#include <numeric>

#include "lapack/calls/svd.hpp"

namespace qrv::lapack {

// A problem that was divided, or of which both parts were solved.
struct DivisionNode {
    int level, number;      // from the root, 0; in all levels, from 1, where each level is counted from its end
    int first, row, nl, nr; // its first row; the row taken out, and so many before and behind it
    bool longer;            // it has a column more than rows
    int* idxq;              // orders of its parts, which `merge` makes that of the whole
};

// Only the very last part ends where the matrix does; all others have a column more. `leaf(first, size, longer)` solves
// a part of at most `most` rows, `merge(node)` puts two together; they tell a failure. ints: 4*n.
template <class Leaf, class Merge>
int divide_and_conquer(int n, bool longer, int most, int* ints, const Leaf& leaf, const Merge& merge) {
    int *const center = ints, *const left = center + n, *const right = left + n, *const idxq = right + n;
    const DivisionTree tree = lasdt(n, center, left, right, most);
    for (int node = tree.nodes / 2; node < tree.nodes; ++node) {
        const int row = center[node] - 1, nl = left[node], nr = right[node];
        if (const int info = leaf(row - nl, nl, true))
            return info;
        if (const int info = leaf(row + 1, nr, node < tree.nodes - 1 || longer))
            return info;
        std::iota(idxq + row - nl, idxq + row, 1);
        std::iota(idxq + row + 1, idxq + row + 1 + nr, 1);
    }
    for (int level = tree.levels - 1; level >= 0; --level) {
        const int firstNode = (1 << level) - 1, lastNode = 2 * firstNode;
        for (int node = firstNode; node <= lastNode; ++node) {
            const int row = center[node] - 1, nl = left[node], first = row - nl;
            if (const int info = merge(DivisionNode{level, firstNode + lastNode - node + 1, first, row, nl, right[node],
                                                    node < lastNode || longer, idxq + first}))
                return info;
        }
    }
    return 0;
}

} // namespace qrv::lapack
