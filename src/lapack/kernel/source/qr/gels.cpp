// SGELS, CGELS: least squares solutions and solutions of least norm of systems with a matrix of full rank, by QR of an
// upright matrix, A = Q R, or LQ of a wide one, A = L Q.
//
// Where op(A) is upright, B is multiplied by what undoes Q, and the top of it solved with the triangle: the rest is the
// residual. Where op(A) is wide, the triangle comes first, and Q makes of its solution, with zeros below, the one of
// least norm. Both matrices are scaled if their elements are too small or too large for that. A triangle with a zero on
// its diagonal ends the work there.
#include <algorithm>

#include "lapack/calls/qr.hpp"
#include "lapack/calls/triangular.hpp"
#include "lapack/elements.hpp"
#include "lapack/kernel/source/norms/scaling.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

template <class T>
struct FactoredSystem {
    int m, n, nrhs;
    Matrix<T> a, b;
    T* tau;
    T* work;
    int lwork;

    bool upright() const { return m >= n; }
    int triangle_order() const { return std::min(m, n); }

    void factor() const {
        if (upright())
            geqrf(m, n, a, tau, work, lwork);
        else
            gelqf(m, n, a, tau, work, lwork);
    }
    int solve_triangle(Op op) const {
        return trtrs<T>(upright() ? Uplo::upper : Uplo::lower, op, Diag::nonUnit, triangle_order(), nrhs, a, b);
    }
    // B := op(Q) B
    void multiply_by_q(Op op) const {
        orm<T>(upright() ? QForm::qr : QForm::lq, Side::left, op, std::max(m, n), nrhs, triangle_order(), a, tau, b,
               work, lwork);
    }
};

} // namespace

template <class T>
std::int64_t gels_work(int m, int n, int nrhs) {
    const int k = std::min(m, n);
    const std::int64_t factor = m >= n ? geqrf_work<T>(m, n) : gelqf_work<T>(m, n);
    return k + std::max(factor, orm_work<T>(m >= n ? QForm::qr : QForm::lq, Side::left, std::max(m, n), nrhs, k));
}

template <class T>
int gels(Op op, int m, int n, int nrhs, Matrix<T> a, Matrix<T> b, T* work, int lwork) {
    const int k = std::min(m, n), most = std::max(m, n);
    const auto clear_rows = [&](int first) { laset(Part::whole, most - first, nrhs, T(), T(), b.block(first, 0)); };
    const auto largest = [](int rows, int columns, Matrix<const T> x) {
        return lange<T>(Norm::maximum, rows, columns, x, nullptr);
    };
    const float size = largest(m, n, a);
    if (size == 0 || nrhs == 0) {
        clear_rows(0);
        return 0;
    }
    const int rowsOfB = op == Op::none ? m : n;
    const Scaling ofA = scaling_within(machine::smallNumber, size);
    const Scaling ofB = scaling_within(machine::smallNumber, largest(rowsOfB, nrhs, b));
    ofA.forth(m, n, a);
    ofB.forth(rowsOfB, nrhs, b);
    const bool upright = op == Op::none ? m >= n : m < n; // op(A)
    const FactoredSystem<T> system{m, n, nrhs, a, b, work, work + k, lwork - k};
    const Op undone = m >= n ? adjoint<T> : Op::none, done = m >= n ? Op::none : adjoint<T>;

    system.factor();
    if (upright)
        system.multiply_by_q(undone);
    if (const int zero = system.solve_triangle(op == Op::none ? op : adjoint<T>))
        return zero;
    if (!upright) {
        clear_rows(k);
        system.multiply_by_q(done);
    }
    ofA.forth(upright ? k : most, nrhs, b); // as A took the factor, X has its inverse
    ofB.back(most, nrhs, b);                // and the residual below X
    work[0] = work_size<T>(gels_work<T>(m, n, nrhs));
    return 0;
}

template std::int64_t gels_work<float>(int, int, int);
template std::int64_t gels_work<SingleComplex>(int, int, int);
template int gels(Op, int, int, int, Matrix<float>, Matrix<float>, float*, int);
template int gels(Op, int, int, int, Matrix<SingleComplex>, Matrix<SingleComplex>, SingleComplex*, int);

} // namespace qrv::lapack
