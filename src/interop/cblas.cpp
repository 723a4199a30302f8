// The C interface of BLAS over the upper-case entries: the routines of levels 1 to 3 in single precision, row-major and
// column-major.
//
// A row-major matrix is the column-major storage of its transpose, so a row-major call becomes another column-major
// one: `uplo` is turned, and of a matrix product the transpose is computed. Where a routine would need the conjugate of
// a matrix as it lies, the vectors are conjugated instead: conj(A)*x is the conjugate of A*conj(x).
//
// An option that is none reaches the entry as an empty one and is reported with the position it has there.
#include <cstddef>
#include <cstdlib>
#include <utility>

#include "blas/complex.hpp"
#include "qrv/native.h"

extern "C" void cblas_xerbla(int position, const char* name, const char* form, ...);

namespace qrv {
namespace {

constexpr int rowMajor = 101, columnMajor = 102; // the values of the published header, as all below

constexpr char trans_of(int option) {
    return option == 111 ? 'N' : option == 112 ? 'T' : option == 113 ? 'C' : '\0';
}
constexpr char uplo_of(int option) {
    return option == 121 ? 'U' : option == 122 ? 'L' : '\0';
}
constexpr char diag_of(int option) {
    return option == 131 ? 'N' : option == 132 ? 'U' : '\0';
}
constexpr char side_of(int option) {
    return option == 141 ? 'L' : option == 142 ? 'R' : '\0';
}

// The option that says the same of a transpose.
constexpr char turned(char option) {
    switch (option) {
    case 'U':
        return 'L';
    case 'L': // of uplo; a side is turned by turned_side
        return 'U';
    case 'N':
        return 'T';
    case 'T':
    case 'C':
        return 'N';
    default:
        return option;
    }
}
constexpr char turned_side(char side) {
    return side == 'L' ? 'R' : side == 'R' ? 'L' : side;
}

void report(const char* name, int info) {
    cblas_xerbla(info, name, "");
}

// How a call sees its matrices; a layout that is none is reported.
struct Layout {
    bool valid, byRows;
    Layout(const char* name, int layout)
        : valid(layout == rowMajor || layout == columnMajor), byRows(layout == rowMajor) {
        if (!valid)
            report(name, 1);
    }
};

// Real scalars come by value, complex ones by address.
template <class T>
struct ScalarOf {
    using Type = float;
};
template <>
struct ScalarOf<SingleComplex> {
    using Type = const SingleComplex*;
};
template <class T>
using Scalar = typename ScalarOf<T>::Type;
const float* address(const float& x) {
    return &x;
}
const SingleComplex* address(const SingleComplex* const& x) {
    return x;
}

void conjugate(int n, SingleComplex* x, int incx) {
    const std::ptrdiff_t step = incx < 0 ? -std::ptrdiff_t{incx} : incx;
    for (int i = 0; i < n; ++i)
        x[i * step] = conj(x[i * step]);
}

// The conjugate of a vector: increment 1, in the order of its elements. Without memory it is null and has reported.
class Conjugate {
public:
    Conjugate(const char* name, int n, const SingleComplex* x, int incx) {
        const std::size_t count = n < 1 ? 1 : static_cast<std::size_t>(n);
        data_ = static_cast<SingleComplex*>(std::malloc(sizeof(SingleComplex) * count));
        if (!data_) {
            report(name, noMemory);
            return;
        }
        const SingleComplex* const first = incx < 0 ? x - std::ptrdiff_t{n - 1} * incx : x;
        for (int i = 0; i < n; ++i)
            data_[i] = conj(first[std::ptrdiff_t{i} * incx]);
    }
    ~Conjugate() { std::free(data_); }
    Conjugate(const Conjugate&) = delete;
    const SingleComplex* data() const { return data_; }

private:
    static constexpr int noMemory = 1000; // the value that stands for this report
    SingleComplex* data_;
};

// ---- Level 2 ------------------------------------------------------------------------------------------------------

// y := alpha*conj(A)*x + beta*y by `multiply(alpha, x, incx, beta)`, which multiplies with A.
template <class Multiply>
void by_conjugates(const char* name, int rows, int columns, SingleComplex alpha, const SingleComplex* x, int incx,
                   SingleComplex beta, SingleComplex* y, int incy, const Multiply& multiply) {
    const Conjugate z(name, incx == 0 ? 0 : columns, x, incx);
    if (!z.data())
        return;
    const SingleComplex a = conj(alpha), b = conj(beta);
    const int step = incx == 0 ? 0 : 1; // an increment 0 is left to be reported
    conjugate(rows, y, incy);
    multiply(&a, z.data(), &step, &b);
    conjugate(rows, y, incy);
}

// Products with a matrix or a band: entry(byRows, trans, m, n, alpha, x, incx, beta) has the matrix, and adds to y.
template <class T, class Entry>
void gemv(const Entry& entry, const char* name, int order, int transa, int m, int n, Scalar<T> alpha, const T* x,
          int incx, Scalar<T> beta, T* y, int incy) {
    const Layout layout(name, order);
    if (!layout.valid)
        return;
    char trans = trans_of(transa);
    if (layout.byRows) {
        std::swap(m, n);
        const bool conjugated = trans == 'C';
        trans = turned(trans);
        if constexpr (isComplex<T>)
            if (conjugated)
                return by_conjugates(name, m, n, *alpha, x, incx, *beta, y, incy,
                                     [&](const T* p, const T* z, const int* incz, const T* q) {
                                         entry(true, &trans, &m, &n, p, z, incz, q);
                                     });
    }
    entry(layout.byRows, &trans, &m, &n, address(alpha), x, &incx, address(beta));
}

// Symmetric and Hermitian products: entry(uplo, alpha, x, incx, beta) has the matrix, and adds to y.
template <class T, class Entry>
void symv(const Entry& entry, const char* name, int order, int uploOption, int n, Scalar<T> alpha, const T* x, int incx,
          Scalar<T> beta, T* y, int incy) {
    const Layout layout(name, order);
    if (!layout.valid)
        return;
    char uplo = uplo_of(uploOption);
    if (layout.byRows) {
        uplo = turned(uplo);
        if constexpr (isComplex<T>)
            return by_conjugates(
                name, n, n, *alpha, x, incx, *beta, y, incy,
                [&](const T* p, const T* z, const int* incz, const T* q) { entry(&uplo, p, z, incz, q); });
    }
    entry(&uplo, address(alpha), x, &incx, address(beta));
}

// Products and solves, dense, banded or packed: `rest` is the count of diagonals if there is one, A, and its leading
// dimension if it has one.
template <class T, class Entry, class... Rest>
void trmv(Entry* entry, const char* name, int order, int uploOption, int transa, int diagOption, int n, T* x, int incx,
          const Rest*... rest) {
    const Layout layout(name, order);
    if (!layout.valid)
        return;
    char uplo = uplo_of(uploOption), trans = trans_of(transa);
    const char diag = diag_of(diagOption);
    const bool conjugated = layout.byRows && isComplex<T> && trans == 'C';
    if (layout.byRows) {
        uplo = turned(uplo);
        trans = turned(trans);
    }
    if constexpr (isComplex<T>)
        if (conjugated)
            conjugate(n, x, incx);
    entry(&uplo, &trans, &diag, &n, rest..., x, &incx);
    if constexpr (isComplex<T>)
        if (conjugated)
            conjugate(n, x, incx);
}

// A := alpha*x*y' + A
template <class T, class Entry>
void ger(Entry* entry, const char* name, int order, int m, int n, Scalar<T> alpha, const T* x, int incx, const T* y,
         int incy, T* a, int lda) {
    const Layout layout(name, order);
    if (!layout.valid)
        return;
    if (layout.byRows)
        entry(&n, &m, address(alpha), y, &incy, x, &incx, a, &lda);
    else
        entry(&m, &n, address(alpha), x, &incx, y, &incy, a, &lda);
}

// The same with the conjugate transpose of y: by rows conj(y)*x' is added.
void gerc(const char* name, int order, int m, int n, const SingleComplex* alpha, const SingleComplex* x, int incx,
          const SingleComplex* y, int incy, SingleComplex* a, int lda) {
    const Layout layout(name, order);
    if (!layout.valid)
        return;
    if (!layout.byRows) {
        CGERC(&m, &n, alpha, x, &incx, y, &incy, a, &lda);
        return;
    }
    const Conjugate z(name, incy == 0 ? 0 : n, y, incy);
    const int step = incy == 0 ? 0 : 1;
    if (z.data())
        CGERU(&n, &m, alpha, z.data(), &step, x, &incx, a, &lda);
}

// Symmetric and Hermitian updates: entry(uplo, x, incx) and entry(uplo, x, incx, y, incy) have the rest. By rows the
// conjugates of complex x and y take part, and change places.
template <class T, class Entry>
void syr(const Entry& entry, const char* name, int order, int uploOption, [[maybe_unused]] int n, const T* x,
         int incx) {
    const Layout layout(name, order);
    if (!layout.valid)
        return;
    const char uplo = layout.byRows ? turned(uplo_of(uploOption)) : uplo_of(uploOption);
    if constexpr (isComplex<T>)
        if (layout.byRows) {
            const Conjugate z(name, incx == 0 ? 0 : n, x, incx);
            const int step = incx == 0 ? 0 : 1;
            if (z.data())
                entry(&uplo, z.data(), &step);
            return;
        }
    entry(&uplo, x, &incx);
}
template <class T, class Entry>
void syr2(const Entry& entry, const char* name, int order, int uploOption, [[maybe_unused]] int n, const T* x, int incx,
          const T* y, int incy) {
    const Layout layout(name, order);
    if (!layout.valid)
        return;
    const char uplo = layout.byRows ? turned(uplo_of(uploOption)) : uplo_of(uploOption);
    if constexpr (isComplex<T>)
        if (layout.byRows) {
            const Conjugate z(name, incx == 0 ? 0 : n, x, incx), w(name, incy == 0 ? 0 : n, y, incy);
            const int stepX = incx == 0 ? 0 : 1, stepY = incy == 0 ? 0 : 1;
            if (z.data() && w.data())
                entry(&uplo, w.data(), &stepY, z.data(), &stepX);
            return;
        }
    entry(&uplo, x, &incx, y, &incy);
}

// ---- Level 3 ------------------------------------------------------------------------------------------------------

template <class T, class Entry>
void gemm(Entry* entry, const char* name, int order, int transa, int transb, int m, int n, int k, Scalar<T> alpha,
          const T* a, int lda, const T* b, int ldb, Scalar<T> beta, T* c, int ldc) {
    const Layout layout(name, order);
    if (!layout.valid)
        return;
    const char opA = trans_of(transa), opB = trans_of(transb);
    if (layout.byRows)
        entry(&opB, &opA, &n, &m, &k, address(alpha), b, &ldb, a, &lda, address(beta), c, &ldc);
    else
        entry(&opA, &opB, &m, &n, &k, address(alpha), a, &lda, b, &ldb, address(beta), c, &ldc);
}

// Hermitian ones too: the transpose of a Hermitian matrix is one.
template <class T, class Entry>
void symm(Entry* entry, const char* name, int order, int sideOption, int uploOption, int m, int n, Scalar<T> alpha,
          const T* a, int lda, const T* b, int ldb, Scalar<T> beta, T* c, int ldc) {
    const Layout layout(name, order);
    if (!layout.valid)
        return;
    char side = side_of(sideOption), uplo = uplo_of(uploOption);
    if (layout.byRows) {
        side = turned_side(side);
        uplo = turned(uplo);
        std::swap(m, n);
    }
    entry(&side, &uplo, &m, &n, address(alpha), a, &lda, b, &ldb, address(beta), c, &ldc);
}

template <class T, class Entry>
void trmm(Entry* entry, const char* name, int order, int sideOption, int uploOption, int transa, int diagOption, int m,
          int n, Scalar<T> alpha, const T* a, int lda, T* b, int ldb) {
    const Layout layout(name, order);
    if (!layout.valid)
        return;
    char side = side_of(sideOption), uplo = uplo_of(uploOption);
    const char trans = trans_of(transa), diag = diag_of(diagOption);
    if (layout.byRows) {
        side = turned_side(side);
        uplo = turned(uplo);
        std::swap(m, n);
    }
    entry(&side, &uplo, &trans, &diag, &m, &n, address(alpha), a, &lda, b, &ldb);
}

// Which option computes A*A' of a matrix stored by rows: the other one, `transposed` where it was 'N'. What the entry
// does not know stays, for it to report.
template <class T>
constexpr char turned_rank_k(char trans, char transposed) {
    const bool known = trans == transposed || (!isComplex<T> && trans == 'C');
    return trans == 'N' ? transposed : known ? 'N' : trans;
}

// S is the type of alpha and beta, real for Hermitian matrices.
template <class T, class S, class Entry>
void syrk(Entry* entry, char transposed, const char* name, int order, int uploOption, int transOption, int n, int k,
          Scalar<S> alpha, const T* a, int lda, Scalar<S> beta, T* c, int ldc) {
    const Layout layout(name, order);
    if (!layout.valid)
        return;
    char uplo = uplo_of(uploOption), trans = trans_of(transOption);
    if (layout.byRows) {
        uplo = turned(uplo);
        trans = turned_rank_k<T>(trans, transposed);
    }
    entry(&uplo, &trans, &n, &k, address(alpha), a, &lda, address(beta), c, &ldc);
}

template <class T, class S, class Entry>
void syr2k(Entry* entry, char transposed, const char* name, int order, int uploOption, int transOption, int n, int k,
           Scalar<T> alpha, const T* a, int lda, const T* b, int ldb, Scalar<S> beta, T* c, int ldc) {
    const Layout layout(name, order);
    if (!layout.valid)
        return;
    char uplo = uplo_of(uploOption), trans = trans_of(transOption);
    if (layout.byRows) {
        uplo = turned(uplo);
        trans = turned_rank_k<T>(trans, transposed);
        if constexpr (isComplex<T>)
            if (transposed == 'C') {
                const T conjugated = conj(*alpha); // the two products change places
                entry(&uplo, &trans, &n, &k, &conjugated, a, &lda, b, &ldb, address(beta), c, &ldc);
                return;
            }
    }
    entry(&uplo, &trans, &n, &k, address(alpha), a, &lda, b, &ldb, address(beta), c, &ldc);
}

} // namespace
} // namespace qrv

