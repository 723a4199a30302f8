// CLACRM and CLARCM: products of a complex matrix and a real one, as two real products. CLACP2: a real matrix copied
// into a complex one.
#include <algorithm>

#include "blas/calls.hpp"
#include "lapack/calls/svd.hpp"

namespace qrv::lapack {
namespace {

// C := product(part of `from`) for both parts of a complex m x n matrix. work: 2*m*n floats.
template <class Product>
void multiply_parts(int m, int n, Matrix<const SingleComplex> from, Matrix<SingleComplex> c, float* work,
                    const Product& product) {
    const Matrix<float> part{work, m}, result{work + std::ptrdiff_t{m} * n, m};
    for (float SingleComplex::*const side : {&SingleComplex::re, &SingleComplex::im}) {
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i)
                part(i, j) = from(i, j).*side;
        product(part, result);
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i)
                c(i, j).*side = result(i, j);
    }
}

} // namespace

void lacrm(int m, int n, Matrix<const SingleComplex> a, Matrix<const float> b, Matrix<SingleComplex> c, float* work) {
    multiply_parts(m, n, a, c, work, [&](Matrix<float> part, Matrix<float> result) {
        blas::gemm(Op::none, Op::none, m, n, n, 1.0F, part, b, 0.0F, result);
    });
}

void larcm(int m, int n, Matrix<const float> a, Matrix<const SingleComplex> b, Matrix<SingleComplex> c, float* work) {
    multiply_parts(m, n, b, c, work, [&](Matrix<float> part, Matrix<float> result) {
        blas::gemm(Op::none, Op::none, m, n, m, 1.0F, a, part, 0.0F, result);
    });
}

void lacp2(Part part, int m, int n, Matrix<const float> a, Matrix<SingleComplex> b) {
    for (int j = 0; j < n; ++j) {
        const int first = part == Part::lower ? j : 0, last = part == Part::upper ? std::min(j + 1, m) : m;
        for (int i = first; i < last; ++i)
            b(i, j) = {a(i, j), 0};
    }
}

} // namespace qrv::lapack
