// Bad arguments of BLAS.
#include "blas/complex.hpp"
#include "entry/checks.hpp"
#include "support/argument_rows.hpp"

namespace qrv::test {
namespace {

const std::string rows = R"(
SGEMM CGEMM | N N 3 4 5 . . 3 . 5 . . 3, t c 3 4 5 . . 5 . 4 . . 3, C n 0 0 0 . . 1 . 1 . . 1 |
    1=X 2=? 3=-1 4=-1 5=-1 8=2 10=4 13=2 | 1=T 8=4: 8, 2=T 10=3: 10, 3=0 8=0: 8
SSYMM CSYMM CHEMM | L U 3 4 . . 3 . 3 . . 3, r l 3 4 . . 4 . 3 . . 3 | 1=U 2=R 3=-1 4=-1 7=2 9=2 12=2 | 1=R 7=3: 7
STRMM STRSM CTRMM CTRSM | L U N N 3 4 . . 3 . 3, R L C U 3 4 . . 4 . 3 | 1=X 2=X 3=X 4=X 5=-1 6=-1 9=2 11=2 |
    1=R 9=3: 9
SSYRK | U N 3 4 . . 3 . . 3, L C 3 4 . . 4 . . 3 | 2=X
CSYRK | U N 3 4 . . 3 . . 3, L T 3 4 . . 4 . . 3 | 2=C
CHERK | U N 3 4 . . 3 . . 3, L C 3 4 . . 4 . . 3 | 2=T
SSYRK CSYRK CHERK | U N 3 4 . . 3 . . 3 | 1=X 3=-1 4=-1 7=2 10=2
SSYR2K | U N 3 4 . . 3 . 3 . . 3, L C 3 4 . . 4 . 4 . . 3 | 2=X | 2=T 7=4: 9
CSYR2K | U N 3 4 . . 3 . 3 . . 3, L T 3 4 . . 4 . 4 . . 3 | 2=C
CHER2K | U N 3 4 . . 3 . 3 . . 3, L C 3 4 . . 4 . 4 . . 3 | 2=T
SSYR2K CSYR2K CHER2K | U N 3 4 . . 3 . 3 . . 3 | 1=X 3=-1 4=-1 7=2 9=2 12=2
SGEMV CGEMV | N 3 4 . . 3 . 1 . . -1, C 0 0 . . 1 . 1 . . 1 | 1=X 2=-1 3=-1 6=2 8=0 11=0
SGBMV | N 3 4 1 2 . . 4 . 1 . . 1, T 3 4 0 0 . . 1 . -1 . . 1 | 1=X 2=-1 3=-1 4=-1 5=-1 8=3 10=0 13=0 |
    4=0 5=0 8=0: 8, 4=2147483647 5=2147483647: 8
SSYMV CHEMV | U 3 . . 3 . 1 . . 1 | 1=X 2=-1 5=2 7=0 10=0 | 2=0 5=0: 5
SSBMV | U 3 1 . . 2 . 1 . . 1, l 3 0 . . 1 . 1 . . 1 | 1=X 2=-1 3=-1 6=1 8=0 11=0 | 3=0 6=0: 6
STRMV STRSV CTRMV CTRSV | U N N 3 . 3 . 1, L c u 3 . 3 . -2 | 1=X 2=X 3=X 4=-1 6=2 8=0
CGBMV | N 3 4 1 2 . . 4 . 1 . . 1, C 3 4 0 0 . . 1 . -1 . . 1 | 1=X 2=-1 3=-1 4=-1 5=-1 8=3 10=0 13=0 | 4=0 5=0 8=0: 8
CHBMV | U 3 1 . . 2 . 1 . . 1, l 3 0 . . 1 . 1 . . 1 | 1=X 2=-1 3=-1 6=1 8=0 11=0
CTBMV CTBSV | U N N 3 1 . 2 . 1, l c u 3 0 . 1 . 1 | 1=X 2=X 3=X 4=-1 5=-1 7=1 9=0
SSPMV CHPMV | U 3 . . . 1 . . 1, l 0 . . . -1 . . 1 | 1=X 2=-1 6=0 9=0
STPMV STPSV CTPMV CTPSV | U N N 3 . . 1, L c u 3 . . -2 | 1=X 2=X 3=X 4=-1 7=0
SSPR CHPR | U 3 . . 1 . | 1=X 2=-1 5=0
SSPR2 CHPR2 | U 3 . . 1 . 1 . | 1=X 2=-1 5=0 7=0
STBMV STBSV | U N N 3 1 . 2 . 1 | 1=X 2=X 3=X 4=-1 5=-1 7=1 9=0
SGER CGERU CGERC | 3 4 . . 1 . 1 . 3 | 1=-1 2=-1 5=0 7=0 9=2
SSYR CHER | U 3 . . 1 . 3 | 1=X 2=-1 5=0 7=2
SSYR2 CHER2 | U 3 . . 1 . 1 . 3 | 1=~ 1=X 2=-1 5=0 7=0 9=2
)";

// ---- The rows of src/routines -------------------------------------------------------------------------------------

using namespace entry;

Routines routines;

#pragma GCC diagnostic ignored "-Wunused-parameter"
#define GUARDED(NAME, PARAMETERS, CHECKS, ...)                                                                         \
    std::set<int> NAME##_positions PARAMETERS {                                                                        \
        return positions_of CHECKS;                                                                                    \
    }                                                                                                                  \
    const bool NAME##_enrolled = enroll(routines, QRV_MEMBER_TEXT(NAME), QRV_MEMBER(NAME), NAME##_positions);
#define DIRECT(...)
#define DIRECT_NAMED(...)
#define QRV_ROUTINES "routines/blas.def"
#include "routines/members.def"

TEST(Arguments, BadOnesAreReportedInTheirOrder) {
    EXPECT_EQ(routines.size(), 48U);
    expect_bad_arguments_reported(rows, routines);
}

} // namespace
} // namespace qrv::test
