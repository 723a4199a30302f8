// Inner products on a team. Each thread forms that of its slices; the partial results are added up afterwards, so the
// last bits depend on the team's size, and on nothing else.
#include <array>

#include "blas/thread/common/level1/vector_team_omp.hpp"
#include "service/work_pool.hpp"

namespace qrv {
namespace {

// In the order of the threads, in extended precision, rounded once.
float sum(const float* partial, int count) {
    long double total = 0;
    for (int i = 0; i < count; ++i)
        total += partial[i];
    return static_cast<float>(total);
}
SingleComplex sum(const SingleComplex* partial, int count) {
    long double re = 0, im = 0;
    for (int i = 0; i < count; ++i) {
        re += partial[i].re;
        im += partial[i].im;
    }
    return {static_cast<float>(re), static_cast<float>(im)};
}

// A team of one returns the kernel's result as it is, and so does the calling thread by itself if there is no memory
// for the partial results of a very large team.
template <class T>
T dot_omp(int threads, int n, Vector<const T> x, Vector<const T> y) {
    constexpr int slotsOnStack = 128, alignment = 128;
    std::array<T, slotsOnStack> few;
    T* partial = few.data();
    void* block = nullptr;
    if (threads > slotsOnStack) {
        block = qrv_serv_allocate(sizeof(T) * static_cast<std::size_t>(threads), alignment);
        partial = static_cast<T*>(block);
        if (!partial)
            return kernel::dotc(n, x, y);
    }
    int size = 1;
    on_team(threads, [&](int team, int thread) {
        const Slice part = vector_slice(n, team, thread);
        partial[thread] = kernel::dotc(part.count, slice_of(x, n, part), slice_of(y, n, part));
        if (thread == 0)
            size = team;
    });
    const T result = size == 1 ? partial[0] : sum(partial, size);
    qrv_serv_deallocate(block);
    return result;
}

template <class T>
T dot(int n, Vector<const T> x, Vector<const T> y) {
    const int threads = vector_threads(row_for<T>(sdotRow, cdotcRow), n, x.inc, y.inc, ThisMachine{});
    return threads > 1 ? dot_omp(threads, n, x, y) : kernel::dotc(n, x, y);
}

} // namespace

float blas::dotc(int n, Vector<const float> x, Vector<const float> y) {
    return dot(n, x, y);
}
SingleComplex blas::dotc(int n, Vector<const SingleComplex> x, Vector<const SingleComplex> y) {
    return dot(n, x, y);
}

} // namespace qrv

using namespace qrv;

float qrv_blas_sdot(const int* n, const float* x, const int* incx, const float* y, const int* incy) {
    return dot<float>(*n, {x, *incx}, {y, *incy});
}
void qrv_blas_cdotc(qrv_complex* result, const int* n, const qrv_complex* x, const int* incx, const qrv_complex* y,
                    const int* incy) {
    *result = dot<SingleComplex>(*n, {x, *incx}, {y, *incy});
}
float qrv_blas_sdot_omp(const int* threads, const int* n, const float* x, const int* incx, const float* y,
                        const int* incy) {
    return dot_omp<float>(*threads, *n, {x, *incx}, {y, *incy});
}
void qrv_blas_cdotc_omp(const int* threads, qrv_complex* result, const int* n, const qrv_complex* x, const int* incx,
                        const qrv_complex* y, const int* incy) {
    *result = dot_omp<SingleComplex>(*threads, *n, {x, *incx}, {y, *incy});
}
