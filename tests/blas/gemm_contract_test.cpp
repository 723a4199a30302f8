// What every serial GEMM must hold to, whatever its design: the product on each side of every block edge, any
// alignment and leading dimension, what may be read and written, and where NaN and infinity go.
#include "support/subjects.hpp"
#include "support/work_memory.hpp"

namespace qrv::test {
namespace {

template <class T>
class GemmContract : public testing::Test {};
TYPED_TEST_SUITE(GemmContract, Elements);

constexpr float alphas[] = {1, -0.5F, 2};
constexpr float betas[] = {0, 1, 0.5F};

struct Size {
    int m, n, k;
};

// The product against the oracle, for every subject.
template <class T>
void check(const GemmShape& p) {
    const GemmCase<T> x(p);
    const GemmReference<T> reference = x.reference();
    for (const Subject<T>& subject : subjects<T>()) {
        const double error = reference.error(x.result(subject.gemm));
        EXPECT_TRUE(error <= 1) << subject.name << ' ' << p << " error=" << error;
    }
}

// Calls of which scalars, leading dimensions and starts change all the time. A complex one takes several times as long,
// so only every fifth is made, with the two transposing options in turn.
template <class T>
class VariedShapes {
public:
    void check(char ta, char tb, int m, int n, int k) {
        ++round_;
        if (isComplex<T> && round_ % 5 != 0)
            return;
        const int turn = isComplex<T> ? round_ / 5 : round_;
        if (isComplex<T>) {
            ta = ta == 'T' && turn % 2 ? 'C' : ta;
            tb = tb == 'T' && turn / 2 % 2 ? 'C' : tb;
        }
        test::check<T>({ta, tb, m, n, k, alphas[turn % 3], betas[turn / 3 % 3], turn % 5, turn % 4, turn % 3, turn % 16,
                        turn % 7, turn % 5});
    }

private:
    int round_ = 0;
};

// ---- Shapes --------------------------------------------------------------------------------------------------------

TYPED_TEST(GemmContract, SmallShapes) {
    each_transposition<TypeParam>([varied = VariedShapes<TypeParam>()](char ta, char tb) mutable {
        for (int m = 0; m <= 9; ++m)
            for (int n = 0; n <= 9; ++n)
                for (int k = 0; k <= 9; ++k)
                    varied.check(ta, tb, m, n, k);
    });
}

// Every remainder of rows and columns against the largest tile of any design, at depths that are no multiple of much.
TYPED_TEST(GemmContract, EveryRemainder) {
    each_transposition<TypeParam>([varied = VariedShapes<TypeParam>()](char ta, char tb) mutable {
        for (int m = 4; m <= 50; ++m)
            for (int n = 1; n <= 22; ++n)
                varied.check(ta, tb, m, n, 4 + (m + n) % 15);
    });
}

// Tiles, passes and blocks, one direction at a time; the others are large enough for each design to pack, and then
// small ones.
TYPED_TEST(GemmContract, BlockEdges) {
    const int edges[] = {10,  12,  15,  16,  17,  23,  24,  25,  31,  32,  33,  47,  48,  49,  57,  58,
                         59,  63,  64,  65,  72,  79,  80,  81,  95,  96,  97,  112, 127, 128, 129, 149,
                         150, 151, 152, 153, 191, 192, 193, 239, 240, 241, 254, 255, 256, 257, 258, 287,
                         288, 289, 300, 384, 385, 479, 480, 481, 510, 511, 512, 513, 514, 520, 546};
    each_transposition<TypeParam>([&, varied = VariedShapes<TypeParam>()](char ta, char tb) mutable {
        for (const int edge : edges) {
            varied.check(ta, tb, edge, 21, 27);
            varied.check(ta, tb, edge, 61, 83);
            varied.check(ta, tb, 22, edge, 19);
            varied.check(ta, tb, 25, edge, 133);
            varied.check(ta, tb, 14, 15, edge);
            varied.check(ta, tb, 49, 13, edge);
            varied.check(ta, tb, 29, 71, edge);
        }
    });
}

TYPED_TEST(GemmContract, AllDirectionsAtOnce) {
    each_transposition<TypeParam>([](char ta, char tb) {
        for (const int edge : {31, 32, 33, 63, 64, 65, 129, 151})
            for (const int depth : {edge, 257})
                check<TypeParam>({ta, tb, edge, edge + 1, depth, 0.75F, 0.25F});
    });
}

// Blocks of rows, and of columns.
TYPED_TEST(GemmContract, LargeBlocks) {
    each_transposition<TypeParam>([varied = VariedShapes<TypeParam>()](char ta, char tb) mutable {
        for (const int around : {-1, 0, 1}) {
            for (const int mb : {768, 896, 1024, 1280, 2000})
                varied.check(ta, tb, mb + around, 9, 17);
            varied.check(ta, tb, 11, 5000 + around, 10);
        }
    });
}

// Few rows or columns and many steps.
TYPED_TEST(GemmContract, NarrowShapes) {
    each_transposition<TypeParam>([varied = VariedShapes<TypeParam>()](char ta, char tb) mutable {
        for (const int few : {1, 2, 3, 4, 5, 7, 8, 9})
            for (const int other : {1, 6, 64, 67})
                for (const int k : {15, 16, 17, 31, 32, 33, 63, 64, 65, 79, 130, 385, 780}) {
                    varied.check(ta, tb, few, other, k);
                    varied.check(ta, tb, other, few, k);
                }
    });
}

// Columns of A a page apart.
TYPED_TEST(GemmContract, ColumnsThatDisplaceEachOther) {
    each_transposition<TypeParam>([](char ta, char tb) {
        for (const int m : {16, 37, 100})
            for (const int n : {23, 24, 30})
                for (const int k : {63, 64, 200})
                    check<TypeParam>({ta, tb, m, n, k, 1.5F, 0.5F, 1024 - (is_transposed(ta) ? k : m)});
    });
}

// Every position of A, B and C modulo 16 bytes with every residue of a leading dimension, spread over a 64-byte line,
// on both sides of the sizes at which columns are entered at a boundary and of those that go without packing.
TYPED_TEST(GemmContract, AnyAlignment) {
    each_transposition<TypeParam>([](char ta, char tb) {
        for (int start = 0; start < 64; ++start)
            for (int extra = 0; extra < 4; ++extra) {
                const int x = start % 4, y = start / 4 % 4, z = start / 16;
                const auto at = [&](int m, int n, int k) {
                    check<TypeParam>({ta, tb, m, n, k, 1, betas[start % 3], (extra + start) % 16,
                                      (extra + start / 4) % 16, extra + 4 * x, x + 4 * extra, y + 4 * z, z + 4 * x});
                };
                at(21, 11, 14);
                at(10 + (start + extra) % 3, 3, 10 + (start / 4 + extra) % 3);
                if (start % 5 == extra)
                    at(44, 36, 83);
            }
    });
}

// Unpacked, edges only, packed, and operands of which a row is stored as a column of one element.
TYPED_TEST(GemmContract, EveryOption) {
    for (const char ta : {'N', 'n', 'T', 't', 'C', 'c'})
        for (const char tb : {'N', 'n', 'T', 't', 'C', 'c'})
            for (const auto& [m, n, k] : {Size{7, 8, 9}, {1, 5, 3}, {5, 6, 1}, {9, 1, 37}, {31, 26, 21}, {70, 71, 72}})
                check<TypeParam>({ta, tb, m, n, k, 2, 0.5F});
}

TYPED_TEST(GemmContract, EmptyMatrixIsLeftAlone) {
    for (const Subject<TypeParam>& subject : subjects<TypeParam>())
        for (const int empty : {0, -1})
            for (const auto& [m, n] : {std::pair{empty, 5}, {5, empty}, {empty, empty}}) {
                auto c = all_parts<TypeParam>(3);
                const int k = 5;
                const auto zero = scalar<TypeParam>(0), one = scalar<TypeParam>(1);
                subject.gemm("N", "T", &m, &n, &k, &one, nullptr, &k, nullptr, &k, &zero, &c, &k);
                EXPECT_TRUE(c == all_parts<TypeParam>(3)) << subject.name;
            }
}

TYPED_TEST(GemmContract, DoesWithoutWorkMemory) {
    const WorkMemoryProbe refusing(0, anySize);
    each_transposition<TypeParam>([](char ta, char tb) {
        for (const float beta : betas) {
            check<TypeParam>({ta, tb, 33, 29, 31, 1.5F, beta, 1, 1});
            check<TypeParam>({ta, tb, 70, 71, 72, 2, beta, 1, 2, 3});
        }
    });
}

// What work memory holds before must not matter.
TYPED_TEST(GemmContract, WorkMemoryMayHoldAnything) {
    each_transposition<TypeParam>([](char ta, char tb) {
        for (const int k : {31, 60, 63, 70, 150}) {
            const GemmCase<TypeParam> x({ta, tb, 43, 57, k});
            const GemmReference<TypeParam> reference = x.reference();
            for (const Subject<TypeParam>& subject : subjects<TypeParam>()) {
                const WorkMemoryProbe fresh;
                EXPECT_TRUE(reference.error(x.result(subject.gemm)) <= 1) << subject.name << ' ' << x.p;
            }
        }
    });
}

// ---- What is read and written --------------------------------------------------------------------------------------

// Unpacked, edges only, blocked, and several blocks deep.
constexpr Size sizes[] = {{1, 1, 1},    {3, 2, 5},    {5, 9, 3},     {8, 8, 8},
                          {22, 17, 13}, {41, 50, 70}, {70, 66, 130}, {20, 12, 300}};

// With alpha = 0 neither A nor B counts, with k = 0 there is none; with beta = 0 C does not count either.
TYPED_TEST(GemmContract, NothingToAddScalesC) {
    for (const Size& s : sizes)
        for (const bool noDepth : {false, true})
            for (const float beta : {0.0F, 1.0F, -0.5F})
                for (const char option : transposeOptions) {
                    GemmCase<TypeParam> x(
                        {option, 'T', s.m, s.n, noDepth ? 0 : s.k, noDepth ? 2.0F : 0.0F, beta, 1, 1, 1, 0, 0, 1});
                    x.a.fill(nan);
                    x.b.fill(nan);
                    for (const Subject<TypeParam>& subject : subjects<TypeParam>())
                        EXPECT_EQ(x.result(subject.gemm).count_bad([&](int i, int j, TypeParam c) {
                            return c == x.scaled(i, j);
                        }),
                                  0)
                            << subject.name << ' ' << x.p;
                }
}

TYPED_TEST(GemmContract, BetaZeroNeverReadsC) {
    each_transposition<TypeParam>([](char ta, char tb) {
        for (const Size& s : sizes)
            check<TypeParam>({ta, tb, s.m, s.n, s.k, 1.5F, 0, 0, 1, 2, 1, 0, 3});
    });
}

// The problem with every operand against a guarded page: in front of it and then behind it.
template <class T>
void check_at_pages(const GemmShape& p) {
    const GemmCase<T> x(p);
    const GemmReference<T> reference = x.reference();
    for (const bool atFront : {false, true}) {
        const PageMatrix<T> a(x.a, atFront), b(x.b, atFront);
        PageMatrix<T> c(x.before, atFront);
        for (const Subject<T>& subject : subjects<T>()) {
            c.set(x.before);
            x.run(subject.gemm, a, b, c);
            const double error = reference.error(c);
            ASSERT_TRUE(error <= 1) << subject.name << ' ' << p << " error=" << error << " atFront=" << atFront;
        }
    }
}

TYPED_TEST(GemmContract, NothingIsTouchedOutsideTheOperands) {
    each_transposition<TypeParam>([](char ta, char tb) {
        const auto at = [&](int m, int n, int k) {
            check_at_pages<TypeParam>({ta, tb, m, n, k, 2, betas[(m + n + k) % 3], k % 3, n % 3, m % 3});
        };
        for (const int m : {1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 15, 16, 18, 24, 31, 33, 35, 49, 83})
            for (const int n : {1, 2, 3, 5, 6, 8, 11, 15, 20, 41})
                for (const int k : {1, 2, 3, 4, 5, 8, 11, 18, 67})
                    if (m + n + k < 120 && (!isComplex<TypeParam> || (m + 2 * n) % 3 == k % 3))
                        at(m, n, k);
        for (const int m : {16, 24, 35, 83})
            for (const int n : {80, 81, 82, 83})
                for (const int k : {64, 80, 101})
                    at(m, n, k);
        for (const int few : {1, 2, 3, 4, 7, 8})
            for (const int k : {32, 33, 47, 64, 79, 391}) {
                at(few, 65, k);
                at(65, few, k);
            }
        check_at_pages<TypeParam>({ta, tb, 37, 25, 70, 2, 0.5F, 1024 - (is_transposed(ta) ? 70 : 37)});
    });
}

// ---- NaN and infinity ----------------------------------------------------------------------------------------------

// One element of A that is not finite reaches its row of C and no other element, one of B its column. Depths are odd,
// and edges in each direction; their last lanes hold nothing, or copies.
TYPED_TEST(GemmContract, NonFiniteElementsReachWhatDependsOnThem) {
    using T = TypeParam;
    const auto check_at = [](GemmCase<T>& x, int hit, int l) {
        const GemmShape& p = x.p;
        const bool inA = hit < p.m;
        T& element = inA ? x.a_at(hit, l) : x.b_at(l, hit - p.m);
        const T kept = element;
        for (const float value : {nan, infinity}) {
            element = all_parts<T>(value);
            const auto good = [&](int i, int j, T c) {
                if ((inA ? i : j + p.m) != hit)
                    return is_finite(c);
                if constexpr (isComplex<T>) {
                    return !std::isfinite(c.re) && !std::isfinite(c.im);
                } else {
                    const float factor = inA ? x.b_at(l, j) : x.a_at(i, l);
                    return std::isnan(value) ? std::isnan(c) : c == p.alpha * value * std::copysign(1.0F, factor);
                }
            };
            for (const Subject<TypeParam>& subject : subjects<TypeParam>())
                EXPECT_EQ(x.result(subject.gemm).count_bad(good), 0)
                    << subject.name << ' ' << p << ' ' << value << " hit=" << hit << " l=" << l;
        }
        element = kept;
    };
    each_transposition<TypeParam>([&](char ta, char tb) {
        for (const Size& s : {Size{7, 5, 3}, {11, 7, 13}, {23, 19, 13}, {83, 59, 71}, {67, 3, 71}, {6, 67, 71}}) {
            GemmCase<TypeParam> x({ta, tb, s.m, s.n, s.k, -2, 1, 1, 0, 3, 0, 1, 2});
            const int step = s.m + s.n > 50 ? 7 : 1;
            for (int hit = 0; hit < s.m + s.n; hit += step)
                check_at(x, hit, (hit * 5 + 3) % s.k);
            for (int l = 0; l < s.k; l += step)
                check_at(x, l * 3 % (s.m + s.n), l);
            check_at(x, s.m - 1, s.k - 1);
            check_at(x, s.m + s.n - 1, s.k - 1);
        }
        for (const int m : {13, 17, 29, 30, 31, 32, 33, 47, 49})
            for (const int n : {3, 6, 11, 14, 15, 16, 17, 18}) {
                GemmCase<TypeParam> x({ta, tb, m, n, 9, 1, 1, 1, 1, 1, 1, 1, 1});
                check_at(x, m - 1 - n % 2, 8);
                check_at(x, m + n - 1 - m % 2, 7);
            }
    });
}

// Nothing that a design adds to fill up its blocks meets an infinite alpha. (A complex one gives NaN by itself.)
TYPED_TEST(GemmContract, InfiniteAlphaGivesInfinity) {
    if constexpr (isComplex<TypeParam>)
        return;
    else
        each_transposition<TypeParam>([](char ta, char tb) {
            for (const Size& s : sizes) {
                GemmCase<TypeParam> x({ta, tb, s.m, s.n, s.k, infinity, 1});
                x.a.fill(1);
                x.b.fill(1);
                for (const Subject<TypeParam>& subject : subjects<TypeParam>())
                    EXPECT_EQ(x.result(subject.gemm).count_bad([](int, int, TypeParam c) { return c == infinity; }), 0)
                        << subject.name << ' ' << x.p;
            }
        });
}

// A zero in one operand does not hide a NaN in the other: no product is left out.
TYPED_TEST(GemmContract, ZeroTimesNanIsNan) {
    for (const Size& s : sizes)
        for (const bool inA : {false, true}) {
            GemmCase<TypeParam> x({'N', 'N', s.m, s.n, s.k});
            (inA ? x.a : x.b).fill(0);
            (inA ? x.b : x.a).fill(nan);
            for (const Subject<TypeParam>& subject : subjects<TypeParam>())
                EXPECT_EQ(x.result(subject.gemm).count_bad([](int, int, TypeParam c) { return has_nan(c); }), 0)
                    << subject.name << ' ' << x.p;
        }
}

// What C holds stays in its element, scaled; beta = 1 leaves infinite parts as they are.
TYPED_TEST(GemmContract, NanInCStaysInItsElement) {
    for (const Size& s : sizes)
        for (const float beta : {1.0F, 2.0F}) {
            GemmCase<TypeParam> x({'N', 'T', s.m, s.n, s.k, 1, beta});
            x.before(0, 0) = all_parts<TypeParam>(infinity);
            x.before(s.m - 1, s.n / 2) = all_parts<TypeParam>(nan);
            const auto good = [&](int i, int j, TypeParam c) {
                if (i == s.m - 1 && j == s.n / 2)
                    return has_nan(c);
                return i == 0 && j == 0 ? !is_finite(c) && !(beta == 1 && has_nan(c)) : is_finite(c);
            };
            for (const Subject<TypeParam>& subject : subjects<TypeParam>())
                EXPECT_EQ(x.result(subject.gemm).count_bad(good), 0) << subject.name << ' ' << x.p;
        }
}

// ---- Scaling -------------------------------------------------------------------------------------------------------

template <class T>
struct ScaleBuild {
    int cpuType;
    const char* name;
    void (*scale)(const int* m, const int* n, const T* beta, T* c, const int* ldc);
    VectorForm form = VectorForm::sse;
};
template <class T>
std::vector<ScaleBuild<T>> scale_builds();
#define QRV_SCALE_BUILDS(T, gemm)                                                                                      \
    template <>                                                                                                        \
    std::vector<ScaleBuild<T>> scale_builds<T>() {                                                                     \
        using namespace kernel;                                                                                        \
        return runnable<ScaleBuild<T>>({{0, "generic", generic::blas_##gemm##_scale_c},                                \
                                        {2, "sse2", sse2::blas_##gemm##_scale_c},                                      \
                                        {3, "sse3", sse3::blas_##gemm##_scale_c},                                      \
                                        {4, "ssse3", ssse3::blas_##gemm##_scale_c},                                    \
                                        {5, "sse42", sse42::blas_##gemm##_scale_c}});                                  \
    }
QRV_SCALE_BUILDS(float, sgemm)
QRV_SCALE_BUILDS(SingleComplex, cgemm)
#undef QRV_SCALE_BUILDS

// beta = 0 stores zeros over NaN, beta = 1 leaves even infinity alone.
TYPED_TEST(GemmContract, ScaleC) {
    using T = TypeParam;
    std::mt19937 random(1);
    for (const ScaleBuild<T>& build : scale_builds<T>())
        for (int m = 0; m <= 35; ++m)
            for (const int n : {0, 1, 3, 4, 5, 9})
                for (int place = 0; place < 16; ++place)
                    for (const float factor : {0.0F, 1.0F, -2.5F}) {
                        BasicGuardedMatrix<T> before(m, n, m + place / 4 + (m == 0), place % 4);
                        before.fill_random(random);
                        if (factor != -2.5F)
                            before.fill(factor == 0 ? nan : infinity);
                        const T beta = scalar_of<T>(factor);
                        const auto good = [&](int i, int j, T c) {
                            return c == (factor == 0 ? T() : factor == 1 ? before(i, j) : beta * before(i, j));
                        };
                        BasicGuardedMatrix<T> c = before;
                        const int ldc = c.ld();
                        build.scale(&m, &n, &beta, c.data(), &ldc);
                        EXPECT_TRUE(c.count_bad(good) == 0 && c.guards_intact())
                            << build.name << ' ' << m << " x " << n << " place=" << place << " beta=" << factor;
                        if (m == 0 || n == 0)
                            continue;
                        for (const bool atFront : {false, true})
                            if (place % 5 == 0) {
                                PageMatrix<T> fenced(before, atFront);
                                build.scale(&m, &n, &beta, fenced.data(), &ldc);
                                EXPECT_EQ(fenced.count_bad(good), 0) << build.name << ' ' << m << " x " << n;
                            }
                    }
}

} // namespace
} // namespace qrv::test
