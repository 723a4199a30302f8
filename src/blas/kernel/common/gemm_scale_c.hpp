// C := beta*C. beta = 0 stores zeros and does not read C.
//
//   tile       4 columns, then one at a time; 8, 4 and single rows
//   alignment  none assumed; tall columns are entered at a 16-byte boundary of the group's first column
//   reads      nothing outside C
#pragma once

#include <cstddef>
#include <cstdint>

#include "blas/kernel/common/vec4f.hpp"
#include "blas/matrix.hpp"

namespace qrv::kernel::QRV_KERNEL_BUILD {

constexpr int peelFrom = 11; // columns (in GEMM: depths) from here on are entered at a 16-byte boundary

// Floats before the first 16-byte boundary at or after p, 0 to 3; 0 if no float of this array lies on one.
inline int floats_to_boundary(const float* p) {
    const auto address = reinterpret_cast<std::uintptr_t>(p);
    return address % sizeof(float) == 0 ? static_cast<int>((16 - address % 16) % 16 / sizeof(float)) : 0;
}

template <int columns, bool zero>
void scale_columns(int m, float beta, Matrix<float> c) {
    const Vec4f factor = Vec4f::splat(beta);
    auto scale = [&](int i, auto lanes) {
        for (int j = 0; j < columns; ++j) {
            float* p = c.column(j) + i;
            store_first<lanes()>(p, zero ? Vec4f::zero() : factor * load_first<lanes()>(p));
        }
    };
    const Lanes<4> vector;
    const Lanes<1> single;
    int i = 0;
    if (m >= peelFrom)
        for (const int head = floats_to_boundary(c.data); i < head; ++i)
            scale(i, single);
    for (; m - i >= 8; i += 8) {
        scale(i, vector);
        scale(i + 4, vector);
    }
    for (; m - i >= 4; i += 4)
        scale(i, vector);
    for (; i < m; ++i)
        scale(i, single);
}

template <bool zero>
void scale_matrix(int m, int n, float beta, Matrix<float> c) {
    int j = 0;
    for (; n - j >= 4; j += 4)
        scale_columns<4, zero>(m, beta, c.block(0, j));
    for (; j < n; ++j)
        scale_columns<1, zero>(m, beta, c.block(0, j));
}

inline void gemm_scale_c(const int* m, const int* n, const float* beta, float* c, const int* ldc) {
    const Matrix<float> matrix{c, *ldc};
    if (*beta == 0)
        scale_matrix<true>(*m, *n, 0, matrix);
    else
        scale_matrix<false>(*m, *n, *beta, matrix);
}

} // namespace qrv::kernel::QRV_KERNEL_BUILD
