// The QR factorization of a matrix that is much higher than wide, whose panels are too large for a cache and too narrow
// for products of matrices to carry the work. Its rows are cut into blocks of one height, and each thread of a team has
// a share of these. Columns are taken in strips:
//
//   column   Its reflector is made from products that all blocks have told before. Each block applies it to its rows of
//            the strip and, while they are in the cache, multiplies the next column with those behind it.
//   strip    Each block multiplies its rows of the strip's vectors V with themselves and with the columns behind:
//            V^H V makes T, and V^H A with T what is taken off A, which again each block does for itself.
//
// Between these every thread waits for all, and sums the products of the blocks in their order: the result has the same
// bits on every team. A strip is a region, so that on busy cores the next one may do without a team.
//
// The products are of columns before they are scaled, so a column that is too large or too small for its square, or
// that is lost beside its head, is none for this: there it ends, and the other routes take what is left.
#include <cmath>
#include <complex>
#include <limits>
#include <omp.h>

#include "blas/calls.hpp"
#include "blas/thread/common/crowd.hpp"
#include "blas/thread/common/slice.hpp"
#include "lapack/factorization.hpp"
#include "lapack/kernel/source/qr/geqrf.hpp"
#include "lapack/kernel/source/reflectors/larft.hpp"
#include "lapack/kernel/source/reflectors/reflected_column.hpp"
#include "service/thread_budget.hpp"
#include "service/vector_form.hpp"
#include "service/work_pool.hpp"

namespace qrv::lapack {
namespace {

constexpr int height = 2048;    // of a block: with its columns about half of an outer cache
constexpr int widestStrip = 16; // columns
constexpr int mostColumns = 64; // of the matrix

template <class T>
class TallFactorization {
public:
    TallFactorization(int m, int n, Matrix<T> a, T* tau)
        : m_(m), n_(n), blocks_((m - 1) / height + 1), strip_(geqrf_tall_strip()), a_(a), tau_(tau) {}

    int blocks() const { return blocks_; }
    std::int64_t memory() const { return 2 * phase_length(); }

    // Result: the columns that are done, of which those from `strip` on do not reach behind their strip yet.
    struct Result {
        int strip = 0, done = 0;
        bool stopped = false;
    };
    Result run(int threads, T* memory) {
        products_ = memory;
        for (int s = 0; s < n_ && !left_; s = end_of_strip(s)) {
            const Ticks begun = ticks_now();
            if (goes_alone(begun)) {
                const RegionOfOne alone;
                factor_strip(s, 1);
            } else if (const int team = factor_strip(s, threads); team > 1) {
                note_region(team, part_, begun, ticks_now());
            }
        }
        return result_;
    }

private:
    // What a column's reflector does to the strip: the column is scaled, and v y^H taken off those behind it.
    struct Step {
        float beta;
        T scale, tau;
        alignas(64) T y[widestStrip];
    };
    // V W is taken off the columns behind a strip; v1: for the top of V.
    struct StripUpdate {
        alignas(64) T v1[widestStrip * widestStrip];
        alignas(64) T w[widestStrip * mostColumns];
    };
    struct Rows {
        int first, count;
    };

    int end_of_strip(int s) const { return std::min(s + strip_, n_); }
    Rows rows(int block, int from) const {
        const int first = std::max(block * height, from);
        return {first, std::min(m_ - block * height, height) + block * height - first};
    }
    // Products of a phase, behind which comes the head row. Those of the phase before are read meanwhile.
    std::int64_t phase_length() const { return (std::int64_t{blocks_} + 1) * strip_ * n_; }
    T* products(int phase, int block) const {
        return products_ + (phase % 2) * phase_length() + std::int64_t{block} * strip_ * n_;
    }
    T* head(int phase) const { return products(phase, blocks_); }
    Wide<T> sum(int phase, int index) const {
        Wide<T> total = 0;
        for (int block = 0; block < blocks_; ++block)
            total += widened(products(phase, block)[index]);
        return total;
    }

