// SLASD3: the values of a merge, roots of the secular equation (secular_equation.hpp), and their vectors.
#include <algorithm>
#include <cmath>

#include "blas/calls.hpp"
#include "lapack/calls/svd.hpp"
#include "lapack/kernel/source/svd/merge.hpp"
#include "lapack/kernel/source/svd/secular_equation.hpp"

namespace qrv::lapack {

bool Merge::solve(float* d) {
    if (kept == 1) {
        d[0] = std::fabs(z[0]);
        std::fill_n(u.column(0), n, 0.0F);
        u(nl, 0) = std::copysign(1.0F, z[0]);
        kernel::copy(m, vt2.row(0, 0), vt.row(0, 0));
        return true;
    }
    if (!find_values(d))
        return false;
    correct_first_row();
    form_left_vectors();
    form_right_vectors();
    return true;
}

// Differences d(i) - sigma(j) in U, sums in V'.
bool Merge::find_values(float* d) {
    const float rho = take_length(kept, z);
    for (int j = 0; j < kept; ++j)
        if (lasd4(kept, j, dsigma, z, u.column(j), rho, &d[j], vt.column(j)) != 0)
            return false;
    return true;
}

void Merge::correct_first_row() {
    constexpr int rows = 64;
    double product[rows];
    for (int top = 0, size; top < kept; top += size) {
        size = std::min(rows, kept - top);
        std::fill_n(product, size, 1.0);
        for (int j = 0; j < kept; ++j) {
            const auto multiply = [&](int first, int end, int other) {
                if (first < end)
                    kernel::secular_factors(end - first, dsigma + top + first, dsigma[other], u.column(j) + top + first,
                                            vt.column(j) + top + first, product + first);
            };
            if (j + 1 < kept) { // rows up to j have the pole behind the root, the others that before it
                const int split = std::clamp(j + 1 - top, 0, size);
                multiply(0, split, j + 1);
                multiply(split, size, j);
            } else {
                for (int i = 0; i < size; ++i)
                    product[i] *= double{u(top + i, j)} * vt(top + i, j);
            }
        }
        for (int i = 0; i < size; ++i)
            z[top + i] = corrected(product[i], z[top + i]);
    }
}

// Column j of Q: x by kind, of length 1.
void Merge::take_unit_vector(int j, const float* x) {
    const float length = kernel::nrm2(kept, Vector<const float>{x});
    float* const to = q.column(j);
#pragma omp simd
    for (int r = 0; r < kept; ++r)
        to[r] = x[group[r]] / length;
}

// Of each root, in V' the right vector and in U the left one, neither of length 1.
void Merge::form_left_vectors() {
    for (int j = 0; j < kept; ++j) {
        float *const left = u.column(j), *const right = vt.column(j);
        kernel::secular_vectors(kept, dsigma, z, left, right);
        left[0] = -1;
        take_unit_vector(j, left);
    }
    const int both = 1 + count[ofLeft], nl1 = nl + 1;
    blas::gemm(Op::none, Op::none, nl, kept, count[ofLeft] + count[ofBoth], 1.0F, u2.block(0, 1), q.block(1, 0), 0.0F,
               u);
    kernel::copy(kept, q.row(0, 0), u.row(nl, 0));
    blas::gemm(Op::none, Op::none, nr, kept, count[ofBoth] + count[ofRight], 1.0F, u2.block(nl1, both),
               q.block(both, 0), 0.0F, u.block(nl1, 0));
}

int lasd3(int nl, int nr, bool longer, int k, float* d, Matrix<float> q, float* dsigma, Matrix<float> u,
          Matrix<float> u2, Matrix<float> vt, Matrix<float> vt2, int* idxc, const int* ctot, float* z) {
    const int n = nl + nr + 1;
    Merge merge{{nl, n, n + longer, nullptr, nullptr, z, dsigma, roundingsOfMerge, k}, nr, u, vt, idxc, u2, vt2, q};
    std::copy_n(ctot, 3, merge.count);
    for (int j = 0; j < k; ++j)
        --idxc[j];
    const bool solved = merge.solve(d);
    for (int j = 0; j < k; ++j)
        ++idxc[j];
    return solved ? 0 : 1;
}

void Merge::form_right_vectors() {
    for (int j = 0; j < kept; ++j)
        take_unit_vector(j, vt.column(j));
    const int both = 1 + count[ofLeft], nl1 = nl + 1;
    blas::gemm(Op::transpose, Op::none, kept, nl1, both + count[ofBoth], 1.0F, q, vt2, 0.0F, vt);
    blas::gemm(Op::transpose, Op::none, kept, m - nl1, count[ofBoth] + count[ofRight], 1.0F, q.block(both, 0),
               vt2.block(both, nl1), 0.0F, vt.block(0, nl1));
    if (m > n) // only then does the first row have anything there
        kernel::geru(kept, m - nl1, 1.0F, q.row(0, 0), vt2.row(0, nl1), vt.block(0, nl1));
}

} // namespace qrv::lapack
