#include "factors.hpp"

#include <algorithm>

namespace tools {
namespace {

// Element (i, j) of A is element (diagonal + i - j, j) of the result.
Matrix<float> band_storage(const Matrix<float>& a, int rows, int diagonal, int below, int above) {
    Matrix<float> band(rows, a.columns);
    for (int j = 0; j < a.columns; ++j)
        for (int i = std::max(0, j - above); i <= std::min(a.rows - 1, j + below); ++i)
            band(diagonal + i - j, j) = a(i, j);
    return band;
}

} // namespace

BandLu::BandLu(const Matrix<float>& a, Bandwidth band)
    : width(band), values(band_storage(a, band.diagonals(), band.below + band.above, band.below, band.above)),
      pivots(static_cast<std::size_t>(a.rows)) {}

int BandLu::factor() {
    int info = 0;
    provider().Lapack()->Sgbtrf(values.columns, values.columns, width.below, width.above, values.values, 0, values.rows,
                                pivots, info);
    return info;
}

void BandLu::solve(Matrix<float>& b) const {
    int info = 0;
    provider().Lapack()->Sgbtrs(TransposeOperation::None, b.rows, width.below, width.above, b.columns, values.values, 0,
                                values.rows, pivots, b.values, 0, b.rows, info);
}

float BandLu::reciprocal_condition(float norm) const {
    int info = 0;
    float result = 0;
    provider().Lapack()->Sgbcon(MatrixNorm::Infinity, values.columns, width.below, width.above, values.values, 0,
                                values.rows, pivots, norm, result, info);
    return result;
}

BandCholesky::BandCholesky(const Matrix<float>& a, Bandwidth band)
    : width(band), values(band_storage(a, band.below + 1, 0, band.below, 0)) {}

int BandCholesky::factor() {
    int info = 0;
    provider().Lapack()->Spbtrf(MatrixTriangleMode::Lower, values.columns, width.below, values.values, 0, values.rows,
                                info);
    return info;
}

void BandCholesky::solve(Matrix<float>& b) const {
    int info = 0;
    provider().Lapack()->Spbtrs(MatrixTriangleMode::Lower, b.rows, width.below, b.columns, values.values, 0,
                                values.rows, b.values, 0, b.rows, info);
}

float BandCholesky::reciprocal_condition(float norm) const {
    int info = 0;
    float result = 0;
    provider().Lapack()->Spbcon(MatrixTriangleMode::Lower, values.columns, width.below, values.values, 0, values.rows,
                                norm, result, info);
    return result;
}

} // namespace tools
