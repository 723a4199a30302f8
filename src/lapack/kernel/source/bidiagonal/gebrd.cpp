// SGEBRD, CGEBRD: reduction to bidiagonal form, by panels whose effect on the rest of the matrix is two products.
#include <algorithm>
#include <cstdlib>

#include "blas/calls.hpp"
#include "blas/thread/common/far_cores.hpp"
#include "lapack/calls/bidiagonal.hpp"
#include "lapack/elements.hpp"
#include "lapack/routine_name.hpp"
#include "service/tuning.hpp"
#include "service/vector_form.hpp"

namespace qrv::lapack {
namespace {

// On far cores two threads took 1.49, 1.27 and 1.0 of the time of one for n = 300, 500 and 700, what one does for both
// 1.03.
constexpr int farTeamOrder = 700;

template <class T>
int block_size(int m, int n) {
    return std::max(1, tuning::block_size(RoutineName<T>("GEBRD"), m, n));
}

// The order up to which the unblocked form is faster, as what it goes through again and again stays in a cache: for 64
// it took 0.84 of the time of panels, for 128 0.91; for 200 and 256 complex ones 0.83 and 0.78, but without wide
// vectors teams had the panels of these. Far from square it is not.
template <class T>
int unblocked_rest(int m, int n) {
    const int most = isComplex<T> && vector_form_in_use() != VectorForm::sse ? 256 : 128;
    return std::abs(m - n) <= most / 2 ? most : tuning::crossover(RoutineName<T>("GEBRD"), m, n);
}

template <class T>
BidiagonalPanels choose_panels(int m, int n, std::int64_t lwork) {
    const int size = std::min(m, n);
    int nb = block_size<T>(m, n);
    if (nb <= 1 || nb >= size)
        return {nb, size};
    const int crossover = std::max(nb, unblocked_rest<T>(m, n));
    const std::int64_t perColumn = std::int64_t{m} + n;
    if (crossover < size && lwork < perColumn * nb) {
        if (lwork < perColumn * tuning::minimum_block_size(RoutineName<T>("GEBRD")))
            return {1, size};
        nb = static_cast<int>(lwork / perColumn);
    }
    return {nb, crossover};
}

} // namespace

template <class T>
std::int64_t gebrd_work(int m, int n) {
    return (std::int64_t{m} + n) * block_size<T>(m, n);
}

template <class T>
void gebrd_in_panels(const BidiagonalPanels& panels, int m, int n, Matrix<T> a, float* d, float* e, T* tauq, T* taup,
                     T* work) {
    const NearTeams teams(std::min(m, n), farTeamOrder);
    const int nb = panels.width;
    int i = 0;
    for (; i < std::min(m, n) - panels.rest; i += nb) {
        const int below = m - i - nb, behind = n - i - nb;
        const Matrix<T> x{work, m}, y{work + std::ptrdiff_t{m} * nb, n}, rest = a.block(i + nb, i + nb);
        labrd(m - i, n - i, nb, a.block(i, i), d + i, e + i, tauq + i, taup + i, x, y);
        blas::gemm(Op::none, adjoint<T>, below, behind, nb, scalar<T>(-1), a.block(i + nb, i), y.block(nb, 0),
                   scalar<T>(1), rest);
        blas::gemm(Op::none, Op::none, below, behind, nb, scalar<T>(-1), x.block(nb, 0), a.block(i, i + nb),
                   scalar<T>(1), rest);
        for (int j = i; j < i + nb; ++j) {
            a(j, j) = scalar<T>(d[j]);
            (m >= n ? a(j, j + 1) : a(j + 1, j)) = scalar<T>(e[j]);
        }
    }
    gebd2(m - i, n - i, a.block(i, i), d + i, e + i, tauq + i, taup + i, work);
}

template <class T>
void gebrd(int m, int n, Matrix<T> a, float* d, float* e, T* tauq, T* taup, T* work, int lwork) {
    if (m == 0 || n == 0)
        work[0] = scalar<T>(1);
    else
        gebrd_in_panels(choose_panels<T>(m, n, lwork), m, n, a, d, e, tauq, taup, work);
}

template std::int64_t gebrd_work<float>(int, int);
template std::int64_t gebrd_work<SingleComplex>(int, int);
template void gebrd_in_panels(const BidiagonalPanels&, int, int, Matrix<float>, float*, float*, float*, float*, float*);
template void gebrd_in_panels(const BidiagonalPanels&, int, int, Matrix<SingleComplex>, float*, float*, SingleComplex*,
                              SingleComplex*, SingleComplex*);
template void gebrd(int, int, Matrix<float>, float*, float*, float*, float*, float*, int);
template void gebrd(int, int, Matrix<SingleComplex>, float*, float*, SingleComplex*, SingleComplex*, SingleComplex*,
                    int);

} // namespace qrv::lapack
