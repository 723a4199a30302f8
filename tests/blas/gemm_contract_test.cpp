// What every serial GEMM must hold to, whatever its design: the product on each side of every block edge, any
// alignment and leading dimension, what may be read and written, and where NaN and infinity go.
#include "support/gemm.hpp"
#include "support/work_memory.hpp"

namespace qrv::test {
namespace {

// For every subject.
template <class T>
void check(const GemmCase<T>& problem) {
    for (const Subject<T>& subject : subjects<T>())
        problem.check([&](const Call<T>& v) { call_gemm(subject.gemm, v); }, subject.name);
}

// One of `every` pairs of options. Scalars, leading dimensions, starts and guards change all the time; columns are at
// least `extra` further apart.
template <class T>
void check_some(unsigned every, int m, int n, int k, bool isLarge = false, int extra = 0) {
    static Turns turns;
    for (Shape p : every_option<T>({What::product})) {
        if (!turns.one_in(every * (isComplex<T> ? 2 : 1)))
            continue;
        p.m = m, p.n = n, p.k = k;
        p = turns.vary(p, isLarge);
        p.a.extra += extra;
        p.c.extra += extra;
        check(GemmCase<T>(p));
    }
}

// ---- Products ------------------------------------------------------------------------------------------------------

TEST_OF_ELEMENTS(GemmContract, SmallShapes) {
    for (int m = -1; m <= 9; ++m)
        for (int n = -1; n <= 9; ++n)
            for (int k = 0; k <= 9; ++k)
                check_some<T>(3, m, n, k);
}

// Every remainder of rows and columns against the largest tile of any design, at depths that are no multiple of much.
TEST_OF_ELEMENTS(GemmContract, EveryRemainder) {
    for (int m = 4; m <= 50; ++m)
        for (int n = 1; n <= 22; ++n)
            check_some<T>(4, m, n, 4 + (m + n) % 15);
    for (const int m : {16, 24, 35, 83})
        for (const int n : {80, 81, 82, 83})
            for (const int k : {64, 80, 101})
                check_some<T>(4, m, n, k);
}

// Tiles, passes and blocks, one direction at a time; the others are large enough for each design to pack, and then
// small ones.
TEST_OF_ELEMENTS(GemmContract, BlockEdges) {
    const int edges[] = {10,  12,  15,  16,  17,  23,  24,  25,  31,  32,  33,  47,  48,  49,  57,  58,
                         59,  63,  64,  65,  72,  79,  80,  81,  95,  96,  97,  112, 127, 128, 129, 149,
                         150, 151, 152, 153, 191, 192, 193, 239, 240, 241, 254, 255, 256, 257, 258, 287,
                         288, 289, 300, 384, 385, 479, 480, 481, 510, 511, 512, 513, 514, 520, 546};
    for (const int edge : edges)
        for (const auto& [m, n, k] : {GemmSizes{edge, 21, 27},
                                      {edge, 61, 83},
                                      {22, edge, 19},
                                      {25, edge, 133},
                                      {14, 15, edge},
                                      {49, 13, edge},
                                      {29, 71, edge}})
            check_some<T>(4, m, n, k, true);
    for (const int edge : {31, 32, 33, 63, 64, 65, 129, 151})
        for (const int depth : {edge, 257})
            check_some<T>(3, edge, edge + 1, depth, true);
    for (const int around : {-1, 0, 1}) {
        for (const int mb : {768, 896, 1024, 1280, 2000})
            check_some<T>(3, mb + around, 9, 17, true);
        check_some<T>(2, 11, 5000 + around, 10, true);
    }
}

// Few rows or columns and many of the others, and steps from one to many.
TEST_OF_ELEMENTS(GemmContract, NarrowShapes) {
    for (const int few : {1, 2, 3, 4, 5, 7, 8, 9, 18})
        for (const int other : {1, 6, 64, 67, 517})
            for (const int k : {1, 2, 5, 15, 16, 17, 31, 32, 33, 63, 64, 65, 79, 130, 385, 780}) {
                check_some<T>(5, few, other, k);
                check_some<T>(5, other, few, k);
            }
}

// Columns a page apart.
TEST_OF_ELEMENTS(GemmContract, ColumnsThatDisplaceEachOther) {
    for (const int m : {16, 37, 100})
        for (const int n : {23, 24, 30})
            for (const int k : {5, 63, 64, 200})
                for (const int extra : {1024 - m, 1024 - k, 1024})
                    check_some<T>(5, m, n, k, true, extra);
}

// Work memory that is refused, and what it holds before.
TEST_OF_ELEMENTS(GemmContract, WorkMemory) {
    for (const std::size_t refused : {std::size_t{0}, anySize})
        for (const int k : {31, 60, 63, 70, 150}) {
            const WorkMemoryProbe probe(0, refused);
            check_some<T>(2, 43, 57, k);
            check_some<T>(2, 33, 29, k);
            check_some<T>(8, 520, 245, k / 4); // whole panels
        }
}

// ---- NaN and infinity ----------------------------------------------------------------------------------------------

// Unpacked, edges only, blocked, and several blocks deep.
constexpr GemmSizes sizes[] = {{1, 1, 1},    {3, 2, 5},    {5, 9, 3},     {8, 8, 8},     {7, 5, 3},
                               {22, 17, 13}, {41, 50, 70}, {70, 66, 130}, {20, 12, 300}, {83, 59, 71}};

// Nothing that a design adds to fill up its blocks meets an infinite alpha, no product is left out because an element
// of it is 0, and what C holds stays in its element.
TEST_OF_ELEMENTS(GemmContract, NothingHidesWhatIsNotFinite) {
    for (const GemmSizes& s : sizes)
        for (const float beta : {1.0F, 2.0F})
            for (const char option : {'N', 'T'}) {
                const Shape p{.trans = option, .transb = 'T', .m = s.m, .n = s.n, .k = s.k, .beta = beta};
                GemmCase<T> zeroTimesNan(p), nanTimesZero(p), inC(p), infiniteAlpha(p);
                zeroTimesNan.a.fill(0);
                zeroTimesNan.b.fill(nan);
                nanTimesZero.a.fill(nan);
                nanTimesZero.b.fill(0);
                inC.before(0, 0) = all_parts<T>(infinity);
                inC.before(s.m - 1, s.n / 2) = all_parts<T>(nan);
                infiniteAlpha.alpha = scalar<T>(infinity);
                infiniteAlpha.a.fill(1);
                infiniteAlpha.b.fill(1);
                for (const auto* problem : {&zeroTimesNan, &nanTimesZero, &inC})
                    check(*problem);
                if (!isComplex<T>) // a complex one gives NaN by itself
                    check(infiniteAlpha);
            }
}

// One element of A that is not finite reaches its row of C and no other element, one of B its column. Depths are odd,
// and edges in each direction; their last lanes hold nothing, or copies.
TEST_OF_ELEMENTS(GemmContract, NonFiniteElementsReachWhatDependsOnThem) {
    Turns turns;
    const auto check_at = [&](int m, int n, int k, int hit, int l) {
        const std::vector<Shape> options = every_option<T>({What::product});
        Shape p = options[static_cast<std::size_t>(hit + l) % options.size()];
        p.m = m, p.n = n, p.k = k, p.alpha = -2;
        p.a = turns.layout(), p.b = turns.layout();
        GemmCase<T> x(p);
        T& element = hit < m ? (is_transposed(p.trans) ? x.a(l, hit) : x.a(hit, l))
                             : (is_transposed(p.transb) ? x.b(hit - m, l) : x.b(l, hit - m));
        element = all_parts<T>(turns.pick({nan, infinity}));
        check(x);
    };
    for (const GemmSizes& s : {GemmSizes{7, 5, 3}, {11, 7, 13}, {23, 19, 13}, {83, 59, 71}, {67, 3, 71}, {6, 67, 71}}) {
        const int step = s.m + s.n > 50 ? 3 : 1;
        for (int hit = 0; hit < s.m + s.n; hit += step)
            check_at(s.m, s.n, s.k, hit, (hit * 5 + 3) % s.k);
        for (int l = 0; l < s.k; l += step)
            check_at(s.m, s.n, s.k, l * 3 % (s.m + s.n), l);
        for (const int last : {s.m - 1, s.m + s.n - 1})
            check_at(s.m, s.n, s.k, last, s.k - 1);
    }
    for (const int m : {13, 17, 29, 30, 31, 32, 33, 47, 49})
        for (const int n : {3, 6, 11, 14, 15, 16, 17, 18}) {
            check_at(m, n, 9, m - 1 - n % 2, 8);
            check_at(m, n, 9, m + n - 1 - m % 2, 7);
        }
}

} // namespace
} // namespace qrv::test
