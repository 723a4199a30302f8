#include "routines.hpp"

#include <qrv/native.h>

namespace tools {
namespace {

const qrv_complex* native(const Matrix<SingleComplex>& a) {
    return reinterpret_cast<const qrv_complex*>(a.values.data()); // both are two floats, real part first
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

} // namespace tools
