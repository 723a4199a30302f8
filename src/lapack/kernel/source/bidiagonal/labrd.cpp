// SLABRD, CLABRD: the first rows and columns of a matrix reduced to bidiagonal form, the rest left as it is.
//
// After i steps the matrix would be A - V Y^H - X U. A step brings its column and its row up to date, one behind the
// other, and for each makes a reflector and the column of Y or X that it needs:
//
//   y = tauq (A - V Y^H - X U)^H v          x = taup (A - V Y^H - X U) u
//
// the two products with A itself being half the work of the reduction. Rows are conjugated while they stand for
// vectors: u from before its reflector is made until x is.
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/bidiagonal.hpp"
#include "lapack/calls/reflectors.hpp"
#include "lapack/elements.hpp"

namespace qrv::lapack {
namespace {

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

template <class T>
struct Panel {
    int m, n;
    Matrix<T> a, x, y;

    static constexpr T one = scalar<T>(1), zero = scalar<T>(0), minusOne = scalar<T>(-1);

    static void subtract(Op op, int rows, int columns, Matrix<T> b, Vector<T> v, Vector<T> from) {
        kernel::gemv<T>(op, rows, columns, minusOne, b, v, one, from);
    }
    static void multiply(Op op, int rows, int columns, Matrix<T> b, Vector<T> v, Vector<T> to) {
        kernel::gemv<T>(op, rows, columns, one, b, v, zero, to);
    }

    // a(i.., j) brought up to date with `left` columns of V and Y and `right` columns of X and rows of U.
    void update_column(int i, int j, int left, int right) const {
        {
            const Conjugated<T> row(left, y.row(j, 0));
            subtract(Op::none, m - i, left, a.block(i, 0), y.row(j, 0), a.column(i, j));
        }
        subtract(Op::none, m - i, right, x.block(i, 0), a.column(0, j), a.column(i, j));
    }
    // a(i, j..), which stays conjugated.
    void update_row(int i, int j, int left, int right) const {
        conjugate(n - j, a.row(i, j));
        {
            const Conjugated<T> row(left, a.row(i, 0));
            subtract(Op::none, n - j, left, y.block(j, 0), a.row(i, 0), a.row(i, j));
        }
        const Conjugated<T> row(right, x.row(i, 0));
        subtract(adjoint<T>, right, n - j, a.block(0, j), x.row(i, 0), a.row(i, j));
    }

    // Column i of Y from the reflector v in a(row.., i), for the columns from i + 1 on.
    void form_y(int row, int i, int left, int right, T tau) const {
        const Vector<T> v = a.column(row, i), top = y.column(0, i), rest = y.column(i + 1, i);
        const int length = m - row, width = n - i - 1;
        blas::gemv<T>(adjoint<T>, length, width, one, a.block(row, i + 1), v, zero, rest);
        multiply(adjoint<T>, length, left, a.block(row, 0), v, top);
        subtract(Op::none, width, left, y.block(i + 1, 0), top, rest);
        multiply(adjoint<T>, length, right, x.block(row, 0), v, top);
        subtract(adjoint<T>, right, width, a.block(0, i + 1), top, rest);
        kernel::scal(width, tau, rest);
    }
    // Column i of X from the reflector u in a(i, column..), for the rows from i + 1 on.
    void form_x(int column, int i, int left, int right, T tau) const {
        const Vector<T> u = a.row(i, column), top = x.column(0, i), rest = x.column(i + 1, i);
        const int length = n - column, height = m - i - 1;
        blas::gemv<T>(Op::none, height, length, one, a.block(i + 1, column), u, zero, rest);
        multiply(adjoint<T>, length, left, y.block(column, 0), u, top);
        subtract(Op::none, height, left, a.block(i + 1, 0), top, rest);
        multiply(Op::none, right, length, a.block(0, column), u, top);
        subtract(Op::none, height, right, x.block(i + 1, 0), top, rest);
        kernel::scal(height, tau, rest);
    }

    // The reflector of a column or of a row that is up to date. Result: the element that is left of it.
    float reflect_column(int i, int j, T& tau) const {
        tau = larfg(m - i, a(i, j), a.column(std::min(i + 1, m - 1), j));
        return real_part(a(i, j));
    }
    float reflect_row(int i, int j, T& tau) const {
        tau = larfg(n - j, a(i, j), a.row(i, std::min(j + 1, n - 1)));
        return real_part(a(i, j));
    }
};

} // namespace

template <class T>
void labrd(int m, int n, int nb, Matrix<T> a, float* d, float* e, T* tauq, T* taup, Matrix<T> x, Matrix<T> y) {
    const Panel<T> panel{m, n, a, x, y};
    const T one = scalar<T>(1);
    if (m <= 0 || n <= 0)
        return;
    for (int i = 0; i < nb; ++i) {
        if (m >= n) {
            panel.update_column(i, i, i, i);
            d[i] = panel.reflect_column(i, i, tauq[i]);
            if (i + 1 == n)
                continue;
            a(i, i) = one;
            panel.form_y(i, i, i, i, tauq[i]);
            panel.update_row(i, i + 1, i + 1, i);
            e[i] = panel.reflect_row(i, i + 1, taup[i]);
            a(i, i + 1) = one;
            panel.form_x(i + 1, i, i + 1, i, taup[i]);
            conjugate(n - i - 1, a.row(i, i + 1));
        } else {
            panel.update_row(i, i, i, i);
            d[i] = panel.reflect_row(i, i, taup[i]);
            if (i + 1 < m) {
                a(i, i) = one;
                panel.form_x(i, i, i, i, taup[i]);
            }
            conjugate(n - i, a.row(i, i));
            if (i + 1 == m)
                continue;
            panel.update_column(i + 1, i, i, i + 1);
            e[i] = panel.reflect_column(i + 1, i, tauq[i]);
            a(i + 1, i) = one;
            panel.form_y(i + 1, i, i, i + 1, tauq[i]);
        }
    }
}

template void labrd(int, int, int, Matrix<float>, float*, float*, float*, float*, Matrix<float>, Matrix<float>);
template void labrd(int, int, int, Matrix<SingleComplex>, float*, float*, SingleComplex*, SingleComplex*,
                    Matrix<SingleComplex>, Matrix<SingleComplex>);

} // namespace qrv::lapack
