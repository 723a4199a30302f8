// SLARFP, CLARFP: the reflector that turns a column into a multiple of the first unit vector that is not negative.
//
// With alpha >= 0 the difference alpha - beta would cancel; from beta^2 = |alpha|^2 + |x|^2 it is found as
// -(imag(alpha)^2 + |x|^2) / (real(alpha) + beta) instead. (J. Demmel, M. Hoemmen, Y. Hida, E. Riedy, Nonnegative
// diagonals and high performance on low-profile matrices from Householder QR, SIAM J. Sci. Comput. 31, 2009.)
//
// An x that is lost beside alpha counts as zero, or else v would be as large as alpha is beside x, without bound.
#include "lapack/calls/reflectors.hpp"
#include "lapack/kernel/source/reflectors/reflected_column.hpp"

namespace qrv::lapack {
namespace {

// With x = 0 the reflector turns alpha alone.
template <class T>
T reflect_first_element(ReflectedColumn<T>& column) {
    const std::complex<double> alpha = column.alpha();
    const double size = std::abs(alpha);
    column.leave_zeros(size);
    return size == 0 ? scalar<T>(0) : column.element(1.0 - alpha / size);
}

} // namespace

template <class T>
T larfp(int n, T& alpha, Vector<T> x) {
    if (n <= 0)
        return scalar<T>(0);
    ReflectedColumn<T> column(n - 1, alpha, x);
    if (column.norm() <= double{machine::precision} * std::abs(column.alpha()))
        return reflect_first_element(column);
    column.scale_up();
    const double re = column.alpha().real(), im = column.alpha().imag(), norm = column.norm(), beta = column.length();
    std::complex<double> difference(re - beta, im); // alpha - beta
    if (!std::signbit(re))
        difference.real(-(im * im + norm * norm) / (re + beta));
    column.leave(beta, difference);
    return column.element(-difference / beta);
}

template float larfp(int, float&, Vector<float>);
template SingleComplex larfp(int, SingleComplex&, Vector<SingleComplex>);

} // namespace qrv::lapack
