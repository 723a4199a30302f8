// STREXC: moves a diagonal block of a Schur form to another place, past one neighbour after the other.
//
// A block of order 2 may fall apart on the way, as its eigenvalues become real. Its two rows go on together.
#include "lapack/calls/nonsymmetric.hpp"

namespace qrv::lapack {

Place trexc(bool wantQ, int n, Matrix<float> t, Matrix<float> q, int from, int to) {
    if (n <= 1)
        return {from, to, false};
    const auto joined = [&](int k) { return k >= 0 && k + 1 < n && t(k + 1, k) != 0; }; // rows k and k + 1 are a block
    if (joined(from - 1))
        --from;
    const int order = joined(from) ? 2 : 1;
    if (from < to) // the blocks' last rows are to meet; of a second row the same comes out
        to += (joined(to) ? 2 : 1) - order;
    int at = from;
    while (from < to && at < to) {
        const int next = joined(at + order) ? 2 : 1;
        if (!laexc(wantQ, n, t, q, at, order, next))
            return {from, at, true};
        at += next;
    }
    while (from > to && at > to) {
        const int before = joined(at - 2) ? 2 : 1;
        if (!laexc(wantQ, n, t, q, at - before, before, order))
            return {from, at, true};
        at -= before;
    }
    return {from, at, false};
}

} // namespace qrv::lapack
