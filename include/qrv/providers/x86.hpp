// The provider object with its abstract class, and this library's provider classes.
//
// Example. The provider and its parts:
//
//     using namespace Corvex::Mathematics::LinearAlgebra;
//     const Providers::ParallelX86SingleLinearAlgebraProvider provider;
//     return provider.BlasLevel1() != nullptr && provider.ComplexLapack() != nullptr;
#pragma once

#include <memory>

#include "blas.hpp"
#include "lapack.hpp"
#include "sparse.hpp"

namespace Corvex::Mathematics::LinearAlgebra::Providers {

class QRV_API SingleLinearAlgebraProvider {
public:
    virtual ~SingleLinearAlgebraProvider() = default;

    virtual SingleBlasLevel1* BlasLevel1() const = 0;
    virtual SingleBlasLevel2* BlasLevel2() const = 0;
    virtual SingleBlasLevel3* BlasLevel3() const = 0;
    virtual SingleLapack* Lapack() const = 0;
    virtual SingleSparseBlas* SparseBlas() const = 0;
    virtual SingleComplexBlasLevel1* ComplexBlasLevel1() const = 0;
    virtual SingleComplexBlasLevel2* ComplexBlasLevel2() const = 0;
    virtual SingleComplexBlasLevel3* ComplexBlasLevel3() const = 0;
    virtual SingleComplexLapack* ComplexLapack() const = 0;
    virtual SingleComplexSparseBlas* ComplexSparseBlas() const = 0;
};

class QRV_API ParallelX86SingleBlasLevel1 : public SingleBlasLevel1 {
public:
    ParallelX86SingleBlasLevel1();

    void Sscal(int n, float alpha, ProviderArray<float> x, int xOffset, int incx) final;
    void Saxpy(int n, float alpha, ProviderArray<const float> x, int xOffset, int incx, ProviderArray<float> y,
               int yOffset, int incy) final;
    float Sdot(int n, ProviderArray<const float> x, int xOffset, int incx, ProviderArray<const float> y, int yOffset,
               int incy) final;
    void Sswap(int n, ProviderArray<float> x, int xOffset, int incx, ProviderArray<float> y, int yOffset,
               int incy) final;
    void Scopy(int n, ProviderArray<const float> x, int xOffset, int incx, ProviderArray<float> y, int yOffset,
               int incy) final;
    float Snrm2(int n, ProviderArray<const float> x, int xOffset, int incx) final;
    float Sasum(int n, ProviderArray<const float> x, int xOffset, int incx) final;
    int Isamax(int n, ProviderArray<const float> x, int xOffset, int incx) final;
    void Srotg(float& a, float& b, float& c, float& s) final;
    void Srot(int n, ProviderArray<float> x, int xOffset, int incx, ProviderArray<float> y, int yOffset, int incy,
              float c, float s) final;
    void Srotmg(float& d1, float& d2, float& x1, float y1, ProviderArray<float> param) final;
    void Srotm(int n, ProviderArray<float> x, int xOffset, int incx, ProviderArray<float> y, int yOffset, int incy,
               ProviderArray<const float> param) final;
};

class QRV_API ParallelX86SingleBlasLevel2 : public SingleBlasLevel2 {
public:
    ParallelX86SingleBlasLevel2();

