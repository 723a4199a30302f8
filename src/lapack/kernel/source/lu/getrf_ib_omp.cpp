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

#include "blas/thread/common/team_omp.hpp"
#include "lapack/calls/lu.hpp"
#include "lapack/kernel/source/lu/getrf.hpp"
#include "lapack/kernel/source/lu/getrf_lookahead.hpp"
#include "lapack/lapack.hpp"
#include "service/reporter.hpp"

namespace qrv::lapack {
namespace {

// Narrower than those of the recursion on one thread: a panel's columns are what a team waits for.
constexpr int blockWidths[] = {8192, 4096, 2048, 1024, 128, 32, 8, 0};

template <class T>
struct SharedMatrix {
    int threads; // at most
    int m, n;
    Matrix<T> a;
    int* ipiv;
    int offset; // of its first column in the whole matrix

    // A panel as a matrix of its own.
    SharedMatrix matrix_of(Panel panel) const {
        return {threads, m - panel.k, panel.width, a.block(panel.k, panel.k), ipiv + panel.k, offset + panel.k};
    }
    int length() const { return std::min(m, n); }
};

struct NextPanel {
    bool factored = false;
    FactorResult result;
};

// Applies the panel `last` to all columns behind it, which begin with the panel `next`:
//
//     last.k   next.k
//   [ U   U      U     U  .  .  .  U ]
//   [ L   last   rows of U           ]  last.k     thread 0 has the first columns of these rows and of the product
//   [ L   last   next  product       ]  next.k     below them, the others a range each behind it
//   [ L   last   next                ]
//
// `next` may come out factored.
template <class T>
NextPanel update(const SharedMatrix<T>& x, Panel last, Panel next) {
    NextPanel outcome;
    const int columns = x.n - next.k;
    on_team(x.threads, [&](int team, int thread) {
        const LookaheadShare share = lookahead_share(columns, team, last.width, next.width);
        const Slice mine = share.slice(columns, team, thread);
        if (mine.count > 0)
            getrf_apply_panel(x.m, x.a, x.ipiv, last, next.k + mine.first, mine.count);
        if (thread == 0 && share.factors) {
            const SharedMatrix<T> panel = x.matrix_of(next);
            outcome = {true, getrf_recursive(panel.m, panel.n, panel.a, panel.ipiv, {0, panel.offset})};
        }
    });
    return outcome;
}

// The interchanges of all later panels, in the columns of each panel but the last. Each thread takes a stripe of each.
template <class T>
void interchange_left(const SharedMatrix<T>& x, int width) {
    const int length = x.length();
    on_team(x.threads, [&](int team, int thread) {
        const Slice stripe = equal_slice(width, team, thread);
        for (int end = width; end < length; end += width)
            laswp(stripe.count, x.a.block(0, end - width + stripe.first), end + 1, length, x.ipiv);
    });
}

template <class T>
FactorResult factor(const SharedMatrix<T>& x) {
    const int width = getrf_block_width(blockWidths, x.n);
    if (width == 0)
        return getrf_leaf(x.m, x.n, x.a, x.ipiv, {0, x.offset});
    const int length = x.length();
    FactorResult whole;
    Panel last;
    for (int j = 0; j < length; j += width) {
        const Panel panel{j, std::min(width, length - j)};
        NextPanel outcome;
        if (j > 0)
            outcome = update(x, last, panel);
        if (!outcome.factored)
            outcome.result = factor(x.matrix_of(panel));
        if (outcome.result.stopped)
            return {whole.info, true};
        getrf_append(whole, outcome.result, panel, x.ipiv);
        last = panel;
    }
    if (x.m < x.n) // the last panel ends with the last row, and columns remain
        getrf_apply_panel(x.m, x.a, x.ipiv, last, length, x.n - length);
    if (width < length)
        interchange_left(x, width);
    return whole;
}

} // namespace

template <class T>
FactorResult getrf_ib(int threads, int m, int n, Matrix<T> a, int* ipiv) {
    return factor(SharedMatrix<T>{threads, m, n, a, ipiv, 0});
}

template FactorResult getrf_ib(int, int, int, Matrix<float>, int*);
template FactorResult getrf_ib(int, int, int, Matrix<SingleComplex>, int*);

} // namespace qrv::lapack