// ---- The names ----------------------------------------------------------------------------------------------------

using namespace qrv;

#define QRV_CBLAS extern "C" [[gnu::visibility("default")]]

// Level 1: scalars by value, indices from 0, complex results at an address.
#define QRV_CBLAS_LEVEL1(T, s, S, norm, NORM, iamax, IAMAX)                                                            \
    QRV_CBLAS void cblas_##s##axpy(int n, Scalar<T> alpha, const T* x, int incx, T* y, int incy) {                     \
        S##AXPY(&n, address(alpha), x, &incx, y, &incy);                                                               \
    }                                                                                                                  \
    QRV_CBLAS void cblas_##s##copy(int n, const T* x, int incx, T* y, int incy) {                                      \
        S##COPY(&n, x, &incx, y, &incy);                                                                               \
    }                                                                                                                  \
    QRV_CBLAS void cblas_##s##swap(int n, T* x, int incx, T* y, int incy) {                                            \
        S##SWAP(&n, x, &incx, y, &incy);                                                                               \
    }                                                                                                                  \
    QRV_CBLAS void cblas_##s##scal(int n, Scalar<T> alpha, T* x, int incx) {                                           \
        S##SCAL(&n, address(alpha), x, &incx);                                                                         \
    }                                                                                                                  \
    QRV_CBLAS float cblas_##norm##nrm2(int n, const T* x, int incx) {                                                  \
        return NORM##NRM2(&n, x, &incx);                                                                               \
    }                                                                                                                  \
    QRV_CBLAS float cblas_##norm##asum(int n, const T* x, int incx) {                                                  \
        return NORM##ASUM(&n, x, &incx);                                                                               \
    }                                                                                                                  \
    QRV_CBLAS std::size_t cblas_##iamax(int n, const T* x, int incx) {                                                 \
        const int position = IAMAX(&n, x, &incx);                                                                      \
        return position > 0 ? static_cast<std::size_t>(position - 1) : 0;                                              \
    }