    void Sgemv(TransposeOperation transA, int m, int n, float alpha, ProviderArray<const float> a, int aOffset, int lda,
               ProviderArray<const float> x, int xOffset, int incx, float beta, ProviderArray<float> y, int yOffset,
               int incy) final;
    void Strmv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n,
               ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> x, int xOffset, int incx) final;
    void Strsv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n,
               ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> x, int xOffset, int incx) final;
    void Ssymv(MatrixTriangleMode triangleMode, int n, float alpha, ProviderArray<const float> a, int aOffset, int lda,
               ProviderArray<const float> x, int xOffset, int incx, float beta, ProviderArray<float> y, int yOffset,
               int incy) final;
    void Sger(int m, int n, float alpha, ProviderArray<const float> x, int xOffset, int incx,
              ProviderArray<const float> y, int yOffset, int incy, ProviderArray<float> a, int aOffset, int lda) final;
    void Ssyr(MatrixTriangleMode triangleMode, int n, float alpha, ProviderArray<const float> x, int xOffset, int incx,
              ProviderArray<float> a, int aOffset, int lda) final;
    void Ssyr2(MatrixTriangleMode triangleMode, int n, float alpha, ProviderArray<const float> x, int xOffset, int incx,
               ProviderArray<const float> y, int yOffset, int incy, ProviderArray<float> a, int aOffset, int lda) final;
    void Sgbmv(TransposeOperation transA, int m, int n, int kl, int ku, float alpha, ProviderArray<const float> a,
               int aOffset, int lda, ProviderArray<const float> x, int xOffset, int incx, float beta,
               ProviderArray<float> y, int yOffset, int incy) final;
    void Stbmv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n, int k,
               ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> x, int xOffset, int incx) final;
    void Stbsv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n, int k,
               ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> x, int xOffset, int incx) final;
    void Ssbmv(MatrixTriangleMode triangleMode, int n, int k, float alpha, ProviderArray<const float> a, int aOffset,
               int lda, ProviderArray<const float> x, int xOffset, int incx, float beta, ProviderArray<float> y,
               int yOffset, int incy) final;
};

class QRV_API ParallelX86SingleBlasLevel3 : public SingleBlasLevel3 {
public:
    ParallelX86SingleBlasLevel3();

    void Sgemm(TransposeOperation transA, TransposeOperation transB, int m, int n, int k, float alpha,
               ProviderArray<const float> a, int aOffset, int lda, ProviderArray<const float> b, int bOffset, int ldb,
               float beta, ProviderArray<float> c, int cOffset, int ldc) final;
    void Ssymm(MatrixOperationSide side, MatrixTriangleMode triangleMode, int m, int n, float alpha,
               ProviderArray<const float> a, int aOffset, int lda, ProviderArray<const float> b, int bOffset, int ldb,
               float beta, ProviderArray<float> c, int cOffset, int ldc) final;
    void Strmm(MatrixOperationSide side, MatrixTriangleMode triangleMode, TransposeOperation transA,
               MatrixDiagonalMode diag, int m, int n, float alpha, ProviderArray<const float> a, int aOffset, int lda,
               ProviderArray<float> b, int bOffset, int ldb) final;
    void Strsm(MatrixOperationSide side, MatrixTriangleMode triangleMode, TransposeOperation transA,
               MatrixDiagonalMode diag, int m, int n, float alpha, ProviderArray<const float> a, int aOffset, int lda,
               ProviderArray<float> b, int bOffset, int ldb) final;
    void Ssyrk(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k, float alpha,
               ProviderArray<const float> a, int aOffset, int lda, float beta, ProviderArray<float> c, int cOffset,
               int ldc) final;
    void Ssyr2k(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k, float alpha,
                ProviderArray<const float> a, int aOffset, int lda, ProviderArray<const float> b, int bOffset, int ldb,
                float beta, ProviderArray<float> c, int cOffset, int ldc) final;
};

class QRV_API ParallelX86SingleLapack : public SingleLapack {
public:
    ParallelX86SingleLapack();

