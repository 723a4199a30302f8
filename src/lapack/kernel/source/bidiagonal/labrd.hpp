// SLABRD, CLABRD: the first rows and columns of a matrix reduced to bidiagonal form, the rest left as it is.
//
// After some steps the matrix would be A - V Y^H - X U. A step brings a column up to date and makes its reflector, and
// then the row that the reflector begins in; for each it needs a column of Y or X:
//
//   y = tauq (A - V Y^H - X U)^H v          x = taup (A - V Y^H - X U) u
//
// The two products with A itself are half the work of the reduction, and both are computed in one reading of A: element
// j of the row follows from element j of y, so that column j of A, once it has met v, can be added to the sum for x
// with the element that the row has before its reflector is made. The reflector only moves the first element of the row
// and scales it, and the sum follows.
//
// Rows are conjugated while they stand for vectors: u from before its reflector is made until x is. The reflector of
// column i of a tall matrix begins in row i. A wide matrix has one row first, and there it begins in row i + 1.
#pragma once

#include <algorithm>
#include <cmath>
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

// What is done on the whole or, by a thread, on a part of the rows or columns behind. Column i is brought up to date
// with i columns of V and Y and row_of(i) rows of U and columns of X; row k with column_of(k) and k.
template <class T>
struct BidiagonalPanel {
    int m, n;
    Matrix<T> a, x, y;

    bool tall() const { return m >= n; }
    // Where the vectors begin: v of column i in a row, u of row k in a column.
    int row_of(int i) const { return tall() ? i : i + 1; }
    int column_of(int k) const { return tall() ? k + 1 : k; }
    int rows_behind(int k) const { return m - k - 1; }
    int columns_behind(int i) const { return n - i - 1; }
    Vector<T> v(int i) const { return a.column(row_of(i), i); }
    Vector<T> u(int k) const { return a.row(k, column_of(k)); }
    int length_of_v(int i) const { return m - row_of(i); }
    int length_of_u(int k) const { return n - column_of(k); }

    // The reflector of column i, brought up to date, and of row k, which is. Result: the element that is left, in whose
    // place others need the 1 of the vector.
    float reflect_column(int i, T& tau) const {
        const int k = row_of(i);
        {
            const Conjugated<T> yRow(i, y.row(i, 0));
            subtract(Op::none, m - k, i, a.block(k, 0), y.row(i, 0), a.column(k, i));
        }
        subtract(Op::none, m - k, k, x.block(k, 0), a.column(0, i), a.column(k, i));
        tau = larfg(m - k, a(k, i), a.column(std::min(k + 1, m - 1), i));
        return real_part(a(k, i));
    }
    float reflect_row(int k, T& tau) const {
        const int j = column_of(k);
        tau = larfg(n - j, a(k, j), a.row(k, std::min(j + 1, n - 1)));
        return real_part(a(k, j));
    }

    // ---- Columns of Y and X -----------------------------------------------------------------------------------------
    //
    // Beside the product with A each takes two short ones, with V or Y and with X or U. These lie at the tops of both
    // columns, where nothing is needed any more.

    enum Short { withV, withX };
    static constexpr Short bothShort[2] = {withV, withX};

    void form_short_of_y(int i, Short which) const {
        if (which == withV)
            multiply(adjoint<T>, length_of_v(i), i, a.block(row_of(i), 0), v(i), y.column(0, i));
        else
            multiply(adjoint<T>, length_of_v(i), row_of(i), x.block(row_of(i), 0), v(i), x.column(0, i));
    }
    void form_short_of_x(int k, Short which) const {
        if (which == withV)
            multiply(adjoint<T>, length_of_u(k), column_of(k), y.block(column_of(k), 0), u(k), x.column(0, k));
        else
            multiply(Op::none, k, length_of_u(k), a.block(0, column_of(k)), u(k), y.column(0, k));
    }

