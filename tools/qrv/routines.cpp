#include "routines.hpp"

#include <qrv/native.h>

namespace tools {
namespace {

const qrv_complex* native(const Matrix<SingleComplex>& a) {
    return reinterpret_cast<const qrv_complex*>(a.values.data()); // both are two floats, real part first
}

} // namespace

const Corvex::Mathematics::LinearAlgebra::Providers::ParallelX86SingleLinearAlgebraProvider& provider() {
    static const Corvex::Mathematics::LinearAlgebra::Providers::ParallelX86SingleLinearAlgebraProvider object;
    return object;
}

float norm(MatrixNorm kind, const Matrix<float>& a) {
    return provider().Lapack()->Slange(kind, a.rows, a.columns, a.values, 0, a.rows);
}

// The complex class has no method for it.
float norm(MatrixNorm kind, const Matrix<SingleComplex>& a) {
    std::vector<float> work(static_cast<std::size_t>(a.rows));
    return CLANGE(&"FOIM"[static_cast<int>(kind)], &a.rows, &a.columns, native(a), &a.rows, work.data());
}

} // namespace tools
