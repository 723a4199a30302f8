// SGESDD, CGESDD: singular value decomposition by divide and conquer, A = U S V^H.
//
// A is reduced to bidiagonal form B, whose real vectors come from divide and conquer; the reflectors of the reduction
// are applied to them. Of the two sides, U and V^H, the one whose vectors are the longer is `far`, the other, which is
// square, `near`: a tall matrix has U as far, a wide one V^H. All paths are told for both.
//
//   longest     A = Q R or L Q first; the triangle is what is reduced, and the far vectors are multiplied by Q
//   square      A itself is reduced
//   middle      the same, but Q and P are generated and multiplied by the real vectors (complex elements only)
//
// Overwriting A with the far vectors takes a product A := A X in its place, by strips of as many rows as there is room
// for.
#include "lapack/kernel/source/svd/gesdd.hpp"

#include <cmath>

#include "blas/calls.hpp"
#include "lapack/calls/bidiagonal.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/qr.hpp"
#include "lapack/calls/svd.hpp"
#include "lapack/elements.hpp"
#include "lapack/kernel/source/norms/scaling.hpp"
#include "service/machine_constants.hpp"

namespace qrv::lapack {
namespace {

// What is left of a work array.
template <class T>
struct Room {
    T* first;
    std::int64_t count;

    T* take(std::int64_t elements) {
        T* const taken = first;
        first += elements;
        count -= elements;
        return taken;
    }
    int length() const { return static_cast<int>(std::min<std::int64_t>(count, std::numeric_limits<int>::max())); }
};

template <class T>
class Decomposition {
public:
    Decomposition(SvdJob job, int m, int n, Matrix<T> a, float* s, Matrix<T> u, Matrix<T> vt, Room<T> work,
                  float* rwork, int* iwork)
        : job_(job), m_(m), n_(n), k_(std::min(m, n)), l_(std::max(m, n)), tall_(m >= n), a_(a), s_(s),
          far_(tall_ ? u : vt), near_(tall_ ? vt : u), work_(work), iwork_(iwork) {
        const std::int64_t square = std::int64_t{k_} * k_;
        if constexpr (isComplex<T>) { // diagonal beside, far and near vectors, work of divide and conquer
            e_ = rwork;
            realFar_ = {e_ + k_, k_};
            realNear_ = {realFar_.data + square, k_};
            divideWork_ = job == SvdJob::none ? e_ + k_ : realNear_.data + square;
        }
    }

    int run() {
        switch (svd_kind<T>(m_, n_)) {
        case SvdKind::longest:
            return job_ == SvdJob::none ? values_of_longest() : longest();
        case SvdKind::middle:
            if constexpr (isComplex<T>)
                return job_ == SvdJob::none ? values() : middle();
        default:
            return job_ == SvdJob::none ? values() : square();
        }
    }
    float* beside() const { return e_; } // what did not become zero, after a failure

private:
    static constexpr bool real = !isComplex<T>;
    static constexpr T zero = scalar<T>(0), one = scalar<T>(1);

    Uplo form_of_a() const { return tall_ ? Uplo::upper : Uplo::lower; }
    BidiagonalFactor far_factor() const { return tall_ ? BidiagonalFactor::q : BidiagonalFactor::p; }
    BidiagonalFactor near_factor() const { return tall_ ? BidiagonalFactor::p : BidiagonalFactor::q; }
    T* tau_of(BidiagonalFactor factor) const { return factor == BidiagonalFactor::q ? tauq_ : taup_; }

    // ---- Matrices of which one dimension is that of the far vectors -------------------------------------------------

