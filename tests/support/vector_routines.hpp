// The routines of level 1 with two vectors, and of scaling: one row each, for the kernels of every build and the
// threaded routines.
#pragma once

#include <functional>
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
constexpr float rotationC = 0.5F, rotationS = -0.25F;
template <class T>
constexpr T factor = scalar<T>(0.75F);
template <>
inline constexpr SingleComplex factor<SingleComplex>{0.5F, -0.75F};

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

    bool sums() const { return std::string_view(name).starts_with("dot"); } // all its elements
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
#define QRV_AXPY(v) &v.n, &factor<T>, v.x, &v.incx, v.y, &v.incy
#define QRV_ROT(v) &v.n, v.x, &v.incx, v.y, &v.incy, &rotationC, &rotationS
#define QRV_ROTM(v) QRV_XY(v), modified_parameters<1>()
#define QRV_SCAL(v) &v.n, &factor<T>, v.x, &v.incx
#define QRV_REAL_SCAL(v) &v.n, &factor<float>, v.x, &v.incx

// By the names of the real and of the complex one.
#define QRV_SERIAL_VECTORS(real, complex, arguments)                                                                   \
    [](const VectorBuild& build, const VectorCall<T>& v) {                                                             \
        return value_of<T>(routine_for<T>(build.blas_##real##_kernel, build.blas_##complex##_kernel), arguments(v));   \
    }
#define QRV_VECTORS_OF(real, complex, arguments)                                                                       \
    QRV_SERIAL_VECTORS(real, complex, arguments), routine_for<T>(&real##Row, &complex##Row),                           \
        [](const VectorCall<T>& v) {                                                                                   \
            return value_of<T>(routine_for<T>(qrv_blas_##real, qrv_blas_##complex), arguments(v));                     \
        },                                                                                                             \
        [](const int* team, const VectorCall<T>& v) {                                                                  \
            auto* const onTeam = routine_for<T>(qrv_blas_##real##_omp, qrv_blas_##complex##_omp);                      \
            return value_of<T>(std::bind_front(onTeam, team), arguments(v));                                           \
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
const float* modified_parameters() {
    const auto& h = modifiedRotations[which];
    const bool onDiagonal = which % 2 == 1, beside = which == 1 || which == 2; // are read
    static const float param[] = {which - 2.0F, onDiagonal ? h[0] : nan, beside ? h[1] : nan, beside ? h[2] : nan,
                                  onDiagonal ? h[3] : nan};
    return param;
}
template <int which>
float modified_rotation_on(const VectorBuild& build, const VectorCall<float>& v) {
    return value_of<float>(build.blas_srotm_kernel, QRV_XY(v), modified_parameters<which>());
}

template <class T>
std::vector<VectorRoutine<T>> all_vector_routines() {
    using W = Wide<T>;
    std::vector<VectorRoutine<T>> all = {
        {"axpy", [](W& x, W& y, W&) { y += widen(factor<T>) * x; }, QRV_VECTORS_OF(saxpy, caxpy, QRV_AXPY)},
        {"copy", [](W& x, W& y, W&) { y = x; }, QRV_VECTORS_OF(scopy, ccopy, QRV_XY)},
        {"swap", [](W& x, W& y, W&) { std::swap(x, y); }, QRV_VECTORS_OF(sswap, cswap, QRV_XY)},
        {"dot", [](W& x, W& y, W& sum) { sum += conjugate(x) * y; }, QRV_VECTORS_OF(sdot, cdotc, QRV_XY)},
        {"scal", [](W& x, W&, W&) { x *= widen(factor<T>); }, QRV_VECTORS_OF(sscal, cscal, QRV_SCAL)}};
    if constexpr (isComplex<T>) {
        all.push_back({"dotu", [](W& x, W& y, W& sum) { sum += x * y; }, QRV_VECTORS_OF(cdotu, cdotu, QRV_XY)});
        all.push_back(
            {"csscal", [](W& x, W&, W&) { x *= factor<float>; }, QRV_VECTORS_OF(csscal, csscal, QRV_REAL_SCAL)});
    } else {
        const auto rotate = [](W& x, W& y, W&) {
            const W before = x;
            x = rotationC * x + rotationS * y;
            y = rotationC * y - rotationS * before;
        };
        all.push_back({"srot", rotate, QRV_VECTORS_OF(srot, srot, QRV_ROT)});
        all.push_back({"srotm of -2", modified_rotation<0>, modified_rotation_on<0>});
        all.push_back({"srotm of -1", modified_rotation<1>, QRV_VECTORS_OF(srotm, srotm, QRV_ROTM)});
        all.push_back({"srotm of 0", modified_rotation<2>, modified_rotation_on<2>});
        all.push_back({"srotm of 1", modified_rotation<3>, modified_rotation_on<3>});
    }
    return all;
}
template <class T>
const std::vector<VectorRoutine<T>>& vector_routines() {
    static const std::vector<VectorRoutine<T>> list = all_vector_routines<T>();
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
