// The LU factorization on a team with a static partition: right-looking over blocks, recursive in the panel, and with a
// look-ahead of one panel.
//
// In an update each thread owns a range of columns and applies the last panel to it, with serial kernels: products
// inside a region get one thread. Thread 0 owns the columns nearest to the panel. If the next panel is among them, it
// goes on to factor that alone while the others still update; nobody else touches those columns, and the last panel,
// which all read, is complete. The end of the region joins them. Otherwise the whole team factors the panel after it.
//
// Columns left of a panel get its interchanges at the very end.
#include <algorithm>
#include <omp.h>

#include "lapack/calls/lu.hpp"
#include "lapack/kernel/source/lu/getrf.hpp"
#include "lapack/kernel/source/lu/getrf_lookahead.hpp"
#include "lapack/lapack.hpp"
#include "service/reporter.hpp"

namespace qrv::lapack {
namespace {

// Narrower than those of the recursion on one thread: a panel's columns are what a team waits for.
constexpr int blockWidths[] = {8192, 4096, 2048, 1024, 128, 32, 8, 0};

struct NextPanel {
    bool factored = false;
    GetrfResult result;
};

// Applies the panel in columns [j - width, j) to all columns from j on. The next panel, of jb columns, may come out
// factored.
template <class T>
NextPanel update(int threads, int m, int n, Matrix<T> a, int* ipiv, int j, int width, int jb, int offset) {
    NextPanel next;
#pragma omp parallel num_threads(threads)
    {
        const int team = omp_get_num_threads(), thread = omp_get_thread_num();
        const LookaheadShare share = lookahead_share(n - j, team, width, jb);
        const Slice columns = share.slice(n - j, team, thread);
        if (columns.count > 0)
            getrf_apply_panel(m, a, ipiv, j - width, width, j + columns.first, columns.count);
        if (thread == 0 && share.factors)
            next = {true, getrf_recursive(m - j, jb, a.block(j, j), ipiv + j, {0, offset + j})};
    }
    return next;
}

// The interchanges of all later panels, in the columns of each panel but the last. Each thread takes a stripe of each.
template <class T>
void interchange_left(int threads, int length, int width, Matrix<T> a, const int* ipiv) {
#pragma omp parallel num_threads(threads)
    {
        const Slice stripe = equal_slice(width, omp_get_num_threads(), omp_get_thread_num());
        for (int end = width; end < length; end += width)
            laswp(stripe.count, a.block(0, end - width + stripe.first), end + 1, length, ipiv);
    }
}

template <class T>
GetrfResult factor(int threads, int m, int n, Matrix<T> a, int* ipiv, int offset) {
    const int width = getrf_block_width(blockWidths, n);
    if (width == 0)
        return getrf_leaf(m, n, a, ipiv, {0, offset});
    const int length = std::min(m, n);
    GetrfResult whole;
    int last = 0; // first column of the panel before the one at j
    for (int j = 0; j < length; last = j, j += width) {
        const int jb = std::min(width, length - j);
        NextPanel panel;
        if (j > 0)
            panel = update(threads, m, n, a, ipiv, j, width, jb, offset);
        if (!panel.factored)
            panel.result = factor(threads, m - j, jb, a.block(j, j), ipiv + j, offset + j);
        if (panel.result.stopped)
            return {whole.info, true};
        getrf_append(whole, panel.result, j, jb, ipiv);
    }
    if (m < n) // the last panel ends with the last row, and columns remain
        getrf_apply_panel(m, a, ipiv, last, length - last, length, n - length);
    if (width < length)
        interchange_left(threads, length, width, a, ipiv);
    return whole;
}

} // namespace

template <class T>
GetrfResult getrf_ib(int threads, int m, int n, Matrix<T> a, int* ipiv) {
    return factor(threads, m, n, a, ipiv, 0);
}

template GetrfResult getrf_ib(int, int, int, Matrix<float>, int*);
template GetrfResult getrf_ib(int, int, int, Matrix<SingleComplex>, int*);

} // namespace qrv::lapack