    // `lines` far vectors of `length` elements, as rows and columns.
    int rows(int length, int lines) const { return tall_ ? length : lines; }
    int columns(int length, int lines) const { return tall_ ? lines : length; }
    Matrix<T> new_far(T* place, int length) const { return {place, rows(length, k_)}; }
    Matrix<T> from(Matrix<T> x, int element) const { return tall_ ? x.block(element, 0) : x.block(0, element); }
    void copy(Part part, int length, int lines, Matrix<T> source, Matrix<T> target) const {
        lacpy<T>(part, rows(length, lines), columns(length, lines), source, target);
    }
    // target := x y or, of a wide matrix, y x: x with far vectors of `length` elements, y square
    void multiply(int length, Matrix<T> x, Matrix<T> y, Matrix<T> target) const {
        if (tall_)
            blas::gemm<T>(Op::none, Op::none, length, k_, k_, one, x, y, zero, target);
        else
            blas::gemm<T>(Op::none, Op::none, k_, length, k_, one, y, x, zero, target);
    }
    // A := A y in strips.
    void multiply_a(Matrix<T> y, Room<T> room) const {
        for (int done = 0, size; done < l_; done += size) {
            size = static_cast<int>(std::min<std::int64_t>(room.count / k_, l_ - done));
            const Matrix<T> part = from(a_, done), strip = new_far(room.first, size);
            multiply(size, part, y, strip);
            copy(Part::whole, size, k_, strip, part);
        }
    }

    // ---- Steps ------------------------------------------------------------------------------------------------------

    void take_diagonals() {
        if constexpr (real)
            e_ = work_.take(k_);
        tauq_ = work_.take(k_);
        taup_ = work_.take(k_);
    }
    void reduce(int rows, int columns, Matrix<T> b) const {
        gebrd(rows, columns, b, s_, e_, tauq_, taup_, work_.first, work_.length());
    }
    int find_values() const { // a lower matrix has those of its transpose
        if constexpr (real)
            return bdsdc_values(Uplo::upper, k_, s_, e_, work_.first);
        else
            return bdsdc_values(Uplo::upper, k_, s_, e_, divideWork_);
    }
    // The vectors of B, square, into `far` and `near`; complex ones stay apart if `far` is null.
    int divide(Uplo form, Matrix<T> far, Matrix<T> near) const {
        const auto decompose = [&](Matrix<float> farTo, Matrix<float> nearTo, float* room) {
            return bdsdc(form, k_, s_, e_, tall_ ? farTo : nearTo, tall_ ? nearTo : farTo, room, iwork_);
        };
        if constexpr (real) {
            return decompose(far, near, work_.first);
        } else {
            const int info = decompose(realFar_, realNear_, divideWork_);
            if (info == 0 && far.data)
                lacp2(Part::whole, k_, k_, realFar_, far);
            if (info == 0 && near.data)
                lacp2(Part::whole, k_, k_, realNear_, near);
            return info;
        }
    }
    // The reflectors in b, of a matrix of rows x columns, applied to vectors: near ones, or `lines` far ones.
    void apply(BidiagonalFactor factor, int rows, int columns, Matrix<T> b, int order, int lines, Matrix<T> x) const {
        const bool q = factor == BidiagonalFactor::q;
        ormbr<T>(factor, q ? Side::left : Side::right, q ? Op::none : adjoint<T>, q ? order : lines, q ? lines : order,
                 q ? columns : rows, b, tau_of(factor), x, work_.first, work_.length());
    }
    void apply_far(int lines, Matrix<T> x) const { apply(far_factor(), m_, n_, a_, l_, lines, x); }
    void apply_near(Matrix<T> x) const { apply(near_factor(), m_, n_, a_, k_, k_, x); }
    // Q or P^H itself from the reflectors in x: `lines` far vectors, or the near ones.
    void generate_far(int lines, Matrix<T> x) const {
        orgbr(far_factor(), rows(l_, lines), columns(l_, lines), k_, x, tau_of(far_factor()), work_.first,
              work_.length());
    }
    void generate_near(Matrix<T> x) const {
        orgbr(near_factor(), k_, k_, l_, x, tau_of(near_factor()), work_.first, work_.length());
    }

    // ---- A = Q R or A = L Q -----------------------------------------------------------------------------------------

    Part triangle() const { return tall_ ? Part::upper : Part::lower; }
    Part behind_triangle() const { return tall_ ? Part::lower : Part::upper; }

