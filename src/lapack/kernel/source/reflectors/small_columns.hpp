// Reflectors on a small matrix, or on the last columns of a larger one, in a copy: in its vectors a step takes a few
// dozen instructions, of which calls of kernels would take many times as many.
#pragma once

#include <algorithm>

#include "blas/assert.hpp"
#include "lapack/calls/reflectors.hpp"
#include "lapack/elements.hpp"
#include "lapack/kernel/source/reflectors/reflected_column.hpp"
#include "lapack/quads.hpp"

namespace qrv::lapack {

// Larger complex ones are better off with kernels of wide vectors.
template <class T>
constexpr int smallSide = isComplex<T> ? 16 : 32;
template <class T>
constexpr bool is_small(int m, int n) {
    return m <= smallSide<T> && n <= smallSide<T>;
}

template <class T>
class SmallColumns {
public:
    // Of a, or of its adjoint: m rows and n columns.
    SmallColumns(int m, int n, Matrix<const T> a, Op op = Op::none) : m_(m), n_(n), height_(quads_of(m)), op_(op) {
        QRV_ASSERT(is_small<T>(m, n));
        each_quad([&](Rows<T>& rows, int i, int j, int count) {
            rows = op == Op::none ? load_rows<T>(&a(i, j), 1, count) : adjoint_of(load_rows<T>(&a(j, i), a.ld, count));
        });
    }
    // Where it came from.
    void store(Matrix<T> a) {
        each_quad([&](const Rows<T>& rows, int i, int j, int count) {
            if (op_ == Op::none)
                store_rows(rows, count, &a(i, j));
            else
                for (int l = 0; l < count; ++l)
                    a(j, i + l) = conj(element_of(rows, l));
        });
    }

    // Makes the reflector of column j from row i on, as SLARFP does, with which `apply` goes on. Result: tau.
    T reflect(int i, int j) {
        Rows<T>* const x = column(j);
        begin(i);
        const Wide<T> alpha = widened(element_of(x[first_], i % lanes));
        const Rows<T> top = keep(x[first_], below_);
        const double square = sum_of_squares(top, x + first_ + 1, x + height_);
        double beta = 0;
        Wide<T> tau = 0, factor = 0;
        if (is_lost(square, alpha)) {
            beta = modulus(alpha);
            tau = turn_of(alpha, beta);
        } else {
            const PositiveReflection<Wide<T>> reflection(alpha, square);
            beta = reflection.beta;
            if (is_far_from_one(modulus(reflection.difference))) // so it is where the column is too short
                return reflect_with_care(i, j);
            tau = reflection.tau();
            factor = reciprocal(reflection.difference);
        }
        const Rows<T> by = spread(conj(element(factor))), scaled = times_adjoint(top, by);
        v_[first_] = scaled + keep(spread(scalar<T>(1)), here_);
        x[first_] = keep(x[first_], above_) + keep(spread(scalar<T>(static_cast<float>(beta))), here_) + scaled;
        for (int r = first_ + 1; r < height_; ++r)
            x[r] = v_[r] = times_adjoint(x[r], by);
        return element(tau);
    }
    // Takes the reflector that is stored in column j from row i on.
    void take(int i, int j) {
        const Rows<T>* const x = column(j);
        begin(i);
        v_[first_] = keep(x[first_], below_) + keep(spread(scalar<T>(1)), here_);
        std::copy(x + first_ + 1, x + height_, v_ + first_ + 1);
    }
    // Takes v from elsewhere, with elements [0, m), of which those in front of i are 0.
    void take(const T* v, int i) {
        begin(i);
        for (int r = first_; r < height_; ++r)
            v_[r] = load_rows<T>(v + r * lanes, 1, smaller(lanes, m_ - r * lanes));
    }
    // Applies I - tau v v^H to the columns from j on. Rows in front of v are not looked at, whatever they hold.
    void apply(T tau, int j) {
        if (tau == scalar<T>(0))
            return;
        const Rows<T>* const v = v_ + first_;
        const int count = height_ - first_;
        const Lanes mine = here_ | below_;
        for (; j < n_; ++j) {
            Rows<T>* const c = column(j) + first_;
            Rows<T> product = times_adjoint(keep(c[0], mine), v[0]);
            for (int r = 1; r < count; ++r)
                product = product + times_adjoint(c[r], v[r]);
            const Rows<T> y = spread(conj(tau * sum_of(product)));
            c[0] = c[0] - keep(times_adjoint(v[0], y), mine);
            for (int r = 1; r < count; ++r)
                c[r] = c[r] - times_adjoint(v[r], y);
        }
    }
    // Column j becomes that of I - tau v v^H which meets the 1 of v.
    void generate(T tau, int j) {
        Rows<T>* const x = column(j);
        const Rows<T> by = spread(conj(-tau));
        std::fill_n(x, first_, Rows<T>{});
        x[first_] = times_adjoint(keep(v_[first_], below_), by) + keep(spread(scalar<T>(1) - tau), here_);
        for (int r = first_ + 1; r < height_; ++r)
            x[r] = times_adjoint(v_[r], by);
    }
    // Column j becomes that of the identity matrix.
    void make_unit(int j) {
        std::fill_n(column(j), height_, Rows<T>{});
        set_element(column(j)[j / lanes], j % lanes, scalar<T>(1));
    }

private:
    using Lanes = int __attribute__((vector_size(sizeof(Quad))));
    static Quad keep(Quad x, Lanes which) { return reinterpret_cast<Quad>(reinterpret_cast<Lanes>(x) & which); }
    static ComplexQuad keep(const ComplexQuad& x, Lanes which) { return {keep(x.re, which), keep(x.im, which)}; }