    // Elements `part` behind i of y without tauq and without rows of A below the first of v, from that row, which is
    // conjugated.
    void begin_y(int i, Slice part) const {
        const int k = row_of(i), first = i + 1 + part.first;
        const Vector<T> to = y.column(first, i);
        kernel::copy(part.count, a.row(k, first), to);
        subtract(Op::none, part.count, i, y.block(first, 0), y.column(0, i), to);
        subtract(adjoint<T>, k, part.count, a.block(0, first), x.column(0, i), to);
    }
    // From there y, the row up to date, and sum := sum + A times the row, by columns `part` behind i. Row k of V and of
    // X is conjugated too.
    void couple(int i, T tau, Slice part, T* sum) const {
        const int k = row_of(i), first = i + 1 + part.first;
        const Vector<T> row = a.row(k, first);
        begin_y(i, part);
        subtract(Op::none, part.count, i, y.block(first, 0), a.row(k, 0), row);
        subtract(adjoint<T>, k, part.count, a.block(0, first), x.row(k, 0), row);
        kernel::gemvt(rows_behind(k), part.count, tau, a.block(k + 1, first), v(i).from(1).data, row,
                      y.column(first, i), sum);
    }

    // Whether A u can be told from the sum, of which `left` remained: not if products with elements as small or as
    // large as those of the row could vanish or overflow.
    static bool tells(T tau, float left) {
        constexpr float most = 0x1p50F;
        return tau != scalar<T>(0) && std::fabs(left) >= 1 / most && std::fabs(left) <= most;
    }
    // Elements `part` behind k of A u, from the sum and the element that began the row: u is the row minus `left` in
    // the first place, over the new first element.
    void turn_sum(int k, T began, float left, Slice part) const {
        const int first = k + 1 + part.first;
        const Vector<T> to = x.column(first, k);
        kernel::axpy(part.count, scalar<T>(-left), a.column(first, column_of(k)), to);
        kernel::scal(part.count, scalar<T>(1) / (began - scalar<T>(left)), to);
    }
    // From A u to x, elements `part` behind k.
    void finish_x(int k, T tau, Slice part) const {
        const int first = k + 1 + part.first;
        const Vector<T> to = x.column(first, k);
        subtract(Op::none, part.count, column_of(k), a.block(first, 0), x.column(0, k), to);
        subtract(Op::none, part.count, k, x.block(first, 0), y.column(0, k), to);
        kernel::scal(part.count, tau, to);
    }

private:
    static void subtract(Op op, int rows, int columns, Matrix<T> b, Vector<T> z, Vector<T> from) {
        kernel::gemv<T>(op, rows, columns, scalar<T>(-1), b, z, scalar<T>(1), from);
    }
    static void multiply(Op op, int rows, int columns, Matrix<T> b, Vector<T> z, Vector<T> to) {
        kernel::gemv<T>(op, rows, columns, scalar<T>(1), b, z, scalar<T>(0), to);
    }
};

// The panel on a team. Result: whether it was done; without memory for the partial sums nothing is.
template <class T>
bool labrd_on_team(int threads, const BidiagonalPanel<T>& panel, int nb, float* d, float* e, T* tauq, T* taup);

// The columns and rows of a panel, one after the other. `team` runs phases, one after the other, on its members, each
// of which is told the size of the team and its number; and it tells where member `number` of so many sums up so many
// elements, the last one in X itself.
//
// What holds in a team:
//   - In the phase of the short products nothing is written that they read: v or u, V, Y, X and U before this step.
//     They write the tops of columns of Y and X only. Rows k of V and X are conjugated in a phase of its own.
//   - In the last phase each member writes elements of its own: of y, of the row and of a sum, respectively of x. It
//     adds the sums in the order of the members.
//   - The members of a region are counted in it, as a team may be smaller than asked.
template <class T, class Team>
class PanelReduction {
public:
    PanelReduction(const BidiagonalPanel<T>& panel, const Team& team) : p(panel), team_(team) {}

