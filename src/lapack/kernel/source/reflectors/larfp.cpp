// SLARFP, CLARFP: the reflector that turns a column into a multiple of the first unit vector that is not negative.
#include "lapack/calls/reflectors.hpp"
#include "lapack/kernel/source/reflectors/reflected_column.hpp"

namespace qrv::lapack {

template <class T>
T larfp(int n, T& alpha, Vector<T> x) {
    if (n <= 0)
        return scalar<T>(0);
    ReflectedColumn<T> column(n - 1, alpha, x);
    if (is_lost(column.square(), column.alpha())) {
        const Wide<T> first = column.alpha();
        const double size = modulus(first);
        column.leave_zeros(size);
        return element(turn_of(first, size));
    }
    column.scale_up();
    const PositiveReflection<Wide<T>> reflection(column.alpha(), column.square());
    column.leave(reflection.beta, reflection.difference);
    return element(reflection.tau());
}

template float larfp(int, float&, Vector<float>);
template SingleComplex larfp(int, SingleComplex&, Vector<SingleComplex>);

} // namespace qrv::lapack
