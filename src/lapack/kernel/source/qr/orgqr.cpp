// SORGQR, CUNGQR: the first columns of the Q of a QR factorization, in the place of its reflectors, in blocks.
#include "lapack/kernel/source/qr/generate_q.hpp"

namespace qrv::lapack {
namespace {

template <class T>
constexpr RoutineName<T> orgqrName(isComplex<T> ? "UNGQR" : "ORGQR");

template <class T>
int block_of(int m, int n, int k) {
    return tuning::block_size(orgqrName<T>, m, n, k);
}

} // namespace

template <class T>
std::int64_t orgqr_work(int m, int n, int k) {
    return std::int64_t{std::max(1, n)} * block_of<T>(m, n, k);
}

template <class T>
void orgqr(int m, int n, int k, Matrix<T> a, const T* tau, T* work, int lwork) {
    generate_q<T>(orgqrName<T>, block_of<T>(m, n, k), {StoreV::columns, m, n, k, a, tau}, work, lwork);
}

template std::int64_t orgqr_work<float>(int, int, int);
template std::int64_t orgqr_work<SingleComplex>(int, int, int);
template void orgqr(int, int, int, Matrix<float>, const float*, float*, int);
template void orgqr(int, int, int, Matrix<SingleComplex>, const SingleComplex*, SingleComplex*, int);

} // namespace qrv::lapack