    void factor() const { // with the factors of the reflectors where those of the reduction will be
        if (tall_)
            geqrf(m_, n_, a_, tauq_, work_.first, work_.length());
        else
            gelqf(m_, n_, a_, tauq_, work_.first, work_.length());
    }
    // `lines` vectors of Q in the place of the reflectors. For all of them the published least work may not do.
    bool generate_q(int lines, Matrix<T> x) const {
        const WorkArea<T> area(work_.first, work_.count, lines);
        if (!area.data())
            return false;
        const int length = std::max(work_.length(), lines);
        if (tall_)
            orgqr(m_, lines, k_, x, tauq_, area.data(), length);
        else
            orglq(lines, n_, k_, x, tauq_, area.data(), length);
        return true;
    }
    void clear_behind_triangle(Matrix<T> x) const {
        laset(behind_triangle(), k_ - 1, k_ - 1, zero, zero, tall_ ? x.block(1, 0) : x.block(0, 1));
    }

    int values_of_longest() {
        take_diagonals();
        factor();
        clear_behind_triangle(a_);
        reduce(k_, k_, a_);
        return find_values();
    }

    int longest() {
        const std::int64_t size = std::int64_t{k_} * k_;
        const bool all = job_ == SvdJob::all, overwrite = job_ == SvdJob::overwrite;
        const Matrix<T> product = job_ == SvdJob::some ? far_ : Matrix<T>{work_.take(size), k_}; // far vectors of B
        take_diagonals();
        Room<T> strips = work_;
        const Matrix<T> b = all ? a_ : Matrix<T>{work_.take(size), k_};
        factor();
        if (all) {
            copy(behind_triangle(), l_, k_, a_, far_);
            if (!generate_q(l_, far_))
                return k_;
        } else {
            lacpy<T>(triangle(), k_, k_, a_, b);
            if (!generate_q(k_, a_))
                return k_;
        }
        clear_behind_triangle(b);
        reduce(k_, k_, b);
        if (const int info = divide(Uplo::upper, product, near_))
            return info;
        apply(far_factor(), k_, k_, b, k_, k_, product);
        apply(near_factor(), k_, k_, b, k_, k_, near_);
        if (overwrite) {
            multiply_a(product, strips);
        } else if (all) {
            multiply(l_, far_, product, a_);
            copy(Part::whole, l_, k_, a_, far_);
        } else {
            lacpy<T>(Part::whole, k_, k_, product, b);
            multiply(l_, a_, b, far_);
        }
        return 0;
    }

    // ---- A itself reduced -------------------------------------------------------------------------------------------

    int values() {
        take_diagonals();
        reduce(m_, n_, a_);
        return find_values();
    }

    int square() {
        take_diagonals();
        reduce(m_, n_, a_);
        return job_ == SvdJob::overwrite ? square_in_place() : square_beside();
    }
    int square_beside() {
        const int lines = job_ == SvdJob::all ? l_ : k_;
        laset(Part::whole, rows(l_, lines), columns(l_, lines), zero, zero, far_);
        if (lines > k_)
            laset(Part::whole, l_ - k_, l_ - k_, zero, one, far_.block(k_, k_));
        if (const int info = divide(form_of_a(), far_, near_))
            return info;
        apply_far(lines, far_);
        apply_near(near_);
        return 0;
    }
    int square_in_place() {
        const std::int64_t size = std::int64_t{k_} * k_, whole = std::int64_t{l_} * k_,
                           divided = real ? 3 * size + 4 * k_ : k_;
        const bool roomy = work_.count >= whole + divided;
        if (roomy) {
            const Matrix<T> far = new_far(work_.take(whole), l_);
            laset(Part::whole, rows(l_, k_), columns(l_, k_), zero, zero, far);
            if (const int info = divide(form_of_a(), far, near_))
                return info;
            apply_near(near_);
            apply_far(k_, far);
            copy(Part::whole, l_, k_, far, a_);
            return 0;
        }
        const Matrix<T> far = real ? Matrix<T>{work_.take(size), k_} : Matrix<T>{nullptr, 1};
        if (const int info = divide(form_of_a(), far, near_))
            return info;
        apply_near(near_);
        generate_far(k_, a_);
        if constexpr (real)
            multiply_a(far, work_);
        else
            multiply_a_by_real_vectors(realNear_.data);
        return 0;
    }

