// Norms and what estimates them, by value, for the rows of their routines and for other families. Instantiated for both
// element types.
#pragma once

#include <cstdint>

#include "blas/complex.hpp"
#include "blas/options.hpp"
#include "service/options.hpp"

namespace qrv::lapack {

enum class Norm : char { maximum = 'M', one = 'O', infinity = 'I', frobenius = 'F' };

constexpr Norm norm_of(char option) {
    return is_option(option, 'M')                    ? Norm::maximum
           : is_option(option, 'I')                  ? Norm::infinity
           : is_option(option, 'O') || option == '1' ? Norm::one
                                                     : Norm::frobenius;
}

// scale^2 * sumsq, a sum of squares that does not overflow.
struct ScaledSquares {
    float scale, sumsq;
    void store(float* toScale, float* toSumsq) const {
        *toScale = scale;
        *toSumsq = sumsq;
    }
};

// The same with the squares of the parts of n elements added.
template <class T>
ScaledSquares lassq(int n, const T* x, int incx, ScaledSquares sum);

// Norms of an m x n matrix; of a triangle or trapezoid of one. work: m floats for the infinity norm, else not touched.
template <class T>
float lange(Norm norm, int m, int n, Matrix<const T> a, float* work);
template <class T>
float lantr(Norm norm, Uplo uplo, Diag diag, int m, int n, Matrix<const T> a, float* work);

// Norms of a symmetric matrix, of which one triangle is stored, and of a symmetric tridiagonal one with diagonal d and
// n - 1 elements e beside it. work: n floats for the norms one and infinity, which are the same, else not touched.
float lansy(Norm norm, Uplo uplo, int n, Matrix<const float> a, float* work);
float lanst(Norm norm, int n, const float* d, const float* e);

// B := A, the named part of an m x n matrix only.
enum class Part : char { upper = 'U', lower = 'L', whole = 'A' };

constexpr Part part_of(char uplo) {
    return is_option(uplo, 'U') ? Part::upper : is_option(uplo, 'L') ? Part::lower : Part::whole;
}
template <class T>
void lacpy(Part part, int m, int n, Matrix<const T> a, Matrix<T> b);

// The same part of A := offDiagonal and, on its diagonal, diagonal.
template <class T>
void laset(Part part, int m, int n, T offDiagonal, T diagonal, Matrix<T> a);

// How an m x n matrix is stored that is multiplied by a number: whole, in parts, or in band storage with kl diagonals
// below and ku above the main one.
struct Stored {
    enum Kind : char {
        whole = 'G',
        lower = 'L',
        upper = 'U',
        hessenberg = 'H',
        lowerBand = 'B', // half of a symmetric band
        upperBand = 'Q',
        factorBand = 'Z' // with room for the fill of an LU factorization above the band
    };
    Kind kind = whole;
    int kl = 0, ku = 0;

    constexpr bool banded() const { return kind == lowerBand || kind == upperBand || kind == factorBand; }
    constexpr bool symmetric_band() const { return kind == lowerBand || kind == upperBand; }
    constexpr std::int64_t band_rows() const {
        return kind == lowerBand   ? std::int64_t{kl} + 1
               : kind == upperBand ? std::int64_t{ku} + 1
                                   : 2 * std::int64_t{kl} + ku + 1;
    }
};

constexpr Stored stored_as(char type, int kl, int ku) {
    return {static_cast<Stored::Kind>(fold_case(type)), kl, ku};
}

// A := (to / from) * A without overflow or underflow on the way to a result that has none. from is not 0.
template <class T>
void lascl(Stored stored, float from, float to, int m, int n, Matrix<T> a);

// x := x / divisor, without overflow on the way; x is not scaled by more than it must be.
template <class T>
void rscl(int n, float divisor, T* x, int incx);

// One step of the estimate of the 1-norm of a matrix A by its products with vectors, for which it asks: *kase = 0
// begins and ends the estimate; with 1 the caller has to replace x by A x, with 2 by the adjoint of A times x, and to
// call again. *est is the estimate then, and v = A w with norm(v) / norm(w) = *est. isgn: n ints for real elements;
// isave: 3 ints.
template <class T>
void lacn2(int n, T* v, T* x, int* isgn, float* est, int* kase, int* isave);

} // namespace qrv::lapack
