// SLARFP, CLARFP: the reflector that turns a column into a multiple of the first unit vector that is not negative.
//
// An x that is lost beside alpha counts as zero, or else v would be as large as alpha is beside x, without bound.
#include "lapack/calls/reflectors.hpp"
#include "lapack/kernel/source/reflectors/reflected_column.hpp"

namespace qrv::lapack {
namespace {

// With x = 0 the reflector turns alpha alone.
template <class T>
T reflect_first_element(ReflectedColumn<T>& column) {
    const auto alpha = column.alpha();
    const double size = modulus(alpha);
    column.leave_zeros(size);
    return size == 0 ? scalar<T>(0) : column.element(1.0 - alpha / size);
}

} // namespace

template <class T>
T larfp(int n, T& alpha, Vector<T> x) {
    if (n <= 0)
        return scalar<T>(0);
    ReflectedColumn<T> column(n - 1, alpha, x);
    if (column.norm() <= double{machine::precision} * modulus(column.alpha()))
        return reflect_first_element(column);
    column.scale_up();
    const PositiveReflection reflection(column.alpha(), column.norm());
    column.leave(reflection.beta, reflection.difference);
    return column.element(-reflection.difference / reflection.beta);
}

template float larfp(int, float&, Vector<float>);
template SingleComplex larfp(int, SingleComplex&, Vector<SingleComplex>);

} // namespace qrv::lapack
