// SLASY2: a Sylvester equation between blocks of order 1 and 2.
//
// Its elements of X are the unknowns of one linear system of order 1, 2 or 4, which Gaussian elimination with complete
// pivoting solves. Each pivot below a least size is replaced by that.
#include <algorithm>
#include <cmath>
#include <utility>

#include "lapack/calls/nonsymmetric.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

constexpr int most = 4;

// Unknown i + n1 * j stands for X(i, j).
struct Unknowns {
    int count;
    float matrix[most][most] = {};
    float rhs[most];
    int column[most] = {0, 1, 2, 3}; // of the unknowns that the columns belong to
};

float element(Matrix<const float> a, bool transposed, int i, int j) {
    return transposed ? a(j, i) : a(i, j);
}

Unknowns unknowns_of(const SmallSylvester& s) {
    Unknowns u{.count = s.n1 * s.n2, .rhs = {}};
    for (int j = 0; j < s.n2; ++j)
        for (int i = 0; i < s.n1; ++i) {
            const int row = i + s.n1 * j;
            for (int k = 0; k < s.n1; ++k)
                u.matrix[row][k + s.n1 * j] += element(s.left, s.transposedLeft, i, k);
            for (int k = 0; k < s.n2; ++k)
                u.matrix[row][i + s.n1 * k] += static_cast<float>(s.sign) * element(s.right, s.transposedRight, k, j);
            u.rhs[row] = s.b(i, j);
        }
    return u;
}

float largest_element(int n, Matrix<const float> a) {
    float largest = 0;
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i)
            largest = std::max(largest, std::fabs(a(i, j)));
    return largest;
}

float least_pivot(const SmallSylvester& s) {
    if (s.n1 * s.n2 == 1)
        return machine::smallNumber;
    const float size = std::max(largest_element(s.n1, s.left), largest_element(s.n2, s.right));
    return std::max(machine::precision * size, machine::smallNumber);
}

// Brings the largest element from (step, step) on to that place.
void pivot(Unknowns& u, int step) {
    int row = step, column = step;
    for (int i = step; i < u.count; ++i)
        for (int j = step; j < u.count; ++j)
            if (std::fabs(u.matrix[i][j]) > std::fabs(u.matrix[row][column]))
                row = i, column = j;
    std::swap(u.matrix[row], u.matrix[step]);
    std::swap(u.rhs[row], u.rhs[step]);
    for (auto& line : u.matrix)
        std::swap(line[column], line[step]);
    std::swap(u.column[column], u.column[step]);
}

// Leaves the upper triangle. Result: whether a pivot had to be replaced.
bool eliminate(Unknowns& u, float leastPivot) {
    bool perturbed = false;
    for (int k = 0; k < u.count; ++k) {
        pivot(u, k);
        float* const top = u.matrix[k];
        if (std::fabs(top[k]) < leastPivot) {
            top[k] = leastPivot;
            perturbed = true;
        }
        for (int i = k + 1; i < u.count; ++i) {
            const float factor = u.matrix[i][k] / top[k];
            u.rhs[i] -= factor * u.rhs[k];
            for (int j = k + 1; j < u.count; ++j)
                u.matrix[i][j] -= factor * top[j];
        }
    }
    return perturbed;
}

// What keeps the quotients from overflow, with room for the sums of the substitution.
float scale_for(const Unknowns& u) {
    const float room = u.count == 1 ? 1 : u.count == 2 ? 2 : 8;
    bool fits = true;
    float largest = 0;
    for (int i = 0; i < u.count; ++i) {
        fits = fits && !(room * machine::smallNumber * std::fabs(u.rhs[i]) > std::fabs(u.matrix[i][i]));
        largest = std::max(largest, std::fabs(u.rhs[i]));
    }
    return fits ? 1 : 1 / room / largest;
}

void substitute(Unknowns& u, float scale) {
    for (int i = u.count - 1; i >= 0; --i) {
        const float inverse = 1 / u.matrix[i][i];
        float x = scale * u.rhs[i] * inverse;
        for (int j = i + 1; j < u.count; ++j)
            x -= inverse * u.matrix[i][j] * u.rhs[j];
        u.rhs[i] = x;
    }
}

} // namespace

SmallSolution lasy2(const SmallSylvester& system, Matrix<float> x) {
    Unknowns u = unknowns_of(system);
    SmallSolution result{};
    result.perturbed = eliminate(u, least_pivot(system));
    result.scale = scale_for(u);
    substitute(u, result.scale);
    for (int k = 0; k < u.count; ++k)
        x(u.column[k] % system.n1, u.column[k] / system.n1) = u.rhs[k];
    for (int i = 0; i < system.n1; ++i)
        result.xnorm = std::max(result.xnorm, std::fabs(x(i, 0)) + (system.n2 == 2 ? std::fabs(x(i, 1)) : 0));
    return result;
}

} // namespace qrv::lapack