QRV_CBLAS_LEVEL1(float, s, S, s, S, isamax, ISAMAX)
QRV_CBLAS_LEVEL1(SingleComplex, c, C, sc, SC, icamax, ICAMAX)
QRV_CBLAS void cblas_csscal(int n, float alpha, SingleComplex* x, int incx) {
    CSSCAL(&n, &alpha, x, &incx);
}
QRV_CBLAS float cblas_sdot(int n, const float* x, int incx, const float* y, int incy) {
    return SDOT(&n, x, &incx, y, &incy);
}
QRV_CBLAS float cblas_sdsdot(int n, float sb, const float* x, int incx, const float* y, int incy) {
    return SDSDOT(&n, &sb, x, &incx, y, &incy);
}
QRV_CBLAS double cblas_dsdot(int n, const float* x, int incx, const float* y, int incy) {
    return DSDOT(&n, x, &incx, y, &incy);
}
QRV_CBLAS float cblas_scabs1(const SingleComplex* z) {
    return SCABS1(z);
}
QRV_CBLAS void cblas_cdotu_sub(int n, const SingleComplex* x, int incx, const SingleComplex* y, int incy,
                               SingleComplex* result) {
    CDOTU(result, &n, x, &incx, y, &incy);
}
QRV_CBLAS void cblas_cdotc_sub(int n, const SingleComplex* x, int incx, const SingleComplex* y, int incy,
                               SingleComplex* result) {
    CDOTC(result, &n, x, &incx, y, &incy);
}
QRV_CBLAS void cblas_srot(int n, float* x, int incx, float* y, int incy, float c, float s) {
    SROT(&n, x, &incx, y, &incy, &c, &s);
}
QRV_CBLAS void cblas_csrot(int n, SingleComplex* x, int incx, SingleComplex* y, int incy, float c, float s) {
    CSROT(&n, x, &incx, y, &incy, &c, &s);
}
QRV_CBLAS void cblas_crotg(SingleComplex* a, const SingleComplex* b, float* c, SingleComplex* s) {
    CROTG(a, b, c, s);
}
QRV_CBLAS void cblas_srotg(float* a, float* b, float* c, float* s) {
    SROTG(a, b, c, s);
}
QRV_CBLAS void cblas_srotm(int n, float* x, int incx, float* y, int incy, const float* param) {
    SROTM(&n, x, &incx, y, &incy, param);
}
QRV_CBLAS void cblas_srotmg(float* d1, float* d2, float* x1, float y1, float* param) {
    SROTMG(d1, d2, x1, &y1, param);
}