    void Sgetrf(int m, int n, ProviderArray<float> a, int aOffset, int lda, ProviderArray<int> ipiv, int& info) final;
    void Sgetrs(TransposeOperation trans, int n, int nrhs, ProviderArray<const float> a, int aOffset, int lda,
                ProviderArray<const int> ipiv, ProviderArray<float> b, int bOffset, int ldb, int& info) final;
    void Sgetri(int n, ProviderArray<float> a, int aOffset, int lda, ProviderArray<const int> ipiv, int& info) final;
    void Sgecon(MatrixNorm norm, int n, ProviderArray<const float> a, int aOffset, int lda, float aNorm, float& rcond,
                int& info) final;
    float Slange(MatrixNorm norm, int m, int n, ProviderArray<const float> a, int aOffset, int lda) final;
    void Sgeqrf(int m, int n, ProviderArray<float> a, int aOffset, int lda, ProviderArray<float> tau, int tauOffset,
                int& info) final;
    void Sgeqp3(int m, int n, ProviderArray<float> a, int aOffset, int lda, ProviderArray<int> jpvt,
                ProviderArray<float> tau, int tauOffset, int& info) final;
    void Sormqr(MatrixOperationSide side, TransposeOperation trans, int m, int n, int k, ProviderArray<const float> a,
                int aOffset, int lda, ProviderArray<const float> tau, int tauOffset, ProviderArray<float> c,
                int cOffset, int Ldc, int& info) final;
    void Strtrs(MatrixTriangleMode triangleMode, TransposeOperation trans, MatrixDiagonalMode diag, int n, int nrhs,
                ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> b, int bOffset, int ldb,
                int& info) final;
    void Strtri(MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int n, ProviderArray<float> a, int aOffset,
                int lda, int& info) final;
    void Strcon(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int n,
                ProviderArray<const float> a, int aOffset, int lda, float& rcond, int& info) final;
    float Slantr(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int m, int n,
                 ProviderArray<const float> a, int aOffset, int lda) final;
    void Spotrf(MatrixTriangleMode triangleMode, int n, ProviderArray<float> a, int aOffset, int lda, int& info) final;
    void Spotri(MatrixTriangleMode triangleMode, int n, ProviderArray<float> a, int aOffset, int lda, int& info) final;
    void Spotrs(MatrixTriangleMode triangleMode, int n, int nrhs, ProviderArray<const float> a, int aOffset, int lda,
                ProviderArray<float> b, int bOffset, int ldb, int& info) final;
    void Spocon(MatrixTriangleMode triangleMode, int n, ProviderArray<const float> a, int aOffset, int lda, float aNorm,
                float& rcond, int& info) final;
    void Sgbtrf(int m, int n, int kl, int ku, ProviderArray<float> a, int aOffset, int lda, ProviderArray<int> ipiv,
                int& info) final;
    void Sgbtrs(TransposeOperation trans, int n, int kl, int ku, int nrhs, ProviderArray<const float> a, int aOffset,
                int lda, ProviderArray<const int> ipiv, ProviderArray<float> b, int bOffset, int ldb, int& info) final;
    void Sgbcon(MatrixNorm norm, int n, int kl, int ku, ProviderArray<const float> a, int aOffset, int lda,
                ProviderArray<const int> ipiv, float aNorm, float& rcond, int& info) final;
    void Stbtrs(MatrixTriangleMode triangleMode, TransposeOperation trans, MatrixDiagonalMode diag, int n, int kd,
                int nrhs, ProviderArray<const float> a, int aOffset, int lda, ProviderArray<float> b, int bOffset,
                int ldb, int& info) final;
    void Spbtrf(MatrixTriangleMode triangleMode, int n, int k, ProviderArray<float> a, int aOffset, int lda,
                int& info) final;
    void Spbtrs(MatrixTriangleMode triangleMode, int n, int k, int nrhs, ProviderArray<const float> a, int aOffset,
                int lda, ProviderArray<float> b, int bOffset, int ldb, int& info) final;
    void Spbcon(MatrixTriangleMode triangleMode, int n, int k, ProviderArray<const float> a, int aOffset, int lda,
                float aNorm, float& rcond, int& info) final;
    void Sgesdd(char16_t jobz, int m, int n, ProviderArray<float> a, int aOffset, int lda, ProviderArray<float> s,
                ProviderArray<float> u, int ldu, ProviderArray<float> vt, int ldvt, int& info) final;
    void Ssyevr(char16_t jobz, char16_t range, MatrixTriangleMode triangleMode, int n, ProviderArray<float> a,
                int aOffset, int lda, float vl, float vu, int il, int iu, float abstol, int& m, ProviderArray<float> w,
                int wOffset, ProviderArray<float> z, int zOffset, int ldz, ProviderArray<int> isuppz, int& info) final;
    void Sgeev(char16_t jobvl, char16_t jobvr, int n, ProviderArray<float> a, int aOffset, int lda,
               ProviderArray<float> wr, ProviderArray<float> wi, ProviderArray<float> vl, int ldvl,
               ProviderArray<float> vr, int ldvr, int& info) final;
    void Slacpy(MatrixTriangleMode triangleMode, int m, int n, ProviderArray<const float> a, int aOffset, int lda,
                ProviderArray<float> b, int bOffset, int ldb) final;
};

// Operations that do nothing: they look at no argument, also null arrays, and return. The provider never hands out an
// object of this class.
class QRV_API ParallelX86SingleSparseBlas : public SingleSparseBlas {
public:
    ParallelX86SingleSparseBlas();

