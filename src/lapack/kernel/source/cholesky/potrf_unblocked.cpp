// The leaf of the Cholesky factorization, by the serial kernels: halves, down to a few blocks of `leafSide`, each of
// them factored by itself. A real block is copied to a square where whole vectors can be taken, a complex one is
// factored where it stands.
#include <algorithm>
#include <cmath>

#include "blas/calls.hpp"
#include "lapack/calls/cholesky.hpp"
#include "lapack/elements.hpp"
#include "lapack/kernel/source/cholesky/potrf_left_looking.hpp"

namespace qrv::lapack {
namespace {

constexpr int leafSide = 32, largestLeaf = leafSide + fewLeftOver;
// Orders up to this go block by block. Above, thin products cost AVX2 kernels a tenth to a fifth over those of halves.
constexpr int fewBlocks = 4 * leafSide;

// ---- Real blocks ----------------------------------------------------------------------------------------------------

constexpr int lanes = 4;
using Quad [[gnu::may_alias]] = float __attribute__((vector_size(lanes * sizeof(float))));

// L by columns; U is held as its transpose. Up to whole vectors zeros follow the last row and the last column, and what
// stands above the diagonal does not matter.
struct alignas(64) Square {
    float elements[largestLeaf * largestLeaf];

    float& operator()(int i, int j) { return elements[i + largestLeaf * j]; }
    Quad* quads(int j) { return reinterpret_cast<Quad*>(&(*this)(0, j)); }
};

// The number of vectors that hold so many rows.
constexpr int quads_of(int rows) {
    return (rows + lanes - 1) / lanes;
}

void load(Uplo uplo, int n, Matrix<const float> a, Square& x) {
    for (int j = 0; j < quads_of(n) * lanes; ++j)
        std::fill_n(x.quads(j), quads_of(n), Quad{});
    if (uplo == Uplo::lower) {
        for (int j = 0; j < n; ++j)
            std::copy_n(&a(j, j), n - j, &x(j, j));
        return;
    }
    for (int j = 0; j < n; ++j)
        for (int i = 0; i <= j; ++i)
            x(j, i) = a(i, j);
}

void store(Uplo uplo, int n, Square& x, Matrix<float> a) {
    if (uplo == Uplo::lower) {
        for (int j = 0; j < n; ++j)
            std::copy_n(&x(j, j), n - j, &a(j, j));
        return;
    }
    for (int j = 0; j < n; ++j)
        for (int i = 0; i <= j; ++i)
            a(i, j) = x(j, i);
}

// A step's four columns within their own rows, and what the rows below are divided by, as factors.
struct Corner {
    float l[lanes][lanes]; // [column][row]
    float reciprocal[lanes];
};

// Factors the corner at p, of `columns` columns. Result: how many of its pivots are positive up to the first that is
// not, which is left in its place.
int factor_corner(Square& x, int p, int columns, Corner& c) {
    for (int j = 0; j < lanes; ++j)
        for (int i = 0; i < lanes; ++i)
            c.l[j][i] = x(p + i, p + j);
    int j = 0;
    for (; j < columns && c.l[j][j] > 0; ++j) {
        const float root = std::sqrt(c.l[j][j]), reciprocal = 1 / root;
        c.reciprocal[j] = reciprocal;
        c.l[j][j] = root;
        for (int i = j + 1; i < lanes; ++i)
            c.l[j][i] *= reciprocal;
        for (int k = j + 1; k < lanes; ++k)
            for (int i = k; i < lanes; ++i)
                c.l[k][i] -= c.l[j][i] * c.l[j][k];
    }
    for (int k = 0; k < lanes; ++k)
        for (int i = k; i < lanes; ++i)
            x(p + i, p + k) = c.l[k][i];
    return j;
}

// The rows below the corner, up to vector `end`.
void solve_below(Square& x, int p, const Corner& c, int end) {
    Quad *const x0 = x.quads(p), *const x1 = x.quads(p + 1), *const x2 = x.quads(p + 2), *const x3 = x.quads(p + 3);
    const auto& l = c.l;
    for (int r = p / lanes + 1; r < end; ++r) {
        const Quad y0 = x0[r] * c.reciprocal[0];
        const Quad y1 = (x1[r] - y0 * l[0][1]) * c.reciprocal[1];
        const Quad y2 = (x2[r] - y0 * l[0][2] - y1 * l[1][2]) * c.reciprocal[2];
        const Quad y3 = (x3[r] - y0 * l[0][3] - (y1 * l[1][3] + y2 * l[2][3])) * c.reciprocal[3];
        x0[r] = y0, x1[r] = y1, x2[r] = y2, x3[r] = y3;
    }
}

// The product of the four columns from p on, off columns j and j + 1.
void subtract_products(Square& x, int p, int j, int end) {
    const Quad *const x0 = x.quads(p), *const x1 = x.quads(p + 1), *const x2 = x.quads(p + 2),
                      *const x3 = x.quads(p + 3);
    Quad *const y = x.quads(j), *const z = x.quads(j + 1);
    const auto spread = [&](int row, int column) { return Quad{} + x(row, column); };
    const Quad f0 = spread(j, p), f1 = spread(j, p + 1), f2 = spread(j, p + 2), f3 = spread(j, p + 3);
    const Quad g0 = spread(j + 1, p), g1 = spread(j + 1, p + 1), g2 = spread(j + 1, p + 2), g3 = spread(j + 1, p + 3);
    for (int r = j / lanes; r < end; ++r) {
        y[r] -= x0[r] * f0 + x1[r] * f1 + (x2[r] * f2 + x3[r] * f3);
        z[r] -= x0[r] * g0 + x1[r] * g1 + (x2[r] * g2 + x3[r] * g3);
    }
}

// Right-looking, four columns at a time. Result: info.
int factor_square(Square& x, int n) {
    const int end = quads_of(n);
    for (int p = 0; p < n; p += lanes) {
        Corner corner;
        const int columns = std::min(lanes, n - p), good = factor_corner(x, p, columns, corner);
        if (good < columns)
            return p + good + 1;
        if (columns < lanes)
            break;
        solve_below(x, p, corner, end);
        for (int j = p + lanes; j < n; j += 2)
            subtract_products(x, p, j, end);
    }
    return 0;
}

int factor_leaf(Uplo uplo, int n, Matrix<float> a) {
    Square x;
    load(uplo, n, a, x);
    const int info = factor_square(x, n);
    store(uplo, n, x, a);
    return info;
}

// ---- Complex blocks -------------------------------------------------------------------------------------------------

// Row by row of U, column by column of L:
//
//   [ U00 u01 U02 ]   done          u11 = sqrt(a11 - u01^H u01)
//   [     a11 a12 ]   this row      u12 = (a12 - u01^H U02) / u11
//   [         A22 ]   untouched
int factor_leaf(Uplo uplo, int n, Matrix<SingleComplex> a) {
    using T = SingleComplex;
    const bool upper = uplo == Uplo::upper;
    const T one = scalar<T>(1), minusOne = scalar<T>(-1);
    for (int j = 0; j < n; ++j) {
        const int rest = n - j - 1;
        const Vector<T> done = upper ? a.column(0, j) : a.row(j, 0); // u01, or the row of L left of the diagonal
        const float pivot = real_part(a(j, j)) - real_part(kernel::dotc(j, done, done));
        if (!(pivot > 0)) {
            a(j, j) = scalar<T>(pivot);
            return j + 1;
        }
        const float root = std::sqrt(pivot);
        a(j, j) = scalar<T>(root);
        if (rest == 0)
            break;
        const Vector<T> next = upper ? a.row(j, j + 1) : a.column(j + 1, j);
        if (j > 0) {
            conjugate(j, done);
            if (upper)
                kernel::gemv(Op::transpose, j, rest, minusOne, a.block(0, j + 1), done, one, next);
            else
                kernel::gemv(Op::none, rest, j, minusOne, a.block(j + 1, 0), done, one, next);
            conjugate(j, done);
        }
        kernel::scal(rest, 1 / root, next);
    }
    return 0;
}

} // namespace

template <class T>
int potf2(Uplo uplo, int n, Matrix<T> a) {
    if (n <= largestLeaf)
        return factor_leaf(uplo, n, a);
    const int nb = n <= fewBlocks ? leafSide : half_in_blocks(n);
    const auto factor = [uplo](int, int jb, Matrix<T> diagonal) { return FactorResult{potf2(uplo, jb, diagonal)}; };
    return factor_left_looking<Layer::kernel>(nb, uplo, n, a, factor).info;
}

template int potf2(Uplo, int, Matrix<float>);
template int potf2(Uplo, int, Matrix<SingleComplex>);

} // namespace qrv::lapack