    // From its first column's products, which are there but for the first strip, to those of the next strip.
    // Result: the team, of at most so many threads.
    int factor_strip(int s, int threads) {
        int size = 1;
        part_ = 0;
#pragma omp parallel num_threads(threads)
        {
            const int team = omp_get_num_threads(), thread = omp_get_thread_num();
            if (thread == 0)
                size = team;
            factor_share(s, thread, team);
        }
        return size;
    }
    void factor_share(int s, int thread, int team) {
        const Slice mine = equal_slice(blocks_, team, thread);
        const int e = end_of_strip(s);
        int phase = s + s / strip_;
        const auto each_block = [&](const auto& body) {
            const Ticks start = ticks_now();
            for (int block = mine.first; block < mine.first + mine.count; ++block)
                body(block);
            const Ticks worked = ticks_now() - start;
            if (thread == 1)
                second_[phase % 2] = worked;
#pragma omp barrier
            if (thread == 0) // a thread that waited for a core within its share tells nothing: of two one hardly did
                part_ += team > 1 ? std::min(worked, second_[phase % 2]) : worked;
        };
        const auto leave = [&](int strip, int done) {
            if (thread == 0)
                result_.strip = strip, result_.done = done, left_ = true;
        };
        if (s == 0)
            each_block([&](int block) { multiply_column(phase, block, 0, e); });
        for (int i = s; i < e; ++i) {
            Step step;
            if (!make_step(phase, i, e, step))
                return leave(s, i);
            ++phase;
            each_block([&](int block) {
                apply_step(block, i, e, step);
                if (i + 1 < e)
                    multiply_column(phase, block, i + 1, e);
                else if (e < n_)
                    multiply_strip(phase, block, s, e);
                if (i + 1 == e && block == 0)
                    result_.stopped = tell_progress(geqrfName<T>, e - s, {thread, s}, 0).stopped;
            });
        }
        if (result_.stopped || e == n_)
            return leave(e, e);
        StripUpdate update;
        make_update(phase, s, e, update);
        ++phase;
        each_block([&](int block) {
            apply_strip(block, s, e, update);
            multiply_column(phase, block, e, end_of_strip(e));
        });
    }

    // Column i below its head, times itself and those behind it up to e; the adjoints of these products.
    void multiply_column(int phase, int block, int i, int e) const {
        const Rows r = rows(block, i + 1);
        T* const to = products(phase, block);
        std::fill_n(to, e - i, scalar<T>(0));
        if (r.count > 0)
            blas::gemv(adjoint<T>, r.count, e - i, scalar<T>(1), a_.block(r.first, i), a_.column(r.first, i),
                       scalar<T>(0), Vector<T>{to});
        if (block == 0)
            for (int j = i; j < e; ++j)
                head(phase)[j - i] = a_(i, j);
    }

    // Result: false if the column is none for this.
    bool make_step(int phase, int i, int e, Step& step) const {
        constexpr double least = 0x1p-40; // of the square: no product that matters may vanish
        const double square = std::real(sum(phase, 0));
        const Wide<T> alpha = widened(head(phase)[0]);
        if (!(square >= least && is_float(square)) || is_lost(square, alpha))
            return false;
        const PositiveReflection<Wide<T>> reflection(alpha, square);
        step.beta = static_cast<float>(reflection.beta);
        step.scale = element(reciprocal(reflection.difference));
        step.tau = element(reflection.tau());
        for (int j = 1; j < e - i; ++j) {
            const Wide<T> product = widened(head(phase)[j]) + conj(widened(step.scale) * sum(phase, j));
            const Wide<T> y = widened(step.tau) * conj(product); // conjugated, as it is taken off as v y^H
            if (!is_float(y))
                return false;
            step.y[j - 1] = element(y);
        }
        return true;
    }
    static bool is_float(Wide<T> x) {
        constexpr double largest = std::numeric_limits<float>::max();
        return std::fabs(std::real(x)) <= largest && std::fabs(std::imag(x)) <= largest;
    }

    void apply_step(int block, int i, int e, const Step& step) const {
        const Rows r = rows(block, i + 1);
        const Vector<T> v = a_.column(r.first, i);
        if (r.count > 0) {
            kernel::scal(r.count, step.scale, v);
            kernel::gerc(r.count, e - i - 1, scalar<T>(-1), v, Vector<const T>{step.y}, a_.block(r.first, i + 1));
        }
        if (block == 0) {
            a_(i, i) = scalar<T>(step.beta);
            tau_[i] = step.tau;
            for (int j = i + 1; j < e; ++j)
                a_(i, j) -= conj(step.y[j - i - 1]);
        }
    }

