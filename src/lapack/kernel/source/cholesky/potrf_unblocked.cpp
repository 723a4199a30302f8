// The leaf of the Cholesky factorization, by the serial kernels: halves, down to a few blocks of `leafSide`, each of
// them factored by itself in a copy where whole vectors can be taken.
#include <algorithm>
#include <cmath>

#include "blas/calls.hpp"
#include "lapack/calls/cholesky.hpp"
#include "lapack/elements.hpp"
#include "lapack/kernel/source/cholesky/potrf_left_looking.hpp"
#include "lapack/quads.hpp"

namespace qrv::lapack {
namespace {

// Wide vectors would have a real one smaller, too.
template <class T>
constexpr int leafSide = isComplex<T> ? 16 : 32;
template <class T>
constexpr int largestLeaf = leafSide<T> + fewLeftOver;
// Orders up to this go block by block. Above, thin products cost AVX2 kernels a tenth to a fifth over those of halves.
constexpr int fewBlocks = 128;

// ---- The copy -------------------------------------------------------------------------------------------------------

// L by columns; U is held as its adjoint. Up to whole vectors zeros follow the last row, and the last column from the
// vector with the diagonal on; what stands above the diagonal does not matter.
template <class T>
struct alignas(64) Square {
    static constexpr int height = largestLeaf<T> * int(sizeof(T) / sizeof(float)); // of a column
    float elements[height * largestLeaf<T>];

