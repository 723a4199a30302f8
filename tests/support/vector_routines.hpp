// The routines of level 1 with two vectors, and of scaling: one row each, for the kernels of every build and the
// threaded routines.
#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <ostream>
#include <string_view>

#include "blas/native.hpp"
#include "blas/thread/common/level1/level1_threads.hpp"
#include "support/builds.hpp"
#include "support/flags.hpp"
#include "support/oracle.hpp"

namespace qrv::test {

template <class T>
struct VectorCall {
    int n;
    T* x;
    int incx;
    T* y;
    int incy;
};

// The factors of all routines: exact products, and nothing that a routine may treat as a special case.
constexpr float factor = 0.75F, rotationC = 0.5F, rotationS = -0.25F;
constexpr SingleComplex complexFactor{0.5F, -0.75F};

// What a routine does with element x, element y and its value so far, and how it is called. Functions give their value,
// others 0.
template <class T>
struct VectorRoutine {
    const char* name;
    void (*step)(Wide<T>& x, Wide<T>& y, Wide<T>& value);
    T (*kernel)(const VectorBuild& build, const VectorCall<T>& v);
    const VectorRow* row = nullptr; // by which it decides on a team, if it has a threaded form
    T (*decided)(const VectorCall<T>& v) = nullptr;
    T (*on_team)(const int* threads, const VectorCall<T>& v) = nullptr;

