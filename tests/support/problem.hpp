// Problems of any routine of BLAS levels 2 and 3: operands, the call, and whether a result is right. What a routine
// must not read is NaN, or lies outside its memory.
#pragma once

#include <gtest/gtest.h>
#include <ostream>
#include <string>

#include "support/flags.hpp"
#include "support/oracle.hpp"

namespace qrv::test {

// The arguments of a routine, under the names of the general product; vectors have their increment in place of a
// leading dimension. C is what is written.
template <class T>
struct Call {
    char side = 'L', uplo = 'U', trans = 'N', transb = 'N', diag = 'N';
    int m = 0, n = 0, k = 0, ku = 0;
    T alpha = {}, beta = {};
    const T* a = nullptr;
    int lda = 1;
    const T* b = nullptr;
    int ldb = 1;
    T* c = nullptr;
    int ldc = 1;
};

// What a routine does, and with what kind of matrix: A, or C of an update. conj stands for the conjugate of Hermitian
// updates.
enum class What {
    product, // C := alpha*op(A)*op(B) + beta*C, or with A on the right
    inPlace, // C := alpha*op(A)*C
    solve,   // op(A)*X = alpha*C, X in place of C
    update,  // C := alpha*op(A)*op(A)' + beta*C, op(B) in place of the second op(A) where C is general
    update2, // C := alpha*op(A)*op(B)' + conj(alpha)*op(B)*op(A)' + beta*C
};
struct Operation {
    What what;
    Form::Kind kind = Form::general;
    bool vectors = false; // level 2: B and C of a product are vectors, A and B of an update
    bool banded = false;
    bool conjugated = kind == Form::hermitian;
    bool packed = false; // the matrix with structure

    bool updates() const { return what == What::update || what == What::update2; }
    bool triangular() const { return kind == Form::triangular; }
};

struct Shape {
    char side = 'L', uplo = 'U', trans = 'N', transb = 'N', diag = 'N';
    int m = 1, n = 1, k = 1, ku = 0;
    float alpha = 1, beta = 1; // see scalar_of
    int incx = 1, incy = 1;
    Layout a = {}, b = {}, c = {};
};

inline std::ostream& operator<<(std::ostream& out, const Shape& p) {
    out << p.side << p.uplo << p.trans << p.transb << p.diag << " m=" << p.m << " n=" << p.n << " k=" << p.k << ','
        << p.ku << " alpha=" << p.alpha << " beta=" << p.beta << " inc " << p.incx << ',' << p.incy;
    for (const Layout& l : {p.a, p.b, p.c})
        out << " [ld+" << l.extra << " start " << l.offset << " guard " << static_cast<int>(l.guard) << ']';
    return out;
}

template <class T>
class Problem {
public:
    Operation operation;
    Shape p;
    T alpha, beta;
    Operand<T> a, b, before;

    Problem(const Operation& o, const Shape& shape)
        : operation(o), p(normalized(o, shape)), alpha(scalar_of<T>(p.alpha)), beta(scalar_of<T>(p.beta)),
          a(form_a(), p.a), b(form_b(), p.b), before(form_c(), p.c) {
        if (o.updates() && o.vectors)
            beta = scalar<T>(1);
        if (o.kind == Form::hermitian && o.updates())
            set_imaginary(beta, 0);
        if (o.kind == Form::hermitian && o.what == What::update)
            set_imaginary(alpha, 0);
        if (o.triangular() && o.vectors)
            alpha = scalar<T>(1);
        std::minstd_rand random(11);
        const bool unread = alpha == T(), overwritten = beta == T() && !in_place() && !empty();
        for (Operand<T>* x : {&a, &b})
            unread ? x->fill(nan) : x->fill_random(random);
        overwritten || (unread && in_place()) ? before.fill(nan) : before.fill_random(random);
    }

    // Whether nothing happens at all.
    bool untouched() const {
        const bool noProduct = alpha == T() || (!operation.vectors && operation.kind != Form::triangular &&
                                                (operation.updates() || general()) && p.k == 0);
        return empty() || (noProduct && beta == scalar<T>(1) && !in_place());
    }

    template <class Run>
    Operand<T> result(const Run& run) const {
        Operand<T> c = before;
        run(on(c));
        return c;
    }
    // The call with this C.
    Call<T> on(Operand<T>& c) const {
        return {p.side, p.uplo, p.trans,  p.transb, p.diag,   p.m,    p.n,      p.k,   p.ku,
                alpha,  beta,   a.data(), a.ld(),   b.data(), b.ld(), c.data(), c.ld()};
    }
    bool right(const Operand<T>& c) const {
        if (untouched())
            return c.guards_intact() && c.same_bits(before);
        if (operation.what == What::solve && alpha != T()) {
            // A solution is judged by its product with the triangle.
            if (!triangle_)
                triangle_.emplace(a, p.trans);
            const WideMatrix<T> x(c);
            const Expected<T> residual = left() ? product<T>(1, *triangle_, x, -widen(alpha), before)
                                                : product<T>(1, x, *triangle_, -widen(alpha), before);
            Operand<T> zeros(c.form(), {});
            return c.guards_intact() && residual.error(zeros.fill(0)) <= 1;
        }
        if (!expected_)
            expected_ = expect();
        return c.guards_intact() && expected_->error(c) <= 1;
    }

