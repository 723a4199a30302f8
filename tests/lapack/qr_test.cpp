// QR and LQ factorizations, their Q applied and generated: in double against the reflectors as they are stored, which
// must be unitary; all routes, work lengths, teams, refused memory, stops.
#include <functional>
#include <gtest/gtest.h>

#include "lapack/elements.hpp"
#include "lapack/lapack.hpp"
#include "support/combine.hpp"
#include "support/progress.hpp"
#include "support/qr.hpp"
#include "support/teams.hpp"
#include "support/work_memory.hpp"

namespace qrv::test {
namespace {

using lapack::Direct, lapack::StoreV, lapack::QForm;
using Kind = QrKind;

template <class T>
struct Route {
    std::string name;
    std::function<void(QrResult<T>&)> factor;
    std::function<std::int64_t(int m, int n)> work = [](int, int n) { return n; };
    bool lq = false;
};

template <class T>
std::vector<Route<T>> routes() {
    const auto serial = [](QrResult<T>& f) {
        lapack::geqrf_serial(f.a.rows(), f.a.columns(), f.a.view(), f.tau.data(), f.work.data(), f.work.size());
    };
    const auto rowwise = [](QrResult<T>& f) {
        lapack::gelqf(f.a.rows(), f.a.columns(), f.a.view(), f.tau.data(), f.work.data(), f.work.size());
    };
    const auto rows = [](int m, int) { return m; };
    std::vector<Route<T>> all{
        {"geqr2",
         [](QrResult<T>& f) { lapack::geqr2(f.a.rows(), f.a.columns(), f.a.view(), f.tau.data(), f.work.data()); }},
        {"serial, least work", serial},
        {"serial, full work", serial, lapack::geqrf_serial_work<T>},
        {"laqrf",
         [](QrResult<T>& f) {
             Operand<T> t(f.a.columns(), f.a.columns(), f.a.columns());
             lapack::laqrf(f.a.rows(), f.a.columns(), f.a.view(), f.tau.data(), t.view());
         }},
        {"gelq2",
         [](QrResult<T>& f) { lapack::gelq2(f.a.rows(), f.a.columns(), f.a.view(), f.tau.data(), f.work.data()); },
         rows, true},
        {"gelqf, least work", rowwise, rows, true},
        {"gelqf, some work", rowwise, [](int m, int) { return 5 * m + 2; }, true},
        {"gelqf, full work", rowwise, lapack::gelqf_work<T>, true}};
    for (const int threads : {1, 2, 3, 8})
        for (const auto& [nb, group] : {std::pair{8, 2}, {20, 1}, {5, 4}})
            all.push_back(
                {"team of " + std::to_string(threads) + ", blocks of " + std::to_string(nb),
                 [=, nb = nb, group = group](QrResult<T>& f) { EXPECT_TRUE(factor_on_team(f, threads, nb, group)); }});
    return all;
}

constexpr std::pair<int, int> shapes[] = {{1, 1}, {1, 5}, {5, 1}, {7, 7}, {40, 20}, {33, 70}, {96, 96}, {400, 40}};

TEST_OF_ELEMENTS(Qr, ResidualsOfEveryRoute) {
    combine(routes<T>(), shapes, qrKinds).each([](const Route<T>& route, const auto& shape, Kind kind) {
        const auto [m, n] = shape;
        if (route.name.starts_with("team") && std::min(m, n) < 20)
            return;
        const Operand<T> a = qr_matrix<T>(m, n, kind);
        QrResult<T> f(a, route.work(m, n));
        route.factor(f);
        EXPECT_LT(qr_residual(a, f, route.lq), 1);
    });
}

// High and narrow, by blocks of rows, the last of them short: in whole strips and in part of one, with columns that
// this route does not take in the midst of a strip, and with the same bits on every team.
TEST_OF_ELEMENTS(Qr, ResidualsOfHighMatrices) {
    constexpr int m = 4 * 2048 + 8;
    const auto expect = [](int n, Kind kind, bool sameBits) {
        const Operand<T> a = qr_matrix<T>(m, n, kind);
        std::optional<QrResult<T>> first;
        combine({1, 3}).each([&](int threads) {
            const ForcedTeam forced(threads);
            QrResult<T> f(a, n);
            lapack::geqrf(m, n, f.a.view(), f.tau.data(), f.work.data(), n);
            EXPECT_LT(qr_residual(a, f, false), 24) // of sums of so many terms, plain ones in the generic build
                << n << " kind " << int(kind);
            EXPECT_EQ(lapack::real_part(f.work[0]), static_cast<float>(lapack::geqrf_work<T>(m, n)));
            if (!first)
                first.emplace(f);
            EXPECT_TRUE(!sameBits || !bits_are_free_of_alignment() || f.a.same_bits(first->a)) << n;
        });
    };
    for (const int n : {2, 8, 20})
        expect(n, Kind::plain, true);
    for (const Kind kind : qrKinds)
        expect(20, kind, kind == Kind::plain);
    expect(9, Kind::far, false);
    const WorkMemoryProbe refusing(0, anySize);
    expect(20, Kind::plain, false);
}

// By the driver, at its own block sizes: any legal length of work gives the same bits.
TEST_OF_ELEMENTS(Qr, ResidualsWithAnyWork) {
    combine({1, 2, 4}, {std::pair{180, 170}, {300, 40}, {60, 330}, {90, 20}}).each([](int threads, const auto& shape) {
        const ForcedTeam forced(threads);
        const int m = shape.first, n = shape.second;
        const Operand<T> a = qr_matrix<T>(m, n);
        const std::int64_t full = lapack::geqrf_work<T>(m, n);
        const auto factored = [&](std::int64_t length) {
            QrResult<T> f(a, length);
            lapack::geqrf(m, n, f.a.view(), f.tau.data(), f.work.data(), int(length));
            EXPECT_LT(qr_residual(a, f, false), 1) << "work " << length;
            EXPECT_EQ(lapack::real_part(f.work[0]), static_cast<float>(full));
            return f;
        };
        const QrResult<T> first = factored(n);
        for (const std::int64_t length : {full - 1, full})
            EXPECT_TRUE(factored(length).a.same_bits(first.a) || !bits_are_free_of_alignment()) << "work " << length;
        const WorkMemoryProbe refusing(0, anySize);
        factored(n);
    });
}

// ---- Column pivoting ------------------------------------------------------------------------------------------------

// Every column free, some fixed, more fixed than there are rows.
bool is_fixed(int pattern, int j) {
    return pattern == 1 ? j % 5 == 2 : pattern == 2 && j % 4 > 0;
}

TEST_OF_ELEMENTS(Qr, ResidualsOfPivoting) {
    combine({std::pair{0, 4}, {1, 1}, {1, 5}, {5, 1}, {7, 7}, {40, 17}, {33, 70}, {180, 165}}, // the last in blocks
            std::vector{0, 1, 2}, std::vector{0, 1, 2}, qrKinds)                               // least, some, full work
        .each([](const auto& shape, int pattern, int method, Kind kind) {
            const int m = shape.first, n = shape.second;
            const Operand<T> a = qr_matrix<T>(m, n, kind);
            const std::int64_t least = lapack::geqp3_least_work<T>(m, n), full = lapack::geqp3_work<T>(m, n);
            QrResult<T> f(a, method == 0 ? least : method == 1 ? std::min(full, least + 5 * n + 1) : full);
            std::vector<int> jpvt;
            for (int j = 0; j < n; ++j)
                jpvt.push_back(is_fixed(pattern, j));
            const auto fixed = std::count(jpvt.begin(), jpvt.end(), 1);
            std::vector<float> complexNorms(std::size_t(2 * n));
            float* norms = complexNorms.data();
            if constexpr (!isComplex<T>)
                norms = f.work.data();
            lapack::geqp3(m, n, f.a.view(), jpvt.data(), f.tau.data(), f.work.data(), f.work.size(), norms);
            for (int j = 0; j < n; ++j)
                ASSERT_EQ(std::count(jpvt.begin(), jpvt.end(), j + 1), 1);
            Operand<T> permuted(a);
            permuted.set([&](int i, int j) { return a(i, jpvt[std::size_t(j)] - 1); });
            EXPECT_LT(qr_residual(permuted, f, false), 1);
            for (int j = 0; j < fixed; ++j)
                EXPECT_TRUE(is_fixed(pattern, jpvt[std::size_t(j)] - 1));
            // Each pivot was the longest, up to what an updated norm may be off.
            const double smallest = m > 0 ? std::real(widen(f.a(0, 0))) : 0;
            for (int i = int(fixed); i < std::min(m, n); ++i)
                for (int j = i + 1; j < n; ++j) {
                    double square = 0;
                    for (int l = i; l <= std::min(j, m - 1); ++l)
                        square += std::norm(widen(f.a(l, j)));
                    EXPECT_LE(std::sqrt(square), 1.01 * std::real(widen(f.a(i, i))) + 1e-5 * smallest) << i << ' ' << j;
                }
        });
}

// ---- Q applied and generated --------------------------------------------------------------------------------------

struct FormOfQ {
    QForm form;
    Direct direct;
    StoreV store;
};
constexpr FormOfQ forms[] = {{QForm::qr, Direct::forward, StoreV::columns},
                             {QForm::ql, Direct::backward, StoreV::columns},
                             {QForm::lq, Direct::forward, StoreV::rows}};

template <class T, class Apply>
void expect_applied(const Apply& apply, const std::vector<std::pair<int, int>>& ordersAndCounts,
                    const std::vector<int>& lengths = {1, 9, 40}) {
    combine({true, false}, {Op::none, lapack::adjoint<T>}, forms, ordersAndCounts, lengths)
        .each([&](bool left, Op op, const FormOfQ& form, const auto& size, int across) {
            const auto [order, k] = size;
            const RandomReflectors<T> reflectors(form.direct, form.store, order, k);
            const int m = left ? order : across, n = left ? across : order;
            Operand<T> c = qr_matrix<T>(m, n);
            WideMatrix<T> expected(c);
            reflectors.q.apply(left, (op != Op::none) != (form.form == QForm::lq), expected);
            apply(form.form, left ? Side::left : Side::right, op, m, n, k, reflectors, c);
            EXPECT_LT(difference(c, expected), 60 * unitRoundoff) << "form " << int(form.form);
        });
}

TEST_OF_ELEMENTS(Qr, ResidualsOfQApplied) {
    expect_applied<T>(
        [](QForm form, Side side, Op op, int m, int n, int k, const auto& reflectors, Operand<T>& c) {
            GuardedVector<T> work(side == Side::left ? n : m);
            lapack::orm2<T>(form, side, op, m, n, k, reflectors.v.view(), reflectors.tau.data(), c.view(), work.data());
        },
        {{1, 1}, {6, 3}, {12, 12}});
    combine({1, 2, 3, 8}, {true, false}).each([](int threads, bool enough) {
        const ForcedTeam forced(threads);
        const auto apply = [&](QForm form, Side side, Op op, int m, int n, int k, const auto& reflectors,
                               Operand<T>& c) {
            const std::int64_t full = lapack::orm_work<T>(form, side, m, n, k);
            GuardedVector<T> work(enough ? int(full) : side == Side::left ? n : m);
            lapack::orm<T>(form, side, op, m, n, k, reflectors.v.view(), reflectors.tau.data(), c.view(), work.data(),
                           work.size());
            EXPECT_EQ(lapack::real_part(work[0]), static_cast<float>(full));
        };
        expect_applied<T>(apply, {{6, 3}, {64, 12}, {90, 70}, {66, 66}});
        if (threads == 1 || threads == 3)
            expect_applied<T>(apply, {{40, 35}}, {900}); // in strips
    });
}

TEST_OF_ELEMENTS(Qr, ResidualsOfQGenerated) {
    struct Size {
        int length, lines, k;
    };
    combine({StoreV::columns, StoreV::rows},
            {Size{1, 1, 1}, {5, 3, 0}, {9, 9, 4}, {40, 25, 25}, {50, 36, 34}, {150, 130, 90}, {100, 100, 100}},
            {0, 1, 2, 3}) // unblocked, then with least, some and full work
        .each([](StoreV store, const Size& s, int method) {
            const bool columns = store == StoreV::columns;
            const RandomReflectors<T> reflectors(Direct::forward, store, s.length, s.k);
            const int m = columns ? s.length : s.lines, n = columns ? s.lines : s.length;
            WideMatrix<T> expected(m, n, [](int i, int j) { return i == j ? 1 : 0; });
            reflectors.q.apply(columns, !columns, expected);
            Operand<T> q(m, n, m + 1);
            q.set([&](int i, int j) { // only the vectors are read
                const int place = columns ? i : j, line = columns ? j : i;
                return line < s.k && place > line ? reflectors.v(i, j) : all_parts<T>(nan);
            });
            const std::int64_t full = columns ? lapack::orgqr_work<T>(m, n, s.k) : lapack::orglq_work<T>(m, n, s.k);
            GuardedVector<T> work(method < 2 ? s.lines : method == 2 ? 7 * s.lines + 1 : int(full));
            const T* const tau = reflectors.tau.data();
            if (method == 0)
                columns ? lapack::org2r(m, n, s.k, q.view(), tau, work.data())
                        : lapack::orgl2(m, n, s.k, q.view(), tau, work.data());
            else
                columns ? lapack::orgqr(m, n, s.k, q.view(), tau, work.data(), work.size())
                        : lapack::orglq(m, n, s.k, q.view(), tau, work.data(), work.size());
            EXPECT_LT(difference(q, expected), 60 * unitRoundoff) << "length " << s.length << " k " << s.k;
        });
}

// ---- Stops --------------------------------------------------------------------------------------------------------

// The steps told, or so many of them if asked to stop there.
template <class Factor>
void expect_told(std::vector<int> steps, int stopAt, const Factor& factor) {
    const ProgressHook hook(stopAt);
    factor();
    if (stopAt > 0)
        steps.resize(static_cast<std::size_t>(stopAt));
    EXPECT_EQ(progress.steps, steps) << "stop " << stopAt;
}

// Panel by panel, and once at the end. After a stop nothing more is done.
TEST(QrProgress, ToldAfterEachPanelAndStops) {
    constexpr int m = 190, n = 180;
    combine({1, 2, 4}, {0, 1, 3}).each([&](int threads, int stopAt) {
        const Operand<float> a = qr_matrix<float>(m, n);
        QrResult<float> f(a, lapack::geqrf_serial_work<float>(m, n));
        std::vector<int> expected{16, 32}; // what is left then goes column by column in the serial route
        for (int step = 48; threads > 1 && step < n; step += 16)
            expected.push_back(step);
        expected.insert(expected.end(), threads > 1 ? 2 : 1, n); // the last panel of a team
        expect_told(expected, stopAt, [&] {
            if (threads == 1)
                lapack::geqrf_serial(m, n, f.a.view(), f.tau.data(), f.work.data(), f.work.size());
            else
                EXPECT_TRUE(factor_on_team(f, threads, 16, 2));
        });
        EXPECT_EQ(same_bits(f.a(m - 1, n - 1), a(m - 1, n - 1)), stopAt == 1);
    });
}

TEST(QrProgress, ToldAfterEachStripOfHighMatrices) {
    constexpr int m = 4 * 2048, n = 20;
    for (const int stopAt : {0, 1, 3}) {
        QrResult<float> f(qr_matrix<float>(m, n), n);
        std::vector<int> expected;
        for (int step = lapack::geqrf_tall_strip(); step < n; step += lapack::geqrf_tall_strip())
            expected.push_back(step);
        expected.insert(expected.end(), 2, n);
        expect_told(expected, stopAt, [&] { lapack::geqrf(m, n, f.a.view(), f.tau.data(), f.work.data(), n); });
    }
}

} // namespace
} // namespace qrv::test
