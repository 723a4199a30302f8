// SORGLQ, CUNGLQ: the first rows of the Q of an LQ factorization, in the place of its reflectors, in blocks.
#include "lapack/kernel/source/qr/generate_q.hpp"

namespace qrv::lapack {
namespace {

template <class T>
constexpr RoutineName<T> orglqName(isComplex<T> ? "UNGLQ" : "ORGLQ");

template <class T>
int block_of(int m, int n, int k) {
    return tuning::block_size(orglqName<T>, m, n, k);
}

} // namespace

template <class T>
std::int64_t orglq_work(int m, int n, int k) {
    return std::int64_t{std::max(1, m)} * block_of<T>(m, n, k);
}

template <class T>
void orglq(int m, int n, int k, Matrix<T> a, const T* tau, T* work, int lwork) {
    generate_q<T>(orglqName<T>, block_of<T>(m, n, k), {StoreV::rows, n, m, k, a, tau}, work, lwork);
}

template std::int64_t orglq_work<float>(int, int, int);
template std::int64_t orglq_work<SingleComplex>(int, int, int);
template void orglq(int, int, int, Matrix<float>, const float*, float*, int);
template void orglq(int, int, int, Matrix<SingleComplex>, const SingleComplex*, SingleComplex*, int);

} // namespace qrv::lapack
