#include "toeplitz.hpp"

#include <cmath>
#include <cstdlib>

#include "support/timer.hpp"

std::vector<float> toeplitz(int n, const std::vector<float>& taps) {
    const auto order = static_cast<std::size_t>(n);
    std::vector<float> matrix(order * order, 0.0F);
    for (std::size_t j = 0; j < order; ++j)
        for (std::size_t i = 0; i < order; ++i) {
            const std::size_t distance = i > j ? i - j : j - i;
            if (distance < taps.size())
                matrix[i + order * j] = taps[distance];
        }
    return matrix;
}

std::vector<float> blur_taps(double sigma) {
    std::vector<double> weights;
    double sum = 0;
    for (int d = 0; d <= std::ceil(3 * sigma); ++d) {
        weights.push_back(std::exp(-d * d / (2 * sigma * sigma)));
        sum += (d == 0 ? 1 : 2) * weights.back();
    }
    std::vector<float> taps;
    for (const double weight : weights)
        taps.push_back(static_cast<float>(weight / sum));
    return taps;
}

std::vector<float> sharpen_taps(double sigma) {
    std::vector<float> taps = blur_taps(sigma);
    for (float& tap : taps)
        tap = -tap;
    taps[0] += 2;
    return taps;
}

Filtered filter(Corvex::Mathematics::LinearAlgebra::Providers::SingleBlasLevel3& blas, const support::Picture& picture,
                const std::vector<float>& taps, float level) {
    using enum Corvex::Mathematics::LinearAlgebra::TransposeOperation;
    const int m = picture.rows, n = picture.columns;
    const std::vector<float> g = toeplitz(m, taps), h = toeplitz(n, taps);
    std::vector<float> centred = picture.values;
    for (float& pixel : centred)
        pixel -= level;
    std::vector<float> columnsDone(centred.size());
    Filtered result{picture, 0, 2.0 * m * n * m + 2.0 * m * n * n};

    // Every pixel of the result starts at the level, so the second product adds to it (beta = 1).
    for (float& pixel : result.picture.values)
        pixel = level;
    const support::Timer timer;
    blas.Sgemm(None, None, m, n, m, 1.0F, g, 0, m, centred, 0, m, 0.0F, columnsDone, 0, m);
    blas.Sgemm(None, Transpose, m, n, n, 1.0F, columnsDone, 0, m, h, 0, n, 1.0F, result.picture.values, 0, m);
    result.seconds = timer.seconds();
    return result;
}

std::vector<double> filter_oracle(const support::Picture& picture, const std::vector<float>& taps, float level) {
    const int m = picture.rows, n = picture.columns;
    const int reach = static_cast<int>(taps.size()) - 1;
    const auto at = [m](int i, int j) {
        return static_cast<std::size_t>(i) + static_cast<std::size_t>(m) * static_cast<std::size_t>(j);
    };
    // Along one direction: the sum of the taps times the pixels within reach.
    const auto pass = [&](const std::vector<double>& in, bool alongRows) {
        std::vector<double> out(in.size());
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i) {
                double sum = 0;
                for (int d = -reach; d <= reach; ++d) {
                    const int k = (alongRows ? j : i) + d;
                    if (k >= 0 && k < (alongRows ? n : m))
                        sum += static_cast<double>(taps[static_cast<std::size_t>(std::abs(d))]) *
                               in[alongRows ? at(i, k) : at(k, j)];
                }
                out[at(i, j)] = sum;
            }
        return out;
    };
    std::vector<double> centred;
    for (const float pixel : picture.values)
        centred.push_back(static_cast<double>(pixel) - level);
    std::vector<double> result = pass(pass(centred, false), true);
    for (double& pixel : result)
        pixel += level;
    return result;
}
