// Native routines called by value.
#pragma once

#include <tuple>

#include "support/operand.hpp"

namespace qrv::test {

// An argument by address: of an operand its elements and its leading dimension, of a vector its elements; of a pointer
// itself, which is how results come.
template <class X>
auto by_address(X& x) {
    if constexpr (
        requires { x.form(); } && !requires { x.inc(); })
        return std::tuple(x.data(), &x.ld());
    else if constexpr (requires { x.data(); })
        return std::tuple(x.data());
    else if constexpr (std::is_array_v<X>)
        return std::tuple(&x[0]);
    else if constexpr (std::is_pointer_v<std::decay_t<X>> || std::is_null_pointer_v<std::decay_t<X>>)
        return std::tuple(x);
    else
        return std::tuple(static_cast<const X*>(&x));
}

// Result: info, if that is the one parameter more; else the routine's.
template <class Result, class... P, class... Arguments>
auto call(Result (*routine)(P...), Arguments&&... arguments) {
    const auto addresses = std::tuple_cat(by_address(arguments)...);
    return std::apply(
        [routine](auto... address) {
            if constexpr (sizeof...(address) + 1 == sizeof...(P)) {
                int info = -99;
                routine(address..., &info);
                return info;
            } else {
                return routine(address...);
            }
        },
        addresses);
}
// Of a real and a complex routine the one for an element type.
template <class T, class Real, class Complex, class... Arguments>
auto call_for(Real* real, Complex* complex, Arguments&&... arguments) {
    return call(routine_for<T>(real, complex), arguments...);
}

// Ints in guarded memory.
struct GuardedInts : GuardedVector<float> {
    using GuardedVector::GuardedVector;
    int* data() { return reinterpret_cast<int*>(GuardedVector::data()); }
    const int* data() const { return reinterpret_cast<const int*>(GuardedVector::data()); }
};

} // namespace qrv::test
