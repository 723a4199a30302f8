// GEMM for processors with SSE4.2: plan-driven, 4 x 4 tile, complex 4 x 2. Processors with wider vectors take a wider
// micro-kernel in the same plan.
#include "blas/kernel/common/gemm/gemm_plan_pieces.hpp"
#include "blas/kernel/sse42/wide.hpp"

namespace qrv::kernel::sse42 {
namespace {

template <class T>
constexpr GemmPlanRow<T> row = sgemm_row<sgemmBlocksSse42>(0);
template <>
constexpr GemmPlanRow<SingleComplex> row<SingleComplex> = cgemm_row<cgemmBlocksSse42>(0, complexSliverFactor);

// Which products a form computes without packing: up to how many multiply-adds (m*n*k). Beyond, packing costs
// less than operands that come from the outer caches again and again. A limit of 0: none.
struct DirectRange {
    double plain;                 // A as it lies
    double conflicting;           // the same where columns of A displace each other in the innermost cache
    double transposed;            // A transposed: its tiles are transposed on the way, again for each group of columns
    int fewRows = 0;              // a C this low uses an element of B so seldom that packing and expanding it cost most
    int fewRowsTransposed = 0;    // the same if A is transposed, where it is more
    double low = 0;               // limit for such a C
    double lowGathered = 0;       // the same if A is transposed or its columns displace each other
    double lowByRows = 0;         // the same if B is transposed and long walks along its rows thrash the address cache
    int fewColumns = 0;           // a C this narrow uses packed A too seldom, if A is not transposed
    double narrow = 0;            // limit for such a C
    int fewColumnsTransposed = 0; // the same if A is transposed: as many elements to bring together as to pack
    double narrowTransposed = 0;
};
template <class T>
constexpr DirectRange directRanges[] = {
    {.plain = 0x1p15,
     .conflicting = 0x1p15,
     .transposed = 22 * 22 * 22,
     .fewRows = 16,
     .low = 0x1p24,
     .lowGathered = 0x1p24,
     .lowByRows = 0x1p16,
     .fewColumns = 8,
     .narrow = 0x1p22},
    {.plain = 0x1p20,
     .conflicting = 0x1p20,
     .transposed = 0x1p20,
     .fewRows = 64,
     .low = 0x1p31,
     .lowGathered = 0x1p29,
     .lowByRows = 0x1p26,
     .fewColumns = 24,
     .narrow = 0x1p26,
     .fewColumnsTransposed = 32,
     .narrowTransposed = 0x1p29},
    {.plain = 0x1p26,
     .conflicting = 0x1p22,
     .transposed = 0x1p19,
     .fewRows = 32,
     .fewRowsTransposed = 64,
     .low = 0x1p27,
     .lowGathered = 0x1p27,
     .lowByRows = 0x1p26,
     .fewColumns = 32,
     .narrow = 0x1p26,
     .fewColumnsTransposed = 32,
     .narrowTransposed = 0x1p26},
};
template <>
constexpr DirectRange directRanges<SingleComplex>[] = {
    {.plain = 11 * 11 * 11, .conflicting = 11 * 11 * 11, .transposed = 7 * 7 * 7},
    {.plain = 0x1p20,
     .conflicting = 0x1p20,
     .transposed = 0x1p20,
     .fewRows = 32,
     .low = 0x1p31,
     .lowGathered = 0x1p26,
     .lowByRows = 0x1p26,
     .fewColumns = 16,
     .narrow = 0x1p22,
     .fewColumnsTransposed = 16,
     .narrowTransposed = 0x1p27},
    {.plain = 0x1p24,
     .conflicting = 0x1p21,
     .transposed = 0x1p22,
     .fewRows = 32,
     .low = 0x1p27,
     .lowGathered = 0x1p27,
     .lowByRows = 0x1p24,
     .fewColumns = 32,
     .narrow = 0x1p24,
     .fewColumnsTransposed = 32,
     .narrowTransposed = 0x1p27},
};

// Products so small that no form packs them. To ask for more takes a tenth of the time of the smallest.
template <class T>
constexpr double alwaysDirect = isComplex<T> ? 7 * 7 * 7 : 12 * 12 * 12;
template <class T>
constexpr bool all_ranges_have(double work) {
    for (const DirectRange& range : directRanges<T>)
        if (range.plain < work || range.conflicting < work || range.transposed < work)
            return false;
    return true;
}
static_assert(all_ranges_have<float>(alwaysDirect<float>));
static_assert(all_ranges_have<SingleComplex>(alwaysDirect<SingleComplex>));

// A product of few steps spends its time in C, which the packed path walks more gently once it leaves the caches.
constexpr int shallowDepth = 32;
constexpr double shallowArea[] = {0x1p19, 0x1p19, 0x1p20}; // by form
// So few steps wait in registers while C goes by (see gemm_shallow.hpp).
template <class T>
constexpr int stepsInRegisters[] = {0, 0, isComplex<T> || sizeof(void*) == 4 ? 0 : shallowSteps};

// Leading dimensions of A, in multiples of this many elements, that bring its columns into the same few places of the
// innermost cache, and from how many columns of C on that matters (see gemm_direct_tiles.hpp).
template <class T>
constexpr int conflictingColumns = 1024 / floatsIn<T> / floatsIn<T>;
constexpr int leastConflictingColumns = 24;

// Below these the packed path has no tile and falls back on 128 bits.
constexpr int leastRows = 4;
template <class T>
constexpr int leastColumns = isComplex<T> ? 8 : 4;
template <class T>
constexpr int leastSteps = isComplex<T> ? 2 : 4;
constexpr int mostDirectRows = 1 << 28; // which are counted in floats

template <class T>
bool goes_direct(VectorForm form, const GemmShape& p) {
    const DirectRange& range = directRanges<T>[static_cast<int>(form)];
    if (p.m <= mostDirectRows &&
        (p.k < leastSteps<T> || (form != VectorForm::sse && (p.m < leastRows || p.n < leastColumns<T>))))
        return true;
    const double area = static_cast<double>(p.m) * p.n;
    const int f = static_cast<int>(form);
    if (p.k < shallowDepth && p.k > stepsInRegisters<T>[f] && area > shallowArea[f])
        return false;
    const double work = area * p.k;
    if (work <= (p.transposedA   ? range.transposed
                 : p.conflicting ? range.conflicting
                                 : range.plain) ||
        (p.m <= (p.transposedA ? larger(range.fewRows, range.fewRowsTransposed) : range.fewRows) &&
         work <= (p.transposedB                    ? range.lowByRows
                  : p.transposedA || p.conflicting ? range.lowGathered
                                                   : range.low)))
        return true;
    return p.transposedA ? p.n <= range.fewColumnsTransposed && work <= range.narrowTransposed
                         : !p.conflicting && p.n <= range.fewColumns && work <= range.narrow;
}

// A few rows or columns of C that leave a tile half empty, computed one after the other as products of a matrix and a
// vector, which fill their vectors: that reads the matrix as often, so that it has to be worth a start. For so many
// rows or columns it is from so many results each and so many steps on, and up to so many.
struct FewVectors {
    int leastResults = 0, leastSteps = 0, mostSteps = 0;
};
constexpr int any = 0x7fffffff;
using FewVectorsOfForm = FewVectors[8][3]; // for 2, 3, 4, 5, 6, 7 to 8, 9 to 12 and more: up to three ranges
constexpr int group_of(int vectors) {
    return vectors <= 6 ? vectors - 2 : vectors <= 8 ? 5 : vectors <= 12 ? 6 : 7;
}
constexpr FewVectorsOfForm fewRows[2] = {
    // of 128 bits, by whether B is transposed
    {{{64, 4, any}, {16, 24, any}},
     {{64, 15, any}, {32, 32, any}},
     {{64, 24, any}, {32, 32, any}},
     {{32, 32, any}, {16, 256, any}},
     {{64, 64, any}}},
    {{{64, 4, any}, {16, 24, any}},
     {{64, 15, any}, {32, 32, any}, {16, 256, any}},
     {{64, 20, any}, {32, 32, any}, {16, 1024, any}},
     {{32, 32, any}},
     {{64, 256, any}},
     {{256, 256, any}},
     {{256, 256, any}}},
};
constexpr FewVectorsOfForm fewColumns[2][2] = {
    // by form, the widest has none, and by whether A is transposed
    {{{{256, 1, any}, {64, 12, any}},
      {{256, 1, any}, {64, 12, any}},
      {{256, 1, any}, {64, 12, any}},
      {{256, 1, any}, {64, 12, any}},
      {{256, 1, any}},
      {{256, 1, 3}, {256, 6, any}},
      {{256, 1, 3}, {256, 24, any}},
      {{256, 1, 3}}},
     {{{64, 4, 4}, {64, 12, any}},
      {{64, 4, 4}, {64, 16, any}},
      {{64, 16, any}, {16, 256, any}},
      {{64, 16, any}, {16, 256, any}},
      {{64, 256, any}},
      {{64, 256, any}},
      {{64, 256, any}}}},
    {{{{256, 1, 24}}, {{1000, 1, 4}}, {{1000, 1, 4}}}, {}},
};
// Of A transposed, whose columns of few elements follow each other without gaps, as SGEMV likes them.
constexpr FewVectorsOfForm fewColumnsOfShort[] = {
    {{{16, 2, 2}}, {{16, 2, 2}}, {{16, 2, 2}}, {{16, 2, 2}}, {{16, 2, 2}}, {{16, 2, 2}}, {{16, 2, 2}}, {{256, 2, 2}}},
    {{{64, 2, 8}}, {{64, 2, 4}}, {{64, 2, 4}}, {{256, 2, 4}}, {{256, 2, 3}}, {{256, 2, 3}}, {{256, 2, 2}}},
    {{{64, 2, 4}, {64, 8, 8}},
     {{64, 2, 4}, {64, 8, 8}},
     {{64, 2, 3}, {256, 4, 4}},
     {{256, 2, 4}},
     {{256, 2, 4}},
     {{256, 2, 3}, {1000, 4, 4}},
     {{256, 2, 2}}},
};

constexpr int shortSteps = 8;

QRV_INLINE bool are_few(const FewVectorsOfForm& form, int vectors, int results, int steps) {
    for (const FewVectors& few : form[group_of(vectors)])
        if (steps <= few.mostSteps && steps >= few.leastSteps && results >= few.leastResults)
            return true;
    return false;
}

// Whether a product goes as those of op(A) and a vector for each column of C, respectively of op(B)' and one for each
// row: these conjugate a matrix only on the way to its transpose.
template <class T>
bool goes_by_columns(VectorForm form, const GemmShape& p) {
    if constexpr (isComplex<T>)
        return p.n == 1 && !p.conjugatedB;
    if (p.n == 1)
        return true;
    const int f = static_cast<int>(form);
    return (form != VectorForm::avx512 && are_few(fewColumns[f][p.transposedA ? 1 : 0], p.n, p.m, p.k)) ||
           (p.shortColumns && (!p.transposedB || p.n <= 4) && are_few(fewColumnsOfShort[f], p.n, p.m, p.k));
}
template <class T>
bool goes_by_rows(VectorForm form, const GemmShape& p) {
    if constexpr (isComplex<T>)
        return p.m == 1 && !(p.conjugatedA || p.conjugatedB);
    return p.m == 1 || (form == VectorForm::sse && are_few(fewRows[p.transposedB ? 1 : 0], p.m, p.n, p.k));
}

} // namespace

template <class T>
GemmRoute gemm_route(VectorForm form, const GemmShape& p) {
    if (goes_by_columns<T>(form, p))
        return GemmRoute::columns;
    if (goes_by_rows<T>(form, p))
        return GemmRoute::rows;
    if (goes_direct<T>(form, p))
        return GemmRoute::direct;
    return form == VectorForm::avx512 ? GemmRoute::panels : GemmRoute::packed;
}
template GemmRoute gemm_route<float>(VectorForm, const GemmShape&);
template GemmRoute gemm_route<SingleComplex>(VectorForm, const GemmShape&);

template <class T>
DirectGemm<T>* direct_gemm(VectorForm form) {
#ifdef QRV_WIDE_KERNELS
    if (form == VectorForm::avx512)
        return sse42_avx512::direct;
    if (form == VectorForm::avx2)
        return sse42_avx2::direct;
#endif
    static_cast<void>(form);
    if constexpr (isComplex<T>)
        return blas_cgemm_small;
    else
        return blas_sgemm_small;
}
template DirectGemm<float>* direct_gemm<float>(VectorForm);
template DirectGemm<SingleComplex>* direct_gemm<SingleComplex>(VectorForm);

template <class T>
void multiply_by_panels(QRV_GEMM_PARAMETERS(T)) {
#ifdef QRV_WIDE_KERNELS
    if (sse42_avx512::panels(QRV_GEMM_ARGUMENTS))
        return;
#endif
    direct_gemm<T>(VectorForm::avx512)(QRV_GEMM_ARGUMENTS);
}
template void multiply_by_panels<float>(QRV_GEMM_PARAMETERS(float));
template void multiply_by_panels<SingleComplex>(QRV_GEMM_PARAMETERS(SingleComplex));

namespace {

// ---- Few rows or columns of C ---------------------------------------------------------------------------------------

template <class T>
using Gemv = void(QRV_GEMV_PARAMETERS(T));

template <class T>
Gemv<T>* gemv_of(VectorForm form) {
    const auto kernel = [](Gemv<float>* real, Gemv<SingleComplex>* complex) {
        if constexpr (isComplex<T>)
            return complex;
        else
            return real;
    };
#ifdef QRV_WIDE_KERNELS
    if (form == VectorForm::avx512)
        return kernel(sse42_avx512::blas_sgemv_kernel, sse42_avx512::blas_cgemv_kernel);
    if (form == VectorForm::avx2)
        return kernel(sse42_avx2::blas_sgemv_kernel, sse42_avx2::blas_cgemv_kernel);
#endif
    static_cast<void>(form);
    return kernel(blas_sgemv_kernel, blas_cgemv_kernel);
}

// op(A) times each column, or op(B)^T times what were rows. A vector of few steps is brought together first.
template <class T>
void multiply_vectors(bool byColumns, VectorForm form, QRV_GEMM_PARAMETERS(T)) {
    const std::ptrdiff_t rowOfA = transposes(*transa) ? *lda : 1, stepOfA = transposes(*transa) ? 1 : *lda;
    const std::ptrdiff_t columnOfB = transposes(*transb) ? 1 : *ldb, stepOfB = transposes(*transb) ? *ldb : 1;
    const auto multiply = [&](const char* trans, int results, const T* matrix, const int* ld, int vectors, const T* x,
                              std::ptrdiff_t nextX, int incx, std::ptrdiff_t nextY, int incy) {
        const bool transposed = transposes(*trans);
        const int rows = transposed ? *k : results, columns = transposed ? results : *k;
        T together[shortSteps];
        const bool apart = incx != 1 && *k <= shortSteps;
        const int step = apart ? 1 : incx;
        for (int i = 0; i < vectors; ++i) {
            const T* vector = x + i * nextX;
            for (int l = 0; apart && l < *k; ++l)
                together[l] = vector[std::ptrdiff_t{l} * incx];
            gemv_of<T>(form)(trans, &rows, &columns, alpha, matrix, ld, apart ? together : vector, &step, beta,
                             c + i * nextY, &incy);
        }
    };
    if (byColumns)
        multiply(transa, *m, a, lda, *n, b, columnOfB, static_cast<int>(stepOfB), *ldc, 1);
    else
        multiply(transposes(*transb) ? "N" : "T", *n, b, ldb, *m, a, rowOfA, static_cast<int>(stepOfA), 1, *ldc);
}

// Few columns leave each block of A to memory again before it has been used often: up to so many of C take blocks of so
// many rows, which the second level of the caches holds.
constexpr int narrowColumns = 64, narrowBlock = 640;

// The row's blocks, but of even depth: a last block of few steps would cost wide vectors a pass over C for little.
template <class T>
void set_even_blocks(const int* m, const int* n, const int* k, GemmPlan<T>* plan) {
    const bool decides = plan->kb == 0;
    if (plan->mb == 0 && *n <= narrowColumns)
        plan->mb = even_block(larger(*m, 1), narrowBlock, plan->mUnit);
    row<T>.setBlocks(m, n, k, plan);
    const BlockRule& rule = isComplex<T> ? cgemmBlocksSse42 : sgemmBlocksSse42;
    if (decides && *k > rule.kbFull)
        plan->kb = even_k_block(rule, *k, plan->kUnit);
}

template <class T>
void load_plan(VectorForm form, GemmPlan<T>* plan) {
    fill_plan(row<T>, plan);
#ifdef QRV_WIDE_KERNELS
    if (form == VectorForm::avx512)
        sse42_avx512::use_form(plan);
    else if (form == VectorForm::avx2)
        sse42_avx2::use_form(plan);
#endif
    if (form != VectorForm::sse)
        plan->setBlocks = set_even_blocks<T>;
}

} // namespace

void plan_load_for(VectorForm form, GemmPlan<float>* plan) {
    load_plan(form, plan);
}
void plan_load_for(VectorForm form, GemmPlan<SingleComplex>* plan) {
    load_plan(form, plan);
}

template <class T>
QRV_INLINE GemmShape shape_of(const char* transa, const char* transb, const int* m, const int* n, const int* k,
                              const int* lda) {
    const Op opA = op_of(*transa), opB = op_of(*transb);
    const bool conflicting = *lda % conflictingColumns<T> == 0 && !transposes(opA) && *n >= leastConflictingColumns;
    const bool shortColumns = *k <= shortSteps && *lda == *k && transposes(opA);
    return {transposes(opA), transposes(opB), conjugates(opA), conjugates(opB), conflicting, shortColumns, *m, *n, *k};
}

// So few products of real elements that to find the way to a tile takes longer.
template <class T>
constexpr int fewProducts = isComplex<T> ? 0 : 12;

template <class T>
QRV_INLINE void multiply_few(const GemmCall<T>& q) {
    const std::ptrdiff_t rowOfA = transposes(q.opA) ? q.a.ld : 1, stepOfA = transposes(q.opA) ? 1 : q.a.ld;
    const std::ptrdiff_t stepOfB = transposes(q.opB) ? q.b.ld : 1, columnOfB = transposes(q.opB) ? 1 : q.b.ld;
    for (int j = 0; j < q.n; ++j)
        for (int i = 0; i < q.m; ++i) {
            const T *a = q.a.data + i * rowOfA, *b = q.b.data + j * columnOfB;
            T sum = scalar<T>(0);
            for (int l = 0; l < q.k; ++l, a += stepOfA, b += stepOfB)
                sum = sum + *a * *b;
            T& c = q.c(i, j);
            c = q.beta == scalar<T>(0) ? q.alpha * sum : q.alpha * sum + q.beta * c;
        }
}

// A single step is a vector of each operand. Where its elements are neighbours, it is a column of A, respectively a row
// of B, whatever the option says.
template <class T>
QRV_INLINE void lay_straight(const char*& transa, const int*& lda, const int* m, const char*& transb, const int*& ldb,
                             const int* n) {
    if (*lda == 1 && transposes(*transa) && !conjugates(op_of(*transa)))
        transa = "N", lda = m;
    if (*ldb == 1 && !transposes(*transb))
        transb = "T", ldb = n;
}

#define QRV_DEFINE_GEMM(T, gemm)                                                                                       \
    void blas_##gemm##_plan_load(GemmPlan<T>* plan) {                                                                  \
        plan_load_for(vector_form(), plan);                                                                            \
    }                                                                                                                  \
    void blas_##gemm##_kernel(QRV_GEMM_PARAMETERS(T)) {                                                                \
        if (*m <= 0 || *n <= 0)                                                                                        \
            return;                                                                                                    \
        if (*k <= 0 || *alpha == scalar<T>(0))                                                                         \
            return blas_##gemm##_scale_c(m, n, beta, c, ldc);                                                          \
        const double work = static_cast<double>(*m) * *n * *k;                                                         \
        if (work <= fewProducts<T>)                                                                                    \
            return multiply_few(gemm_call<T>(QRV_GEMM_ARGUMENTS));                                                     \
        if (*k == 1)                                                                                                   \
            lay_straight<T>(transa, lda, m, transb, ldb, n);                                                           \
        const VectorForm form = vector_form();                                                                         \
        if (*m > 1 && *n > 1 && work <= alwaysDirect<T>)                                                               \
            return direct_gemm<T>(form)(QRV_GEMM_ARGUMENTS);                                                           \
        switch (gemm_route<T>(form, shape_of<T>(transa, transb, m, n, k, lda))) {                                      \
        case GemmRoute::direct:                                                                                        \
            return direct_gemm<T>(form)(QRV_GEMM_ARGUMENTS);                                                           \
        case GemmRoute::columns:                                                                                       \
            return multiply_vectors<T>(true, form, QRV_GEMM_ARGUMENTS);                                                \
        case GemmRoute::rows:                                                                                          \
            return multiply_vectors<T>(false, form, QRV_GEMM_ARGUMENTS);                                               \
        case GemmRoute::panels:                                                                                        \
            return multiply_by_panels<T>(QRV_GEMM_ARGUMENTS);                                                          \
        case GemmRoute::packed:                                                                                        \
            return blas_##gemm##_by_plan(QRV_GEMM_ARGUMENTS);                                                          \
        }                                                                                                              \
    }
QRV_DEFINE_GEMM(float, sgemm)
QRV_DEFINE_GEMM(SingleComplex, cgemm)
#undef QRV_DEFINE_GEMM

} // namespace qrv::kernel::sse42
