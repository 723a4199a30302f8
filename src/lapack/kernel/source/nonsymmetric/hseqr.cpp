// SHSEQR: eigenvalues and Schur form of a Hessenberg matrix: the double-shift iteration for small ones, the multishift
// one for others, and for small ones on which the first fails.
#include <algorithm>

#include "lapack/calls/nonsymmetric.hpp"
#include "lapack/calls/norms.hpp"
#include "service/tuning.hpp"

namespace qrv::lapack {
namespace {

constexpr int tiny = 11;
constexpr int roomy = 49; // order of a matrix in which the multishift iteration finds its scratch

int least_for_multishift(ActiveRange range) {
    return std::max(tiny, tuning::qr_iteration(12, range.begin + 1, range.end));
}

} // namespace

int laqr0_with_room(const SchurProblem& p) {
    float data[roomy * roomy], work[roomy];
    const Matrix<float> h{data, roomy};
    lacpy<float>(Part::whole, p.n, p.n, p.h, h);
    laset<float>(Part::whole, roomy, roomy - p.n, 0, 0, h.block(0, p.n));
    SchurProblem larger = p;
    larger.n = roomy;
    larger.h = h;
    const int info = laqr0(larger, true, work, roomy);
    if (p.wantT || info != 0)
        lacpy<float>(Part::whole, p.n, p.n, h, p.h);
    return info;
}

namespace {

int iterate(SchurProblem p, float* work, int lwork) {
    if (p.n > least_for_multishift(p.range))
        return laqr0(p, true, work, lwork);
    const int info = lahqr(p);
    if (info <= 0)
        return info;
    p.range.end = info;
    return p.n >= roomy ? laqr0(p, true, work, lwork) : laqr0_with_room(p);
}

} // namespace

int hseqr(const SchurProblem& p, bool zIsUnit, float* work, int lwork) {
    const int n = p.n;
    if (n == 0)
        return 0;
    const auto [begin, end] = p.range;
    for (int i = 0; i < n; ++i)
        if (i < begin || i >= end || end - begin == 1) {
            p.wr[i] = p.h(i, i);
            p.wi[i] = 0;
        }
    if (zIsUnit)
        laset<float>(Part::whole, n, n, 0, 1, p.z);
    if (end - begin == 1)
        return 0;
    const int info = iterate(p, work, lwork);
    if ((p.wantT || info != 0) && n > 2)
        laset<float>(Part::lower, n - 2, n - 2, 0, 0, p.h.block(2, 0));
    return info;
}

std::int64_t hseqr_work(int n, ActiveRange range) {
    return std::max(std::int64_t{std::max(1, n)},
                    n > least_for_multishift(range) ? laqr0_work(n, range, true) : std::int64_t{1});
}

} // namespace qrv::lapack
