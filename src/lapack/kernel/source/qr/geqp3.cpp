// SGEQP3, CGEQP3: QR with column pivoting, A P = Q R.
//
// Columns that are to come first are brought there and factored as they stand. Of the others each step takes the one
// whose rest, below the rows that are done, is longest: in blocks (SLAQPS), and column by column where these do not pay
// (SLAQP2). (G. Quintana-Orti, X. Sun, C. Bischof, A BLAS-3 version of the QR factorization with column pivoting, SIAM
// J. Sci. Comput. 19, 1998.)
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/qr.hpp"
#include "lapack/elements.hpp"
#include "lapack/routine_name.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

// One block size serves both element types.
constexpr RoutineName<float> laqpsName("LAQPS");
template <class T>
constexpr RoutineName<T> qrName("GEQRF");

// Two norms of each column lie in front of the work of real elements; complex ones have them elsewhere.
template <class T>
constexpr std::int64_t norms_in_work(int n) {
    return isComplex<T> ? 0 : 2 * std::int64_t{n};
}

// Brings the marked columns to the front, and numbers all. Result: how many there are.
template <class T>
int collect_fixed(int m, int n, Matrix<T> a, int* jpvt) {
    int fixed = 0;
    for (int j = 0; j < n; ++j) {
        const bool marked = jpvt[j] != 0;
        jpvt[j] = j + 1;
        if (!marked)
            continue;
        if (j != fixed) {
            blas::swap(m, a.column(0, j), a.column(0, fixed));
            std::swap(jpvt[j], jpvt[fixed]);
        }
        ++fixed;
    }
    return fixed;
}

// Of n columns, those that the next block chooses among, after one that was to take `asked` of so many and took `done`:
// the fewer, the more of them stay in the cache, but at least twice those it takes, and more where they did not last.
int next_window(int n, int window, int done, int asked) {
    if (done < asked / 2)
        window = window > n / 2 ? n : 2 * window;
    else if (done >= asked / 4 * 3)
        window = std::max(2 * asked, window / 4 * 3);
    return std::min(n, window);
}

} // namespace

template <class T>
std::int64_t geqp3_least_work(int m, int n) {
    return std::min(m, n) == 0 ? 1 : norms_in_work<T>(n) + n + 1;
}

template <class T>
std::int64_t geqp3_work(int m, int n) {
    const int nb = tuning::block_size(laqpsName, m, n);
    return std::min(m, n) == 0 ? 1 : norms_in_work<T>(n) + (std::int64_t{n} + 1) * nb;
}

template <class T>
void geqp3(int m, int n, Matrix<T> a, int* jpvt, T* tau, T* work, int lwork, float* norms) {
    const int k = std::min(m, n); // of no rows, too, the columns are numbered
    std::int64_t used = geqp3_least_work<T>(m, n);
    const auto raise = [&] { used = std::max(used, static_cast<std::int64_t>(real_part(work[0]))); };

    const int fixed = collect_fixed(m, n, a, jpvt), first = std::min(m, fixed);
    if (first > 0) {
        geqrf(m, first, a, tau, work, lwork);
        raise();
        if (first < n) {
            orm<T>(QForm::qr, Side::left, adjoint<T>, m, n - first, first, a, tau, a.block(0, first), work, lwork);
            raise();
        }
    }
    if (fixed < k) {
        const int rows = m - fixed, columns = n - fixed, steps = k - fixed;
        const std::int64_t room = lwork - norms_in_work<T>(n);
        int nb = tuning::block_size(laqpsName, rows, columns), tail = 0;
        if (nb > 1 && nb < steps)
            tail = std::max(0, tuning::crossover(qrName<T>, rows, columns));
        const bool inBlocks = nb > 1 && nb < steps && tail < steps;
        if (inBlocks) {
            used = std::max(used, norms_in_work<T>(n) + (std::int64_t{columns} + 1) * nb);
            nb = static_cast<int>(std::min<std::int64_t>(nb, room / (columns + 1)));
        }
        float *const vn1 = norms, *const vn2 = norms + n;
        T* const area = work + norms_in_work<T>(n);
        for (int j = fixed; j < n; ++j)
            vn1[j] = vn2[j] = kernel::nrm2(rows, a.column(fixed, j));
        int j = fixed;
        if (inBlocks && nb >= std::max(2, tuning::minimum_block_size(qrName<T>)))
            for (int last = k - tail, window = std::min(n - j, 2 * nb); j < last;) {
                const int asked = std::min(nb, last - j);
                const int done = laqps<T>(m, n - j, window, j, asked, a.block(0, j), jpvt + j, tau + j, vn1 + j,
                                          vn2 + j, area, {area + asked, n - j});
                j += done;
                window = next_window(n - j, window, done, asked);
            }
        if (j < k)
            laqp2<T>(m, n - j, j, a.block(0, j), jpvt + j, tau + j, vn1 + j, vn2 + j, area);
    }
    work[0] = work_size<T>(used);
}

template std::int64_t geqp3_least_work<float>(int, int);
template std::int64_t geqp3_least_work<SingleComplex>(int, int);
template std::int64_t geqp3_work<float>(int, int);
template std::int64_t geqp3_work<SingleComplex>(int, int);
template void geqp3(int, int, Matrix<float>, int*, float*, float*, int, float*);
template void geqp3(int, int, Matrix<SingleComplex>, int*, SingleComplex*, SingleComplex*, int, float*);

} // namespace qrv::lapack
