// Reflectors of order 2 and 3, of which the QR iterations chase theirs down a Hessenberg matrix.
#pragma once

#include <cmath>

#include "blas/calls.hpp"

namespace qrv::lapack {

// H = I - tau v v' with v = (1, v2, v3): turns (alpha, x, y) into (beta, 0, 0).
struct Reflector3 {
    float tau, v2, v3, beta;
};

// As SLARFG, in double, where the squares of floats neither overflow nor vanish.
inline Reflector3 reflector3(float alpha, float x, float y = 0) {
    const double rest = double{x} * x + double{y} * y;
    if (rest == 0)
        return {0, 0, 0, alpha};
    const double size = std::sqrt(double{alpha} * alpha + rest), beta = alpha < 0 ? size : -size;
    const double scale = 1 / (alpha - beta);
    return {static_cast<float>((beta - alpha) / beta), static_cast<float>(x * scale), static_cast<float>(y * scale),
            static_cast<float>(beta)};
}

// From so many elements on a kernel is worth its call.
inline constexpr int leastForKernel = 12;

// Rows k to k + order - 1, in columns [first, last).
template <int order>
void reflect_rows(const Reflector3& h, int k, int first, int last, Matrix<float> a) {
    const float t1 = h.tau, t2 = t1 * h.v2, t3 = t1 * h.v3;
    for (int j = first; j < last; ++j) {
        float* const x = a.column(j) + k;
        if constexpr (order == 3) {
            const float sum = x[0] + h.v2 * x[1] + h.v3 * x[2];
            x[0] -= sum * t1, x[1] -= sum * t2, x[2] -= sum * t3;
        } else {
            const float sum = x[0] + h.v2 * x[1];
            x[0] -= sum * t1, x[1] -= sum * t2;
        }
    }
}

// Columns k to k + order - 1, in rows [first, last). A kernel may round otherwise than the loops here.
template <int order>
void reflect_columns(const Reflector3& h, int k, int first, int last, Matrix<float> a, bool byKernel) {
    const float v2 = h.v2, v3 = h.v3, t1 = h.tau, t2 = t1 * v2, t3 = t1 * v3;
    float *const x = a.column(k), *const y = a.column(k + 1);
    if constexpr (order == 3) {
        if (byKernel) {
            const float v[] = {t1, v2, v3};
            kernel::larf3_right(1, first, last, 0, 0, {v, 3}, a.block(0, k));
            return;
        }
        float* const z = a.column(k + 2);
        for (int i = first; i < last; ++i) {
            const float sum = x[i] + v2 * y[i] + v3 * z[i];
            x[i] -= sum * t1, y[i] -= sum * t2, z[i] -= sum * t3;
        }
    } else {
        for (int i = first; i < last; ++i) {
            const float sum = x[i] + v2 * y[i];
            x[i] -= sum * t1, y[i] -= sum * t2;
        }
    }
}

template <int order>
void reflect_columns(const Reflector3& h, int k, int first, int last, Matrix<float> a) {
    reflect_columns<order>(h, k, first, last, a, last - first >= leastForKernel);
}

} // namespace qrv::lapack
