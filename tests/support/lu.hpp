// LU factorizations: routes by one calling form, matrices of many kinds, and what is checked of the factors.
#pragma once

#include <functional>
#include <ostream>

#include "lapack/kernel/source/lu/getrf.hpp"
#include "lapack/lapack.hpp"
#include "support/call.hpp"
#include "support/oracle.hpp"

namespace qrv::test {

// One way to factor m x n in place; the result is info.
template <class T>
struct LuRoute {
    std::string name;
    std::function<int(int m, int n, Matrix<T> a, int* ipiv)> factor;
};

template <class T>
std::ostream& operator<<(std::ostream& out, const LuRoute<T>& route) {
    return out << route.name;
}

template <class T>
LuRoute<T> native_route(const char* name, void (*routine)(const int*, const int*, T*, const int*, int*, int*)) {
    return {name, [routine](int m, int n, Matrix<T> a, int* ipiv) {
                return call(routine, m, n, a.data, static_cast<int>(a.ld), ipiv);
            }};
}
template <class T>
LuRoute<T> ib_route(int threads) {
    return {"ib, team " + std::to_string(threads),
            [=](int m, int n, Matrix<T> a, int* ipiv) { return lapack::getrf_ib(threads, m, n, a, ipiv).info; }};
}
template <class T>
LuRoute<T> dynamic_route(int threads, int nb) {
    return {"dynamic, team " + std::to_string(threads) + ", nb " + std::to_string(nb),
            [=](int m, int n, Matrix<T> a, int* ipiv) {
                return (nb < std::min(m, n) ? lapack::getrf_dynamic(threads, nb, m, n, a, ipiv)
                                            : lapack::getrf_ib(threads, m, n, a, ipiv))
                    .info;
            }};
}

template <class T>
std::vector<LuRoute<T>> native_routes() {
    return {native_route<T>("getrf", routine_for<T>(qrv_lapack_sgetrf, qrv_lapack_cgetrf)),
            native_route<T>("ib_omp", routine_for<T>(qrv_lapack_sgetrf_ib_omp, qrv_lapack_cgetrf_ib_omp)),
            native_route<T>("serial", routine_for<T>(qrv_lapack_sgetrf_serial, qrv_lapack_cgetrf_serial)),
            native_route<T>("unblocked", routine_for<T>(qrv_lapack_sgetrf_unblocked, qrv_lapack_cgetrf_unblocked))};
}

// ---- Factors ------------------------------------------------------------------------------------------------------

template <class T>
struct LuFactors {
    Operand<T> lu;
    std::vector<int> ipiv;
    int info;
};

template <class T>
LuFactors<T> factor(const LuRoute<T>& route, const Operand<T>& a) {
    LuFactors<T> f{a, {}, 0};
    constexpr int untouched = -7;
    const int length = std::min(a.rows(), a.columns());
    f.ipiv.assign(static_cast<std::size_t>(length) + 1, untouched);
    f.info = route.factor(a.rows(), a.columns(), f.lu.view(), f.ipiv.data());
    EXPECT_EQ(f.ipiv.back(), untouched) << route << ": written behind ipiv";
    f.ipiv.pop_back();
    return f;
}

template <class T>
bool pivots_in_range(const LuFactors<T>& f) {
    for (int k = 1; k <= static_cast<int>(f.ipiv.size()); ++k)
        if (f.ipiv[static_cast<std::size_t>(k - 1)] < k || f.ipiv[static_cast<std::size_t>(k - 1)] > f.lu.rows())
            return false;
    return true;
}

// Row of A that is row i of P^T A.
inline std::vector<int> row_order(int rows, const std::vector<int>& ipiv) {
    std::vector<int> order(static_cast<std::size_t>(rows));
    std::iota(order.begin(), order.end(), 0);
    for (std::size_t k = 0; k < ipiv.size(); ++k)
        std::swap(order[k], order[static_cast<std::size_t>(ipiv[k] - 1)]);
    return order;
}

// |A - P L U| in roundings of |A|; NaN if a factor is. Without great growth it is around 1 at most.
template <class T>
double lu_residual(const Operand<T>& a, const LuFactors<T>& f) {
    if (!pivots_in_range(f))
        return nan;
    const std::vector<int> order = row_order(a.rows(), f.ipiv);
    const WideMatrix<T> permuted(a.rows(), a.columns(),
                                 [&](int i, int j) { return widen(a(order[std::size_t(i)], j)); });
    const double error = norm(permuted - lower_factor(f.lu, true) * upper_factor(f.lu));
    return in_roundings(error, std::max(a.rows(), a.columns()), norm(permuted));
}
constexpr double luBound = 10;

// ---- Matrices -----------------------------------------------------------------------------------------------------

enum class LuKind { random, graded, badlyScaled, nearlySingular, singular, zero };
constexpr LuKind luKinds[] = {LuKind::random,         LuKind::graded,   LuKind::badlyScaled,
                              LuKind::nearlySingular, LuKind::singular, LuKind::zero};

template <class T>
Operand<T> lu_matrix(LuKind kind, int m, int n, int extra = 0, int offset = 0) {
    Operand<T> a(m, n, m + extra, offset);
    std::mt19937 random(static_cast<unsigned>(m * 31 + n));
    a.set([&](int i, int j) -> T {
        const T x = any_size_one<T>(random);
        switch (kind) {
        case LuKind::graded: // from 1 down to 2^-40
            return std::ldexp(1.0F, -40 * (i + j) / (m + n)) * x;
        case LuKind::badlyScaled: // rows and columns in no order; some pivots are below the smallest normal number
            return std::ldexp(1.0F, (i * 7 % 5 - 3) * 25 - j * 11 % 7 * 10) * x;
        case LuKind::nearlySingular: // the last column is the first but for its last bits
            return j == n - 1 && j > 0 ? a(i, 0) + 1e-6F * x : x;
        case LuKind::singular: // columns of zeros
            return j == n / 3 || j == n / 2 ? T() : x;
        default:
            return kind == LuKind::zero ? T() : x;
        }
    });
    return a;
}

// A product P L U of which the pivots are known: elements of L are at most 1/2 in magnitude, so no other choice comes
// near, however the sums are rounded. L and U are close enough to diagonal to be well-conditioned.
template <class T>
struct KnownPivots {
    Operand<T> a;
    std::vector<int> ipiv;
};

template <class T>
KnownPivots<T> known_pivots(int m, int n, int extra = 0) {
    const int length = std::min(m, n);
    std::mt19937 random(static_cast<unsigned>(m + 17 * n));
    const double spread = std::min(0.25, 1 / std::sqrt(length)) * (isComplex<T> ? 1 : 2);
    const auto factor = [&](bool stored, bool onDiagonal, double size) -> Wide<T> {
        return onDiagonal ? size : stored ? spread * widen(any_size_one<T>(random)) : 0;
    };
    const WideMatrix<T> lower(m, length, [&](int i, int j) { return factor(i > j, i == j, 1); }),
        upper(length, n,
              [&](int i, int j) { return factor(i < j, i == j, 1.5 + 0.5 * widen(any_size_one<float>(random))); }),
        product = lower * upper;
    KnownPivots<T> known{{m, n, m + extra}, {}};
    for (int k = 0; k < length; ++k)
        known.ipiv.push_back(k + 1 + static_cast<int>(random() % static_cast<unsigned>(m - k)));
    const std::vector<int> order = row_order(m, known.ipiv);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i)
            round_to(product(i, j), known.a(order[std::size_t(i)], j));
    return known;
}

} // namespace qrv::test