    void Scscmv(TransposeOperation transA, int m, int k, float alpha, MatrixStructure structure,
                MatrixTriangleMode triangleMode, MatrixDiagonalMode diagonalMode, ProviderArray<const float> a,
                ProviderArray<const int> indx, ProviderArray<const int> pntrb, ProviderArray<const int> pntre,
                ProviderArray<const float> x, int xOffset, int incx, float beta, ProviderArray<float> y, int yOffset,
                int incy) final;
    void Scscsv(TransposeOperation transA, int m, float alpha, MatrixStructure structure,
                MatrixTriangleMode triangleMode, MatrixDiagonalMode diagonalMode, ProviderArray<const float> a,
                ProviderArray<const int> indx, ProviderArray<const int> pntrb, ProviderArray<const int> pntre,
                ProviderArray<const float> x, int xOffset, int incx, ProviderArray<float> y, int yOffset,
                int incy) final;
    void Scscmm(TransposeOperation transA, int m, int n, int k, float alpha, MatrixStructure structure,
                MatrixTriangleMode triangleMode, MatrixDiagonalMode diagonalMode, ProviderArray<const float> a,
                ProviderArray<const int> indx, ProviderArray<const int> pntrb, ProviderArray<const int> pntre,
                ProviderArray<const float> b, int bOffset, int ldb, float beta, ProviderArray<float> c, int cOffset,
                int ldc) final;
};

class QRV_API NativeComplexBlasLevel1 : public SingleComplexBlasLevel1 {
public:
    NativeComplexBlasLevel1();

    void Cscal(int n, SingleComplex alpha, ProviderArray<SingleComplex> x, int xOffset, int incx) final;
    void Caxpy(int n, SingleComplex alpha, ProviderArray<const SingleComplex> x, int xOffset, int incx,
               ProviderArray<SingleComplex> y, int yOffset, int incy) final;
    SingleComplex Cdotc(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx,
                        ProviderArray<const SingleComplex> y, int yOffset, int incy) final;
    SingleComplex Cdotu(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx,
                        ProviderArray<const SingleComplex> y, int yOffset, int incy) final;
    void Cswap(int n, ProviderArray<SingleComplex> x, int xOffset, int incx, ProviderArray<SingleComplex> y,
               int yOffset, int incy) final;
    void Ccopy(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx, ProviderArray<SingleComplex> y,
               int yOffset, int incy) final;
    float Scnrm2(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx) final;
    float Scasum(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx) final;
    int Icamax(int n, ProviderArray<const SingleComplex> x, int xOffset, int incx) final;
};

class QRV_API NativeComplexBlasLevel2 : public SingleComplexBlasLevel2 {
public:
    NativeComplexBlasLevel2();

    void Cgemv(TransposeOperation transA, int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> a,
               int aOffset, int lda, ProviderArray<const SingleComplex> x, int xOffset, int incx, SingleComplex beta,
               ProviderArray<SingleComplex> y, int yOffset, int incy) final;
    void Chemv(MatrixTriangleMode triangleMode, int n, SingleComplex alpha, ProviderArray<const SingleComplex> a,
               int aOffset, int lda, ProviderArray<const SingleComplex> x, int xOffset, int incx, SingleComplex beta,
               ProviderArray<SingleComplex> y, int yOffset, int incy) final;
    void Ctrmv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n,
               ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<SingleComplex> x, int xOffset,
               int incx) final;
    void Ctrsv(MatrixTriangleMode triangleMode, TransposeOperation transA, MatrixDiagonalMode diag, int n,
               ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<SingleComplex> x, int xOffset,
               int incx) final;
    void Cgeru(int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> x, int xOffset, int incx,
               ProviderArray<const SingleComplex> y, int yOffset, int incy, ProviderArray<SingleComplex> a, int aOffset,
               int lda) final;
    void Cgerc(int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> x, int xOffset, int incx,
               ProviderArray<const SingleComplex> y, int yOffset, int incy, ProviderArray<SingleComplex> a, int aOffset,
               int lda) final;
    void Cher(MatrixTriangleMode triangleMode, int n, float alpha, ProviderArray<const SingleComplex> x, int xOffset,
              int incx, ProviderArray<SingleComplex> a, int aOffset, int lda) final;
    void Cher2(MatrixTriangleMode triangleMode, int n, SingleComplex alpha, ProviderArray<const SingleComplex> x,
               int xOffset, int incx, ProviderArray<const SingleComplex> y, int yOffset, int incy,
               ProviderArray<SingleComplex> a, int aOffset, int lda) final;
};

