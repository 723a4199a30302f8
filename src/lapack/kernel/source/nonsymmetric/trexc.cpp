// STREXC: moves a diagonal block of a Schur form to another place, past one neighbour after the other.
//
// A block of order 2 may fall apart on the way, as its eigenvalues become real. Then two blocks of order 1 go on, one
// behind the other.
#include "lapack/calls/nonsymmetric.hpp"

namespace qrv::lapack {
namespace {

struct Mover {
    bool wantQ;
    int n;
    Matrix<float> t, q;

    bool joined(int k) const { return k >= 0 && k + 1 < n && t(k + 1, k) != 0; } // rows k and k + 1 are one block
    int order_from(int k) const { return joined(k) ? 2 : 1; }                    // of the block that begins there
    int order_before(int k) const { return joined(k - 2) ? 2 : 1; }              // of the one that ends there
    bool exchange(int k, int n1, int n2) const { return laexc(wantQ, n, t, q, k, n1, n2); }
};

// What is moved: rows [at, at + order). `split`: two blocks of order 1.
struct Moved {
    int at, order;
    bool split;
};

// Past the next block, from above. False if an exchange is rejected.
bool step_down(const Mover& m, Moved& b) {
    if (!b.split) {
        const int next = m.order_from(b.at + b.order);
        if (!m.exchange(b.at, b.order, next))
            return false;
        b.at += next;
        b.split = b.order == 2 && !m.joined(b.at);
        return true;
    }
    const int next = m.order_from(b.at + 2);
    if (!m.exchange(b.at + 1, 1, next))
        return false;
    if (next == 1) {
        if (!m.exchange(b.at, 1, 1))
            return false;
        b.at += 1;
        return true;
    }
    const bool whole = m.joined(b.at + 1); // it may have fallen apart in turn
    if (!(whole ? m.exchange(b.at, 1, 2) : m.exchange(b.at, 1, 1) && m.exchange(b.at + 1, 1, 1)))
        return false;
    b.at += 2;
    return true;
}

// Past the block before, from below.
bool step_up(const Mover& m, Moved& b) {
    const int before = m.order_before(b.at);
    if (!b.split) {
        if (!m.exchange(b.at - before, before, b.order))
            return false;
        b.at -= before;
        b.split = b.order == 2 && !m.joined(b.at);
        return true;
    }
    if (!m.exchange(b.at - before, before, 1))
        return false;
    if (before == 1) {
        if (!m.exchange(b.at, 1, 1))
            return false;
        b.at -= 1;
        return true;
    }
    const bool whole = m.joined(b.at - 1);
    if (!(whole ? m.exchange(b.at - 1, 2, 1) : m.exchange(b.at, 1, 1) && m.exchange(b.at - 1, 1, 1)))
        return false;
    b.at -= 2;
    return true;
}

} // namespace

Place trexc(bool wantQ, int n, Matrix<float> t, Matrix<float> q, int from, int to) {
    if (n <= 1)
        return {from, to, false};
    const Mover m{wantQ, n, t, q};
    if (m.joined(from - 1))
        --from;
    if (m.joined(to - 1))
        --to;
    Moved b{from, m.order_from(from), false};
    if (from < to) { // the blocks' last rows are to meet
        const int order = m.order_from(to);
        if (b.order == 2 && order == 1)
            --to;
        if (b.order == 1 && order == 2)
            ++to;
    }
    while (from < to ? b.at < to : b.at > to)
        if (!(from < to ? step_down(m, b) : step_up(m, b)))
            return {from, b.at, true};
    return {from, b.at, false};
}

} // namespace qrv::lapack