    bool sums() const { return std::string_view(name).substr(1).starts_with("dot"); } // all its elements
};

// The value of a call, whether it is returned or stored at the first address.
template <class T, class Function, class... Arguments>
T value_of(const Function& function, Arguments... arguments) {
    T value{};
    if constexpr (std::is_invocable_r_v<T, Function, Arguments...>)
        value = function(arguments...);
    else if constexpr (std::is_invocable_v<Function, T*, Arguments...>)
        value = scalar<T>(nan), function(&value, arguments...);
    else
        function(arguments...);
    return value;
}

#define QRV_XY(v) &v.n, v.x, &v.incx, v.y, &v.incy
#define QRV_AXPY(v) &v.n, &factor, v.x, &v.incx, v.y, &v.incy
#define QRV_CAXPY(v) &v.n, &complexFactor, v.x, &v.incx, v.y, &v.incy
#define QRV_ROT(v) &v.n, v.x, &v.incx, v.y, &v.incy, &rotationC, &rotationS
#define QRV_SCAL(v) &v.n, &factor, v.x, &v.incx
#define QRV_CSCAL(v) &v.n, &complexFactor, v.x, &v.incx

#define QRV_SERIAL_VECTORS(T, name, arguments)                                                                         \
    [](const VectorBuild& build, const VectorCall<T>& v) {                                                             \
        return value_of<T>(build.blas_##name##_kernel, arguments(v));                                                  \
    }
#define QRV_VECTORS_OF(T, name, arguments)                                                                             \
    QRV_SERIAL_VECTORS(T, name, arguments), &name##Row,                                                                \
        [](const VectorCall<T>& v) { return value_of<T>(qrv_blas_##name, arguments(v)); },                             \
        [](const int* team, const VectorCall<T>& v) {                                                                  \
            return value_of<T>(std::bind_front(qrv_blas_##name##_omp, team), arguments(v));                            \
        }

template <class T>
void add_scaled(Wide<T>& x, Wide<T>& y, Wide<T>&) {
    if constexpr (isComplex<T>)
        y += widen(complexFactor) * x;
    else
        y += factor * x;
}
template <class T>
void copy_element(Wide<T>& x, Wide<T>& y, Wide<T>&) {
    y = x;
}
template <class T>
void swap_elements(Wide<T>& x, Wide<T>& y, Wide<T>&) {
    std::swap(x, y);
}
template <class T>
void add_product(Wide<T>& x, Wide<T>& y, Wide<T>& sum) {
    sum += conjugate(x) * y;
}
template <class T>
void scale(Wide<T>& x, Wide<T>&, Wide<T>&) {
    x *= factor;
}

// What each flag of SROTM stands for, h11, h21, h12 and h22, of which those that it tells itself are not read.
constexpr float modifiedRotations[][4] = {
    {1, 0, 0, 1}, {0.5F, -0.25F, 2, -0.75F}, {1, -0.25F, 2, 1}, {0.5F, -1, 1, -0.75F}};

template <int which>
void modified_rotation(double& x, double& y, double&) {
    const auto& h = modifiedRotations[which];
    const double rotated = h[0] * x + h[2] * y;
    y = h[1] * x + h[3] * y;
    x = rotated;
}
template <int which>
float modified_rotation_on(const VectorBuild& build, const VectorCall<float>& v) {
    const auto& h = modifiedRotations[which];
    const bool onDiagonal = which % 2 == 1, beside = which == 1 || which == 2; // are read
    const float param[] = {which - 2.0F, onDiagonal ? h[0] : nan, beside ? h[1] : nan, beside ? h[2] : nan,
                           onDiagonal ? h[3] : nan};
    return value_of<float>(build.blas_srotm_kernel, QRV_XY(v), param);
}

template <class T>
const std::vector<VectorRoutine<T>>& vector_routines();

template <>
inline const std::vector<VectorRoutine<float>>& vector_routines<float>() {
    static const std::vector<VectorRoutine<float>> list = {
        {"saxpy", add_scaled<float>, QRV_VECTORS_OF(float, saxpy, QRV_AXPY)},
        {"scopy", copy_element<float>, QRV_VECTORS_OF(float, scopy, QRV_XY)},
        {"sswap", swap_elements<float>, QRV_VECTORS_OF(float, sswap, QRV_XY)},
        {"srot",
         [](double& x, double& y, double&) {
             const double rotated = rotationC * x + rotationS * y;
             y = rotationC * y - rotationS * x;
             x = rotated;
         },
         QRV_VECTORS_OF(float, srot, QRV_ROT)},
        {"sdot", add_product<float>, QRV_VECTORS_OF(float, sdot, QRV_XY)},
        {"sscal", scale<float>, QRV_SERIAL_VECTORS(float, sscal, QRV_SCAL)},
        {"srotm of -2", modified_rotation<0>, modified_rotation_on<0>},
        {"srotm of -1", modified_rotation<1>, modified_rotation_on<1>},
        {"srotm of 0", modified_rotation<2>, modified_rotation_on<2>},
        {"srotm of 1", modified_rotation<3>, modified_rotation_on<3>},
    };
    return list;
}

template <>
inline const std::vector<VectorRoutine<SingleComplex>>& vector_routines<SingleComplex>() {
    using C = SingleComplex;
    static const std::vector<VectorRoutine<C>> list = {
        {"caxpy", add_scaled<C>, QRV_VECTORS_OF(C, caxpy, QRV_CAXPY)},
        {"ccopy", copy_element<C>, QRV_VECTORS_OF(C, ccopy, QRV_XY)},
        {"cswap", swap_elements<C>, QRV_VECTORS_OF(C, cswap, QRV_XY)},
        {"cdotc", add_product<C>, QRV_VECTORS_OF(C, cdotc, QRV_XY)},
        {"cdotu", [](Wide<C>& x, Wide<C>& y, Wide<C>& sum) { sum += x * y; }, QRV_SERIAL_VECTORS(C, cdotu, QRV_XY)},
        {"cscal", [](Wide<C>& x, Wide<C>&, Wide<C>&) { x *= widen(complexFactor); },
         QRV_SERIAL_VECTORS(C, cscal, QRV_CSCAL)},
        {"csscal", scale<C>, QRV_SERIAL_VECTORS(C, csscal, QRV_SCAL)},
    };
    return list;
}

struct VectorShape {
    int n, incx = 1, incy = 1;
    int startx = 0, starty = 0; // floats past a 64-byte boundary
    Guard guardx = Guard::canaries, guardy = Guard::canaries;
};

inline std::ostream& operator<<(std::ostream& out, const VectorShape& p) {
    return out << "n=" << p.n << " inc " << p.incx << ',' << p.incy << " start " << p.startx << ',' << p.starty
               << " guards " << static_cast<int>(p.guardx) << ',' << static_cast<int>(p.guardy);
}

// Whether run(call) does what the routine should, and raises no flags by it. Elements are element(random); error(i,
// size) is what element i may be wrong by, and the value of a function if i is -1, where `size` is the sum of |x||y|.
template <class T, class Element, class Error, class Run>
bool comes_out(const VectorRoutine<T>& routine, const VectorShape& p, const Element& element, const Error& error,
               const Run& run) {
    std::minstd_rand random(static_cast<unsigned>(std::max(p.n, 0)) + 1);
    const auto value = [&] { return element(random); };
    GuardedVector<T> x(p.n, p.incx, p.startx, p.guardx), y(p.n, p.incy, p.starty, p.guardy);
    std::vector<Wide<T>> wideX = x.fill(value).widened(), wideY = y.fill(value).widened();
    Wide<T> sum{};
    double size = 0;
    for (int i = 0; i < p.n; ++i) {
        auto& xi = wideX[p.incx == 0 ? 0 : static_cast<std::size_t>(i)];
        auto& yi = wideY[p.incy == 0 ? 0 : static_cast<std::size_t>(i)];
        size += std::abs(xi) * std::abs(yi);
        routine.step(xi, yi, sum);
    }
    T result{};
    const int flags = flags_raised([&] { result = run(VectorCall<T>{p.n, x.data(), p.incx, y.data(), p.incy}); });
    const auto allowed = [&](std::size_t i) { return error(static_cast<int>(i), size); };
    return holds(x, wideX, allowed) && holds(y, wideY, allowed) &&
           std::abs(widen(result) - sum) <= (routine.sums() ? error(-1, size) : 0) && flags == 0;
}
// Numbers that do not round.
template <class T, class Run>
bool comes_out_exactly(const VectorRoutine<T>& routine, const VectorShape& p, const Run& run) {
    return comes_out(
        routine, p, [](auto& random) { return eighths<T>(random); }, [](int, double) { return 0.0; }, run);
}

} // namespace qrv::test
