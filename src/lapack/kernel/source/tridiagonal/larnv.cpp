// SLARNV, SLARUV: random numbers, the same on every machine.
//
// A multiplicative congruential generator with 48 bits, state := a * state mod 2^48. A seed is the state as four
// digits of 12 bits, the most significant one first; the last one is odd.
// Source: G. Fishman, Multiplicative congruential random number generators with modulus 2^b, Math. Comp. 54 (1990).
#include <cmath>
#include <cstdint>

#include "lapack/calls/symmetric.hpp"

namespace qrv::lapack {
namespace {

constexpr std::uint64_t multiplier = 33'952'834'046'453, modulus = std::uint64_t{1} << 48;
constexpr std::uint64_t inEachDigit = 2 * (1 + 4096 * (1 + 4096 * std::uint64_t{1 + 4096}));

float fraction(std::uint64_t state) {
    constexpr float r = 1.0F / 4096;
    const auto digit = [state](int k) { return static_cast<float>(state >> 12 * k & 4095); };
    return r * (digit(3) + r * (digit(2) + r * (digit(1) + r * digit(0))));
}

class Uniforms {
public:
    explicit Uniforms(int* seed) : seed_(seed) {
        for (int k = 0; k < 4; ++k)
            state_ = state_ << 12 | (static_cast<unsigned>(seed[k]) & 4095);
    }
    ~Uniforms() {
        for (int k = 0; k < 4; ++k)
            seed_[k] = static_cast<int>(state_ >> 12 * (3 - k) & 4095);
    }
    Uniforms(const Uniforms&) = delete;
    Uniforms& operator=(const Uniforms&) = delete;

    // In (0, 1). About one state in 2^24 rounds to 1: it is moved on until none does.
    float next() {
        for (int tries = 0; tries < 8; ++tries) {
            state_ = state_ * multiplier % modulus;
            if (const float x = fraction(state_); x < 1)
                return x;
            state_ = (state_ + inEachDigit) % modulus;
        }
        return 0.5F; // not from odd seeds
    }

private:
    int* seed_;
    std::uint64_t state_ = 0;
};

} // namespace

void larnv(Distribution distribution, int* seed, int n, float* x) {
    if (n <= 0)
        return;
    Uniforms uniforms(seed);
    for (int i = 0; i < n; ++i) {
        const float u = uniforms.next();
        switch (distribution) {
        case Distribution::uniform01:
            x[i] = u;
            break;
        case Distribution::uniform11:
            x[i] = 2 * u - 1;
            break;
        case Distribution::normal: // Box and Muller
            x[i] = std::sqrt(-2 * std::log(u)) * std::cos(6.2831853F * uniforms.next());
            break;
        }
    }
}

} // namespace qrv::lapack