// Levels 2 and 3: a routine hands its arguments over as they are, with its entry and its name.
#define QRV_CBLAS_GEMV(T, name, ENTRY)                                                                                 \
    QRV_CBLAS void cblas_##name(int order, int trans, int m, int n, Scalar<T> alpha, const T* a, int lda, const T* x,  \
                                int incx, Scalar<T> beta, T* y, int incy) {                                            \
        gemv<T>([&](bool, const char* t, const int* rows, const int* columns, const T* p, const T* z, const int* incz, \
                    const T* q) { ENTRY(t, rows, columns, p, a, &lda, z, incz, q, y, &incy); },                        \
                "cblas_" #name, order, trans, m, n, alpha, x, incx, beta, y, incy);                                    \
    }
#define QRV_CBLAS_SYMV(T, name, ENTRY)                                                                                 \
    QRV_CBLAS void cblas_##name(int order, int uplo, int n, Scalar<T> alpha, const T* a, int lda, const T* x,          \
                                int incx, Scalar<T> beta, T* y, int incy) {                                            \
        symv<T>([&](const char* u, const T* p, const T* z, const int* incz,                                            \
                    const T* q) { ENTRY(u, &n, p, a, &lda, z, incz, q, y, &incy); },                                   \
                "cblas_" #name, order, uplo, n, alpha, x, incx, beta, y, incy);                                        \
    }
#define QRV_CBLAS_SBMV(T, name, ENTRY)                                                                                 \
    QRV_CBLAS void cblas_##name(int order, int uplo, int n, int k, Scalar<T> alpha, const T* a, int lda, const T* x,   \
                                int incx, Scalar<T> beta, T* y, int incy) {                                            \
        symv<T>([&](const char* u, const T* p, const T* z, const int* incz,                                            \
                    const T* q) { ENTRY(u, &n, &k, p, a, &lda, z, incz, q, y, &incy); },                               \
                "cblas_" #name, order, uplo, n, alpha, x, incx, beta, y, incy);                                        \
    }
#define QRV_CBLAS_SPMV(T, name, ENTRY)                                                                                 \
    QRV_CBLAS void cblas_##name(int order, int uplo, int n, Scalar<T> alpha, const T* ap, const T* x, int incx,        \
                                Scalar<T> beta, T* y, int incy) {                                                      \
        symv<T>([&](const char* u, const T* p, const T* z, const int* incz,                                            \
                    const T* q) { ENTRY(u, &n, p, ap, z, incz, q, y, &incy); },                                        \
                "cblas_" #name, order, uplo, n, alpha, x, incx, beta, y, incy);                                        \
    }
#define QRV_CBLAS_SYR(T, name, ENTRY)                                                                                  \
    QRV_CBLAS void cblas_##name(int order, int uplo, int n, float alpha, const T* x, int incx, T* a, int lda) {        \
        syr([&](const char* u, const T* z, const int* incz) { ENTRY(u, &n, &alpha, z, incz, a, &lda); },               \
            "cblas_" #name, order, uplo, n, x, incx);                                                                  \
    }
#define QRV_CBLAS_SPR(T, name, ENTRY)                                                                                  \
    QRV_CBLAS void cblas_##name(int order, int uplo, int n, float alpha, const T* x, int incx, T* ap) {                \
        syr([&](const char* u, const T* z, const int* incz) { ENTRY(u, &n, &alpha, z, incz, ap); }, "cblas_" #name,    \
            order, uplo, n, x, incx);                                                                                  \
    }
