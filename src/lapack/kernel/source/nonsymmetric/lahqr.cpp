// SLAHQR: eigenvalues and Schur form of a Hessenberg matrix by the double-shift QR iteration.
//
//   until every row has converged:
//     split          cut off what a negligible subdiagonal element separates from the last rows
//     deflate        one row, or two that are made standard, is done
//     shift          two eigenvalues of the last two rows, or others if nothing has happened for long
//     chase          a bulge from where two small subdiagonal elements let it begin down to the last row
//
// Sources: G. Golub, C. Van Loan, Matrix Computations, 7.5; deflation by Ahues and Tisseur (qr_iteration.hpp). The
// number of rounds is bounded for the whole matrix, not for each eigenvalue.
#include "lapack/kernel/source/nonsymmetric/qr_iteration.hpp"
#include "lapack/kernel/source/nonsymmetric/reflector3.hpp"

namespace qrv::lapack {
namespace {

constexpr int patience = 10; // sweeps without a deflation before an exceptional shift
constexpr float exceptional1 = 0.75F, exceptional2 = -0.4375F;
constexpr float ulp = machine::precision;

// What lies below the subdiagonal may have been scratch.
void clear_below_subdiagonal(ActiveRange range, Matrix<float> h) {
    for (int j = range.begin; j < range.end - 2; ++j) {
        h(j + 2, j) = 0;
        if (j < range.end - 3)
            h(j + 3, j) = 0;
    }
}

bool is_negligible(int k, ActiveRange range, Matrix<const float> h, float smallest) {
    const float sub = std::fabs(h(k, k - 1));
    if (sub <= smallest)
        return true;
    float size = std::fabs(h(k - 1, k - 1)) + std::fabs(h(k, k));
    if (size == 0) {
        if (k - 2 >= range.begin)
            size += std::fabs(h(k - 1, k - 2));
        if (k + 1 < range.end)
            size += std::fabs(h(k + 1, k));
    }
    return sub <= ulp * size && DeflationTest(k, h).passes(smallest);
}

// The first row of the block that ends with row `last` and does not begin before row `first`.
int block_begin(int first, int last, ActiveRange range, Matrix<const float> h, float smallest) {
    int k = last;
    while (k > first && !is_negligible(k, range, h, smallest))
        --k;
    return k;
}

// The eigenvalues of [a b; c d]; of real ones that nearer to d, twice.
ShiftPair shifts_of(float a, float b, float c, float d) {
    const float s = std::fabs(a) + std::fabs(b) + std::fabs(c) + std::fabs(d);
    a /= s, b /= s, c /= s, d /= s;
    const float mean = (a + d) / 2, det = (a - mean) * (d - mean) - b * c, root = std::sqrt(std::fabs(det));
    if (det >= 0)
        return {{mean * s, root * s}, {mean * s, -root * s}};
    const float one = mean + root, other = mean - root;
    const float nearer = (std::fabs(one - d) <= std::fabs(other - d) ? one : other) * s;
    return {{nearer, 0}, {nearer, 0}};
}
// Away from a cycle: at `diagonal`, moved by the two subdiagonal elements next to it.
ShiftPair exceptional_shifts(float diagonal, float sub1, float sub2) {
    const float s = std::fabs(sub1) + std::fabs(sub2), moved = exceptional1 * s + diagonal;
    return shifts_of(moved, exceptional2 * s, s, moved);
}
ShiftPair shifts_for(int first, int last, int sweepsInVain, Matrix<const float> h) {
    if (sweepsInVain % (2 * patience) == 0)
        return exceptional_shifts(h(last, last), h(last, last - 1), h(last - 1, last - 2));
    if (sweepsInVain % patience == 0)
        return exceptional_shifts(h(first, first), h(first + 1, first), h(first + 2, first + 1));
    return shifts_of(h(last - 1, last - 1), h(last - 1, last), h(last, last - 1), h(last, last));
}

// A row m with what the shifted product H^2 - ... has as its first column there, up to a factor.
struct Start {
    int row;
    float v[3];
};
void first_column(int m, const ShiftPair& shift, Matrix<const float> h, float (&v)[3]) {
    const auto [r1, i1] = shift.first;
    const auto [r2, i2] = shift.second;
    const float h11 = h(m, m), h22 = h(m + 1, m + 1);
    const float s = std::fabs(h11 - r2) + std::fabs(i2) + std::fabs(h(m + 1, m)), h21 = h(m + 1, m) / s;
    v[0] = h21 * h(m, m + 1) + (h11 - r1) * ((h11 - r2) / s) - i1 * (i2 / s);
    v[1] = h21 * (h11 + h22 - r1 - r2);
    v[2] = h21 * h(m + 2, m + 1);
    if (const float size = std::fabs(v[0]) + std::fabs(v[1]) + std::fabs(v[2]); size > 0)
        for (float& x : v)
            x /= size;
}
// The last row at which two consecutive small subdiagonal elements let a sweep begin.
Start find_start(int first, int last, const ShiftPair& shift, Matrix<const float> h) {
    Start start{last - 2, {}};
    for (int& m = start.row;; --m) {
        first_column(m, shift, h, start.v);
        if (m == first)
            return start;
        const float diagonal = std::fabs(h(m - 1, m - 1)) + std::fabs(h(m, m)) + std::fabs(h(m + 1, m + 1));
        const float *const v = start.v, lost = std::fabs(h(m, m - 1)) * (std::fabs(v[1]) + std::fabs(v[2]));
        if (lost <= ulp * std::fabs(v[0]) * diagonal)
            return start;
    }
}

// One step: the reflector of three rows, or of the last two, on all rows and columns that are wanted. How H rounds does
// not depend on how many those are, so that eigenvalues have the same bits with and without a Schur form.
template <int order>
void reflect(const Reflector3& reflector, int k, int last, int firstRow, int endColumn, const SchurProblem& p) {
    reflect_rows<order>(reflector, k, k, endColumn, p.h);
    reflect_columns<order>(reflector, k, firstRow, std::min(k + 3, last) + 1, p.h, p.n >= leastForKernel);
    if (p.wantZ)
        reflect_columns<order>(reflector, k, p.zRows.begin, p.zRows.end, p.z);
}

void chase(const Start& start, int first, int last, const SchurProblem& p) {
    const Matrix<float> h = p.h;
    const int firstRow = p.wantT ? 0 : first, endColumn = p.wantT ? p.n : last + 1;
    for (int k = start.row; k < last; ++k) {
        const bool three = k + 2 <= last, entering = k == start.row;
        const Reflector3 reflector = entering ? reflector3(start.v[0], start.v[1], start.v[2])
                                              : reflector3(h(k, k - 1), h(k + 1, k - 1), three ? h(k + 2, k - 1) : 0);
        if (!entering) {
            h(k, k - 1) = reflector.beta;
            h(k + 1, k - 1) = 0;
            if (three)
                h(k + 2, k - 1) = 0;
        } else if (k > first) {
            h(k, k - 1) *= 1 - reflector.tau; // -1 up to rounding; not so if the reflector is the unit matrix
        }
        three ? reflect<3>(reflector, k, last, firstRow, endColumn, p)
              : reflect<2>(reflector, k, last, firstRow, endColumn, p);
    }
}

// Rows [first, last] are done: one, or two.
void deflate(int first, int last, const SchurProblem& p) {
    if (first == last) {
        p.wr[last] = p.h(last, last);
        p.wi[last] = 0;
    } else {
        standardize(p, first);
    }
}

} // namespace

int lahqr(const SchurProblem& p) {
    const ActiveRange range = p.range;
    if (p.n == 0 || range.size() <= 0)
        return 0;
    if (range.size() == 1) {
        deflate(range.begin, range.begin, p);
        return 0;
    }
    clear_below_subdiagonal(range, p.h);
    const float smallest = negligible_size(range.size());
    const int mostRounds = 30 * std::max(10, range.size());
    int last = range.end - 1, first = range.begin, sweepsInVain = 0;
    for (int round = 0; last >= range.begin; ++round) {
        first = block_begin(first, last, range, p.h, smallest);
        if (first > range.begin)
            p.h(first, first - 1) = 0;
        if (first >= last - 1) {
            deflate(first, last, p);
            last = first - 1;
            first = range.begin;
            sweepsInVain = 0;
            continue;
        }
        ++sweepsInVain;
        const bool lost =
            sweepsInVain % patience == 0 && !std::isfinite(p.h(last, last - 1)); // NaN is everywhere by now
        if (round >= mostRounds || lost)
            return last + 1;
        chase(find_start(first, last, shifts_for(first, last, sweepsInVain, p.h), p.h), first, last, p);
    }
    return 0;
}

} // namespace qrv::lapack