    // ---- Q and P generated, and multiplied by real vectors ----------------------------------------------------------

    int middle() {
        take_diagonals();
        reduce(m_, n_, a_);
        const bool overwrite = job_ == SvdJob::overwrite;
        if (const int info = divide(form_of_a(), {nullptr, 1}, {nullptr, 1}))
            return info;
        lacpy<T>(tall_ ? Part::upper : Part::lower, k_, k_, a_, near_);
        generate_near(near_);
        if (overwrite) {
            generate_far(k_, a_);
        } else {
            copy(behind_triangle(), l_, k_, a_, far_);
            generate_far(job_ == SvdJob::all ? l_ : k_, far_);
        }
        const Matrix<T> product = overwrite ? Matrix<T>{work_.first, k_} : a_;
        if (tall_)
            larcm(k_, k_, realNear_, near_, product, divideWork_);
        else
            lacrm(k_, k_, near_, realNear_, product, divideWork_);
        lacpy<T>(Part::whole, k_, k_, product, near_);
        if (overwrite) {
            multiply_a_by_real_vectors(realNear_.data);
        } else {
            multiply_by_real_vectors(l_, far_, a_, realNear_.data);
            copy(Part::whole, l_, k_, a_, far_);
        }
        return 0;
    }
    // room: 2*length*k floats
    void multiply_by_real_vectors(int length, Matrix<T> x, Matrix<T> target, float* room) const {
        if (tall_)
            lacrm(length, k_, x, realFar_, target, room);
        else
            larcm(k_, length, realFar_, x, target, room);
    }
    void multiply_a_by_real_vectors(float* room) const { // l < 2 k here, for which `room` does
        for (int done = 0, size; done < l_; done += size) {
            size = static_cast<int>(std::min<std::int64_t>(work_.count / k_, l_ - done));
            const Matrix<T> part = from(a_, done), strip = new_far(work_.first, size);
            multiply_by_real_vectors(size, part, strip, room);
            copy(Part::whole, size, k_, strip, part);
        }
    }

    SvdJob job_;
    int m_, n_, k_, l_;
    bool tall_;
    Matrix<T> a_;
    float* s_;
    Matrix<T> far_, near_;
    Room<T> work_;
    int* iwork_;
    float *e_ = nullptr, *divideWork_ = nullptr;
    T *tauq_ = nullptr, *taup_ = nullptr;
    Matrix<float> realFar_{nullptr, 1}, realNear_{nullptr, 1};
};

} // namespace

template <class T>
int gesdd(SvdJob job, int m, int n, Matrix<T> a, float* s, Matrix<T> u, Matrix<T> vt, T* work, int lwork, float* rwork,
          int* iwork) {
    if (m == 0 || n == 0)
        return 0;
    const int k = std::min(m, n);
    const Scaling scaling =
        scaling_within(std::sqrt(machine::safeMinimum) / machine::precision, lange<T>(Norm::maximum, m, n, a, nullptr));
    scaling.forth(m, n, a);
    Decomposition<T> decomposition(job, m, n, a, s, u, vt, {work, lwork}, rwork, iwork);
    const int info = decomposition.run();
    scaling.back(k, 1, Matrix<float>{s, k});
    if (info > 0)
        scaling.back(k - 1, 1, Matrix<float>{decomposition.beside(), k});
    return info;
}

template int gesdd(SvdJob, int, int, Matrix<float>, float*, Matrix<float>, Matrix<float>, float*, int, float*, int*);
template int gesdd(SvdJob, int, int, Matrix<SingleComplex>, float*, Matrix<SingleComplex>, Matrix<SingleComplex>,
                   SingleComplex*, int, float*, int*);

} // namespace qrv::lapack
