// What every serial GEMM must hold to, whatever its design: the product on each side of every block edge, any
// alignment and leading dimension, what may be read and written, and where NaN and infinity go.
#include "support/subjects.hpp"
#include "support/work_memory.hpp"

namespace qrv::test {
namespace {

constexpr float alphas[] = {1, -0.5F, 2};
constexpr float betas[] = {0, 1, 0.5F};

// The product against the oracle, for every subject.
void check(const GemmShape& p) {
    const GemmCase x(p);
    const GemmReference reference = x.reference();
    for (const Subject& subject : subjects()) {
        const double error = reference.error(x.result(subject.sgemm));
        EXPECT_TRUE(error <= 1) << subject.name << ' ' << p << " error=" << error;
    }
}

// Calls of which scalars, leading dimensions and starts change all the time.
class VariedShapes {
public:
    void check(char ta, char tb, int m, int n, int k) {
        ++round_;
        test::check({ta, tb, m, n, k, alphas[round_ % 3], betas[round_ / 3 % 3], round_ % 5, round_ % 4, round_ % 3,
                     round_ % 16, round_ % 7, round_ % 5});
    }

private:
    int round_ = 0;
};

template <class Body>
void each_transposition(Body body) {
    for (const char ta : transposeOptions)
        for (const char tb : transposeOptions)
            body(ta, tb);
}

// ---- Shapes --------------------------------------------------------------------------------------------------------

TEST(GemmContract, SmallShapes) {
    each_transposition([varied = VariedShapes()](char ta, char tb) mutable {
        for (int m = 0; m <= 9; ++m)
            for (int n = 0; n <= 9; ++n)
                for (int k = 0; k <= 9; ++k)
                    varied.check(ta, tb, m, n, k);
    });
}

// Every remainder of rows and columns against the largest tile of any design, at depths that are no multiple of much.
TEST(GemmContract, EveryRemainder) {
    each_transposition([varied = VariedShapes()](char ta, char tb) mutable {
        for (int m = 4; m <= 50; ++m)
            for (int n = 1; n <= 22; ++n)
                varied.check(ta, tb, m, n, 4 + (m + n) % 15);
    });
}

// Tiles, passes and blocks, one direction at a time; the others are large enough for each design to pack, and then
// small ones.
TEST(GemmContract, BlockEdges) {
    const int edges[] = {10,  12,  15,  16,  17,  23,  24,  25,  31,  32,  33,  47,  48,  49,  57,  58,
                         59,  63,  64,  65,  72,  79,  80,  81,  95,  96,  97,  112, 127, 128, 129, 149,
                         150, 151, 152, 153, 191, 192, 193, 239, 240, 241, 254, 255, 256, 257, 258, 287,
                         288, 289, 300, 384, 385, 479, 480, 481, 510, 511, 512, 513, 514, 520, 546};
    each_transposition([&, varied = VariedShapes()](char ta, char tb) mutable {
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

TEST(GemmContract, AllDirectionsAtOnce) {
    each_transposition([](char ta, char tb) {
        for (const int edge : {31, 32, 33, 63, 64, 65, 129, 151})
            for (const int depth : {edge, 257})
                check({ta, tb, edge, edge + 1, depth, 0.75F, 0.25F});
    });
}

// Blocks of rows, and of columns.
TEST(GemmContract, LargeBlocks) {
    each_transposition([varied = VariedShapes()](char ta, char tb) mutable {
        for (const int around : {-1, 0, 1}) {
            for (const int mb : {768, 896, 1024, 1280, 2000})
                varied.check(ta, tb, mb + around, 9, 17);
            varied.check(ta, tb, 11, 5000 + around, 10);
        }
    });
}

// Few rows or columns and many steps.
TEST(GemmContract, NarrowShapes) {
    each_transposition([varied = VariedShapes()](char ta, char tb) mutable {
        for (const int few : {1, 2, 3, 4, 5, 7, 8, 9})
            for (const int other : {1, 6, 64, 67})
                for (const int k : {15, 16, 17, 31, 32, 33, 63, 64, 65, 79, 130, 385, 780}) {
                    varied.check(ta, tb, few, other, k);
                    varied.check(ta, tb, other, few, k);
                }
    });
}

// Columns of A a page apart.
TEST(GemmContract, ColumnsThatDisplaceEachOther) {
    each_transposition([](char ta, char tb) {
        for (const int m : {16, 37, 100})
            for (const int n : {23, 24, 30})
                for (const int k : {63, 64, 200})
                    check({ta, tb, m, n, k, 1.5F, 0.5F, 1024 - (is_transposed(ta) ? k : m)});
    });
}

// Every position of A, B and C modulo 16 bytes with every residue of a leading dimension, spread over a 64-byte line,
// on both sides of the sizes at which columns are entered at a boundary and of those that go without packing.
TEST(GemmContract, AnyAlignment) {
    each_transposition([](char ta, char tb) {
        for (int start = 0; start < 64; ++start)
            for (int extra = 0; extra < 4; ++extra) {
                const int x = start % 4, y = start / 4 % 4, z = start / 16;
                const auto at = [&](int m, int n, int k) {
                    check({ta, tb, m, n, k, 1, betas[start % 3], (extra + start) % 16, (extra + start / 4) % 16,
                           extra + 4 * x, x + 4 * extra, y + 4 * z, z + 4 * x});
                };
                at(21, 11, 14);
                at(10 + (start + extra) % 3, 3, 10 + (start / 4 + extra) % 3);
                if (start % 5 == extra)
                    at(44, 36, 83);
            }
    });
}

TEST(GemmContract, OnlyNMeansNoTranspose) {
    for (const char option : {'n', 't', 'c', 'C'})
        for (const int size : {7, 70}) {
            check({option, 'N', size, size + 1, size + 2});
            check({'N', option, size, size + 1, size + 2});
        }
}

TEST(GemmContract, EmptyMatrixIsLeftAlone) {
    for (const Subject& subject : subjects())
        for (const int empty : {0, -1})
            for (const auto& [m, n] : {std::pair{empty, 5}, {5, empty}, {empty, empty}}) {
                float c = 3;
                const int k = 5;
                const float zero = 0, one = 1;
                subject.sgemm("N", "T", &m, &n, &k, &one, nullptr, &k, nullptr, &k, &zero, &c, &k);
                EXPECT_EQ(c, 3) << subject.name;
            }
}

TEST(GemmContract, DoesWithoutWorkMemory) {
    const WorkMemoryProbe refusing(0, anySize);
    each_transposition([](char ta, char tb) {
        for (const float beta : betas) {
            check({ta, tb, 33, 29, 31, 1.5F, beta, 1, 1});
            check({ta, tb, 70, 71, 72, 2, beta, 1, 2, 3});
        }
    });
}

// What work memory holds before must not matter.
TEST(GemmContract, WorkMemoryMayHoldAnything) {
    each_transposition([](char ta, char tb) {
        for (const int k : {31, 60, 63, 70, 150}) {
            const GemmCase x({ta, tb, 43, 57, k});
            const GemmReference reference = x.reference();
            for (const Subject& subject : subjects()) {
                const WorkMemoryProbe fresh;
                EXPECT_TRUE(reference.error(x.result(subject.sgemm)) <= 1) << subject.name << ' ' << x.p;
            }
        }
    });
}

// ---- What is read and written --------------------------------------------------------------------------------------

struct Size {
    int m, n, k;
};
// Unpacked, edges only, blocked, and several blocks deep.
constexpr Size sizes[] = {{1, 1, 1},    {3, 2, 5},    {5, 9, 3},     {8, 8, 8},
                          {22, 17, 13}, {41, 50, 70}, {70, 66, 130}, {20, 12, 300}};

// With alpha = 0 neither A nor B counts, with k = 0 there is none; with beta = 0 C does not count either.
TEST(GemmContract, NothingToAddScalesC) {
    for (const Size& s : sizes)
        for (const bool noDepth : {false, true})
            for (const float beta : {0.0F, 1.0F, -0.5F})
                for (const char option : transposeOptions) {
                    GemmCase x(
                        {option, 'T', s.m, s.n, noDepth ? 0 : s.k, noDepth ? 2.0F : 0.0F, beta, 1, 1, 1, 0, 0, 1});
                    x.a.fill(nan);
                    x.b.fill(nan);
                    for (const Subject& subject : subjects())
                        EXPECT_EQ(x.result(subject.sgemm).count_bad([&](int i, int j, float c) {
                            return c == (beta == 0 ? 0 : beta * x.before(i, j));
                        }),
                                  0)
                            << subject.name << ' ' << x.p;
                }
}

TEST(GemmContract, BetaZeroNeverReadsC) {
    each_transposition([](char ta, char tb) {
        for (const Size& s : sizes)
            check({ta, tb, s.m, s.n, s.k, 1.5F, 0, 0, 1, 2, 1, 0, 3});
    });
}

// The problem with every operand against a guarded page: in front of it and then behind it.
void check_at_pages(const GemmShape& p) {
    const GemmCase x(p);
    const GemmReference reference = x.reference();
    for (const bool atFront : {false, true}) {
        const PageMatrix a(x.a, atFront), b(x.b, atFront);
        PageMatrix c(x.before, atFront);
        for (const Subject& subject : subjects()) {
            c.set(x.before);
            x.run(subject.sgemm, a, b, c);
            const double error = reference.error(c);
            ASSERT_TRUE(error <= 1) << subject.name << ' ' << p << " error=" << error << " atFront=" << atFront;
        }
    }
}

TEST(GemmContract, NothingIsTouchedOutsideTheOperands) {
    each_transposition([](char ta, char tb) {
        const auto at = [&](int m, int n, int k) {
            check_at_pages({ta, tb, m, n, k, 2, betas[(m + n + k) % 3], k % 3, n % 3, m % 3});
        };
        for (const int m : {1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 15, 16, 18, 24, 31, 33, 35, 49, 83})
            for (const int n : {1, 2, 3, 5, 6, 8, 11, 15, 20, 41})
                for (const int k : {1, 2, 3, 4, 5, 8, 11, 18, 67})
                    if (m + n + k < 120)
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
        check_at_pages({ta, tb, 37, 25, 70, 2, 0.5F, 1024 - (is_transposed(ta) ? 70 : 37)});
    });
}

// ---- NaN and infinity ----------------------------------------------------------------------------------------------

// One element of A that is not finite reaches its row of C and no other element, one of B its column. Depths are odd,
// and edges in each direction; their last lanes hold nothing, or copies.
TEST(GemmContract, NonFiniteElementsReachWhatDependsOnThem) {
    const auto check_at = [](GemmCase& x, int hit, int l) {
        const GemmShape& p = x.p;
        const bool inA = hit < p.m;
        float& element = inA ? x.a_at(hit, l) : x.b_at(l, hit - p.m);
        const float kept = element;
        for (const float value : {nan, infinity}) {
            element = value;
            const auto good = [&](int i, int j, float c) {
                if ((inA ? i : j + p.m) != hit)
                    return std::isfinite(c);
                const float factor = inA ? x.b_at(l, j) : x.a_at(i, l);
                return std::isnan(value) ? std::isnan(c) : c == p.alpha * value * std::copysign(1.0F, factor);
            };
            for (const Subject& subject : subjects())
                EXPECT_EQ(x.result(subject.sgemm).count_bad(good), 0)
                    << subject.name << ' ' << p << ' ' << value << " hit=" << hit << " l=" << l;
        }
        element = kept;
    };
    each_transposition([&](char ta, char tb) {
        for (const Size& s : {Size{7, 5, 3}, {11, 7, 13}, {23, 19, 13}, {83, 59, 71}, {67, 3, 71}, {6, 67, 71}}) {
            GemmCase x({ta, tb, s.m, s.n, s.k, -2, 1, 1, 0, 3, 0, 1, 2});
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
                GemmCase x({ta, tb, m, n, 9, 1, 1, 1, 1, 1, 1, 1, 1});
                check_at(x, m - 1 - n % 2, 8);
                check_at(x, m + n - 1 - m % 2, 7);
            }
    });
}

// Nothing that a design adds to fill up its blocks meets an infinite alpha.
TEST(GemmContract, InfiniteAlphaGivesInfinity) {
    each_transposition([](char ta, char tb) {
        for (const Size& s : sizes) {
            GemmCase x({ta, tb, s.m, s.n, s.k, infinity, 1});
            x.a.fill(1);
            x.b.fill(1);
            for (const Subject& subject : subjects())
                EXPECT_EQ(x.result(subject.sgemm).count_bad([](int, int, float c) { return c == infinity; }), 0)
                    << subject.name << ' ' << x.p;
        }
    });
}

// A zero in one operand does not hide a NaN in the other: no product is left out.
TEST(GemmContract, ZeroTimesNanIsNan) {
    for (const Size& s : sizes)
        for (const bool inA : {false, true}) {
            GemmCase x({'N', 'N', s.m, s.n, s.k});
            (inA ? x.a : x.b).fill(0);
            (inA ? x.b : x.a).fill(nan);
            for (const Subject& subject : subjects())
                EXPECT_EQ(x.result(subject.sgemm).count_bad([](int, int, float c) { return std::isnan(c); }), 0)
                    << subject.name << ' ' << x.p;
        }
}

// What C holds stays in its element, scaled.
TEST(GemmContract, NanInCStaysInItsElement) {
    for (const Size& s : sizes)
        for (const float beta : {1.0F, 2.0F}) {
            GemmCase x({'N', 'T', s.m, s.n, s.k, 1, beta});
            x.before(0, 0) = infinity;
            x.before(s.m - 1, s.n / 2) = nan;
            const auto good = [&](int i, int j, float c) {
                if (i == s.m - 1 && j == s.n / 2)
                    return std::isnan(c);
                return i == 0 && j == 0 ? c == infinity : std::isfinite(c);
            };
            for (const Subject& subject : subjects())
                EXPECT_EQ(x.result(subject.sgemm).count_bad(good), 0) << subject.name << ' ' << x.p;
        }
}

// ---- Scaling -------------------------------------------------------------------------------------------------------

struct ScaleBuild {
    int cpuType;
    const char* name;
    decltype(&kernel::generic::blas_sgemm_scale_c) scale;
    VectorForm form = VectorForm::sse;
};

TEST(GemmScaleC, AnySizeAndAlignment) {
    using namespace kernel;
    std::mt19937 random(1);
    for (const ScaleBuild& build : runnable<ScaleBuild>({{0, "generic", generic::blas_sgemm_scale_c},
                                                         {2, "sse2", sse2::blas_sgemm_scale_c},
                                                         {3, "sse3", sse3::blas_sgemm_scale_c},
                                                         {4, "ssse3", ssse3::blas_sgemm_scale_c},
                                                         {5, "sse42", sse42::blas_sgemm_scale_c}}))
        for (int m = 0; m <= 35; ++m)
            for (const int n : {0, 1, 3, 4, 5, 9})
                for (int place = 0; place < 16; ++place)
                    for (const float beta : {0.0F, 1.0F, -2.5F}) {
                        GuardedMatrix before(m, n, m + place / 4 + (m == 0), place % 4);
                        before.fill_random(random);
                        if (beta == 0)
                            before.fill(nan);
                        const auto good = [&](int i, int j, float c) {
                            return c == (beta == 0 ? 0 : beta * before(i, j));
                        };
                        GuardedMatrix c = before;
                        const int ldc = c.ld();
                        build.scale(&m, &n, &beta, c.data(), &ldc);
                        EXPECT_TRUE(c.count_bad(good) == 0 && c.guards_intact())
                            << build.name << ' ' << m << " x " << n << " place=" << place << " beta=" << beta;
                        if (m == 0 || n == 0)
                            continue;
                        for (const bool atFront : {false, true})
                            if (place % 5 == 0) {
                                PageMatrix fenced(before, atFront);
                                build.scale(&m, &n, &beta, fenced.data(), &ldc);
                                EXPECT_EQ(fenced.count_bad(good), 0) << build.name << ' ' << m << " x " << n;
                            }
                    }
}

} // namespace
} // namespace qrv::test
