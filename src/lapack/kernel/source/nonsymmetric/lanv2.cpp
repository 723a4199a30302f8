// SLANV2: the standard form of a 2 x 2 block and its eigenvalues.
//
// Source: Z. Bai, J. Demmel, On swapping diagonal blocks in real Schur form, Linear Algebra Appl. 186 (1993). All is
// computed in double, where neither squares of floats nor sums of their products overflow or vanish.
#include <cmath>

#include "lapack/calls/nonsymmetric.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

struct Block {
    double a, b, c, d;
    double cs = 1, sn = 0;

    // Exchanges rows and columns of a lower triangle.
    void turn() {
        const double oldA = a, oldCs = cs;
        a = d, d = oldA, b = -c, c = 0;
        cs = 0 - sn, sn = oldCs;
    }
    // [p q; -q p] times the block times its transpose.
    void rotate(double p, double q) {
        const double aa = a * p + b * q, bb = b * p - a * q, cc = c * p + d * q, dd = d * p - c * q;
        a = aa * p + cc * q, b = bb * p + dd * q;
        c = cc * p - aa * q, d = dd * p - bb * q;
        const double oldCs = cs;
        cs = oldCs * p - sn * q, sn = oldCs * q + sn * p;
    }
};

double length(double x, double y) {
    return std::sqrt(x * x + y * y);
}
bool same_sign(double x, double y) {
    return std::signbit(x) == std::signbit(y);
}

// Eigenvalues that are real and well apart: the block becomes a triangle. False if they are not.
bool separate(Block& x) {
    const double p = 0.5 * (x.a - x.d);
    const double scale = std::fmax(std::fabs(p), std::fmax(std::fabs(x.b), std::fabs(x.c)));
    const double product = x.b * x.c, discriminant = (p * p + product) / scale;
    if (!(discriminant >= 4 * double{machine::precision}))
        return false;
    const double z = p + std::copysign(std::sqrt(scale) * std::sqrt(discriminant), p);
    const double tau = length(x.c, z);
    x.a = x.d + z;
    x.d -= product / z;
    x.b -= x.c;
    x.cs = z / tau, x.sn = x.c / tau;
    x.c = 0;
    return true;
}

// Eigenvalues that are complex or nearly equal: the diagonal elements become equal.
void equalize_diagonal(Block& x) {
    const double difference = x.a - x.d, sum = x.b + x.c, tau = length(sum, difference);
    const double p = std::sqrt(0.5 * (1 + std::fabs(sum) / tau));
    x.rotate(p, -(0.5 * difference / (tau * p)) * std::copysign(1.0, sum));
    x.a = x.d = 0.5 * (x.a + x.d);
    x.b = static_cast<float>(x.b); // signs are told of what the caller gets
    x.c = static_cast<float>(x.c);
}

// Equal diagonal elements between real eigenvalues: the block becomes a triangle.
void separate_equal(Block& x) {
    const double rootB = std::sqrt(std::fabs(x.b)), rootC = std::sqrt(std::fabs(x.c));
    const double p = std::copysign(rootB * rootC, x.c), tau = 1 / std::sqrt(std::fabs(x.b + x.c));
    const double diagonal = x.a, oldCs = x.cs;
    x.a = diagonal + p, x.d = diagonal - p;
    x.b -= x.c;
    x.c = 0;
    const double cs = rootB * tau, sn = rootC * tau;
    x.cs = oldCs * cs - x.sn * sn;
    x.sn = oldCs * sn + x.sn * cs;
}

StandardBlock rounded(const Block& x) {
    const auto a = static_cast<float>(x.a), b = static_cast<float>(x.b), c = static_cast<float>(x.c),
               d = static_cast<float>(x.d);
    const float im = c == 0 ? 0 : static_cast<float>(std::sqrt(std::fabs(x.b)) * std::sqrt(std::fabs(x.c)));
    return {a, b, c, d, {a, im}, {d, -im}, static_cast<float>(x.cs), static_cast<float>(x.sn)};
}

} // namespace

StandardBlock lanv2(float a, float b, float c, float d) {
    Block x{a, b, c, d};
    if (c == 0)
        return rounded(x);
    if (b == 0) {
        x.turn();
        return rounded(x);
    }
    if (a == d && !same_sign(b, c))
        return rounded(x);
    if (!separate(x)) {
        equalize_diagonal(x);
        if (x.c != 0 && x.b == 0)
            x.turn();
        else if (x.c != 0 && same_sign(x.b, x.c))
            separate_equal(x);
    }
    return rounded(x);
}

} // namespace qrv::lapack
