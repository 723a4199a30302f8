// SLASV2: the singular value decomposition of a triangle of order 2.
//
// Everything is computed in double, where the squares of ratios of floats neither overflow nor vanish; only a diagonal
// of zeros has no ratio.
#include <algorithm>
#include <cmath>

#include "lapack/calls/rotations.hpp"

namespace qrv::lapack {
namespace {

struct Turns {
    double smallest, largest; // magnitudes
    double cosLeft, sinLeft, cosRight, sinRight;
};

// |f| >= |h|.
Turns decompose(double f, double g, double h) {
    const double fa = std::fabs(f), ga = std::fabs(g), ha = std::fabs(h);
    if (ga == 0)
        return {ha, fa, 1, 0, 1, 0};
    if (fa == 0)
        return {0, ga, 1, 0, 0, 1};
    const double gap = (fa - ha) / fa, m = g / f, sum = 2 - gap; // (|f| - |h|) / |f|, (|f| + |h|) / |f|
    const double longer = std::sqrt(sum * sum + m * m), shorter = std::sqrt(gap * gap + m * m);
    const double a = (longer + shorter) / 2;
    const double t = (m / (longer + sum) + m / (shorter + gap)) * (1 + a), length = std::sqrt(t * t + 4);
    const double cosRight = 2 / length, sinRight = t / length;
    return {ha / a, fa * a, (cosRight + sinRight * m) / a, h / f * sinRight / a, cosRight, sinRight};
}

} // namespace

SmallSvd lasv2(float f, float g, float h) {
    const bool exchanged = std::fabs(h) > std::fabs(f);
    Turns turns = exchanged ? decompose(h, g, f) : decompose(f, g, h);
    if (exchanged) { // the triangle was turned about its other diagonal
        std::swap(turns.cosLeft, turns.sinRight);
        std::swap(turns.sinLeft, turns.cosRight);
    }
    // The sign of the largest value is that of its largest contribution: csl*f*csr, csl*g*snr or snl*h*snr.
    const double fa = std::fabs(f), ga = std::fabs(g), ha = std::fabs(h);
    const double leading =
        ga > std::max(fa, ha) ? std::copysign(1, turns.sinRight) * std::copysign(1, turns.cosLeft) * std::copysign(1, g)
        : exchanged           ? std::copysign(1, turns.sinRight) * std::copysign(1, turns.sinLeft) * std::copysign(1, h)
                    : std::copysign(1, turns.cosRight) * std::copysign(1, turns.cosLeft) * std::copysign(1, f);
    const double other = leading * std::copysign(1, f) * std::copysign(1, h);
    const auto turn = [](double c, double s) { return SmallSvd::Turn{static_cast<float>(c), static_cast<float>(s)}; };
    return {static_cast<float>(std::copysign(turns.smallest, other)),
            static_cast<float>(std::copysign(turns.largest, leading)), turn(turns.cosLeft, turns.sinLeft),
            turn(turns.cosRight, turns.sinRight)};
}

} // namespace qrv::lapack
