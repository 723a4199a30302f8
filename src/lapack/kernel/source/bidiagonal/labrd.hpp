// SLABRD, CLABRD: the first rows and columns of a matrix reduced to bidiagonal form, the rest left as it is.
//
// After some steps the matrix would be A - V Y^H - X U. A step brings its column and its row up to date, one behind the
// other, and for each makes a reflector and the column of Y or X that it needs:
//
//   y = tauq (A - V Y^H - X U)^H v          x = taup (A - V Y^H - X U) u
//
// the two products with A itself being half the work of the reduction. Rows are conjugated while they stand for
// vectors: u from before its reflector is made until x is. A tall matrix has its columns first: step i makes v, y, and
// row i up to date (together `front`, as they go through the columns behind i), then u and x (`back`). A wide one is
// the same for its adjoint, with rows for columns and x for y.
#pragma once

#include <algorithm>
#include <cstdint>

#include "blas/calls.hpp"
#include "blas/thread/common/slice.hpp"
#include "lapack/calls/reflectors.hpp"
#include "lapack/elements.hpp"

namespace qrv::lapack {

// Conjugates elements of a row as long as it lives.
template <class T>
class Conjugated {
public:
    Conjugated(int n, Vector<T> x) : n_(n), x_(x) { conjugate(n_, x_); }
    ~Conjugated() { conjugate(n_, x_); }
    Conjugated(const Conjugated&) = delete;
    Conjugated& operator=(const Conjugated&) = delete;

private:
    int n_;
    Vector<T> x_;
};

// to := op(A) z + beta*to, A so large that it comes from the outer caches, where a load that lies in two lines costs
// two. If all columns of A begin at the same place of a line, or every second one does, these go together, and the rows
// above their next line by themselves.
template <class T>
void multiply_by_lines(Op op, int m, int n, Matrix<T> a, Vector<T> z, T beta, Vector<T> to) {
    constexpr int line = 64 / static_cast<int>(sizeof(T)), leastRows = 8 * line;
    constexpr std::int64_t leastElements = isComplex<T> ? 1 << 13 : 1 << 18; // below, real ones took 1 to 2 % longer
    const int sets = a.ld % line == 0 ? 1 : a.ld % (line / 2) == 0 ? 2 : 0;
    if (m < leastRows || std::int64_t{m} * n < leastElements || sets == 0)
        return kernel::gemv<T>(op, m, n, scalar<T>(1), a, z, beta, to);
    for (int set = 0; set < sets; ++set) {
        const int columns = (n - set + sets - 1) / sets;
        const Matrix<T> part{a.column(set), a.ld * sets};
        const auto place = static_cast<int>(reinterpret_cast<std::uintptr_t>(part.data) / sizeof(T) % line);
        const int above = place == 0 ? 0 : line - place;
        const auto every = [&](Vector<T> x) { return Vector<T>{x.from(set).data, x.inc * sets}; };
        const auto add_rows = [&](int first, int rows) {
            const bool untouched = op == Op::none ? set == 0 : first == 0;
            kernel::gemv<T>(op, rows, columns, scalar<T>(1), part.block(first, 0),
                            op == Op::none ? every(z) : z.from(first), untouched ? beta : scalar<T>(1),
                            op == Op::none ? to.from(first) : every(to));
        };
        if (above > 0)
            add_rows(0, above);
        add_rows(above, m - above);
    }
}

// What is done on the whole or, by a thread, on a part of the rows or columns behind step i. Before row i is brought up
// to date there are so many columns of V and Y as its number, and before column j so many rows of U and columns of X.
template <class T>
struct BidiagonalPanel {
    int m, n;
    Matrix<T> a, x, y;

    bool tall() const { return m >= n; }
    // Where the vectors of step i begin: v in row(i) of column i, u in column(i) of row i.
    int row(int i) const { return tall() ? i : i + 1; }
    int column(int i) const { return tall() ? i + 1 : i; }
    Vector<T> v(int i) const { return a.column(row(i), i); }
    Vector<T> u(int i) const { return a.row(i, column(i)); }
    int length_of_v(int i) const { return m - row(i); }
    int length_of_u(int i) const { return n - column(i); }
    int rows_behind(int i) const { return m - i - 1; }
    int columns_behind(int i) const { return n - i - 1; }

    // ---- Columns and rows brought up to date ------------------------------------------------------------------------

    // Rows `part` of column j from row i on; row j of Y is conjugated.
    void update_column(int i, int j, Slice part) const {
        const int first = i + part.first;
        subtract(Op::none, part.count, j, a.block(first, 0), y.row(j, 0), a.column(first, j));
        subtract(Op::none, part.count, i, x.block(first, 0), a.column(0, j), a.column(first, j));
    }
    // Columns `part` of row i from column j on, conjugated; so are row i of V and of X.
    void update_row(int i, int j, Slice part) const {
        const int first = j + part.first;
        subtract(Op::none, part.count, j, y.block(first, 0), a.row(i, 0), a.row(i, first));
        subtract(adjoint<T>, i, part.count, a.block(0, first), x.row(i, 0), a.row(i, first));
    }

    // The reflector of a column or of a row that is up to date. Result: the element that is left of it; that in A
    // becomes 1 where others need the vector.
    float reflect_column(int i, int j, T& tau) const {
        tau = larfg(m - i, a(i, j), a.column(std::min(i + 1, m - 1), j));
        return real_part(a(i, j));
    }
    float reflect_row(int i, int j, T& tau) const {
        tau = larfg(n - j, a(i, j), a.row(i, std::min(j + 1, n - 1)));
        return real_part(a(i, j));
    }

