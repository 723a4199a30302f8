// The first lines of a Q in blocks: columns from QR, rows from LQ. Each is the other on the adjoint, so one walk does.
//
// The blocks of reflectors are applied from the last one to the first. When a block comes, the lines behind it are
// those of the Q of the reflectors behind it, with zeros in front: it is applied to them, its own lines are generated,
// and zeros put in front of these. Its own lines are those of I - V T V^H, of which V is the only large part:
//
//   columns   [ I - V1 W ]   W = T V1^H, upper triangular like T     rows   the adjoint
//             [   - V2 W ]
#pragma once

#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/qr.hpp"
#include "lapack/kernel/source/reflectors/stored_reflectors.hpp"
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
    // The block of reflectors at i: to the lines behind it, and its own lines. work: count * max(lines - i, 2 * count).
    void take_block(int i, int count, T* work) const {
        const Matrix<T> v = at(i, i), t{work, count};
        T* const rest = work + count * count;
        larft<T>(Direct::forward, store, length - i, count, v, tau + i, t);
        apply_block(i, {Direct::forward, store, count, v, t}, lines - i - count, rest);
        generate_lines(i, count, t, rest);
    }

private:
    // The own lines of a block by halves, which have their T on the diagonal of its T, down to `fewest`: W of a wide
    // block has more rounding errors than the reflectors one by one would leave.
    void generate_lines(int i, int count, Matrix<T> t, T* work) const {
        constexpr int fewest = 8;
        if (count <= fewest)
            return generate_block(length - i - count, count, at(i, i), t, {work, count});
        const int half = count / 2, behind = count - half;
        generate_lines(i + half, behind, t.block(half, half), work);
        clear(i, i + half, i + half, i + count);
        apply_block(i, {Direct::forward, store, half, at(i, i), t}, behind, work);
        generate_lines(i, half, t, work);
    }
    // To so many lines behind it.
    void apply_block(int i, const BlockReflector<T>& h, int behind, T* work) const {
        if (behind == 0)
            return;
        const Matrix<T> c = at(i, i + h.k);
        if (store == StoreV::columns)
            larfb<T>(Side::left, Op::none, h, length - i, behind, c, {work, h.k}, BlockWork::upright);
        else
            larfb<T>(Side::right, adjoint<T>, h, behind, length - i, c, {work, behind}, BlockWork::upright);
    }
    // Lines in the place of their vectors, with `below` elements behind the square; W in the place of T. square: of its
    // size.
    void generate_block(int below, int count, Matrix<T> lines1, Matrix<T> w, Matrix<T> square) const {
        const StoredReflectors<T> v{Direct::forward, store, lines1};
        const T zero = scalar<T>(0), one = scalar<T>(1), minusOne = scalar<T>(-1);
        for (int j = 0; j < count; ++j)
            std::fill_n(w.column(j) + j + 1, count - j - 1, zero);
        blas::trmm(Side::right, v.triangle(), v.adjoint_op(), Diag::unit, count, count, one, v.v, w);
        lacpy<T>(Part::whole, count, count, w, square);
        blas::trmm(Side::left, v.triangle(), v.op(), Diag::unit, count, count, minusOne, v.v, square);
        for (int j = 0; j < count; ++j) {
            square(j, j) += one;
            for (int i = 0; i < count; ++i)
                v.by_columns() ? lines1(i, j) = square(i, j) : lines1(j, i) = conj(square(i, j));
        }
        if (below == 0)
            return;
        if (v.by_columns())
            blas::trmm(Side::right, Uplo::upper, Op::none, Diag::nonUnit, below, count, minusOne, w,
                       lines1.block(count, 0));
        else
            blas::trmm(Side::left, Uplo::upper, adjoint<T>, Diag::nonUnit, count, below, minusOne, w,
                       lines1.block(0, count));
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
        nb = std::min(nb, q.lines / 2); // T and W take two squares
        tail = std::max(0, tuning::crossover(name, q.length, q.lines, q.k));
        if (tail < q.k && lwork < wanted) {
            nb = std::min(nb, lwork / q.lines);
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
        q.take_block(i, count, work);
        q.clear(0, i, i, i + count);
    }
    work[0] = work_size<T>(wanted);
}

} // namespace qrv::lapack
