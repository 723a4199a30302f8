#include "routines.hpp"

#include <algorithm>
#include <complex>
#include <qrv/native.h>

#include "support/judge.hpp"

namespace tools {
namespace {

const qrv_complex* native(const std::vector<SingleComplex>& x) {
    return reinterpret_cast<const qrv_complex*>(x.data()); // both are two floats, real part first
}
qrv_complex* native(std::vector<SingleComplex>& x) {
    return reinterpret_cast<qrv_complex*>(x.data());
}
const qrv_complex* native(const Matrix<SingleComplex>& a) {
    return native(a.values);
}

// Asks a routine how much work it wants, and calls it with that.
template <class T, class Call>
void with_work(const Call& call) {
    std::vector<T> work(1);
    int length = -1;
    call(work, length);
    length = static_cast<int>(std::real(support::wide(work.front())));
    work.resize(static_cast<std::size_t>(length));
    call(work, length);
}

} // namespace

const Corvex::Mathematics::LinearAlgebra::Providers::ParallelX86SingleLinearAlgebraProvider& provider() {
    static const Corvex::Mathematics::LinearAlgebra::Providers::ParallelX86SingleLinearAlgebraProvider object;
    return object;
}

float norm(MatrixNorm kind, const Matrix<float>& a) {
    return provider().Lapack()->Slange(kind, a.rows, a.columns, a.values, 0, a.rows);
}

// The complex class has no method for it.
float norm(MatrixNorm kind, const Matrix<SingleComplex>& a) {
    std::vector<float> work(static_cast<std::size_t>(a.rows));
    return CLANGE(&"FOIM"[static_cast<int>(kind)], &a.rows, &a.columns, native(a), &a.rows, work.data());
}

int factor(Matrix<float>& a, std::vector<int>& pivots) {
    int info = 0;
    provider().Lapack()->Sgetrf(a.rows, a.columns, a.values, 0, a.rows, pivots, info);
    return info;
}

void solve_factored(const Matrix<float>& lu, const std::vector<int>& pivots, Matrix<float>& b) {
    int info = 0;
    provider().Lapack()->Sgetrs(TransposeOperation::None, lu.rows, b.columns, lu.values, 0, lu.rows, pivots, b.values,
                                0, b.rows, info);
}

int invert_factored(Matrix<float>& lu, const std::vector<int>& pivots) {
    int info = 0;
    provider().Lapack()->Sgetri(lu.rows, lu.values, 0, lu.rows, pivots, info);
    return info;
}

float reciprocal_condition(MatrixNorm kind, const Matrix<float>& lu, float normOfA) {
    int info = 0;
    float result = 0;
    provider().Lapack()->Sgecon(kind, lu.rows, lu.values, 0, lu.rows, normOfA, result, info);
    return result;
}

int factor(Matrix<SingleComplex>& a, std::vector<int>& pivots) {
    int info = 0;
    provider().ComplexLapack()->Cgetrf(a.rows, a.columns, a.values, 0, a.rows, pivots, info);
    return info;
}

void solve_factored(const Matrix<SingleComplex>& lu, const std::vector<int>& pivots, Matrix<SingleComplex>& b) {
    int info = 0;
    provider().ComplexLapack()->Cgetrs(TransposeOperation::None, lu.rows, b.columns, lu.values, 0, lu.rows, pivots,
                                       b.values, 0, b.rows, info);
}

int invert_factored(Matrix<SingleComplex>& lu, const std::vector<int>& pivots) {
    int info = 0;
    provider().ComplexLapack()->Cgetri(lu.rows, lu.values, 0, lu.rows, pivots, info);
    return info;
}

float reciprocal_condition(MatrixNorm kind, const Matrix<SingleComplex>& lu, float normOfA) {
    int info = 0;
    float result = 0;
    provider().ComplexLapack()->Cgecon(kind, lu.rows, lu.values, 0, lu.rows, normOfA, result, info);
    return result;
}

int factor_definite(Matrix<float>& a) {
    int info = 0;
    provider().Lapack()->Spotrf(MatrixTriangleMode::Lower, a.rows, a.values, 0, a.rows, info);
    return info;
}

void solve_definite(const Matrix<float>& l, Matrix<float>& b) {
    int info = 0;
    provider().Lapack()->Spotrs(MatrixTriangleMode::Lower, l.rows, b.columns, l.values, 0, l.rows, b.values, 0, b.rows,
                                info);
}

float reciprocal_condition_definite(const Matrix<float>& l, float normOfA) {
    int info = 0;
    float result = 0;
    provider().Lapack()->Spocon(MatrixTriangleMode::Lower, l.rows, l.values, 0, l.rows, normOfA, result, info);
    return result;
}

int factor_definite(Matrix<SingleComplex>& a) {
    int info = 0;
    provider().ComplexLapack()->Cpotrf(MatrixTriangleMode::Lower, a.rows, a.values, 0, a.rows, info);
    return info;
}

void solve_definite(const Matrix<SingleComplex>& l, Matrix<SingleComplex>& b) {
    int info = 0;
    provider().ComplexLapack()->Cpotrs(MatrixTriangleMode::Lower, l.rows, b.columns, l.values, 0, l.rows, b.values, 0,
                                       b.rows, info);
}

float reciprocal_condition_definite(const Matrix<SingleComplex>& l, float normOfA) {
    int info = 0;
    float result = 0;
    provider().ComplexLapack()->Cpocon(MatrixTriangleMode::Lower, l.rows, l.values, 0, l.rows, normOfA, result, info);
    return result;
}

void factor_orthogonal(Matrix<float>& a, std::vector<float>& tau) {
    int info = 0;
    provider().Lapack()->Sgeqrf(a.rows, a.columns, a.values, 0, a.rows, tau, 0, info);
}

void factor_pivoted(Matrix<float>& a, std::vector<int>& places, std::vector<float>& tau) {
    int info = 0;
    provider().Lapack()->Sgeqp3(a.rows, a.columns, a.values, 0, a.rows, places, tau, 0, info);
}

void apply_adjoint(const Matrix<float>& qr, const std::vector<float>& tau, Matrix<float>& c) {
    int info = 0;
    provider().Lapack()->Sormqr(MatrixOperationSide::Left, TransposeOperation::Transpose, c.rows, c.columns,
                                static_cast<int>(tau.size()), qr.values, 0, qr.rows, tau, 0, c.values, 0, c.rows, info);
}

// The classes have no method for it, nor for pivoting and norms of triangles of complex matrices.
void generate_orthogonal(Matrix<float>& q, const std::vector<float>& tau) {
    const int k = static_cast<int>(tau.size());
    int info = 0;
    with_work<float>([&](std::vector<float>& work, int length) {
        SORGQR(&q.rows, &q.columns, &k, q.values.data(), &q.rows, tau.data(), work.data(), &length, &info);
    });
}

void solve_triangular(const Matrix<float>& r, Matrix<float>& b) {
    int info = 0;
    provider().Lapack()->Strtrs(MatrixTriangleMode::Upper, TransposeOperation::None, MatrixDiagonalMode::NonUnit,
                                b.rows, b.columns, r.values, 0, r.rows, b.values, 0, std::max(1, b.rows), info);
}

float reciprocal_condition_triangular(MatrixNorm kind, const Matrix<float>& r, int order) {
    int info = 0;
    float result = 0;
    provider().Lapack()->Strcon(kind, MatrixTriangleMode::Upper, MatrixDiagonalMode::NonUnit, order, r.values, 0,
                                r.rows, result, info);
    return result;
}

float norm_triangular(MatrixNorm kind, const Matrix<float>& r, int order) {
    return provider().Lapack()->Slantr(kind, MatrixTriangleMode::Upper, MatrixDiagonalMode::NonUnit, order, order,
                                       r.values, 0, r.rows);
}

void factor_orthogonal(Matrix<SingleComplex>& a, std::vector<SingleComplex>& tau) {
    int info = 0;
    provider().ComplexLapack()->Cgeqrf(a.rows, a.columns, a.values, 0, a.rows, tau, 0, info);
}

void factor_pivoted(Matrix<SingleComplex>& a, std::vector<int>& places, std::vector<SingleComplex>& tau) {
    int info = 0;
    std::vector<float> norms(2 * places.size());
    with_work<SingleComplex>([&](std::vector<SingleComplex>& work, int length) {
        CGEQP3(&a.rows, &a.columns, native(a.values), &a.rows, places.data(), native(tau), native(work), &length,
               norms.data(), &info);
    });
}

void apply_adjoint(const Matrix<SingleComplex>& qr, const std::vector<SingleComplex>& tau, Matrix<SingleComplex>& c) {
    int info = 0;
    provider().ComplexLapack()->Cunmqr(MatrixOperationSide::Left, TransposeOperation::ConjugateTranspose, c.rows,
                                       c.columns, static_cast<int>(tau.size()), qr.values, 0, qr.rows, tau, 0, c.values,
                                       0, c.rows, info);
}

void generate_orthogonal(Matrix<SingleComplex>& q, const std::vector<SingleComplex>& tau) {
    const int k = static_cast<int>(tau.size());
    int info = 0;
    with_work<SingleComplex>([&](std::vector<SingleComplex>& work, int length) {
        CUNGQR(&q.rows, &q.columns, &k, native(q.values), &q.rows, native(tau), native(work), &length, &info);
    });
}

void solve_triangular(const Matrix<SingleComplex>& r, Matrix<SingleComplex>& b) {
    int info = 0;
    provider().ComplexLapack()->Ctrtrs(MatrixTriangleMode::Upper, TransposeOperation::None, MatrixDiagonalMode::NonUnit,
                                       b.rows, b.columns, r.values, 0, r.rows, b.values, 0, std::max(1, b.rows), info);
}

float reciprocal_condition_triangular(MatrixNorm kind, const Matrix<SingleComplex>& r, int order) {
    int info = 0;
    float result = 0;
    provider().ComplexLapack()->Ctrcon(kind, MatrixTriangleMode::Upper, MatrixDiagonalMode::NonUnit, order, r.values, 0,
                                       r.rows, result, info);
    return result;
}

float norm_triangular(MatrixNorm kind, const Matrix<SingleComplex>& r, int order) {
    std::vector<float> work(static_cast<std::size_t>(order));
    return CLANTR(&"FOIM"[static_cast<int>(kind)], "U", "N", &order, &order, native(r), &r.rows, work.data());
}

} // namespace tools
