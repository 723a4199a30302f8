// Positive definite matrices, and what is checked of their factors.
#pragma once

#include "blas/options.hpp"
#include "support/oracle.hpp"

namespace qrv::test {

// Positive definite: the diagonal outweighs its row. Its imaginary part must not count.
template <class T>
Operand<T> definite(Uplo uplo, int n, unsigned seed = 1) {
    const Form form{n, n, isComplex<T> ? Form::hermitian : Form::symmetric, letter(uplo)};
    Operand<T> a(form, {.extra = 3, .offset = 1});
    std::mt19937 random(seed + static_cast<unsigned>(n));
    a.fill_random(random);
    for (int i = 0; i < n; ++i) {
        a(i, i) = scalar<T>(static_cast<float>(n) + 1 + static_cast<float>(random() % 16) / 8);
        set_imaginary(a(i, i), nan);
    }
    return a;
}

// |A - U^H U| or |A - L L^H| in roundings of |A|
template <class T>
double cholesky_residual(const Operand<T>& a, const Operand<T>& factor) {
    const WideMatrix<T> whole(a);
    return in_roundings(norm(whole - cholesky_product(factor)), a.rows(), norm(whole));
}
constexpr double choleskyBound = 0.5;

} // namespace qrv::test
