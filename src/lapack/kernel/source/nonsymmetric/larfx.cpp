// SLARFX: applies a reflector that is short, with its vector in registers, or any other one as SLARF does.
#include "lapack/calls/nonsymmetric.hpp"
#include "lapack/calls/reflectors.hpp"

namespace qrv::lapack {
namespace {

constexpr int longest = 10; // of short ones

template <int order>
void apply_left(int n, const float* v, float tau, Matrix<float> c) {
    for (int j = 0; j < n; ++j) {
        float* const x = c.column(j);
        float sum = 0;
        for (int i = 0; i < order; ++i)
            sum += v[i] * x[i];
        sum *= tau;
        for (int i = 0; i < order; ++i)
            x[i] -= sum * v[i];
    }
}

template <int order>
void apply_right(int m, const float* v, float tau, Matrix<float> c) {
    for (int i = 0; i < m; ++i) {
        float sum = 0;
        for (int j = 0; j < order; ++j)
            sum += c(i, j) * v[j];
        sum *= tau;
        for (int j = 0; j < order; ++j)
            c(i, j) -= sum * v[j];
    }
}

// By the reflector's order, found from the longest one down.
template <int order = longest>
bool apply_short(Side side, int m, int n, const float* v, float tau, Matrix<float> c) {
    if constexpr (order > 0) {
        if ((side == Side::left ? m : n) != order)
            return apply_short<order - 1>(side, m, n, v, tau, c);
        side == Side::left ? apply_left<order>(n, v, tau, c) : apply_right<order>(m, v, tau, c);
        return true;
    }
    return false;
}

} // namespace

void larfx(Side side, int m, int n, const float* v, float tau, Matrix<float> c, float* work) {
    if (tau != 0 && !apply_short(side, m, n, v, tau, c))
        larf(side, m, n, Vector<const float>{v}, tau, c, work);
}

} // namespace qrv::lapack
