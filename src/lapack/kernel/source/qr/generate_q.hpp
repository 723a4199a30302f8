// The first lines of a Q in blocks: columns from QR, rows from LQ. Each is the other on the adjoint, so one walk does.
//
// The blocks of reflectors are applied from the last one to the first. When a block comes, the lines behind it are
// those of the Q of the reflectors behind it, with zeros in front: it is applied to them, its own lines are generated,
// and zeros put in front of these.
#pragma once

#include <algorithm>

#include "lapack/calls/qr.hpp"
#include "lapack/elements.hpp"
#include "lapack/routine_name.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {

// `lines` lines of the given length, from k reflectors.
template <class T>
struct GeneratedQ {
    StoreV store;
    int length, lines, k;
    Matrix<T> a;
    const T* tau;

    // From element `place` of line `line` on.
    Matrix<T> at(int place, int line) const {
        return store == StoreV::columns ? a.block(place, line) : a.block(line, place);
    }
    // Elements [first, last) of lines [firstLine, lastLine) become 0.
    void clear(int first, int last, int firstLine, int lastLine) const {
        const Matrix<T> block = at(first, firstLine);
        const bool columns = store == StoreV::columns;
        const int places = last - first, count = lastLine - firstLine;
        for (int j = 0; j < (columns ? count : places); ++j)
            for (int i = 0; i < (columns ? places : count); ++i)
                block(i, j) = scalar<T>(0);
    }
    // Lines [first, lastLine) of the Q of reflectors [first, last).
    void generate(int first, int last, int lastLine, T* work) const {
        const Matrix<T> from = at(first, first);
        if (store == StoreV::columns)
            org2r(length - first, lastLine - first, last - first, from, tau + first, work);
        else
            orgl2(lastLine - first, length - first, last - first, from, tau + first, work);
    }
    // The reflectors from i on to the lines behind them.
    void apply(int i, int count, T* work) const {
        const int behind = lines - i - count;
        const Matrix<T> v = at(i, i), t{work, count}, c = at(i, i + count);
        const BlockReflector<T> h{Direct::forward, store, count, v, t};
        T* const rest = work + count * count;
        larft<T>(Direct::forward, store, length - i, count, v, tau + i, t);
        if (store == StoreV::columns)
            larfb<T>(Side::left, Op::none, h, length - i, behind, c, {rest, count}, BlockWork::upright);
        else
            larfb<T>(Side::right, adjoint<T>, h, behind, length - i, c, {rest, behind}, BlockWork::upright);
    }
};

// work: `lines` elements at least.
template <class T>
void generate_q(const RoutineName<T>& name, int nb, const GeneratedQ<T>& q, T* work, int lwork) {
    const std::int64_t wanted = std::int64_t{std::max(1, q.lines)} * nb;
    if (q.lines <= 0) {
        work[0] = scalar<T>(1);
        return;
    }
    int least = 2, tail = 0; // reflectors that are applied one by one
    if (nb > 1 && nb < q.k) {
        tail = std::max(0, tuning::crossover(name, q.length, q.lines, q.k));
        if (tail < q.k && lwork < wanted) {
            nb = lwork / q.lines;
            least = std::max(least, tuning::minimum_block_size(name));
        }
    }
    const bool blocked = nb >= least && nb < q.k && tail < q.k;
    const int last = blocked ? (q.k - tail - 1) / nb * nb : -1; // the last block begins here
    const int inBlocks = blocked ? std::min(q.k, last + nb) : 0;
    q.clear(0, inBlocks, inBlocks, q.lines);
    if (inBlocks < q.lines)
        q.generate(inBlocks, q.k, q.lines, work);
    for (int i = last; i >= 0; i -= nb) {
        const int count = std::min(nb, q.k - i);
        if (i + count < q.lines)
            q.apply(i, count, work);
        q.generate(i, i + count, i + count, work);
        q.clear(0, i, i, i + count);
    }
    work[0] = work_size<T>(wanted);
}

} // namespace qrv::lapack