class QRV_API NativeComplexBlasLevel3 : public SingleComplexBlasLevel3 {
public:
    NativeComplexBlasLevel3();

    void Cgemm(TransposeOperation transA, TransposeOperation transB, int m, int n, int k, SingleComplex alpha,
               ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<const SingleComplex> b,
               int bOffset, int ldb, SingleComplex beta, ProviderArray<SingleComplex> c, int cOffset, int ldc) final;
    void Chemm(MatrixOperationSide side, MatrixTriangleMode triangleMode, int m, int n, SingleComplex alpha,
               ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<const SingleComplex> b,
               int bOffset, int ldb, SingleComplex beta, ProviderArray<SingleComplex> c, int cOffset, int ldc) final;
    void Cherk(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k, float alpha,
               ProviderArray<const SingleComplex> a, int aOffset, int lda, float beta, ProviderArray<SingleComplex> c,
               int cOffset, int ldc) final;
    void Cher2k(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k, SingleComplex alpha,
                ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<const SingleComplex> b,
                int bOffset, int ldb, float beta, ProviderArray<SingleComplex> c, int cOffset, int ldc) final;
    void Ctrmm(MatrixOperationSide side, MatrixTriangleMode triangleMode, TransposeOperation transA,
               MatrixDiagonalMode diag, int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> a,
               int aOffset, int lda, ProviderArray<SingleComplex> b, int bOffset, int ldb) final;
    void Ctrsm(MatrixOperationSide side, MatrixTriangleMode triangleMode, TransposeOperation transA,
               MatrixDiagonalMode diag, int m, int n, SingleComplex alpha, ProviderArray<const SingleComplex> a,
               int aOffset, int lda, ProviderArray<SingleComplex> b, int bOffset, int ldb) final;

    // Operations of this class alone.

    // As Chemm, A symmetric.
    virtual void Csymm(MatrixOperationSide side, MatrixTriangleMode triangleMode, int m, int n, SingleComplex alpha,
                       ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<const SingleComplex> b,
                       int bOffset, int ldb, SingleComplex beta, ProviderArray<SingleComplex> c, int cOffset, int ldc);

    // C := alpha*op(A)*op(A)' + beta*C, C symmetric; None and Transpose are the options. Positions as Cherk.
    virtual void Csyrk(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k, SingleComplex alpha,
                       ProviderArray<const SingleComplex> a, int aOffset, int lda, SingleComplex beta,
                       ProviderArray<SingleComplex> c, int cOffset, int ldc);

    // C := alpha*op(A)*op(B)' + alpha*op(B)*op(A)' + beta*C, C symmetric. Positions as Cher2k.
    virtual void Csyr2k(MatrixTriangleMode triangleMode, TransposeOperation trans, int n, int k, SingleComplex alpha,
                        ProviderArray<const SingleComplex> a, int aOffset, int lda,
                        ProviderArray<const SingleComplex> b, int bOffset, int ldb, SingleComplex beta,
                        ProviderArray<SingleComplex> c, int cOffset, int ldc);
};

class QRV_API NativeComplexLapack : public SingleComplexLapack {
public:
    NativeComplexLapack();