    template <class Run>
    void check(const Run& run, const std::string& what) const {
        Operand<T> c = before;
        const int flags = flags_raised([&] { run(on(c)); });
        EXPECT_TRUE(right(c)) << what << (isComplex<T> ? " complex " : " real ") << p;
        EXPECT_TRUE(flags == 0 || c.count_bad([](int, int, const T& x) { return is_finite(x); }) > 0)
            << what << (isComplex<T> ? " complex " : " real ") << p << " raises " << flags
            << ", which nothing explains";
    }

private:
    static Shape normalized(const Operation& o, Shape p) {
        if (o.vectors && o.kind != Form::general)
            p.m = p.n; // a square
        return p;
    }
    bool left() const { return p.side == 'L' || p.side == 'l'; }
    bool in_place() const { return operation.what == What::inPlace || operation.what == What::solve; }
    bool empty() const { return operation.what == What::product && operation.vectors && (p.m == 0 || p.n == 0); }

    Form matrix(int rows, int columns) const {
        Form f{rows, columns};
        f.kind = operation.kind;
        if (f.kind != Form::general)
            f.uplo = p.uplo;
        if (f.kind == Form::triangular)
            f.diag = p.diag;
        f.packed = operation.packed;
        if (operation.banded) {
            f.banded = true;
            f.below = f.kind == Form::general || !is_upper(p.uplo) ? p.k : 0;
            f.above = f.kind == Form::general ? p.ku : is_upper(p.uplo) ? p.k : 0;
        }
        return f;
    }
    static Form vector(int n, int inc) { return {n, 1, Form::vector, 'A', 'N', false, 0, 0, inc}; }
    static Form whole(bool transposed, int rows, int columns) {
        return transposed ? Form{columns, rows} : Form{rows, columns};
    }
    bool general() const { return operation.kind == Form::general; }
    Form form_a() const {
        if (operation.updates())
            return operation.vectors ? vector(general() ? p.m : p.n, p.incx) : whole(is_transposed(p.trans), p.n, p.k);
        if (!general())
            return operation.vectors || !left() ? matrix(p.n, p.n) : matrix(p.m, p.m);
        return operation.vectors ? matrix(p.m, p.n) : whole(is_transposed(p.trans), p.m, p.k);
    }
    Form form_b() const {
        if (in_place())
            return {};
        if (operation.updates())
            return operation.vectors ? vector(p.n, p.incy) : whole(is_transposed(p.trans), p.n, p.k);
        if (operation.vectors)
            return vector(general() && is_transposed(p.trans) ? p.m : p.n, p.incx);
        return general() ? whole(is_transposed(p.transb), p.k, p.n) : Form{p.m, p.n};
    }
    Form form_c() const {
        if (operation.updates())
            return general() ? matrix(p.m, p.n) : matrix(p.n, p.n);
        if (operation.vectors)
            return in_place() ? vector(p.n, p.incx) : vector(general() && !is_transposed(p.trans) ? p.m : p.n, p.incy);
        return {p.m, p.n};
    }

    Expected<T> expect() const {
        const Wide<T> by = widen(alpha), scale = in_place() ? Wide<T>(0) : widen(beta);
        const WideMatrix<T> x(a, p.trans);
        if (in_place())
            return left() ? product(by, x, WideMatrix<T>(before), scale, before)
                          : product(by, WideMatrix<T>(before), x, scale, before);
        if (!operation.updates()) {
            const WideMatrix<T> y(b, p.transb);
            return left() ? product(by, x, y, scale, before) : product(by, y, x, scale, before);
        }
        const WideMatrix<T> y(b, operation.vectors ? 'N' : p.trans);
        const auto adjoint = [&](const WideMatrix<T>& z, int l, int j) {
            return operation.conjugated ? conjugate(z(j, l)) : z(j, l);
        };
        const int k = x.columns;
        if (operation.what == What::update)
            return product(by, x, WideMatrix<T>(k, p.n, [&](int l, int j) { return adjoint(general() ? y : x, l, j); }),
                           scale, before);
        if (by == 0.0)
            return product(by, x, y, scale, before);
        // Both terms are one product of twice the depth.
        const Wide<T> second = operation.conjugated ? conjugate(by) : by;
        const WideMatrix<T> lefts(
            x.rows, 2 * k, [&](int i, int l) { return l < k ? times(by, x(i, l)) : times(second, y(i, l - k)); });
        const WideMatrix<T> rights(2 * k, p.n,
                                   [&](int l, int j) { return l < k ? adjoint(y, l, j) : adjoint(x, l - k, j); });
        return product<T>(1, lefts, rights, scale, before);
    }

    mutable std::optional<Expected<T>> expected_;
    mutable std::optional<WideMatrix<T>> triangle_; // of a solve
};

} // namespace qrv::test
