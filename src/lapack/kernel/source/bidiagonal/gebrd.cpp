// SGEBRD, CGEBRD: reduction to bidiagonal form, by panels whose effect on the rest of the matrix is two products.
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/bidiagonal.hpp"
#include "lapack/elements.hpp"
#include "lapack/routine_name.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

template <class T>
int block_size(int m, int n) {
    return std::max(1, tuning::block_size(RoutineName<T>("GEBRD"), m, n));
}

// Columns of a panel, and from how many rows and columns on there are panels.
struct Panels {
    int nb, crossover;
};

template <class T>
Panels choose_panels(int m, int n, std::int64_t lwork) {
    const int size = std::min(m, n);
    int nb = block_size<T>(m, n);
    if (nb <= 1 || nb >= size)
        return {nb, size};
    const int crossover = std::max(nb, tuning::crossover(RoutineName<T>("GEBRD"), m, n));
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
void gebrd(int m, int n, Matrix<T> a, float* d, float* e, T* tauq, T* taup, T* work, int lwork) {
    const int size = std::min(m, n);
    if (size == 0) {
        work[0] = scalar<T>(1);
        return;
    }
    const auto [nb, crossover] = choose_panels<T>(m, n, lwork);
    int i = 0;
    for (; i < size - crossover; i += nb) {
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

template std::int64_t gebrd_work<float>(int, int);
template std::int64_t gebrd_work<SingleComplex>(int, int);
template void gebrd(int, int, Matrix<float>, float*, float*, float*, float*, float*, int);
template void gebrd(int, int, Matrix<SingleComplex>, float*, float*, SingleComplex*, SingleComplex*, SingleComplex*,
                    int);

} // namespace qrv::lapack
