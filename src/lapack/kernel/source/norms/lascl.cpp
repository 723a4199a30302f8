// SLASCL, CLASCL: a matrix times a quotient of two numbers, neither of which need be a factor that can be held.
#include <cmath>

#include "lapack/calls/norms.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

// Takes the next factor out of to / from: the smallest or largest safe number as long as the rest would leave the range
// of floats, the quotient in the end.
struct Factors {
    float from, to;
    bool done = false;

    float next() {
        constexpr float small = machine::safeMinimum;
        const float lessFrom = from * small, lessTo = to * small;
        if (lessFrom == from) { // infinite
            done = true;
            return to / from;
        }
        if (lessTo == to) { // 0 or infinite: from does not matter
            done = true;
            from = 1;
            return to;
        }
        if (std::fabs(lessFrom) > std::fabs(to)) {
            from = lessFrom;
            return small;
        }
        if (std::fabs(lessTo) > std::fabs(from)) {
            to = lessTo;
            return 1 / small;
        }
        done = true;
        return to / from;
    }
};

// Rows [first, last) of column j in the array.
struct Rows {
    int first, last;
};
Rows stored_rows(Stored stored, int m, int n, int j) {
    const auto [kind, kl, ku] = stored;
    switch (kind) {
    case Stored::lower:
        return {j, m};
    case Stored::upper:
        return {0, smaller(j + 1, m)};
    case Stored::hessenberg:
        return {0, smaller(j + 2, m)};
    case Stored::lowerBand:
        return {0, smaller(kl + 1, n - j)};
    case Stored::upperBand:
        return {larger(ku - j, 0), ku + 1};
    case Stored::factorBand:
        return {larger(kl + ku - j, kl), smaller(2 * kl + ku + 1, kl + ku + m - j)};
    default:
        return {0, m};
    }
}

} // namespace

template <class T>
void lascl(Stored stored, float from, float to, int m, int n, Matrix<T> a) {
    for (Factors factors{from, to}; !factors.done;) {
        const float factor = factors.next();
        if (factor == 1)
            continue;
        for (int j = 0; j < n; ++j) {
            const auto [first, last] = stored_rows(stored, m, n, j);
            for (int i = first; i < last; ++i)
                a(i, j) = factor * a(i, j);
        }
    }
}

template void lascl(Stored, float, float, int, int, Matrix<float>);
template void lascl(Stored, float, float, int, int, Matrix<SingleComplex>);

} // namespace qrv::lapack
