// The lengths of WORK of SGESDD and CGESDD.
#include <algorithm>

#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/svd/gesdd.hpp"
#include "lapack/lapack.hpp"
#include "lapack/workspace.hpp"

namespace qrv::lapack {
namespace {

// The published lengths of WORK. That of real ones holds the work of divide and conquer, which complex ones have in
// RWORK. blockSize(name, n1, n2, n3) matters for the best length only.
template <class T, class BlockSize>
SvdWork work_of(SvdJob job, int m, int n, const BlockSize& blockSize) {
    if (m <= 0 || n <= 0)
        return {1, 1};
    constexpr bool real = !isComplex<T>;
    const bool tall = m >= n;
    // No memory holds the squares of a larger k, and 64 bits not all their sums.
    const std::int64_t k = std::min({m, n, 1 << 30}), l = std::max(m, n), vectors = real ? 3 * k : 2 * k;
    const std::int64_t divide = !real ? 0 : job == SvdJob::none ? 7 * k : 3 * k * k + 4 * k;
    const int side = static_cast<int>(k);
    const auto nb = [&](const char(&stem)[6], int n1, int n2, int n3 = -1) {
        return std::int64_t{blockSize(stem, n1, n2, n3)};
    };
    const auto applied = [&](int n1, int n2, int n3) { return nb(real ? "ORMBR" : "UNMBR", n1, n2, n3); };
    const std::int64_t plain = vectors + divide;

    if (svd_kind<T>(m, n) == SvdKind::longest) {
        std::int64_t most =
            std::max(k + k * nb(tall ? "GEQRF" : "GELQF", m, n), vectors + 2 * k * nb("GEBRD", side, side));
        if (job == SvdJob::none) // the diagonals lie where the factors of the reflectors of QR lay
            return {real ? divide + k : 3 * k, std::max(most, real ? divide + k : 3 * k)};
        const bool all = job == SvdJob::all;
        const int rows = tall ? m : all ? n : m, columns = tall ? (all ? m : n) : n;
        const std::int64_t generated =
            nb(tall ? (real ? "ORGQR" : "UNGQR") : (real ? "ORGLQ" : "UNGLQ"), rows, columns, side);
        most =
            std::max({most, k + (all ? l : k) * generated, vectors + k * applied(side, side, side), real ? plain : 0});
        if (job == SvdJob::overwrite) {
            const std::int64_t least = real ? divide + 2 * k * k + 3 * k : 2 * k * k + 3 * k;
            return {least, std::max(least, real ? most + 2 * k * k : l * k + k * k + most)};
        }
        const std::int64_t least = real ? divide + k * k + 3 * k : all ? k * k + 2 * k + l : k * k + 3 * k;
        return {least, std::max(least, most + k * k)};
    }

    std::int64_t most = vectors + (k + l) * nb("GEBRD", m, n);
    if (job == SvdJob::none) {
        const std::int64_t least = vectors + std::max(l, divide);
        return {least, std::max({least, most, plain})};
    }
    const bool all = job == SvdJob::all;
    if (real || svd_kind<T>(m, n) == SvdKind::square) {
        most = std::max({most,
                         vectors + (all && tall ? l : k) * applied(m,
                                                                   all && tall ? m
                                                                   : tall      ? n
                                                                               : m,
                                                                   n),
                         vectors + (all && !tall ? l : k) * applied(tall || all ? n : m, n, tall ? n : m), plain});
    } else {
        const char(&name)[6] = "UNGBR";
        most = std::max({most, vectors + (all && !tall ? l : k) * nb(name, tall || all ? n : m, n, tall ? n : m),
                         vectors + (all && tall ? l : k) * nb(name, m,
                                                              all && tall ? m
                                                              : tall      ? n
                                                                          : m,
                                                              n)});
    }
    const bool overwrite = job == SvdJob::overwrite;
    const std::int64_t least =
        vectors + (real ? std::max(l, (overwrite ? k * k : 0) + divide) : l + (overwrite ? k * k : 0));
    return {least, std::max(least, most + (overwrite ? l * k : 0))};
}

} // namespace

template <class T>
SvdWork gesdd_work(SvdJob job, int m, int n) {
    return work_of<T>(job, m, n, [](const char(&stem)[6], int n1, int n2, int n3) {
        return tuning::block_size(RoutineName<T>(stem), n1, n2, n3);
    });
}
template <class T>
std::int64_t gesdd_least_work(SvdJob job, int m, int n) {
    return work_of<T>(job, m, n, [](const char(&)[6], int, int, int) { return 0; }).least;
}

template SvdWork gesdd_work<float>(SvdJob, int, int);
template SvdWork gesdd_work<SingleComplex>(SvdJob, int, int);
template std::int64_t gesdd_least_work<float>(SvdJob, int, int);
template std::int64_t gesdd_least_work<SingleComplex>(SvdJob, int, int);

} // namespace qrv::lapack

float qrv_lapack_sroundup_work(const int* n) {
    return qrv::lapack::roundup_work(*n);
}