#define QRV_CBLAS_SYR2(T, name, ENTRY)                                                                                 \
    QRV_CBLAS void cblas_##name(int order, int uplo, int n, Scalar<T> alpha, const T* x, int incx, const T* y,         \
                                int incy, T* a, int lda) {                                                             \
        syr2([&](const char* u, const T* v, const int* incv, const T* w,                                               \
                 const int* incw) { ENTRY(u, &n, address(alpha), v, incv, w, incw, a, &lda); },                        \
             "cblas_" #name, order, uplo, n, x, incx, y, incy);                                                        \
    }
#define QRV_CBLAS_SPR2(T, name, ENTRY)                                                                                 \
    QRV_CBLAS void cblas_##name(int order, int uplo, int n, Scalar<T> alpha, const T* x, int incx, const T* y,         \
                                int incy, T* ap) {                                                                     \
        syr2([&](const char* u, const T* v, const int* incv, const T* w,                                               \
                 const int* incw) { ENTRY(u, &n, address(alpha), v, incv, w, incw, ap); },                             \
             "cblas_" #name, order, uplo, n, x, incx, y, incy);                                                        \
    }
#define QRV_CBLAS_GBMV(T, name, ENTRY)                                                                                 \
    QRV_CBLAS void cblas_##name(int order, int trans, int m, int n, int kl, int ku, Scalar<T> alpha, const T* a,       \
                                int lda, const T* x, int incx, Scalar<T> beta, T* y, int incy) {                       \
        gemv<T>(                                                                                                       \
            [&](bool byRows, const char* t, const int* rows, const int* columns, const T* p, const T* z,               \
                const int* incz, const T* q) {                                                                         \
                ENTRY(t, rows, columns, byRows ? &ku : &kl, byRows ? &kl : &ku, p, a, &lda, z, incz, q, y, &incy);     \
            },                                                                                                         \
            "cblas_" #name, order, trans, m, n, alpha, x, incx, beta, y, incy);                                        \
    }
#define QRV_CBLAS_TPMV(T, name, ENTRY)                                                                                 \
    QRV_CBLAS void cblas_##name(int order, int uplo, int trans, int diag, int n, const T* ap, T* x, int incx) {        \
        trmv(ENTRY, "cblas_" #name, order, uplo, trans, diag, n, x, incx, ap);                                         \
    }
#define QRV_CBLAS_TRMV(T, name, ENTRY)                                                                                 \
    QRV_CBLAS void cblas_##name(int order, int uplo, int trans, int diag, int n, const T* a, int lda, T* x,            \
                                int incx) {                                                                            \
        trmv(ENTRY, "cblas_" #name, order, uplo, trans, diag, n, x, incx, a, &lda);                                    \
    }
#define QRV_CBLAS_TBMV(T, name, ENTRY)                                                                                 \
    QRV_CBLAS void cblas_##name(int order, int uplo, int trans, int diag, int n, int k, const T* a, int lda, T* x,     \
                                int incx) {                                                                            \
        trmv(ENTRY, "cblas_" #name, order, uplo, trans, diag, n, x, incx, &k, a, &lda);                                \
    }
#define QRV_CBLAS_GER(T, name, ENTRY)                                                                                  \
    QRV_CBLAS void cblas_##name(int order, int m, int n, Scalar<T> alpha, const T* x, int incx, const T* y, int incy,  \
                                T* a, int lda) {                                                                       \
        ger<T>(ENTRY, "cblas_" #name, order, m, n, alpha, x, incx, y, incy, a, lda);                                   \
    }
#define QRV_CBLAS_GEMM(T, name, ENTRY)                                                                                 \
    QRV_CBLAS void cblas_##name(int order, int transa, int transb, int m, int n, int k, Scalar<T> alpha, const T* a,   \
                                int lda, const T* b, int ldb, Scalar<T> beta, T* c, int ldc) {                         \
        gemm<T>(ENTRY, "cblas_" #name, order, transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);           \
    }
#define QRV_CBLAS_SYMM(T, name, ENTRY)                                                                                 \
    QRV_CBLAS void cblas_##name(int order, int side, int uplo, int m, int n, Scalar<T> alpha, const T* a, int lda,     \
                                const T* b, int ldb, Scalar<T> beta, T* c, int ldc) {                                  \
        symm<T>(ENTRY, "cblas_" #name, order, side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);                  \
    }
#define QRV_CBLAS_TRMM(T, name, ENTRY)                                                                                 \
    QRV_CBLAS void cblas_##name(int order, int side, int uplo, int transa, int diag, int m, int n, Scalar<T> alpha,    \
                                const T* a, int lda, T* b, int ldb) {                                                  \
        trmm<T>(ENTRY, "cblas_" #name, order, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);                  \
    }
#define QRV_CBLAS_SYRK(T, S, transposed, name, ENTRY)                                                                  \
    QRV_CBLAS void cblas_##name(int order, int uplo, int trans, int n, int k, Scalar<S> alpha, const T* a, int lda,    \
                                Scalar<S> beta, T* c, int ldc) {                                                       \
        syrk<T, S>(ENTRY, transposed, "cblas_" #name, order, uplo, trans, n, k, alpha, a, lda, beta, c, ldc);          \
    }
#define QRV_CBLAS_SYR2K(T, S, transposed, name, ENTRY)                                                                 \
    QRV_CBLAS void cblas_##name(int order, int uplo, int trans, int n, int k, Scalar<T> alpha, const T* a, int lda,    \
                                const T* b, int ldb, Scalar<S> beta, T* c, int ldc) {                                  \
        syr2k<T, S>(ENTRY, transposed, "cblas_" #name, order, uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc); \
    }

QRV_CBLAS_GEMV(float, sgemv, SGEMV)
QRV_CBLAS_GEMV(SingleComplex, cgemv, CGEMV)
QRV_CBLAS_GBMV(float, sgbmv, SGBMV)
QRV_CBLAS_GBMV(SingleComplex, cgbmv, CGBMV)
QRV_CBLAS_SYMV(float, ssymv, SSYMV)
QRV_CBLAS_SYMV(SingleComplex, chemv, CHEMV)
QRV_CBLAS_SBMV(float, ssbmv, SSBMV)
QRV_CBLAS_SBMV(SingleComplex, chbmv, CHBMV)
QRV_CBLAS_SPMV(float, sspmv, SSPMV)
QRV_CBLAS_SPMV(SingleComplex, chpmv, CHPMV)
QRV_CBLAS_TRMV(float, strmv, STRMV)
QRV_CBLAS_TRMV(float, strsv, STRSV)
QRV_CBLAS_TRMV(SingleComplex, ctrmv, CTRMV)
QRV_CBLAS_TRMV(SingleComplex, ctrsv, CTRSV)
QRV_CBLAS_TBMV(float, stbmv, STBMV)
QRV_CBLAS_TBMV(float, stbsv, STBSV)
QRV_CBLAS_TBMV(SingleComplex, ctbmv, CTBMV)
QRV_CBLAS_TBMV(SingleComplex, ctbsv, CTBSV)
QRV_CBLAS_TPMV(float, stpmv, STPMV)
QRV_CBLAS_TPMV(float, stpsv, STPSV)
QRV_CBLAS_TPMV(SingleComplex, ctpmv, CTPMV)
QRV_CBLAS_TPMV(SingleComplex, ctpsv, CTPSV)
QRV_CBLAS_GER(float, sger, SGER)
QRV_CBLAS_GER(SingleComplex, cgeru, CGERU)
QRV_CBLAS void cblas_cgerc(int order, int m, int n, const SingleComplex* alpha, const SingleComplex* x, int incx,
                           const SingleComplex* y, int incy, SingleComplex* a, int lda) {
    gerc("cblas_cgerc", order, m, n, alpha, x, incx, y, incy, a, lda);
}
QRV_CBLAS_SYR(float, ssyr, SSYR)
QRV_CBLAS_SYR(SingleComplex, cher, CHER)
QRV_CBLAS_SYR2(float, ssyr2, SSYR2)
QRV_CBLAS_SYR2(SingleComplex, cher2, CHER2)
QRV_CBLAS_SPR(float, sspr, SSPR)
QRV_CBLAS_SPR(SingleComplex, chpr, CHPR)
QRV_CBLAS_SPR2(float, sspr2, SSPR2)
QRV_CBLAS_SPR2(SingleComplex, chpr2, CHPR2)
QRV_CBLAS_GEMM(float, sgemm, SGEMM)
QRV_CBLAS_GEMM(SingleComplex, cgemm, CGEMM)
QRV_CBLAS_SYMM(float, ssymm, SSYMM)
QRV_CBLAS_SYMM(SingleComplex, csymm, CSYMM)
QRV_CBLAS_SYMM(SingleComplex, chemm, CHEMM)
QRV_CBLAS_TRMM(float, strmm, STRMM)
QRV_CBLAS_TRMM(float, strsm, STRSM)
QRV_CBLAS_TRMM(SingleComplex, ctrmm, CTRMM)
QRV_CBLAS_TRMM(SingleComplex, ctrsm, CTRSM)
QRV_CBLAS_SYRK(float, float, 'T', ssyrk, SSYRK)
QRV_CBLAS_SYRK(SingleComplex, SingleComplex, 'T', csyrk, CSYRK)
QRV_CBLAS_SYRK(SingleComplex, float, 'C', cherk, CHERK)
QRV_CBLAS_SYR2K(float, float, 'T', ssyr2k, SSYR2K)
QRV_CBLAS_SYR2K(SingleComplex, SingleComplex, 'T', csyr2k, CSYR2K)
QRV_CBLAS_SYR2K(SingleComplex, float, 'C', cher2k, CHER2K)
