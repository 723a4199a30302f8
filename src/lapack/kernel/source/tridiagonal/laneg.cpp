// SLANEG: Sturm count of L D L' - x by a twisted factorization, from both ends to row r.
#include "lapack/kernel/source/tridiagonal/mrrr.hpp"

namespace qrv::lapack {
namespace {

constexpr int blockLength = 128; // rows between looks for a NaN

// Runs step(t, safe) over `rows`, which updates t and tells whether a pivot is negative; a run in which a quotient of
// infinities was met is done again with its limit 1.
template <class Step>
int count_steps(int rows, float& t, const Step& step) {
    int negative = 0;
    for (int done = 0; done < rows; done += blockLength) {
        const int end = std::min(rows, done + blockLength);
        const float before = t;
        int inBlock = 0;
        for (int i = done; i < end; ++i)
            inBlock += step(i, t, false);
        if (t != t) {
            t = before;
            inBlock = 0;
            for (int i = done; i < end; ++i)
                inBlock += step(i, t, true);
        }
        negative += inBlock;
    }
    return negative;
}

float quotient(float x, float y, bool safe) {
    const float q = x / y;
    return safe && q != q ? 1 : q;
}

} // namespace

int laneg(int n, const float* d, const float* lld, float x, int r) {
    float t = -x, p = d[n - 1] - x;
    int negative = count_steps(r, t, [&](int i, float& s, bool safe) {
        const float pivot = d[i] + s;
        s = quotient(s, pivot, safe) * lld[i] - x;
        return pivot < 0;
    });
    negative += count_steps(n - 1 - r, p, [&](int k, float& s, bool safe) {
        const int i = n - 2 - k;
        const float pivot = lld[i] + s;
        s = quotient(s, pivot, safe) * d[i] - x;
        return pivot < 0;
    });
    return negative + ((t + x) + p < 0);
}

} // namespace qrv::lapack
