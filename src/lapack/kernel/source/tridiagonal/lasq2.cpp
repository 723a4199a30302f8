// SLASQ2, SLASQ3: all eigenvalues of a qd array to high relative accuracy, by dqds transforms.
#include <numeric>

#include "lapack/calls/dqds.hpp"
#include "lapack/calls/symmetric.hpp"

namespace qrv::lapack {

void Dqds::flip() const {
    for (int i = first, j = last; i < j; ++i, --j)
        for (const int array : {0, 1}) {
            std::swap(z[4 * i + array], z[4 * j + array]);
            if (i < j - 1)
                std::swap(z[4 * i + 2 + array], z[4 * (j - 1) + 2 + array]);
        }
}

namespace {

constexpr float tolerance = Dqds::tolerance, tolerance2 = Dqds::tolerance2;
constexpr float flipRatio = 1.5F; // the small values are to be at the end

struct Pair {
    float larger, smaller;
};
// The eigenvalues of a qd array of two, by the quadratic formula without cancellation.
Pair solve_pair(float q1, float e, float q2) {
    if (q2 > q1)
        std::swap(q1, q2);
    if (!(e > q2 * tolerance2))
        return {q1, q2};
    const float t = ((q1 - q2) + e) / 2;
    if (t == 0)
        return {q1, q2};
    float s = q2 * (e / t);
    s = s <= t ? q2 * (e / (t * (1 + std::sqrt(1 + s / t)))) : q2 * (e / (t + std::sqrt(t) * std::sqrt(t + s)));
    const float larger = q1 + (s + e);
    return {larger, q2 * (q1 / larger)};
}

// ---- One step (SLASQ3): splits off what has converged, then one transform ------------------------------------------

// Values go to their place in array 0. Result: how many there are.
int deflate(Dqds& x) {
    const int before = x.last;
    const auto value = [&](int k) -> float& { return x.z[4 * std::ptrdiff_t{k}]; };
    while (x.first <= x.last) {
        const int n = x.last;
        const auto negligible = [&](int k, float beside) {
            return x.e(k) <= tolerance2 * beside || x.other_e(k) <= tolerance2 * x.q(k);
        };
        if (n == x.first || (n > x.first + 1 && !x.flipped && negligible(n - 1, x.shift + x.q(n)))) {
            value(n) = x.q(n) + x.shift;
            x.last -= 1;
        } else if (n == x.first + 1 || (!x.flipped && negligible(n - 2, x.shift))) {
            const Pair pair = solve_pair(x.q(n - 1), x.e(n - 1), x.q(n));
            value(n - 1) = pair.larger + x.shift;
            value(n) = pair.smaller + x.shift;
            x.last -= 2;
        } else {
            break;
        }
    }
    x.flipped = false;
    return before - x.last;
}

// Turns the block round if its small values are at the front; no shift then.
void flip_if_upside_down(Dqds& x) {
    const int i = x.first, n = x.last;
    if (!(flipRatio * x.q(i) < x.q(n)))
        return;
    x.flip();
    if (n - i <= 4) {
        x.e(n) = x.e(i);
        x.other_e(n) = x.other_e(i);
    }
    x.dmin2 = std::min(x.dmin2, x.e(n));
    x.e(n) = std::min({x.e(n), x.e(i), x.e(i + 1)});
    x.other_e(n) = std::min({x.other_e(n), x.other_e(i), x.other_e(i + 1)});
    x.qmax = std::max({x.qmax, x.q(i), x.q(i + 1)});
    x.dmin = -0.0F;
}

// Whether only the last d became negative, by no more than rounding: it is 0 then.
bool converged_to_zero(Dqds& x) {
    const int n = x.last;
    if (!(x.dmin < 0 && x.dmin1 > 0 && x.other_e(n - 1) < tolerance * (x.shift + x.dn1) &&
          std::fabs(x.dn) < tolerance * x.shift))
        return false;
    x.other_q(n) = 0;
    x.dmin = 0;
    return true;
}

// A transform with a shift that is small enough.
void transform(Dqds& x) {
    constexpr int tries = 10; // three come before the shift is 0
    for (int i = 0; i < tries; ++i) {
        x.transform();
        x.count_one();
        if ((x.dmin >= 0 && x.dmin1 >= 0) || converged_to_zero(x))
            return;
        if (x.dmin < 0) {
            ++x.failures;
            if (x.choice < -22) { // failed twice
                x.tau = 0;
            } else if (x.dmin1 > 0) { // late
                x.tau = (x.tau + x.dmin) * (1 - 2 * machine::precision);
                x.choice -= 11;
            } else {
                x.tau /= 4;
                x.choice -= 12;
            }
        } else if (x.dmin != x.dmin && x.tau != 0) {
            x.tau = 0;
        } else {
            break;
        }
    }
    x.transform_unshifted();
    x.count_one();
    x.tau = 0;
}

void add_to_shift(Dqds& x) {
    float sum;
    if (x.tau < x.shift) {
        x.shiftTail += x.tau;
        sum = x.shift + x.shiftTail;
        x.shiftTail -= sum - x.shift;
    } else {
        sum = x.shift + x.tau;
        x.shiftTail += x.shift - (sum - x.tau);
    }
    x.shift = sum;
}

// ---- The whole array (SLASQ2) --------------------------------------------------------------------------------------

// One transform without shift, with tests for e that are negligible from either end, which become -0.
void split_and_transform(Dqds& x) {
    float d = x.q(x.last);
    for (int k = x.last - 1; k >= x.first; --k) {
        if (x.e(k) <= tolerance2 * d) {
            x.e(k) = -0.0F;
            d = x.q(k);
        } else {
            d = x.q(k) * (d / (d + x.e(k)));
        }
    }
    constexpr float small = machine::safeMinimum;
    d = x.q(x.first);
    for (int k = x.first; k < x.last; ++k) {
        const float sum = d + x.e(k), next = x.q(k + 1);
        x.other_q(k) = sum;
        if (x.e(k) <= tolerance2 * d) {
            x.e(k) = -0.0F;
            x.other_q(k) = d;
            x.other_e(k) = 0;
            d = next;
        } else if (small * next < sum && small * sum < next) {
            const float ratio = next / sum;
            x.other_e(k) = x.e(k) * ratio;
            d *= ratio;
        } else {
            x.other_e(k) = next * (x.e(k) / sum);
            d = next * (d / sum);
        }
    }
    x.other_q(x.last) = d;
    x.now = 1 - x.now;
}

// The block that ends at x.last: down to an e that is 0 or the mark of a split. Bounds of its values give the first
// shift, which is -dmin.
void find_block(Dqds& x) {
    x.now = 0;
    const int n = x.last;
    float emax = 0, qmin = x.q(n);
    x.qmax = qmin;
    int k = n;
    for (; k > 0 && !(x.e(k - 1) <= 0); --k) {
        const float beside = x.e(k - 1);
        if (qmin >= 4 * emax) {
            qmin = std::min(qmin, x.q(k));
            emax = std::max(emax, beside);
        }
        x.qmax = std::max(x.qmax, x.q(k - 1) + beside);
    }
    x.first = k;
    x.dmin = -std::max(0.0F, qmin - 2 * std::sqrt(qmin) * std::sqrt(emax));
}

// Turns the block round if the smallest value seems to be near its front.
void flip_block(Dqds& x) {
    if (x.last - x.first <= 1)
        return;
    float d = x.q(x.first), dmin = d;
    int place = x.first;
    for (int k = x.first; k < x.last; ++k) {
        d = x.q(k + 1) * (d / (d + x.e(k)));
        if (d <= dmin) {
            dmin = d;
            place = k + 1;
        }
    }
    if (2 * (place - x.first) < x.last - place && dmin <= x.q(x.last) / 2) {
        x.flip();
        x.flipped = true;
    }
}

// Marks where the block comes apart with the negative of its shift, and goes on with its last part.
void split_block(Dqds& x) {
    const int n = x.last;
    if (x.now != 0 || n - x.first < 3 || !(x.other_e(n) <= tolerance2 * x.qmax || x.e(n) <= tolerance2 * x.shift))
        return;
    int start = x.first;
    x.qmax = x.q(start);
    float emin = x.e(start), otherMin = x.other_e(start);
    for (int k = x.first; k <= n - 3; ++k) {
        if (x.other_e(k) <= tolerance2 * x.q(k) || x.e(k) <= tolerance2 * x.shift) {
            x.e(k) = -x.shift;
            start = k + 1;
            x.qmax = 0;
            emin = x.e(k + 1);
            otherMin = x.other_e(k + 1);
        } else {
            x.qmax = std::max(x.qmax, x.q(k + 1));
            emin = std::min(emin, x.e(k));
            otherMin = std::min(otherMin, x.other_e(k));
        }
    }
    x.e(n) = emin;
    x.other_e(n) = otherMin;
    x.first = start;
}

// Whether all values of the block were found.
bool solve_block(Dqds& x) {
    constexpr int stepsPerValue = 100;
    std::int64_t stepsLeft = std::int64_t{stepsPerValue} * (x.last - x.first + 1);
    for (; stepsLeft > 0 && x.first <= x.last; --stepsLeft) {
        lasq3(x);
        if (x.first <= x.last)
            split_block(x);
    }
    return x.first > x.last;
}

// q and e in turn, moved four floats apart.
void spread(int n, float* z) {
    for (int k = n - 1; k >= 0; --k) {
        const float q = z[2 * k], e = k < n - 1 ? z[2 * k + 1] : 0;
        float* const place = z + 4 * std::ptrdiff_t{k};
        place[0] = q;
        place[1] = 0;
        place[2] = e;
        place[3] = 0;
    }
}

bool all_zero(int n, const float* e) {
    for (int k = 0; k < n - 1; ++k)
        if (e[2 * k] != 0)
            return false;
    return true;
}

} // namespace

void lasq3(Dqds& x) {
    const int deflated = deflate(x);
    if (x.last < x.first)
        return;
    if (x.dmin <= 0 || deflated > 0)
        flip_if_upside_down(x);
    x.choose_shift(deflated);
    transform(x);
    add_to_shift(x);
    x.now = 1 - x.now;
}

int lasq2(int n, float* z) {
    float trace = 0;
    for (int k = 0; k < 2 * n - 1; ++k) {
        if (!(z[k] >= 0))
            return -(201 + k);
        trace += z[k];
    }
    const auto finish = [&] {
        sort(Order::descending, n, z);
        if (n > 1) {
            z[2 * n] = trace;
            z[2 * n + 1] = std::accumulate(z, z + n, 0.0F);
        }
    };
    if (n == 2) {
        const Pair pair = solve_pair(z[0], z[1], z[2]);
        z[0] = pair.larger;
        z[1] = pair.smaller;
        finish();
        return 0;
    }
    Dqds x{z, 0, n - 1};
    int info = 0;
    if (all_zero(n, z + 1)) {
        for (int k = 1; k < n; ++k)
            z[k] = z[2 * k];
    } else {
        spread(n, z);
        if (flipRatio * x.q(0) < x.q(n - 1))
            x.flip();
        split_and_transform(x);
        split_and_transform(x);
        for (int blocks = 0; info == 0 && x.last >= 0 && blocks <= n; ++blocks) {
            x.shift = x.last == n - 1 ? 0 : -z[4 * std::ptrdiff_t{x.last} + 2];
            x.shiftTail = 0;
            if (!(x.shift >= 0))
                return 1;
            find_block(x);
            flip_block(x);
            if (!solve_block(x))
                info = 2;
        }
        if (info == 0 && x.last >= 0)
            info = 3;
        for (int k = 1; k < n; ++k)
            z[k] = z[4 * std::ptrdiff_t{k}];
    }
    finish();
    if (n > 2) {
        z[2 * n + 2] = static_cast<float>(x.iterations);
        z[2 * n + 3] = static_cast<float>(x.divisions) / (static_cast<float>(n) * static_cast<float>(n));
        z[2 * n + 4] = 100.0F * static_cast<float>(x.failures) / static_cast<float>(std::max(1, x.iterations));
    }
    return info;
}

} // namespace qrv::lapack
