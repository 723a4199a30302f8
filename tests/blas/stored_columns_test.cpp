// The routines of packed and banded matrices that have no kernel, by the problems of those that have one; sums in
// double and rotations of complex elements.
#include "qrv/native.h"
#include "support/routines.hpp"
#include "support/shapes.hpp"

namespace qrv::test {
namespace {

template <class T>
struct Entry {
    const char* name;
    Operation operation;
    void (*call)(const Call<T>& v);
};

#define QRV_ENTRY(real, complex, ...) [](const Call<T>& v) { routine_for<T>(real, complex)(__VA_ARGS__); }

template <class T>
std::vector<Entry<T>> entries() {
    using enum What;
    constexpr auto kind = isComplex<T> ? Form::hermitian : Form::symmetric, triangular = Form::triangular;
    const auto packed = [](What what, Form::Kind form) {
        return Operation{.what = what, .kind = form, .vectors = true, .packed = true};
    };
    std::vector<Entry<T>> list = {
        {"spmv", packed(product, kind),
         QRV_ENTRY(SSPMV, CHPMV, &v.uplo, &v.n, &v.alpha, v.a, v.b, &v.ldb, &v.beta, v.c, &v.ldc)},
        {"tpmv", packed(inPlace, triangular),
         QRV_ENTRY(STPMV, CTPMV, &v.uplo, &v.trans, &v.diag, &v.n, v.a, v.c, &v.ldc)},
        {"tpsv", packed(solve, triangular),
         QRV_ENTRY(STPSV, CTPSV, &v.uplo, &v.trans, &v.diag, &v.n, v.a, v.c, &v.ldc)},
        {"spr", packed(update, kind), QRV_ENTRY(SSPR, CHPR, &v.uplo, &v.n, real_part(v.alpha), v.a, &v.lda, v.c)},
        {"spr2", packed(update2, kind),
         QRV_ENTRY(SSPR2, CHPR2, &v.uplo, &v.n, &v.alpha, v.a, &v.lda, v.b, &v.ldb, v.c)},
    };
    if constexpr (isComplex<T>) {
        list.push_back({"gbmv", {product, Form::general, true, true}, [](const auto& v) { CGBMV(QRV_GBMV_OF(v)); }});
        list.push_back({"hbmv", {product, kind, true, true}, [](const auto& v) { CHBMV(QRV_SBMV_OF(v)); }});
        list.push_back({"tbmv", {inPlace, triangular, true, true}, [](const auto& v) { CTBMV(QRV_TBMV_OF(v)); }});
        list.push_back({"tbsv", {solve, triangular, true, true}, [](const auto& v) { CTBSV(QRV_TBMV_OF(v)); }});
    }
    return list;
}

TEST_OF_ELEMENTS(StoredColumns, EveryRoutine) {
    Turns turns;
    for (const auto& routine : entries<T>())
        for (const Shape& options : every_option<T>(routine.operation))
            for (const int n : {0, 1, 2, 3, 5, 8, 17, 40})
                for (int round = 0; round < 6; ++round) {
                    Shape p = turns.vary(options);
                    p.n = n;
                    p.m = turns.pick({0, 1, n / 2, n, n + 4, 2 * n});
                    p.k = turns.pick({0, 1, 2, 5, 50}), p.ku = turns.pick({0, 1, 3, 60});
                    Problem<T>(routine.operation, p).check([&](const Call<T>& v) { routine.call(v); }, routine.name);
                }
}

TEST(Level1Forms, SumsInDouble) {
    const int n = 3, two = 2, back = -1;
    const float x[] = {1e8F, nan, 0.5F, nan, -1e8F}, y[] = {1, 5, 1}, start = 0.25F; // in floats 0.5 * 5 is lost
    EXPECT_EQ(DSDOT(&n, x, &two, y, &back), 2.5);
    EXPECT_EQ(SDSDOT(&n, &start, x, &two, y, &back), 2.75F);
    const int none = 0;
    EXPECT_EQ(SDSDOT(&none, &start, x, &two, y, &two), start);
}

TEST(Level1Forms, ComplexRotations) {
    const SingleComplex z{-3, 4};
    EXPECT_EQ(SCABS1(&z), 7);
    const int n = 2, step = 1, back = -2;
    const float c = 0.5F, s = -0.25F;
    SingleComplex x[] = {{4, 8}, {0, 4}}, y[] = {{8, 0}, {7, 7}, {4, -4}}; // pairs (x0, y2), (x1, y0)
    CSROT(&n, x, &step, y, &back, &c, &s);
    EXPECT_TRUE(x[0] == (SingleComplex{1, 5}) && y[2] == (SingleComplex{3, 0}));
    EXPECT_TRUE(x[1] == (SingleComplex{-2, 2}) && y[0] == (SingleComplex{4, 1}));
    EXPECT_TRUE(y[1] == (SingleComplex{7, 7}));
    for (const float sizeA : {0x1p-120F, 1.0F, 0x1p122F})
        for (const float sizeB : {0.0F, 0x1p-120F, 1.0F, 0x1p122F}) {
            const SingleComplex a = sizeA * SingleComplex{3, 4}, b = sizeB * SingleComplex{-5, 12};
            SingleComplex r = a, sine;
            float cosine;
            CROTG(&r, &b, &cosine, &sine);
            const auto wideA = widen(a), wideB = widen(b), wideS = widen(sine);
            const double size = std::hypot(std::abs(wideA), std::abs(wideB)), bound = 4 * unitRoundoff;
            EXPECT_TRUE(std::abs(double{cosine} * cosine + std::norm(wideS) - 1) < bound);
            EXPECT_TRUE(std::abs(double{cosine} * wideA + wideS * wideB - widen(r)) < bound * size);
            EXPECT_TRUE(std::abs(double{cosine} * wideB - std::conj(wideS) * wideA) < bound * size);
        }
    SingleComplex zero{}, sine;
    float cosine;
    CROTG(&zero, &z, &cosine, &sine);
    EXPECT_TRUE(zero == z && cosine == 0 && sine == (SingleComplex{1, 0}));
}

} // namespace
} // namespace qrv::test
