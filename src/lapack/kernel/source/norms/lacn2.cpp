// SLACN2, CLACN2: estimate of the 1-norm of a matrix that is known by its products only.
//
// A walk over the corners of the unit ball: a product with e(j) gives the norm of a column, the adjoint of the
// product's signs the gradient there, and the gradient's largest element the next column. It ends where no column is
// larger, after five at the latest, so a NaN ends it too; a vector of alternating signs may still give a larger norm.
// (W. Hager, Condition estimates, SIAM J. Sci. Stat. Comput. 5, 1984; N. Higham, FORTRAN codes for estimating the
// one-norm of a real or complex matrix, ACM TOMS 14, 1988.)
//
// The caller keeps the state in isave: what x holds when it calls, the column tried last (from 1), how many were tried.
#include <algorithm>
#include <cmath>

#include "blas/calls.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/elements.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

constexpr int mostColumns = 5;

enum Held : int {
    productOfMean = 1,
    adjointOfFirstSigns,
    column,
    adjointOfSigns,
    productOfAlternation,
};
enum Request : int { nothing, product, adjoint };

// ---- What differs for complex elements, which have a modulus and no sign -------------------------------------------

float norm1(int n, const float* x) {
    return kernel::asum(n, Vector{x});
}
float norm1(int n, const SingleComplex* x) {
    float sum = 0;
    for (int i = 0; i < n; ++i)
        sum += modulus(x[i]);
    return sum;
}

// Position, from 1.
int largest(int n, const float* x) {
    return kernel::iamax(n, Vector{x});
}
int largest(int n, const SingleComplex* x) {
    int position = 1;
    for (int i = 1; i < n; ++i)
        if (modulus(x[i]) > modulus(x[position - 1]))
            position = i + 1;
    return position;
}

// Whether the gradient is largest where it was before. A real element there has the sign of its own column.
bool same_size(float before, float now) {
    return before == std::fabs(now);
}
bool same_size(SingleComplex before, SingleComplex now) {
    return modulus(before) == modulus(now);
}

int sign(float x) {
    return std::signbit(x) ? -1 : 1;
}
void replace_by_signs(int n, float* x, int* isgn) {
    for (int i = 0; i < n; ++i) {
        isgn[i] = sign(x[i]);
        x[i] = static_cast<float>(isgn[i]);
    }
}
void replace_by_signs(int n, SingleComplex* x, int*) {
    for (int i = 0; i < n; ++i) {
        const float size = modulus(x[i]);
        // Compilers form the quotient even if it is not taken: 0/0 would raise a flag that nothing explains.
        const float divisor = std::max(size, machine::safeMinimum);
        const SingleComplex sign{x[i].re / divisor, x[i].im / divisor};
        x[i] = size > machine::safeMinimum ? sign : SingleComplex{1, 0};
    }
}

// The gradient would be the same again.
bool signs_repeat(int n, const float* x, const int* isgn) {
    for (int i = 0; i < n; ++i)
        if (sign(x[i]) != isgn[i])
            return false;
    return true;
}
bool signs_repeat(int, const SingleComplex*, const int*) {
    return false; // not looked for
}

// ---- The walk -----------------------------------------------------------------------------------------------------

template <class T>
class Estimate {
public:
    Estimate(int n, T* v, T* x, int* isgn, float* est, int* kase, int* isave)
        : n_(n), v_(v), x_(x), isgn_(isgn), est_(*est), kase_(*kase), held_(isave[0]), column_(isave[1]),
          columns_(isave[2]) {}

    void begin() {
        for (int i = 0; i < n_; ++i)
            x_[i] = scalar<T>(1 / static_cast<float>(n_));
        ask(product, productOfMean);
    }

    void go_on() {
        switch (held_) {
        case productOfMean:
            take_mean();
            break;
        case adjointOfFirstSigns:
            column_ = largest(n_, x_);
            columns_ = 2;
            ask_column();
            break;
        case column:
            take_column();
            break;
        case adjointOfSigns:
            choose_column();
            break;
        default:
            take_alternation();
        }
    }

private:
    void take_mean() {
        if (n_ == 1) {
            v_[0] = x_[0];
            est_ = modulus(v_[0]);
            kase_ = nothing;
            return;
        }
        est_ = norm1(n_, x_);
        ask_gradient(adjointOfFirstSigns);
    }

    void take_column() {
        kernel::copy(n_, {x_}, Vector{v_});
        const float before = est_;
        est_ = norm1(n_, v_);
        if (signs_repeat(n_, x_, isgn_) || est_ <= before)
            ask_alternation();
        else
            ask_gradient(adjointOfSigns);
    }

    void choose_column() {
        const int before = column_;
        column_ = largest(n_, x_);
        if (same_size(x_[before - 1], x_[column_ - 1]) || columns_ >= mostColumns) {
            ask_alternation();
        } else {
            ++columns_;
            ask_column();
        }
    }

    void take_alternation() {
        const float other = 2 * (norm1(n_, x_) / (3 * static_cast<float>(n_)));
        if (other > est_) {
            kernel::copy(n_, {x_}, Vector{v_});
            est_ = other;
        }
        kase_ = nothing;
    }

    void ask_gradient(Held next) {
        replace_by_signs(n_, x_, isgn_);
        ask(adjoint, next);
    }
    void ask_column() {
        for (int i = 0; i < n_; ++i)
            x_[i] = scalar<T>(0);
        x_[column_ - 1] = scalar<T>(1);
        ask(product, column);
    }
    void ask_alternation() {
        for (int i = 0; i < n_; ++i) {
            const float size = 1 + static_cast<float>(i) / static_cast<float>(n_ - 1);
            x_[i] = scalar<T>(i % 2 == 0 ? size : -size);
        }
        ask(product, productOfAlternation);
    }
    void ask(Request request, Held next) {
        kase_ = request;
        held_ = next;
    }

    const int n_;
    T *const v_, *const x_;
    int* const isgn_;
    float& est_;
    int &kase_, &held_, &column_, &columns_;
};

} // namespace

template <class T>
void lacn2(int n, T* v, T* x, int* isgn, float* est, int* kase, int* isave) {
    Estimate<T> estimate(n, v, x, isgn, est, kase, isave);
    if (*kase == nothing)
        estimate.begin();
    else
        estimate.go_on();
}

template void lacn2(int, float*, float*, int*, float*, int*, int*);
template void lacn2(int, SingleComplex*, SingleComplex*, int*, float*, int*, int*);

} // namespace qrv::lapack
