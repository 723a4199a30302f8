// SLAGTF, SLAGTS: LU factorization of a tridiagonal matrix minus a multiple of the identity, and solves with it.
//
// With interchanges of neighbouring rows, each chosen by the size of a pivot beside that of its row. U has two
// diagonals above the main one, L a multiplier a row.
#include <algorithm>
#include <cmath>

#include "lapack/calls/symmetric.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {

void lagtf(int n, float lambda, float tolerance, const ShiftedLuOut& f) {
    const auto [a, b, c, d, in] = f;
    if (n == 0)
        return;
    a[0] -= lambda;
    in[n - 1] = 0;
    if (n == 1) {
        in[0] = a[0] == 0;
        return;
    }
    const float tiny = std::max(tolerance, machine::epsilon);
    const auto mark = [&](int k) { // the first small pivot
        if (f.in[n - 1] == 0)
            f.in[n - 1] = k + 1;
    };
    float size = std::fabs(a[0]) + std::fabs(b[0]); // of the row that is on top
    for (int k = 0; k < n - 1; ++k) {
        const bool inner = k < n - 2;
        a[k + 1] -= lambda;
        const float nextSize = std::fabs(c[k]) + std::fabs(a[k + 1]) + (inner ? std::fabs(b[k + 1]) : 0);
        const float upper = a[k] == 0 ? 0 : std::fabs(a[k]) / size;
        const float lower = c[k] == 0 ? 0 : std::fabs(c[k]) / nextSize;
        in[k] = lower > upper;
        if (!in[k]) {
            size = nextSize;
            if (c[k] != 0) {
                c[k] /= a[k];
                a[k + 1] -= c[k] * b[k];
            }
            if (inner)
                d[k] = 0;
        } else {
            const float factor = a[k] / c[k], beside = a[k + 1];
            a[k] = c[k];
            a[k + 1] = b[k] - factor * beside;
            if (inner) {
                d[k] = b[k + 1];
                b[k + 1] = -factor * d[k];
            }
            b[k] = beside;
            c[k] = factor;
        }
        if (std::max(upper, lower) <= tiny)
            mark(k);
    }
    if (std::fabs(a[n - 1]) <= size * tiny)
        mark(n - 1);
}

namespace {

// x / pivot if that can be held.
struct Quotient {
    float value;
    bool held;
};
Quotient safe_quotient(float x, float pivot) {
    constexpr float small = machine::safeMinimum, big = 1 / small;
    const float size = std::fabs(pivot);
    if (size < 1) {
        if (size < small) {
            if (size == 0 || std::fabs(x) * small > size)
                return {0, false};
            x *= big;
            pivot *= big;
        } else if (std::fabs(x) > size * big) {
            return {0, false};
        }
    }
    return {x / pivot, true};
}

float default_perturbation(int n, const ShiftedLuIn& f) {
    float largest = std::fabs(f.a[0]);
    for (int k = 0; k < n; ++k) {
        largest = std::max(largest, std::fabs(f.a[k]));
        if (k < n - 1)
            largest = std::max(largest, std::fabs(f.b[k]));
        if (k < n - 2)
            largest = std::max(largest, std::fabs(f.d[k]));
    }
    const float size = largest * machine::epsilon;
    return size == 0 ? machine::epsilon : size;
}

} // namespace

int lagts(int n, Solve what, const ShiftedLuIn& f, float* y, float& tolerance) {
    const auto [a, b, c, d, in] = f;
    if (n == 0)
        return 0;
    const bool perturbed = what == Solve::perturbed || what == Solve::transposedPerturbed;
    const bool transposed = what == Solve::transposed || what == Solve::transposedPerturbed;
    if (perturbed && !(tolerance > 0))
        tolerance = default_perturbation(n, f);
    // Divides element k, by a larger pivot if the quotient cannot be held; whether that succeeded.
    const auto divide = [&](int k, float x) {
        constexpr int doublings = 300; // from the smallest number past the largest
        float pivot = f.a[k], step = std::copysign(tolerance, pivot);
        for (int i = 0; i < doublings; ++i) {
            const Quotient quotient = safe_quotient(x, pivot);
            if (quotient.held) {
                y[k] = quotient.value;
                return true;
            }
            if (!perturbed)
                break;
            pivot += step;
            step *= 2;
        }
        return false;
    };
    if (!transposed) {
        for (int k = 1; k < n; ++k) {
            if (in[k - 1] != 0)
                std::swap(y[k - 1], y[k]);
            y[k] -= c[k - 1] * y[k - 1];
        }
        for (int k = n - 1; k >= 0; --k)
            if (!divide(k, y[k] - (k < n - 1 ? b[k] * y[k + 1] : 0) - (k < n - 2 ? d[k] * y[k + 2] : 0)))
                return k + 1;
    } else {
        for (int k = 0; k < n; ++k)
            if (!divide(k, y[k] - (k > 0 ? b[k - 1] * y[k - 1] : 0) - (k > 1 ? d[k - 2] * y[k - 2] : 0)))
                return k + 1;
        for (int k = n - 1; k > 0; --k) {
            y[k - 1] -= c[k - 1] * y[k];
            if (in[k - 1] != 0)
                std::swap(y[k - 1], y[k]);
        }
    }
    return 0;
}

} // namespace qrv::lapack
