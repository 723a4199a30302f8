// Separable filters as banded Toeplitz matrices: filtering a picture A is the product G A G'.
#pragma once

#include <qrv/providers.hpp>
#include <vector>

#include "support/picture.hpp"

// n x n symmetric banded Toeplitz matrix, column-major: element (i, j) is taps[|i - j|], 0 beyond the taps.
std::vector<float> toeplitz(int n, const std::vector<float>& taps);

// taps[d], d = 0, 1, ..., of a Gaussian of standard deviation sigma in pixels, cut off at three sigma. Over a whole row
// of the matrix they sum to 1.
std::vector<float> blur_taps(double sigma);

// Twice the picture less its blur, along one direction.
std::vector<float> sharpen_taps(double sigma);

struct Filtered {
    support::Picture picture;
    double seconds = 0; // the two products together
    double flops = 0;
};

// G A G' with the taps' matrices for rows and columns, as two products through the provider. Pixels are taken about
// `level`, so that the picture's surroundings count as that gray and not as black.
Filtered filter(Corvex::Mathematics::LinearAlgebra::Providers::SingleBlasLevel3& blas, const support::Picture& picture,
                const std::vector<float>& taps, float level);

// The same in double precision with plain loops.
std::vector<double> filter_oracle(const support::Picture& picture, const std::vector<float>& taps, float level);
