// SSTEMR: eigenvalues and eigenvectors of a symmetric tridiagonal matrix by relatively robust representations (see
// mrrr.hpp).
#include "blas/calls.hpp"
#include "lapack/calls/mrrr.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/workspace.hpp"

namespace qrv::lapack {
namespace {

constexpr float eps = machine::precision;

// Both values of a 2 x 2 matrix, or what is wanted of them, the smaller one first.
int solve_two(bool vectors, const Wanted& wanted, const float* d, float e, float* w, Matrix<float> z, int* isuppz) {
    const Eigenvector2 x = laev2(d[0], e, d[1]);
    const bool firstIsLarger = x.values.larger >= x.values.smaller; // in value, not in magnitude
    int m = 0;
    for (const int number : {1, 2}) {
        const bool ofVector = (number == 2) == firstIsLarger; // the value whose vector is (cosine, sine)
        const float value = ofVector ? x.values.larger : x.values.smaller;
        if ((wanted.range == Range::values && !(value > wanted.low && value <= wanted.high)) ||
            (wanted.range == Range::indices && (number < wanted.first || number > wanted.last)))
            continue;
        w[m] = value;
        if (vectors) {
            z(0, m) = ofVector ? x.cosine : -x.sine;
            z(1, m) = ofVector ? x.sine : x.cosine;
            isuppz[2 * m] = z(0, m) != 0 ? 1 : 2;
            isuppz[2 * m + 1] = z(1, m) != 0 ? 2 : 1;
        }
        ++m;
    }
    return m;
}

// Ascending, vectors and their supports with them.
void sort_all(int n, int m, bool vectors, float* w, Matrix<float> z, int* isuppz) {
    if (!vectors)
        return sort(Order::ascending, m, w);
    for (int j = 0; j < m - 1; ++j) {
        int least = j;
        for (int k = j + 1; k < m; ++k)
            if (w[k] < w[least])
                least = k;
        if (least == j)
            continue;
        std::swap(w[j], w[least]);
        kernel::swap(n, z.column(0, j), z.column(0, least));
        std::swap(isuppz[2 * j], isuppz[2 * least]);
        std::swap(isuppz[2 * j + 1], isuppz[2 * least + 1]);
    }
}

} // namespace

int stemr_columns(bool vectors, const Wanted& wanted, int n, const float* d, const float* e) {
    if (!vectors)
        return 0;
    if (wanted.range == Range::indices)
        return wanted.last - wanted.first + 1;
    if (wanted.range == Range::all)
        return n;
    // Sturm counts without room for squares.
    const auto up_to = [=](float x) {
        int count = 0;
        float pivot = 1;
        for (int i = 0; i < n; ++i) {
            pivot = d[i] - x - (i > 0 ? e[i - 1] * (e[i - 1] / pivot) : 0);
            count += pivot <= 0;
        }
        return count;
    };
    return std::max(0, up_to(wanted.high) - up_to(wanted.low));
}

StemrResult stemr(bool vectors, Wanted wanted, int n, float* d, float* e, float* w, Matrix<float> z, int* isuppz,
                  bool tryRelative, float* work, int* iwork) {
    if (n == 0)
        return {};
    if (n == 1) {
        const bool found = wanted.range != Range::values || (d[0] > wanted.low && d[0] <= wanted.high);
        if (found) {
            w[0] = d[0];
            if (vectors) {
                z(0, 0) = 1;
                isuppz[0] = isuppz[1] = 1;
            }
        }
        return {found, 0, tryRelative};
    }
    if (n == 2)
        return {solve_two(vectors, wanted, d, e[0], w, z, isuppz), 0, tryRelative};

    // Into the range in which squares of elements can be held.
    const float smallest = std::sqrt(machine::smallNumber);
    const float largest = std::min(std::sqrt(machine::bigNumber), 1 / std::sqrt(std::sqrt(machine::safeMinimum)));
    const float norm = lanst(Norm::maximum, n, d, e);
    const float scale = norm > 0 && norm < smallest ? smallest / norm : norm > largest ? largest / norm : 1;
    if (scale != 1) {
        kernel::scal(n, scale, Vector{d});
        kernel::scal(n - 1, scale, Vector{e});
        wanted.low *= scale;
        wanted.high *= scale;
    }

    WorkParts<float> floats{work};
    WorkParts<int> ints{iwork};
    float* const original = floats.take(n);
    Mrrr x{n,
           d,
           e,
           floats.take(n),
           floats.take(2 * std::int64_t{n}),
           ints.take(n),
           w,
           floats.take(n),
           floats.take(n),
           ints.take(n),
           ints.take(n)};

    const bool relative = tryRelative && larrr(n, d, e);
    kernel::copy(n, {d}, Vector{original});
    for (int i = 0; i < n - 1; ++i)
        x.e2[i] = e[i] * e[i];
    const RefineTolerance tolerance =
        vectors ? RefineTolerance{std::max(std::sqrt(eps) * 5e-2F, 4 * eps), std::max(std::sqrt(eps) * 5e-3F, 4 * eps)}
                : RefineTolerance{4 * eps, 4 * eps};
    if (const int info = larre(wanted, x, tolerance, relative ? eps : -eps, floats.next, ints.next); info != 0)
        return {0, 10 + std::abs(info), relative};
    if (vectors) {
        if (const int info = larrv(x, {1, x.m, usualGap}, tolerance, z, isuppz, floats.next, ints.next); info != 0)
            return {0, 20 + std::abs(info), relative};
    } else {
        for (int i = 0; i < x.m; ++i)
            w[i] += e[x.last_row(x.iblock[i] - 1)];
    }
    if (relative) {
        const Sturm whole{n, original, x.e2, x.leastPivot};
        for (int begin = 0, m; begin < x.m; begin += m) {
            const int block = x.iblock[begin] - 1;
            m = x.count_in_block(begin, block);
            if (x.first_row(block) < x.last_row(block)) // else it is exact
                larrj(whole.block(x.first_row(block), x.last_row(block)), m, x.indexw[begin], w + begin, x.werr + begin,
                      4 * eps, norm * scale);
        }
    }
    if (scale != 1)
        kernel::scal(x.m, 1 / scale, Vector{w});
    if (x.blocks > 1 || !vectors)
        sort_all(n, x.m, vectors, w, z, isuppz);
    return {x.m, 0, relative};
}

} // namespace qrv::lapack
