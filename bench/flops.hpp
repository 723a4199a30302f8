// Floating-point operations of each routine by the field's standard counts: every peer is credited alike, whatever
// it really executes. A new family adds its formula here and nowhere else.
#pragma once

namespace bench {

constexpr double gemm_flops(int m, int n, int k) {
    return 2.0 * m * n * k;
}

} // namespace bench