    float* column(int j) { return elements + height * j; }
    Rows<T>* rows(int j) { return reinterpret_cast<Rows<T>*>(column(j)); }
    T operator()(int i, int j) {
        float* const at = place(i, j);
        if constexpr (isComplex<T>)
            return {at[0], at[lanes]};
        else
            return *at;
    }
    void set(int i, int j, T x) {
        float* const at = place(i, j);
        *at = real_part(x);
        if constexpr (isComplex<T>)
            at[lanes] = x.im;
    }

private:
    float* place(int i, int j) { // of the real part
        return column(j) + (isComplex<T> ? i + i / lanes * lanes : i);
    }
};

// A call pays for more than two vectors only, and costs the loops around it their registers if it stands among them.
[[gnu::noinline]] void copy_column(int n, const float* from, float* to) {
    if (n > 2 * lanes)
        std::copy_n(from, n, to);
    else
        for (int i = 0; i < n; ++i)
            to[i] = from[i];
}

template <class T>
void load(Uplo uplo, int n, Matrix<const T> a, Square<T>& x) {
    const int end = quads_of(n);
    for (int j = 0; j < n; ++j)
        x.rows(j)[j / lanes] = x.rows(j)[end - 1] = Rows<T>{};
    if (n % lanes != 0)
        x.rows(n)[end - 1] = Rows<T>{};
    for (int j = 0; j < n; ++j)
        if (uplo == Uplo::upper)
            for (int i = 0; i <= j; ++i)
                x.set(j, i, conj(a(i, j)));
        else if constexpr (isComplex<T>)
            for (int i = j; i < n; ++i)
                x.set(i, j, a(i, j));
        else
            copy_column(n - j, &a(j, j), x.column(j) + j);
}

template <class T>
void store(Uplo uplo, int n, Square<T>& x, Matrix<T> a) {
    for (int j = 0; j < n; ++j)
        if (uplo == Uplo::upper)
            for (int i = 0; i <= j; ++i)
                a(i, j) = conj(x(j, i));
        else if constexpr (isComplex<T>)
            for (int i = j; i < n; ++i)
                a(i, j) = x(i, j);
        else
            copy_column(n - j, x.column(j) + j, &a(j, j));
}

// ---- Its factorization ----------------------------------------------------------------------------------------------

// A step's four columns within their own rows, and what the rows below are divided by, as factors.
template <class T>
struct Corner {
    T l[lanes][lanes]; // [column][row]
    float reciprocal[lanes];
};

// Factors the corner at p, of so many columns. Result: how many of its pivots are positive up to the first that is not,
// which is left in its place.
template <int size, class T>
int factor_corner(Square<T>& x, int p, Corner<T>& c) {
    auto& l = c.l;
    for (int j = 0; j < size; ++j)
        for (int i = 0; i < size; ++i)
            l[j][i] = x(p + i, p + j);
    int j = 0;
    for (; j < size; ++j) {
        const float pivot = real_part(l[j][j]);
        l[j][j] = scalar<T>(pivot);
        if (!(pivot > 0))
            break;
        const float root = std::sqrt(pivot), reciprocal = 1 / root;
        c.reciprocal[j] = reciprocal;
        l[j][j] = scalar<T>(root);
        for (int i = j + 1; i < size; ++i)
            l[j][i] = reciprocal * l[j][i];
        for (int k = j + 1; k < size; ++k)
            for (int i = k; i < size; ++i)
                l[k][i] -= l[j][i] * conj(l[j][k]);
    }
    for (int k = 0; k < size; ++k)
        for (int i = k; i < size; ++i)
            x.set(p + i, p + k, l[k][i]);
    return j;
}

// The rows below the corner, up to vector `end`.
template <class T>
void solve_below(Square<T>& x, int p, const Corner<T>& c, int end) {
    Rows<T>*const x0 = x.rows(p), *const x1 = x.rows(p + 1), *const x2 = x.rows(p + 2), *const x3 = x.rows(p + 3);
    const auto factor = [&](int row, int column) { return spread(c.l[column][row]); };
    const Rows<T> l10 = factor(1, 0), l20 = factor(2, 0), l30 = factor(3, 0), l21 = factor(2, 1), l31 = factor(3, 1),
                  l32 = factor(3, 2);
    for (int r = p / lanes + 1; r < end; ++r) {
        const Rows<T> y0 = x0[r] * c.reciprocal[0];
        const Rows<T> y1 = (x1[r] - times_adjoint(y0, l10)) * c.reciprocal[1];
        const Rows<T> y2 = (x2[r] - times_adjoint(y0, l20) - times_adjoint(y1, l21)) * c.reciprocal[2];
        const Rows<T> y3 =
            (x3[r] - times_adjoint(y0, l30) - (times_adjoint(y1, l31) + times_adjoint(y2, l32))) * c.reciprocal[3];
        x0[r] = y0, x1[r] = y1, x2[r] = y2, x3[r] = y3;
    }
}

// The product of the four columns from p on, off columns j and j + 1.
template <class T>
void subtract_products(Square<T>& x, int p, int j, int end) {
    const Rows<T>*const x0 = x.rows(p), *const x1 = x.rows(p + 1), *const x2 = x.rows(p + 2), *const x3 = x.rows(p + 3);
    Rows<T>*const y = x.rows(j), *const z = x.rows(j + 1);
    const auto factor = [&](int row, int column) { return spread(x(row, column)); };
    const Rows<T> f0 = factor(j, p), f1 = factor(j, p + 1), f2 = factor(j, p + 2), f3 = factor(j, p + 3);
    const Rows<T> g0 = factor(j + 1, p), g1 = factor(j + 1, p + 1), g2 = factor(j + 1, p + 2),
                  g3 = factor(j + 1, p + 3);
    const auto product = [&](int r, const Rows<T>& u0, const Rows<T>& u1, const Rows<T>& u2, const Rows<T>& u3) {
        return times_adjoint(x0[r], u0) + times_adjoint(x1[r], u1) +
               (times_adjoint(x2[r], u2) + times_adjoint(x3[r], u3));
    };
    for (int r = j / lanes; r < end; ++r) {
        y[r] = y[r] - product(r, f0, f1, f2, f3);
        z[r] = z[r] - product(r, g0, g1, g2, g3);
    }
}

// Right-looking, four columns at a time. Result: info.
template <class T>
int factor_square(Square<T>& x, int n) {
    const int end = quads_of(n);
    for (int p = 0; p < n; p += lanes) {
        Corner<T> corner;
        const int columns = std::min(lanes, n - p);
        const int good = columns == lanes ? factor_corner<lanes>(x, p, corner)
                         : columns == 3   ? factor_corner<3>(x, p, corner)
                         : columns == 2   ? factor_corner<2>(x, p, corner)
                                          : factor_corner<1>(x, p, corner);
        if (good < columns)
            return p + good + 1;
        if (p + lanes >= n)
            break;
        solve_below(x, p, corner, end);
        for (int j = p + lanes; j < n; j += 2)
            subtract_products(x, p, j, end);
    }
    return 0;
}

template <class T>
int factor_leaf(Uplo uplo, int n, Matrix<T> a) {
    Square<T> x;
    load<T>(uplo, n, a, x);
    const int info = factor_square(x, n);
    store(uplo, n, x, a);
    return info;
}

} // namespace

template <class T>
int potf2(Uplo uplo, int n, Matrix<T> a) {
    if (n <= largestLeaf<T>)
        return factor_leaf(uplo, n, a);
    const int nb = n <= fewBlocks ? leafSide<T> : half_in_blocks(n);
    const auto factor = [uplo](int, int jb, Matrix<T> diagonal) { return FactorResult{potf2(uplo, jb, diagonal)}; };
    return factor_left_looking<Layer::kernel>(nb, uplo, n, a, factor).info;
}

template int potf2(Uplo, int, Matrix<float>);
template int potf2(Uplo, int, Matrix<SingleComplex>);

} // namespace qrv::lapack
