// SLAEXC: exchange of two neighbouring diagonal blocks of a Schur form by an orthogonal similarity.
//
// Blocks of order 1 take a rotation. Otherwise the solution X of T11 X - X T22 = scale T12 gives the subspace of T22's
// eigenvalues, and reflectors that turn it into the leading one. They are tried on a copy of the blocks first: if what
// should be zero then is not small, the eigenvalues are too near to each other and nothing is done.
//
// Source: Z. Bai, J. Demmel, On swapping diagonal blocks in real Schur form, Linear Algebra Appl. 186 (1993).
#include <algorithm>
#include <cmath>
#include <initializer_list>

#include "blas/calls.hpp"
#include "lapack/calls/nonsymmetric.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/rotations.hpp"
#include "lapack/kernel/source/nonsymmetric/reflector3.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

// A reflector of three rows from row `offset` of the blocks on: of the last one, the middle and the first if reversed.
struct Step {
    int offset;
    bool reversed;
    Reflector3 reflector;

    // Rows [k, k + 3), columns [first, last); and columns [k, k + 3), rows [0, last).
    void apply_left(int k, int first, int last, Matrix<float> a) const {
        const auto [tau, v2, v3, unused] = reflector;
        const int top = reversed ? 2 : 0;
        for (int j = first; j < last; ++j) {
            float* const x = a.column(j) + k;
            const float sum = tau * (x[top] + v2 * x[1] + v3 * x[2 - top]);
            x[top] -= sum, x[1] -= sum * v2, x[2 - top] -= sum * v3;
        }
    }
    void apply_right(int k, int last, Matrix<float> a) const {
        const Matrix<float> columns = a.block(0, reversed ? k + 2 : k);
        reflect_columns<3>(reflector, 0, 0, last, {columns.data, reversed ? -columns.ld : columns.ld});
    }
};
struct Steps {
    int count;
    Step steps[2];
    const Step* begin() const { return steps; }
    const Step* end() const { return steps + count; }
};

Steps steps_for(int n1, int n2, float scale, Matrix<const float> x) {
    if (n1 == 1) // the row (scale, X) becomes (0, 0, *)
        return {1, {{0, true, reflector3(x(0, 1), x(0, 0), scale)}, {}}};
    const Reflector3 first = reflector3(-x(0, 0), -x(1, 0), scale);
    if (n2 == 1)
        return {1, {{0, false, first}, {}}};
    const float moved = -first.tau * (x(0, 1) + first.v2 * x(1, 1)); // of the second column, by the first reflector
    return {2, {{0, false, first}, {1, false, reflector3(-moved * first.v2 - x(1, 1), -moved * first.v3, scale)}}};
}

constexpr int most = 4;
struct Copy {
    float data[most * most];
    Matrix<float> view() { return {data, most}; }
};

float largest(std::initializer_list<float> numbers) {
    float size = 0;
    for (const float x : numbers)
        size = std::max(size, std::fabs(x));
    return size;
}

// Whether the steps leave a block triangle of the copy `d`, which they overwrite; `kept` is the eigenvalue of a block
// of order 1 that moves.
bool exchanges(const Steps& steps, int n1, int n2, Matrix<float> d, float allowed, float kept) {
    const int order = n1 + n2;
    for (const Step& s : steps) {
        s.apply_left(s.offset, 0, order, d);
        s.apply_right(s.offset, order, d);
    }
    const float lost = n1 == 1   ? largest({d(2, 0), d(2, 1), d(2, 2) - kept})
                       : n2 == 1 ? largest({d(1, 0), d(2, 0), d(0, 0) - kept})
                                 : largest({d(2, 0), d(2, 1), d(3, 0), d(3, 1)});
    return lost <= allowed;
}

// The two columns and rows of a block of order 2 become standard.
void standardize(int k, int n, Matrix<float> t, bool wantQ, Matrix<float> q) {
    const StandardBlock x = lanv2(t(k, k), t(k, k + 1), t(k + 1, k), t(k + 1, k + 1));
    t(k, k) = x.a, t(k, k + 1) = x.b, t(k + 1, k) = x.c, t(k + 1, k + 1) = x.d;
    kernel::rot(n - k - 2, t.row(k, k + 2), t.row(k + 1, k + 2), x.cs, x.sn);
    kernel::rot(k, t.column(0, k), t.column(0, k + 1), x.cs, x.sn);
    if (wantQ)
        kernel::rot(n, q.column(0, k), q.column(0, k + 1), x.cs, x.sn);
}

void exchange_numbers(int j, int n, Matrix<float> t, bool wantQ, Matrix<float> q) {
    const float t11 = t(j, j), t22 = t(j + 1, j + 1);
    const auto [c, s, r] = lartg(t(j, j + 1), t22 - t11);
    kernel::rot(n - j - 2, t.row(j, j + 2), t.row(j + 1, j + 2), c, s);
    kernel::rot(j, t.column(0, j), t.column(0, j + 1), c, s);
    t(j, j) = t22, t(j + 1, j + 1) = t11;
    if (wantQ)
        kernel::rot(n, q.column(0, j), q.column(0, j + 1), c, s);
}

bool exchange_blocks(int j, int n1, int n2, int n, Matrix<float> t, bool wantQ, Matrix<float> q) {
    const int order = n1 + n2;
    Copy copy;
    const Matrix<float> d = copy.view(), block = t.block(j, j);
    lacpy<float>(Part::whole, order, order, block, d);
    const float size = lange<float>(Norm::maximum, order, order, d, nullptr);
    const float allowed = std::max(10 * machine::precision * size, machine::smallNumber);

    float xData[4];
    const Matrix<float> x{xData, 2};
    const SmallSolution solved = lasy2({false, false, -1, n1, n2, d, d.block(n1, n1), d.block(0, n1)}, x);
    const Steps steps = steps_for(n1, n2, solved.scale, x);
    const float kept = n1 == 1 ? block(0, 0) : block(order - 1, order - 1);
    if (!exchanges(steps, n1, n2, d, allowed, kept))
        return false;

    for (const Step& s : steps) {
        const int k = j + s.offset;
        s.apply_left(k, j, n, t);
        s.apply_right(k, j + order, t);
        if (wantQ)
            s.apply_right(k, n, q);
    }
    for (int i = n2; i < order; ++i)
        for (int k = 0; k < n2; ++k)
            block(i, k) = 0;
    if (n1 == 1)
        block(2, 2) = kept;
    if (n2 == 1)
        block(0, 0) = kept;
    if (n2 == 2)
        standardize(j, n, t, wantQ, q);
    if (n1 == 2)
        standardize(j + n2, n, t, wantQ, q);
    return true;
}

} // namespace

bool laexc(bool wantQ, int n, Matrix<float> t, Matrix<float> q, int j, int n1, int n2) {
    if (n == 0 || n1 == 0 || n2 == 0 || j + n1 >= n)
        return true;
    if (n1 == 1 && n2 == 1) {
        exchange_numbers(j, n, t, wantQ, q);
        return true;
    }
    return exchange_blocks(j, n1, n2, n, t, wantQ, q);
}

} // namespace qrv::lapack