    static Quad adjoint_of(Quad x) { return x; }
    static ComplexQuad adjoint_of(const ComplexQuad& x) { return {x.re, -x.im}; }

    static float sum_of(Quad x) { return (x[0] + x[2]) + (x[1] + x[3]); }
    static SingleComplex sum_of(const ComplexQuad& x) { return {sum_of(x.re), sum_of(x.im)}; }

    using Doubles = double __attribute__((vector_size(lanes * sizeof(double))));
    static void add_squares(Doubles& to, Quad x) {
        const Doubles wide = __builtin_convertvector(x, Doubles);
        to += wide * wide;
    }
    static void add_squares(Doubles& to, const ComplexQuad& x) {
        add_squares(to, x.re);
        add_squares(to, x.im);
    }
    static double sum_of_squares(const Rows<T>& top, const Rows<T>* x, const Rows<T>* end) {
        Doubles sum{};
        for (add_squares(sum, top); x != end; ++x)
            add_squares(sum, *x);
        return (sum[0] + sum[2]) + (sum[1] + sum[3]);
    }

    // body(rows, i, j, count): of column j those from i on.
    template <class Body>
    void each_quad(const Body& body) {
        for (int j = 0; j < n_; ++j)
            for (int i = 0; i < m_; i += lanes)
                body(column(j)[i / lanes], i, j, smaller(lanes, m_ - i));
    }

    // The reflector begins in row i.
    void begin(int i) {
        const Lanes numbers{0, 1, 2, 3}, head = Lanes{} + i % lanes;
        first_ = i / lanes;
        above_ = numbers<head, here_ = numbers == head, below_ = numbers> head;
    }
    // Of a column whose numbers have to be scaled on their way, or are none.
    T reflect_with_care(int i, int j) {
        Rows<T>* const rows = column(j);
        T x[smallSide<T>];
        for (int l = i; l < m_; ++l)
            x[l] = element_of(rows[l / lanes], l % lanes);
        const T tau = larfp(m_ - i, x[i], Vector<T>{x + i + 1});
        for (int l = i; l < m_; ++l)
            set_element(rows[l / lanes], l % lanes, x[l]);
        take(i, j);
        return tau;
    }

    Rows<T>* column(int j) { return memory_ + j * height_; }

    int m_, n_, height_;
    Op op_;
    int first_ = 0; // vector of v
    Lanes above_, here_, below_;
    Rows<T> v_[smallSide<T> / lanes];
    Rows<T> memory_[smallSide<T> / lanes * smallSide<T>];
};

} // namespace qrv::lapack
