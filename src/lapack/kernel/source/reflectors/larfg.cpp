// SLARFG, CLARFG: the reflector that turns a column into a multiple of the first unit vector, with the sign that avoids
// cancellation. (A. Householder, Unitary triangularization of a nonsymmetric matrix, J. ACM 5, 1958.)
#include "lapack/calls/reflectors.hpp"
#include "lapack/kernel/source/reflectors/reflected_column.hpp"

namespace qrv::lapack {

template <class T>
T larfg(int n, T& alpha, Vector<T> x) {
    if (n <= 0)
        return scalar<T>(0);
    ReflectedColumn<T> column(n - 1, alpha, x);
    if (column.square() == 0 && std::imag(column.alpha()) == 0)
        return scalar<T>(0);
    column.scale_up();
    const double beta = -std::copysign(column.length(), std::real(column.alpha()));
    const Wide<T> difference = column.alpha() - beta;
    column.leave(beta, difference);
    return element(-difference / beta);
}

template float larfg(int, float&, Vector<float>);
template SingleComplex larfg(int, SingleComplex&, Vector<SingleComplex>);

} // namespace qrv::lapack