    void run(int nb, float* d, float* e, T* tauq, T* taup) const {
        float *const ofColumns = p.tall() ? d : e, *const ofRows = p.tall() ? e : d;
        const T one = scalar<T>(1);
        if (!p.tall()) {
            const Conjugated<T> row(p.n, p.a.row(0, 0));
            ofRows[0] = p.reflect_row(0, taup[0]);
            if (p.m == 1)
                return;
            p.a(0, 0) = one;
            form_x(0, taup[0]);
        }
        for (int i = 0; i < nb; ++i) {
            const int k = p.row_of(i);
            ofColumns[i] = p.reflect_column(i, tauq[i]);
            if (i + 1 == p.n)
                return;
            p.a(k, i) = one;
            const Conjugated<T> row(p.columns_behind(i), p.a.row(k, i + 1));
            if (k == nb)
                return form_y(i, tauq[i]);
            const int sums = couple(i, tauq[i]);
            const T began = p.a(k, i + 1);
            ofRows[k] = p.reflect_row(k, taup[k]);
            if (k + 1 == p.m)
                return;
            p.a(k, i + 1) = one;
            if (!p.tells(taup[k], ofRows[k]) || !form_x_from_sums(k, taup[k], began, ofRows[k], sums))
                form_x(k, taup[k]);
        }
    }

private:
    // y, the row and the sums. Result: how many of these there are.
    int couple(int i, T tau) const {
        const int k = p.row_of(i), rows = p.rows_behind(k);
        int sums = 0;
        const auto conjugate_rows = [&] {
            conjugate(i, p.a.row(k, 0));
            conjugate(k, p.x.row(k, 0));
        };
        const auto form_short = [&](int size, int number) {
            for (int which = number; which < 2; which += size)
                p.form_short_of_y(i, p.bothShort[which]);
        };
        const auto conjugate_once = [&](int, int number) {
            if (number == 0)
                conjugate_rows();
        };
        const auto add_up = [&](int size, int number) {
            if (number == 0)
                sums = size;
            T* const sum = sum_of(k, number, size);
            std::fill_n(sum, rows, scalar<T>(0));
            p.couple(i, tau, even_slice(p.columns_behind(i), size, number), sum);
        };
        if constexpr (isComplex<T>)
            team_.run(form_short, conjugate_once, add_up);
        else
            team_.run(form_short, add_up);
        conjugate_rows();
        return sums;
    }
    // Result: whether all of x is finite, else sums may have overflowed.
    bool form_x_from_sums(int k, T tau, T began, float left, int sums) const {
        finish_x(k, tau, [&](Slice part) {
            for (int other = 0; other < sums - 1; ++other)
                kernel::axpy(part.count, scalar<T>(1), Vector<T>{sum_of(k, other, sums), 1}.from(part.first),
                             p.x.column(k + 1 + part.first, k));
            p.turn_sum(k, began, left, part);
        });
        return std::isfinite(kernel::asum(p.rows_behind(k), p.x.column(k + 1, k)));
    }
    void form_x(int k, T tau) const {
        blas::gemv<T>(Op::none, p.rows_behind(k), p.length_of_u(k), scalar<T>(1), p.a.block(k + 1, p.column_of(k)),
                      p.u(k), scalar<T>(0), p.x.column(k + 1, k));
        finish_x(k, tau, [](Slice) {});
    }
    template <class Begin>
    void finish_x(int k, T tau, const Begin& begin) const {
        const auto form_short = [&](int size, int number) {
            for (int which = number; which < 2; which += size)
                p.form_short_of_x(k, p.bothShort[which]);
        };
        team_.run(form_short, [&](int size, int number) {
            const Slice part = even_slice(p.rows_behind(k), size, number);
            begin(part);
            p.finish_x(k, tau, part);
        });
    }
    // Of the last column of a wide matrix, behind which there is no row of the panel.
    void form_y(int i, T tau) const {
        const int k = p.row_of(i);
        const Vector<T> to = p.y.column(i + 1, i);
        for (const auto which : p.bothShort)
            p.form_short_of_y(i, which);
        p.begin_y(i, {0, p.columns_behind(i)});
        blas::gemv<T>(adjoint<T>, p.rows_behind(k), p.columns_behind(i), scalar<T>(1), p.a.block(k + 1, i + 1),
                      p.v(i).from(1), scalar<T>(1), to);
        kernel::scal(p.columns_behind(i), tau, to);
    }
    T* sum_of(int k, int member, int members) const {
        return member == members - 1 ? p.x.column(k + 1, k).data : team_.sum(member, p.rows_behind(k));
    }

    const BidiagonalPanel<T>& p;
    const Team& team_;
};

} // namespace qrv::lapack
