// SSTERF: all eigenvalues of a symmetric tridiagonal matrix, without square roots in its sweeps.
//
// QL iteration with Wilkinson's shift on the squares of the elements beside the diagonal (the form of Pal, Walker and
// Kahan), block by block of a matrix that has come apart. A block whose large elements are at its end is turned round
// first, which changes no eigenvalue: QL then finds the small ones first.
// Source: B. Parlett, The Symmetric Eigenvalue Problem, SIAM (1998), 8.14 and 8.15.
#include <algorithm>
#include <cmath>

#include "lapack/calls/norms.hpp"
#include "lapack/calls/symmetric.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

constexpr float unit = machine::epsilon;
constexpr int sweepsPerValue = 30;
constexpr float leastCosine = 0x1p-100F; // squared, whose reciprocal is in range

// The last row of the block that begins at `first`: behind it the matrix comes apart, and is cut.
int end_of_block(int first, int n, const float* d, float* e) {
    for (int i = first; i < n - 1; ++i)
        if (std::fabs(e[i]) <= std::sqrt(std::fabs(d[i])) * std::sqrt(std::fabs(d[i + 1])) * unit) {
            e[i] = 0;
            return i;
        }
    return n - 1;
}

// Of the leading 2 x 2 block, the eigenvalue that is nearer to its first element. e2: the square beside the diagonal.
float choose_shift(const float* d, float e2) {
    const float e = std::sqrt(e2), half = (d[1] - d[0]) / (2 * e);
    const auto root = static_cast<float>(std::sqrt(1 + double{half} * half));
    return d[0] - e / (half + std::copysign(root, half));
}

// One sweep over d[0..last], from the end to the front.
void sweep(int last, float* d, float* e2) {
    const float shift = choose_shift(d, e2[0]);
    float c = 1, s = 0, g = d[last] - shift, p = g * g;
    for (int i = last - 1; i >= 0; --i) {
        const float beside = e2[i], r = p + beside, c0 = c, g0 = g;
        if (i < last - 1)
            e2[i + 1] = s * r;
        // The reciprocal of c, if it is in range, need not wait for g.
        const float divisor = std::max(p, std::max(r * leastCosine, machine::safeMinimum)), reciprocal = r / divisor;
        c = p / r;
        s = beside / r;
        g = c * (d[i] - shift) - s * g0;
        d[i + 1] = g0 + (d[i] - g);
        p = divisor == p ? g * g * reciprocal : c != 0 ? g * g / c : c0 * beside;
    }
    e2[0] = s * p;
    d[0] = shift + g;
}

// Makes d of a block its eigenvalues; stops when no sweep is left, with what has not become 0 in e2.
void iterate(int n, float* d, float* e2, int& sweepsLeft) {
    for (int i = 0; i < n;) {
        int last = i;
        while (last < n - 1 && !(std::fabs(e2[last]) <= unit * unit * std::fabs(d[last] * d[last + 1])))
            ++last;
        if (last < n - 1)
            e2[last] = 0;
        if (last == i) {
            ++i;
        } else if (last == i + 1) {
            const auto [larger, smaller] = lae2(d[i], std::sqrt(e2[i]), d[last]);
            d[i] = larger;
            d[last] = smaller;
            e2[i] = 0;
            i += 2;
        } else {
            if (sweepsLeft == 0)
                return;
            --sweepsLeft;
            sweep(last - i, d + i, e2 + i);
        }
    }
}

void solve_block(int n, float* d, float* e, int& sweepsLeft) {
    constexpr float largest = 0x1p63F / 3, smallest = 0x1p-63F / (unit * unit); // whose squares stay in range
    static_assert(machine::safeMinimum == 0x1p-126F);
    const float norm = lanst(Norm::maximum, n, d, e);
    if (n == 1 || norm == 0)
        return;
    const float scaled = norm > largest ? largest : norm < smallest ? smallest : norm;
    const auto scale = [&](float from, float to) {
        if (from != to && from == from) {
            lascl<float>({}, from, to, n, 1, {d, n});
            lascl<float>({}, from, to, n - 1, 1, {e, n});
        }
    };
    scale(norm, scaled);
    for (int i = 0; i < n - 1; ++i)
        e[i] *= e[i];
    if (std::fabs(d[n - 1]) < std::fabs(d[0])) {
        std::reverse(d, d + n);
        std::reverse(e, e + n - 1);
    }
    iterate(n, d, e, sweepsLeft);
    scale(scaled, norm);
}

} // namespace

int sterf(int n, float* d, float* e) {
    int sweepsLeft = static_cast<int>(std::min<std::int64_t>(std::int64_t{n} * sweepsPerValue, 1 << 30));
    for (int first = 0, last; first < n; first = last + 1) {
        last = end_of_block(first, n, d, e);
        solve_block(last - first + 1, d + first, e + first, sweepsLeft);
    }
    const auto failed = n > 0 ? std::count_if(e, e + n - 1, [](float x) { return x != 0; }) : 0;
    if (failed == 0)
        sort(Order::ascending, n, d);
    return static_cast<int>(failed);
}

} // namespace qrv::lapack
