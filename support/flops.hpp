// Work of each routine by the field's standard counts: every peer is credited alike, whatever it really executes.
// A new family adds its formula here and nowhere else.
//
// A complex multiplication is 6 operations, an addition 2. Routines that only move or compare count bytes.
#pragma once

namespace support {

enum class Unit { flop, byte };

struct Work {
    double amount;
    Unit unit;
};

constexpr const char* rate_name(Unit unit) {
    return unit == Unit::flop ? "GFLOP/s" : "GB/s";
}

// So many multiplications, each with its addition.
constexpr Work multiply_adds(double count, bool isComplex) {
    return {count * (isComplex ? 8 : 2), Unit::flop};
}

// ---- Level 1: vectors of n -------------------------------------------------------------------------------

constexpr Work scal_work(double n, bool isComplex) {
    return {n * (isComplex ? 6 : 1), Unit::flop};
}
constexpr Work nrm2_work(double n, bool isComplex) {
    return {n * (isComplex ? 4 : 2), Unit::flop};
}
constexpr Work asum_work(double n, bool isComplex) {
    return {n * (isComplex ? 2 : 1), Unit::flop};
}
constexpr Work rot_work(double n, bool isComplex) {
    return {n * (isComplex ? 12 : 6), Unit::flop};
}
constexpr Work iamax_work(double n, bool isComplex) { // read once
    return {n * (isComplex ? 8 : 4), Unit::byte};
}
constexpr Work copy_work(double n, bool isComplex) { // read once, written once
    return {n * (isComplex ? 16 : 8), Unit::byte};
}
constexpr Work swap_work(double n, bool isComplex) {
    return {2 * copy_work(n, isComplex).amount, Unit::byte};
}

// ---- Level 2: elements of the matrix, each a multiplication and an addition ------------------------------

// A triangle with k diagonals beside the main one, n - 1 if it is full; and the same on either side.
constexpr double half_band_elements(double n, double k) {
    return n * (k + 1) - k * (k + 1) / 2;
}
constexpr double band_elements(double n, double k) {
    return 2 * half_band_elements(n, k) - n;
}

// ---- Level 3 ---------------------------------------------------------------------------------------------

constexpr Work gemm_work(double m, double n, double k, bool isComplex) {
    return multiply_adds(m * n * k, isComplex);
}
// A solve or product with a triangle of order n, for so many right-hand sides.
constexpr Work triangular_work(double n, double count, bool isComplex) {
    return multiply_adds(n * n * count / 2, isComplex);
}

// ---- LAPACK ----------------------------------------------------------------------------------------------

// LU of order n, and the inverse from it: the leading terms.
constexpr Work getrf_work(double n, bool isComplex) {
    return multiply_adds(n * n * n / 3, isComplex);
}
constexpr Work getri_work(double n, bool isComplex) {
    return multiply_adds(2 * n * n * n / 3, isComplex);
}
// Cholesky of order n, solutions and the inverse from it.
constexpr Work potrf_work(double n, bool isComplex) {
    return multiply_adds(n * n * n / 6, isComplex);
}
constexpr Work potrs_work(double n, double count, bool isComplex) {
    return multiply_adds(n * n * count, isComplex);
}
constexpr Work potri_work(double n, bool isComplex) {
    return multiply_adds(n * n * n / 3, isComplex);
}
// Bands of order n: LU as if no rows were interchanged, solutions from it with the diagonals that interchanges add, and
// Cholesky. Real only.
constexpr Work gbtrf_work(double n, double kl, double ku) {
    return multiply_adds(n * kl * (ku + 1), false);
}
constexpr Work gbtrs_work(double n, double kl, double ku, double count) {
    return multiply_adds(n * (2 * kl + ku + 1) * count, false);
}
constexpr Work pbtrf_work(double n, double kd) {
    return multiply_adds(n * kd * (kd + 1) / 2, false);
}
// Hessenberg form. QR iteration and eigenvalues: the usual estimates, for the number of sweeps is not known.
constexpr Work gehrd_work(double n) {
    return multiply_adds(5 * n * n * n / 3, false);
}
constexpr Work hseqr_work(double n, bool schurForm) {
    return multiply_adds((schurForm ? 10 : 3.5) * n * n * n, false);
}
constexpr Work geev_work(double n, bool vectors) {
    return multiply_adds((vectors ? 12.5 : 5) * n * n * n, false);
}
// QR of an m x n matrix; Q of k reflectors from the left applied to m x n, and its first n columns.
constexpr Work geqrf_work(double m, double n, bool isComplex) {
    const double k = m < n ? m : n, other = m < n ? n : m;
    return multiply_adds(k * k * (other - k / 3), isComplex);
}
constexpr Work ormqr_work(double m, double n, double k, bool isComplex) {
    return multiply_adds(n * k * (2 * m - k), isComplex);
}
constexpr Work orgqr_work(double m, double n, double k, bool isComplex) {
    return multiply_adds(2 * m * n * k - (m + n) * k * k + 2 * k * k * k / 3, isComplex);
}

// Reduction of an m x n matrix to bidiagonal form, which is nearly all of singular values alone; with vectors, the
// products that apply the reflectors too. QR iteration on a bidiagonal matrix with both sides' vectors: two sweeps a
// value.
constexpr Work gesdd_work(double m, double n, bool vectors, bool isComplex) {
    const double k = m < n ? m : n, l = m < n ? n : m;
    return multiply_adds(2 * (l - k / 3) * k * k + (vectors ? 2 * (l + k) * k * k : 0), isComplex);
}
constexpr Work bdsqr_work(double n) {
    return multiply_adds(6 * n * n * n, false);
}

// Reduction of a symmetric matrix to tridiagonal form, its eigenvalues from that, and its vectors: the reduction and
// the product with its Q, as what is done to the tridiagonal matrix is of lower order. Real only.
constexpr Work sytrd_work(double n) {
    return multiply_adds(2 * n * n * n / 3, false);
}
constexpr Work syevr_work(double n, bool vectors) {
    return multiply_adds(n * n * n * (vectors ? 5.0 / 3 : 2.0 / 3), false);
}

} // namespace support