    // The top of the strip's vectors, with what is not stored.
    Matrix<T> top(int s, int e, T* memory) const {
        const int width = e - s;
        const Matrix<T> v1{memory, width};
        for (int j = 0; j < width; ++j)
            for (int i = 0; i < width; ++i)
                v1(i, j) = i > j ? a_(s + i, s + j) : scalar<T>(i == j ? 1 : 0);
        return v1;
    }
    // V^H V and V^H A of the columns behind, side by side.
    void multiply_strip(int phase, int block, int s, int e) const {
        const int width = e - s;
        const T one = scalar<T>(1), zero = scalar<T>(0);
        const Matrix<T> to{products(phase, block), width};
        std::fill_n(to.data, std::int64_t{width} * (n_ - s), zero);
        if (block == 0) {
            alignas(64) T memory[widestStrip * widestStrip];
            const Matrix<T> v1 = top(s, e, memory);
            blas::gemm(adjoint<T>, Op::none, width, width, width, one, v1, v1, one, to);
            blas::gemm(adjoint<T>, Op::none, width, n_ - e, width, one, v1, a_.block(s, e), one, to.block(0, width));
        }
        if (const Rows r = rows(block, e); r.count > 0)
            blas::gemm(adjoint<T>, Op::none, width, n_ - s, r.count, one, a_.block(r.first, s), a_.block(r.first, s),
                       one, to);
    }

    // T from V^H V, and W = T^H V^H A.
    void make_update(int phase, int s, int e, StripUpdate& update) const {
        const int width = e - s;
        alignas(64) T squares[2][widestStrip * widestStrip];
        const Matrix<T> v{squares[0], width}, t{squares[1], width};
        for (int j = 0; j < width; ++j)
            for (int l = 0; l < j; ++l)
                v(l, j) = element(sum(phase, l + width * j));
        larft_of_product<T>(Direct::forward, width, v, tau_ + s, t);
        for (int j = 0; j < n_ - e; ++j) {
            Wide<T> product[widestStrip];
            for (int l = 0; l < width; ++l)
                product[l] = sum(phase, l + width * (j + width));
            for (int i = 0; i < width; ++i) {
                Wide<T> w = 0;
                for (int l = 0; l <= i; ++l)
                    w += conj(widened(t(l, i))) * product[l];
                update.w[i + width * j] = element(w);
            }
        }
    }
    void apply_strip(int block, int s, int e, StripUpdate& update) const {
        const int width = e - s;
        const T one = scalar<T>(1), minusOne = scalar<T>(-1);
        const Matrix<const T> w{update.w, width};
        if (block == 0)
            blas::gemm(Op::none, Op::none, width, n_ - e, width, minusOne, top(s, e, update.v1), w, one,
                       a_.block(s, e));
        if (const Rows r = rows(block, e); r.count > 0)
            blas::gemm(Op::none, Op::none, r.count, n_ - e, width, minusOne, a_.block(r.first, s), w, one,
                       a_.block(r.first, e));
    }

    int m_, n_, blocks_, strip_;
    Matrix<T> a_;
    T *tau_, *products_ = nullptr;
    Result result_;
    bool left_ = false;
    Ticks part_ = 0, second_[2] = {}; // of the region; of the second thread, in this phase and the last one
};

// The reflectors of [first, last) to the columns from `behind` on.
template <class T>
void catch_up(int m, int n, int first, int last, int behind, Matrix<T> a, const T* tau) {
    const int count = last - first;
    if (count == 0 || behind == n)
        return;
    alignas(64) T memory[widestStrip * (widestStrip + mostColumns)];
    const Matrix<T> v = a.block(first, first), t{memory, count};
    larft<T>(Direct::forward, StoreV::columns, m - first, count, v, tau + first, t);
    larfb<T>(Side::left, adjoint<T>, {Direct::forward, StoreV::columns, count, v, t}, m - first, n - behind,
             a.block(first, behind), {memory + count * count, count}, BlockWork::upright);
}

} // namespace

bool geqrf_is_tall(int m, int n) {
    return n > 1 && n <= mostColumns && m >= 4 * height;
}

// Narrow strips stay near the innermost cache; where vectors are short, it is better that products of matrices begin
// later: with 16 columns the SSE form took 0.78 of the time at 100000 x 16, 0.97 at 20000 x 64, AVX-512 1.17 and 1.10.
int geqrf_tall_strip() {
    return vector_form_in_use() == VectorForm::sse ? widestStrip : 8;
}

template <class T>
int geqrf_tall(int threads, int m, int n, Matrix<T> a, T* tau) {
    TallFactorization<T> job(m, n, a, tau);
    void* const memory = qrv_serv_allocate(static_cast<std::size_t>(job.memory()) * sizeof(T), 128);
    if (!memory)
        return 0;
    const auto result = job.run(std::min(threads, job.blocks()), static_cast<T*>(memory));
    qrv_serv_deallocate(memory);
    if (result.stopped)
        return -1;
    catch_up(m, n, result.strip, result.done, std::min(result.strip + geqrf_tall_strip(), n), a, tau);
    return result.done;
}

template int geqrf_tall(int, int, int, Matrix<float>, float*);
template int geqrf_tall(int, int, int, Matrix<SingleComplex>, SingleComplex*);

} // namespace qrv::lapack
