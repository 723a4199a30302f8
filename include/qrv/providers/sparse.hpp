// The host's abstract classes for sparse matrices.
#pragma once

#include "types.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

class QRV_API SingleSparseBlas {
public:
    virtual ~SingleSparseBlas() = default;

    // Products and solves with a sparse matrix in compressed columns: a holds its values, indx their rows, pntrb and
    // pntre where each column begins and ends.
    //
    // transA                   whether the matrix, its transpose or its conjugate transpose is meant
    // structure, triangleMode, diagonalMode   what of the matrix is stored
    // a, indx, pntrb, pntre    the matrix, m x k, for solves m x m
    // x, y                     vectors
    // b, c                     column-major matrices of n columns

    // y := alpha*op(A)*x + beta*y.
    virtual void Scscmv(TransposeOperation transA, int m, int k, float alpha, MatrixStructure structure,
                        MatrixTriangleMode triangleMode, MatrixDiagonalMode diagonalMode, ProviderArray<const float> a,
                        ProviderArray<const int> indx, ProviderArray<const int> pntrb, ProviderArray<const int> pntre,
                        ProviderArray<const float> x, int xOffset, int incx, float beta, ProviderArray<float> y,
                        int yOffset, int incy) = 0;

    // y := alpha*inv(op(A))*x.
    virtual void Scscsv(TransposeOperation transA, int m, float alpha, MatrixStructure structure,
                        MatrixTriangleMode triangleMode, MatrixDiagonalMode diagonalMode, ProviderArray<const float> a,
                        ProviderArray<const int> indx, ProviderArray<const int> pntrb, ProviderArray<const int> pntre,
                        ProviderArray<const float> x, int xOffset, int incx, ProviderArray<float> y, int yOffset,
                        int incy) = 0;

    // C := alpha*op(A)*B + beta*C.
    virtual void Scscmm(TransposeOperation transA, int m, int n, int k, float alpha, MatrixStructure structure,
                        MatrixTriangleMode triangleMode, MatrixDiagonalMode diagonalMode, ProviderArray<const float> a,
                        ProviderArray<const int> indx, ProviderArray<const int> pntrb, ProviderArray<const int> pntre,
                        ProviderArray<const float> b, int bOffset, int ldb, float beta, ProviderArray<float> c,
                        int cOffset, int ldc) = 0;
};

class QRV_API SingleComplexSparseBlas {
public:
    virtual ~SingleComplexSparseBlas() = default;
};

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