    // ---- Columns of Y and X -----------------------------------------------------------------------------------------
    //
    // Beside the product with A each takes two short ones, with V or Y and with X or U. These lie at the tops of both
    // columns i, where nothing is needed any more.

    enum Short { withV, withX };
    static constexpr Short bothShort[2] = {withV, withX};

    void form_short_of_y(int i, Short which) const {
        if (which == withV)
            multiply(adjoint<T>, length_of_v(i), i, a.block(row(i), 0), v(i), y.column(0, i));
        else
            multiply(adjoint<T>, length_of_v(i), row(i), x.block(row(i), 0), v(i), x.column(0, i));
    }
    void form_short_of_x(int i, Short which) const {
        if (which == withV)
            multiply(adjoint<T>, length_of_u(i), column(i), y.block(column(i), 0), u(i), x.column(0, i));
        else
            multiply(Op::none, i, length_of_u(i), a.block(0, column(i)), u(i), y.column(0, i));
    }
    // From the product with A to y and x, elements `part` behind i.
    void finish_y(int i, T tau, Slice part) const {
        const int first = i + 1 + part.first;
        const Vector<T> to = y.column(first, i);
        subtract(Op::none, part.count, i, y.block(first, 0), y.column(0, i), to);
        subtract(adjoint<T>, row(i), part.count, a.block(0, first), x.column(0, i), to);
        kernel::scal(part.count, tau, to);
    }
    void finish_x(int i, T tau, Slice part) const {
        const int first = i + 1 + part.first;
        const Vector<T> to = x.column(first, i);
        subtract(Op::none, part.count, column(i), a.block(first, 0), x.column(0, i), to);
        subtract(Op::none, part.count, i, x.block(first, 0), y.column(0, i), to);
        kernel::scal(part.count, tau, to);
    }

    // ---- The same for a tall matrix and the adjoint of a wide one ---------------------------------------------------

    // Elements of what the front of step i forms, and of what its back does.
    int front_length(int i) const { return tall() ? columns_behind(i) : rows_behind(i); }
    int back_length(int i) const { return tall() ? rows_behind(i) : columns_behind(i); }
    void form_short_of_front(int i, Short which) const {
        tall() ? form_short_of_y(i, which) : form_short_of_x(i, which);
    }
    void form_short_of_back(int i, Short which) const {
        tall() ? form_short_of_x(i, which) : form_short_of_y(i, which);
    }
    void finish_front(int i, T tau, Slice part) const { tall() ? finish_y(i, tau, part) : finish_x(i, tau, part); }
    void finish_back(int i, T tau, Slice part) const { tall() ? finish_x(i, tau, part) : finish_y(i, tau, part); }
    void update_front(int i, Slice part) const { tall() ? update_row(i, i + 1, part) : update_column(i + 1, i, part); }

private:
    static void subtract(Op op, int rows, int columns, Matrix<T> b, Vector<T> z, Vector<T> from) {
        kernel::gemv<T>(op, rows, columns, scalar<T>(-1), b, z, scalar<T>(1), from);
    }
    static void multiply(Op op, int rows, int columns, Matrix<T> b, Vector<T> z, Vector<T> to) {
        kernel::gemv<T>(op, rows, columns, scalar<T>(1), b, z, scalar<T>(0), to);
    }
};

// The panel on a team, products with A shared out in chunks of so many of its columns (rows of a wide matrix). Result:
// whether it was done; without memory for the partial sums nothing is.
template <class T>
bool labrd_on_team(int threads, int chunk, const BidiagonalPanel<T>& panel, int nb, float* d, float* e, T* tauq,
                   T* taup);

// The columns and rows of a panel, one after the other. `products` has front(i, tau), which forms column i of Y and
// brings row i up to date, and back(i, tau), which forms column i of X; or rows and columns exchanged.
template <class T, class Products>
void reduce_panel(const BidiagonalPanel<T>& p, int nb, float* d, float* e, T* tauq, T* taup, const Products& products) {
    const T one = scalar<T>(1);
    for (int i = 0; i < nb; ++i) {
        if (p.tall()) {
            {
                const Conjugated<T> y(i, p.y.row(i, 0));
                p.update_column(i, i, {0, p.m - i});
            }
            d[i] = p.reflect_column(i, i, tauq[i]);
            if (i + 1 == p.n)
                break;
            p.a(i, i) = one;
            products.front(i, tauq[i]);
            e[i] = p.reflect_row(i, i + 1, taup[i]);
            p.a(i, i + 1) = one;
            products.back(i, taup[i]);
            conjugate(p.length_of_u(i), p.u(i));
        } else {
            conjugate(p.n - i, p.a.row(i, i));
            {
                const Conjugated<T> v(i, p.a.row(i, 0)), x(i, p.x.row(i, 0));
                p.update_row(i, i, {0, p.n - i});
            }
            d[i] = p.reflect_row(i, i, taup[i]);
            if (i + 1 < p.m) {
                p.a(i, i) = one;
                products.front(i, taup[i]);
            }
            conjugate(p.length_of_u(i), p.u(i));
            if (i + 1 == p.m)
                break;
            e[i] = p.reflect_column(i + 1, i, tauq[i]);
            p.a(i + 1, i) = one;
            products.back(i, tauq[i]);
        }
    }
}

// Row i of a tall matrix or column i of a wide one, `update` doing the whole of it.
template <class T, class Update>
void update_front_by(const BidiagonalPanel<T>& p, int i, const Update& update) {
    if (p.tall()) {
        conjugate(p.columns_behind(i), p.a.row(i, i + 1));
        const Conjugated<T> v(i + 1, p.a.row(i, 0)), x(i, p.x.row(i, 0));
        update();
    } else {
        const Conjugated<T> y(i, p.y.row(i, 0));
        update();
    }
}

} // namespace qrv::lapack
