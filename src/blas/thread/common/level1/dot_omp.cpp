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

// `dot` gives the inner product of one slice. A team of one returns it as it is, and so does the calling thread by
// itself if there is no memory for the partial results of a very large team.
template <class T, class Dot>
T dot_omp(int threads, int n, const Dot& dot) {
    constexpr int slotsOnStack = 128, alignment = 128;
    std::array<T, slotsOnStack> few;
    T* partial = few.data();
    void* block = nullptr;
    if (threads > slotsOnStack) {
        block = qrv_serv_allocate(sizeof(T) * static_cast<std::size_t>(threads), alignment);
        partial = static_cast<T*>(block);
        if (!partial)
            return dot(Slice{0, n});
    }
    int team = 1;
#pragma omp parallel num_threads(threads)
    {
        const int size = omp_get_num_threads(), thread = omp_get_thread_num();
        partial[thread] = dot(vector_slice(n, size, thread));
#pragma omp master
        team = size;
    }
    const T result = team == 1 ? partial[0] : sum(partial, team);
    qrv_serv_deallocate(block);
    return result;
}

} // namespace
} // namespace qrv

using namespace qrv;

float qrv_blas_sdot(const int* n, const float* x, const int* incx, const float* y, const int* incy) {
    return call_by_length<sdotRow, qrv_blas_sdot_kernel, qrv_blas_sdot_omp>(*n, *incx, *incy, n, x, incx, y, incy);
}
void qrv_blas_cdotc(qrv_complex* result, const int* n, const qrv_complex* x, const int* incx, const qrv_complex* y,
                    const int* incy) {
    call_by_length<cdotcRow, qrv_blas_cdotc_kernel, qrv_blas_cdotc_omp>(*n, *incx, *incy, result, n, x, incx, y, incy);
}
float qrv_blas_sdot_omp(const int* threads, const int* n, const float* x, const int* incx, const float* y,
                        const int* incy) {
    const VectorOperand<const float> vx{x, *n, *incx}, vy{y, *n, *incy};
    return dot_omp<float>(*threads, *n, [&](Slice part) {
        return qrv_blas_sdot_kernel(&part.count, vx.slice(part), incx, vy.slice(part), incy);
    });
}
void qrv_blas_cdotc_omp(const int* threads, qrv_complex* result, const int* n, const qrv_complex* x, const int* incx,
                        const qrv_complex* y, const int* incy) {
    const VectorOperand<const SingleComplex> vx{x, *n, *incx}, vy{y, *n, *incy};
    *result = dot_omp<SingleComplex>(*threads, *n, [&](Slice part) {
        SingleComplex slice;
        qrv_blas_cdotc_kernel(&slice, &part.count, vx.slice(part), incx, vy.slice(part), incy);
        return slice;
    });
}