    void Cgetrf(int m, int n, ProviderArray<SingleComplex> a, int aOffset, int lda, ProviderArray<int> ipiv,
                int& info) final;
    void Cgetrs(TransposeOperation trans, int n, int nrhs, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                ProviderArray<const int> ipiv, ProviderArray<SingleComplex> b, int bOffset, int ldb, int& info) final;
    void Cgetri(int n, ProviderArray<SingleComplex> a, int aOffset, int lda, ProviderArray<const int> ipiv,
                int& info) final;
    void Cgecon(MatrixNorm norm, int n, ProviderArray<const SingleComplex> a, int aOffset, int lda, float aNorm,
                float& rcond, int& info) final;
    void Cgeqrf(int m, int n, ProviderArray<SingleComplex> a, int aOffset, int lda, ProviderArray<SingleComplex> tau,
                int tauOffset, int& info) final;
    void Ctrtrs(MatrixTriangleMode uplo, TransposeOperation trans, MatrixDiagonalMode diag, int n, int nrhs,
                ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<SingleComplex> b, int bOffset,
                int ldb, int& info) final;
    void Ctrtri(MatrixTriangleMode uplo, MatrixDiagonalMode diag, int n, ProviderArray<SingleComplex> a, int aOffset,
                int lda, int& info) final;
    void Ctrcon(MatrixNorm norm, MatrixTriangleMode triangleMode, MatrixDiagonalMode diag, int n,
                ProviderArray<const SingleComplex> a, int aOffset, int lda, float& rcond, int& info) final;
    void Cpotrf(MatrixTriangleMode triangleMode, int n, ProviderArray<SingleComplex> a, int aOffset, int lda,
                int& info) final;
    void Cpotri(MatrixTriangleMode triangleMode, int n, ProviderArray<SingleComplex> a, int aOffset, int lda,
                int& info) final;
    void Cpotrs(MatrixTriangleMode triangleMode, int n, int nrhs, ProviderArray<const SingleComplex> a, int aOffset,
                int lda, ProviderArray<SingleComplex> b, int bOffset, int ldb, int& info) final;
    void Cpocon(MatrixTriangleMode triangleMode, int n, ProviderArray<const SingleComplex> a, int aOffset, int lda,
                float aNorm, float& rcond, int& info) final;
    void Cunmqr(MatrixOperationSide side, TransposeOperation trans, int m, int n, int k,
                ProviderArray<const SingleComplex> a, int aOffset, int lda, ProviderArray<const SingleComplex> tau,
                int tauOffset, ProviderArray<SingleComplex> c, int cOffset, int ldc, int& info) final;
    void Cgesdd(char16_t jobz, int m, int n, ProviderArray<SingleComplex> a, int aOffset, int lda,
                ProviderArray<float> s, ProviderArray<SingleComplex> u, int ldu, ProviderArray<SingleComplex> vt,
                int ldvt, int& info) final;
    void Clacpy(MatrixTriangleMode triangleMode, int m, int n, ProviderArray<const SingleComplex> a, int aOffset,
                int lda, ProviderArray<SingleComplex> b, int bOffset, int ldb) final;
};

// The provider object of a host. The getters give the same objects for the provider's whole life;
// SparseBlas and ComplexSparseBlas give null.
class QRV_API ParallelX86SingleLinearAlgebraProvider : public SingleLinearAlgebraProvider {
public:
    ParallelX86SingleLinearAlgebraProvider();
    ~ParallelX86SingleLinearAlgebraProvider() override;

    SingleBlasLevel1* BlasLevel1() const override;
    SingleBlasLevel2* BlasLevel2() const override;
    SingleBlasLevel3* BlasLevel3() const override;
    SingleLapack* Lapack() const override;
    SingleSparseBlas* SparseBlas() const override;
    SingleComplexBlasLevel1* ComplexBlasLevel1() const override;
    SingleComplexBlasLevel2* ComplexBlasLevel2() const override;
    SingleComplexBlasLevel3* ComplexBlasLevel3() const override;
    SingleComplexLapack* ComplexLapack() const override;
    SingleComplexSparseBlas* ComplexSparseBlas() const override;

private:
    std::unique_ptr<SingleBlasLevel1> blasLevel1;
    std::unique_ptr<SingleBlasLevel2> blasLevel2;
    std::unique_ptr<SingleBlasLevel3> blasLevel3;
    std::unique_ptr<SingleLapack> lapack;
    std::unique_ptr<SingleSparseBlas> sparseBlas; // null
    std::unique_ptr<SingleComplexBlasLevel1> complexBlasLevel1;
    std::unique_ptr<SingleComplexBlasLevel2> complexBlasLevel2;
    std::unique_ptr<SingleComplexBlasLevel3> complexBlasLevel3;
    std::unique_ptr<SingleComplexLapack> complexLapack;
    std::unique_ptr<SingleComplexSparseBlas> complexSparseBlas; // null
};

} // namespace Corvex::Mathematics::LinearAlgebra::Providers
