// SORMTR: products with the Q of SSYTRD, panel by panel.
//
// Q is the product of n - 1 reflectors H(i) on all rows but one. For a lower triangle it is H(1) H(2) .., and v(i)
// begins with its 1; for an upper triangle it is .. H(2) H(1), and v(i) ends with it.
#include <algorithm>

#include "lapack/calls/reflectors.hpp"
#include "lapack/calls/symmetric.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

constexpr int widestPanel = 32; // whose triangular factor is on the stack

// What Q turns: the rows or columns that its reflectors reach, of order k, and as many of the other kind.
struct Turned {
    Side side;
    int k, across;
    Matrix<float> c;

    // Reflectors [i, i + count) of a panel: the rows of their vectors that are not 0.
    void apply(Uplo uplo, Op op, int i, int count, Matrix<const float> v, const float* tau, float* work) const {
        float factor[widestPanel * widestPanel];
        const Matrix<float> t{factor, widestPanel};
        const bool upper = uplo == Uplo::upper, left = side == Side::left;
        const int first = upper ? 0 : i, length = upper ? i + count : k - i;
        const Direct direct = upper ? Direct::backward : Direct::forward;
        const Matrix<const float> panel = v.block(first, i);
        larft<float>(direct, StoreV::columns, length, count, panel, tau + i, t);
        const Matrix<float> part = left ? c.block(first, 0) : c.block(0, first);
        larfb<float>(side, op, {direct, StoreV::columns, count, panel, t}, left ? length : across,
                     left ? across : length, part, {work, across});
    }
};

} // namespace

std::int64_t ormtr_work(Side side, Uplo uplo, int m, int n) {
    const bool left = side == Side::left;
    const int k = left ? m : n, across = left ? n : m;
    if (m == 0 || n == 0 || k == 1)
        return 1;
    const int nb = tuning::block_size(uplo == Uplo::upper ? "SORMQL" : "SORMQR", left ? m - 1 : m, left ? n : n - 1);
    return std::int64_t{larger(1, across)} * nb;
}

void ormtr(Side side, Uplo uplo, Op op, int m, int n, Matrix<const float> a, const float* tau, Matrix<float> c,
           float* work, int lwork) {
    const bool left = side == Side::left, upper = uplo == Uplo::upper;
    const int order = left ? m : n, across = left ? n : m;
    if (m > 0 && n > 0 && order > 1) {
        const int k = order - 1;
        const Matrix<const float> v = upper ? a.block(0, 1) : a.block(1, 0);
        const Turned turned{side, k, across, upper ? c : left ? c.block(1, 0) : c.block(0, 1)};
        const auto full = static_cast<int>(ormtr_work(side, uplo, m, n) / across);
        const int nb = std::min({full, widestPanel, lwork / across});
        // The reflector beside C comes first.
        const bool fromFirst = (left == (op != Op::none)) != upper;
        for (int done = 0; done < k; done += nb) {
            const int i = fromFirst ? done : (k - 1 - done) / nb * nb;
            turned.apply(uplo, op, i, std::min(nb, k - i), v, tau, work);
        }
    }
    work[0] = work_size<float>(ormtr_work(side, uplo, m, n));
}

} // namespace qrv::lapack
