// Bad arguments of the routines of LAPACK, and the lengths of their work arrays.
#include "entry/checks.hpp"
#include "lapack/calls/band.hpp"
#include "lapack/calls/bidiagonal.hpp"
#include "lapack/calls/cholesky.hpp"
#include "lapack/calls/lu.hpp"
#include "lapack/calls/nonsymmetric.hpp"
#include "lapack/calls/norms.hpp"
#include "lapack/calls/qr.hpp"
#include "lapack/calls/reflectors.hpp"
#include "lapack/calls/rotations.hpp"
#include "lapack/calls/svd.hpp"
#include "lapack/calls/symmetric.hpp"
#include "lapack/calls/triangular.hpp"
#include "lapack/lapack.hpp"
#include "support/argument_rows.hpp"

namespace qrv::test {
namespace {

const std::string rows = R"(
SGETRF CGETRF SGETRF:getrf_ib_omp CGETRF:getrf_ib_omp | 3 2 . 3 ., 0 2 . 1 ., 2 0 . 2 . | 1=-1 2=-1 4=2 | 1=0 4=0: 4
SGETRS CGETRS | N 3 2 . 3 . . 3, c 0 2 . 1 . . 1, t 3 0 . 3 . . 3 | 1=X 1=~ 2=-1 3=-1 5=2 8=2 | 2=0 5=0: 5, 2=0 8=0: 8
SGESV CGESV | 3 2 . 3 . . 3, 0 2 . 1 . . 1 | 1=-1 2=-1 4=2 7=2 | 1=0 4=0: 4, 1=0 7=0: 7
SGETRI CGETRI | 3 . 3 . w 3, 0 . 1 . w 1, 0 . 1 . w -1, 3 . 3 . w -1 | 1=-1 3=2 6=2 6=-2 | 1=0 6=0: 6, 1=0 3=0: 3
SGECON CGECON | 1 3 . 3 1.5 . . ., o 0 . 1 0 . . ., i 1 . 1 nan . . . | 1=F 1=M 2=-1 4=2 5=-1e-30 | 2=0 4=0: 4
STRTRS CTRTRS | U N N 3 2 . 3 . 3, l c u 0 2 . 1 . 1, L T N 3 0 . 3 . 3 | 1=X 2=X 3=X 4=-1 5=-1 7=2 9=2 | 4=0 7=0: 7,
    4=0 9=0: 9
STRTRI CTRTRI STRTI2 CTRTI2 | U N 3 . 3, l u 0 . 1 | 1=X 2=X 3=-1 5=2 | 3=0 5=0: 5
STRCON CTRCON | 1 U N 3 . 3 . . ., o l u 0 . 1 . . ., I L U 1 . 1 . . . | 1=M 1=F 2=X 3=X 4=-1 6=2 | 4=0 6=0: 6
SLATRS CLATRS | U N N N 3 . 3 . . ., l t u y 0 . 1 . . ., L C N Y 2 . 2 . . . | 1=X 2=X 3=X 4=X 5=-1 7=2 | 5=0 7=0: 7
SPOTRF CPOTRF SPOTF2 CPOTF2 SPOTRI CPOTRI SLAUUM CLAUUM SLAUU2 CLAUU2 | U 1 . 3, l 0 . 1, L 1 . 1 | 1=X 1=~ 2=-1 4=0 |
    2=3 4=2: 4, 2=0 4=0: 4
SPOTRS CPOTRS | U 3 2 . 3 . 3, l 0 2 . 1 . 1, L 3 0 . 3 . 3 | 1=X 2=-1 3=-1 5=2 7=2 | 2=0 5=0: 5, 2=0 7=0: 7
SPOSV CPOSV | U 1 2 . 3 . 3, l 0 2 . 1 . 1 | 1=X 2=-1 3=-1 5=0 7=0 | 2=2 5=1: 5, 2=2 7=1: 7
SPOCON CPOCON | U 3 . 3 1.5 . . ., l 0 . 1 0 . . ., L 1 . 1 nan . . . | 1=X 2=-1 4=2 5=-1e-30 | 2=0 4=0: 4
SGEQRF CGEQRF | 3 2 . 3 . w 2, 0 2 . 1 . w 2, 2 0 . 2 . w 1, 3 2 . 3 . w -1 | 1=-1 2=-1 4=2 7=1 7=-2 | 1=0 4=0: 4,
    2=0 7=0: 7
SGELQF CGELQF | 3 2 . 3 . w 3, 0 2 . 1 . w 1, 2 0 . 2 . w 2, 3 2 . 3 . w -1 | 1=-1 2=-1 4=2 7=2 7=-2 | 1=0 4=0: 4,
    1=0 7=0: 7
SGEQR2 CGEQR2 SGELQ2 CGELQ2 | 3 2 . 3 . ., 0 2 . 1 . . | 1=-1 2=-1 4=2 | 1=0 4=0: 4
SGELS | N 3 2 4 . 3 . 3 w 6, t 2 3 1 . 2 . 3 w 4, T 0 2 1 . 1 . 2 w 1, N 3 2 0 . 3 . 3 w -1 |
    1=X 1=C 2=-1 3=-1 4=-1 6=2 8=2 10=5 10=-2 | 2=2 3=3 8=2: 8, 2=0 3=0 8=0: 8, 4=0 10=3: 10, 2=0 10=0 4=0: 10
CGELS | N 3 2 4 . 3 . 3 w 6, c 2 3 1 . 2 . 3 w 4, C 0 2 1 . 1 . 2 w 1 | 1=T 2=-1 3=-1 4=-1 6=2 8=2 10=5 10=-2
SGEQP3 | 3 2 . 3 . . w 7, 0 2 . 1 . . w 1, 2 0 . 2 . . w 1, 3 2 . 3 . . w -1 | 1=-1 2=-1 4=2 8=6 8=-2 | 1=0 4=0: 4,
    2=0 8=0: 8
CGEQP3 | 3 2 . 3 . . w 3 ., 0 2 . 1 . . w 1 ., 2 0 . 2 . . w 1 ., 3 2 . 3 . . w -1 . | 1=-1 2=-1 4=2 8=2 8=-2 |
    1=0 4=0: 4, 2=0 8=0: 8
SORMQR SORMQL | L T 4 2 3 . 4 . . 4 . 2, r n 2 4 3 . 4 . . 2 . 2, R N 0 4 3 . 4 . . 1 . 1, l t 4 0 4 . 4 . . 4 . -1 |
    1=X 2=C 3=-1 4=-1 5=-1 5=5 7=3 10=3 12=1 12=-2 | 1=R 5=3: 5, 3=0 5=0 10=0: 10, 4=0 12=0: 12
CUNMQR CUNMQL | L C 4 2 3 . 4 . . 4 . 2, r n 2 4 3 . 4 . . 2 . 2, R N 0 4 3 . 4 . . 1 . 1, l c 4 0 4 . 4 . . 4 . -1 |
    1=X 2=T 3=-1 4=-1 5=-1 5=5 7=3 10=3 12=1 12=-2 | 1=R 5=3: 5, 3=0 5=0 10=0: 10, 4=0 12=0: 12
SORMLQ | L T 4 2 3 . 3 . . 4 . 2, r n 2 4 3 . 3 . . 2 . 2, R N 2 4 0 . 1 . . 2 . 2, l t 4 0 4 . 4 . . 4 . -1 |
    1=X 2=C 3=-1 4=-1 5=-1 5=5 7=2 10=3 12=1 12=-2 | 1=R 5=3: 5, 5=0 7=0: 7, 4=0 12=0: 12
CUNMLQ | L C 4 2 3 . 3 . . 4 . 2, r n 2 4 3 . 3 . . 2 . 2, R N 2 4 0 . 1 . . 2 . 2, l c 4 0 4 . 4 . . 4 . -1 |
    1=X 2=T 3=-1 4=-1 5=-1 5=5 7=2 10=3 12=1 12=-2 | 1=R 5=3: 5, 5=0 7=0: 7, 4=0 12=0: 12
SORM2R SORM2L | L T 4 2 3 . 4 . . 4 ., r n 2 4 3 . 4 . . 2 ., R N 0 4 3 . 4 . . 1 . |
    1=X 2=C 3=-1 4=-1 5=-1 5=5 7=3 10=3 | 1=R 5=3: 5, 3=0 5=0 10=0: 10
CUNM2R CUNM2L | L C 4 2 3 . 4 . . 4 ., r n 2 4 3 . 4 . . 2 ., R N 0 4 3 . 4 . . 1 . |
    1=X 2=T 3=-1 4=-1 5=-1 5=5 7=3 10=3 | 1=R 5=3: 5, 3=0 5=0 10=0: 10
SORML2 | L T 4 2 3 . 3 . . 4 ., r n 2 4 3 . 3 . . 2 ., R N 2 4 0 . 1 . . 2 . | 1=X 2=C 3=-1 4=-1 5=-1 5=5 7=2 10=3 |
    1=R 5=3: 5, 5=0 7=0: 7
CUNML2 | L C 4 2 3 . 3 . . 4 ., r n 2 4 3 . 3 . . 2 ., R N 2 4 0 . 1 . . 2 . | 1=X 2=T 3=-1 4=-1 5=-1 5=5 7=2 10=3 |
    1=R 5=3: 5, 5=0 7=0: 7
SORGQR CUNGQR | 4 3 2 . 4 . w 3, 0 0 0 . 1 . w 1, 4 0 0 . 4 . w 1, 4 4 4 . 4 . w -1 |
    1=-1 2=-1 2=5 3=-1 3=4 5=3 8=2 8=-2 | 2=0 3=0 8=0: 8
SORGLQ CUNGLQ | 3 4 2 . 3 . w 3, 0 0 0 . 1 . w 1, 0 4 0 . 1 . w 1, 4 4 4 . 4 . w -1 |
    1=-1 2=-1 2=2 3=-1 3=4 5=2 8=2 8=-2 | 1=0 3=0 8=0: 8
SORG2R CUNG2R | 4 3 2 . 4 . ., 0 0 0 . 1 . ., 4 0 0 . 4 . . | 1=-1 2=-1 2=5 3=-1 3=4 5=3
SORGL2 CUNGL2 | 3 4 2 . 3 . ., 0 0 0 . 1 . ., 0 4 0 . 1 . . | 1=-1 2=-1 2=2 3=-1 3=4 5=2
SGBTRF SGBTF2 | 4 5 2 1 . 6 ., 0 5 2 1 . 6 ., 4 0 0 0 . 1 . | 1=-1 2=-1 3=-1 4=-1 6=5 | 3=0 4=0 6=0: 6
SGBTRS | N 4 2 1 2 . 6 . . 4, c 0 2 1 2 . 6 . . 1, T 4 0 0 0 . 1 . . 4 | 1=X 2=-1 3=-1 4=-1 5=-1 7=5 10=3 |
    2=0 10=0: 10
SGBSV | 4 2 1 2 . 6 . . 4, 0 2 1 2 . 6 . . 1, 4 0 0 0 . 1 . . 4 | 1=-1 2=-1 3=-1 4=-1 6=5 9=3 | 1=0 9=0: 9
SGBCON | 1 4 2 1 . 6 . 1.5 . . ., o 0 2 1 . 6 . 0 . . ., I 1 0 0 . 1 . nan . . . | 1=F 2=-1 3=-1 4=-1 6=5 8=-1
SPBTRF SPBTF2 | U 1 2 . 3, l 0 2 . 3, L 1 0 . 1 | 1=X 2=-1 3=-1 5=2
SPBTRS | U 4 2 2 . 3 . 4, l 0 2 2 . 3 . 1, L 4 0 0 . 1 . 4 | 1=X 2=-1 3=-1 4=-1 6=2 8=3 | 2=0 8=0: 8
SPBSV | U 1 2 2 . 3 . 1, l 0 2 2 . 3 . 1, L 1 0 0 . 1 . 1 | 1=X 2=-1 3=-1 4=-1 6=2 8=0
SPBCON | U 4 2 . 3 1.5 . . ., l 0 2 . 3 0 . . ., L 1 0 . 1 nan . . . | 1=X 2=-1 3=-1 5=2 6=-1
STBTRS | U N N 4 2 2 . 3 . 4, l c u 0 2 2 . 3 . 1, L T N 4 0 0 . 1 . 4 | 1=X 2=X 3=X 4=-1 5=-1 6=-1 8=2 10=3 |
    4=0 10=0: 10
SGEBAL | B 3 . 3 . . ., n 0 . 1 . . ., P 1 . 1 . . ., s 3 . 4 . . . | 1=X 1=~ 2=-1 4=2 | 2=0 4=0: 4
SGEBAK | B R 3 1 3 . 2 . 3, n l 0 1 0 . 0 . 1, P L 3 3 3 . 0 . 3, S r 3 1 1 . 2 . 3 |
    1=X 2=X 3=-1 4=0 4=4 5=4 7=-1 9=2 | 4=2 5=1: 5, 3=0 5=0 9=0: 9, 3=0 4=2: 4
SGEBRD CGEBRD | 3 2 . 3 . . . . w 3, 0 2 . 1 . . . . w 2, 0 0 . 1 . . . . w -1, 3 2 . 3 . . . . w -1 |
    1=-1 2=-1 4=2 10=2 10=-2
SORGBR CUNGBR | Q 4 3 3 . 4 . . 3, q 3 3 5 . 3 . . 3, p 3 4 3 . 3 . . -1, P 0 0 0 . 1 . . 1 |
    1=X 2=-1 3=5 4=-1 6=3 9=2 9=-2 | 1=P 2=5 6=5: 3, 3=-1: 3, 3=2: 3
SORMBR | Q L N 4 3 2 . 4 . . 4 . 3, p r t 4 3 2 . 2 . . 4 . 4, P L T 0 2 1 . 1 . . 1 . -1 |
    1=X 2=X 3=X 4=-1 5=-1 6=-1 8=3 11=3 13=2 | 1=P 8=1: 8, 3=C: 3
CUNMBR | Q L N 4 3 2 . 4 . . 4 . 3, p r c 4 3 2 . 2 . . 4 . 4 | 1=X 2=X 3=T 4=-1 5=-1 6=-1 8=3 11=3 13=2
SGESDD | A 4 3 . 4 . . 4 . 3 w 62 ., n 3 4 . 3 . . 1 . 1 w 30 ., O 2 4 . 2 . . 2 . 1 w 200 .,
    S 4 2 . 4 . . 4 . 2 w -1 ., A 0 2 . 1 . . 1 . 2 w 1 . | 1=X 2=-1 3=-1 5=3 8=3 10=2 12=5 12=-2 | 1=S 10=2: 10,
    1=O 10=2: 10, 1=N 8=0: 8, 1=N 10=0: 10, 1=S 8=3: 8
CGESDD | A 4 3 . 4 . . 4 . 3 w 50 . ., n 3 4 . 3 . . 1 . 1 w 30 . ., O 2 4 . 2 . . 2 . 1 w 200 . . |
    1=X 2=-1 3=-1 5=3 8=3 10=2 12=5 12=-2 | 1=S 10=2: 10
SGEBD2 CGEBD2 | 3 2 . 3 . . . . ., 0 2 . 1 . . . . . | 1=-1 2=-1 4=2 | 1=0 4=0: 4
SBDSQR | U 3 2 2 2 . . . 3 . 2 . 3 ., l 0 2 2 2 . . . 1 . 2 . 1 ., L 3 0 0 0 . . . 1 . 1 . 1 . |
    1=X 2=-1 3=-1 4=-1 5=-1 9=2 11=1 13=2 | 3=0 9=0: 9, 4=0 11=0: 11, 5=0 13=0: 13
SBDSDC | U I 3 . . . 3 . 3 . . . ., l n 3 . . . 1 . 1 . . . ., L i 0 . . . 1 . 1 . . . . | 1=X 2=S 3=-1 7=2 9=2 |
    2=N 7=0: 7, 2=P 9=0: 9
SLASDQ | U 0 3 2 2 2 . . . 3 . 2 . 3 ., l 1 0 2 2 2 . . . 1 . 2 . 1 ., L 0 3 0 0 0 . . . 1 . 1 . 1 . |
    1=X 2=2 2=-1 3=-1 4=-1 5=-1 6=-1 10=2 12=1 14=2 | 4=0 10=0: 10, 5=0 12=0: 12, 6=0 14=0: 14
SLASD0 | 3 1 . . . 3 . 4 5 . ., 3 0 . . . 3 . 3 3 . . | 1=-1 2=2 2=-1 6=2 8=3 9=2
SLASD1 | 1 1 1 . 1 1 . 3 . 4 . . ., 1 1 0 . 1 1 . 3 . 3 . . . | 1=0 2=0 3=2 3=-1
SLASD2 | 1 1 1 . . . 1 1 . 3 . 4 . . 3 . 4 . . . . . | 1=0 2=0 3=2 3=-1 10=2 12=3 15=2 17=3
SLASD3 | 1 1 1 1 . . 1 . . 3 . 3 . 4 . 4 . . ., 1 1 0 3 . . 3 . . 3 . 3 . 3 . 3 . . . |
    1=0 2=0 3=2 4=0 4=4 7=0 10=2 12=2 14=3 16=3
SLASDA | 1 3 3 0 . . . 3 . . . . . . . . 3 . . . . . ., 0 3 3 1 . . . 4 . . . . . . . . 3 . . . . . . |
    1=-1 1=2 2=2 3=-1 4=2 4=-1 8=2 17=2 | 4=1 8=3: 8
SLASD6 | 1 1 1 1 . . . 1 1 . . . . 3 . 3 . . . . . . . . ., 0 1 1 0 . . . 1 1 . . . . 3 . 3 . . . . . . . . . |
    1=-1 1=2 2=0 3=0 4=2 4=-1 14=2 16=2
SLASD7 | 1 1 1 1 . . . . . . . . 1 1 . . . . . . . 3 . 3 . . | 1=-1 1=2 2=0 3=0 4=2 4=-1 22=2 24=2
SLASD8 | 1 1 . . . . . . 1 . ., 0 1 . . . . . . 1 . . | 1=-1 1=2 2=0 9=0
SLASR | L V F 3 2 . . . 3, r t b 0 2 . . . 1, R B B 2 0 . . . 2 | 1=X 2=X 3=X 4=-1 5=-1 9=2 | 4=0 9=0: 9
SGEHRD | 3 1 3 . 3 . w 3, 0 1 0 . 1 . w 1, 3 2 2 . 3 . w -1 | 1=-1 2=0 2=4 3=4 5=2 8=2 8=-2 | 2=2 3=1: 3,
    1=0 3=0 8=0: 8, 1=0 3=0 5=0: 5
SGEHD2 | 3 1 3 . 3 . ., 0 1 0 . 1 . . | 1=-1 2=0 2=4 3=4 5=2 | 2=2 3=1: 3, 1=0 3=0 5=0: 5
SORGHR | 4 1 4 . 4 . w 3, 0 1 0 . 1 . w 1, 4 2 2 . 4 . w 1, 4 1 4 . 4 . w -1 | 1=-1 2=0 2=5 3=5 5=3 8=2 8=-2 |
    2=2 3=1: 3, 2=3 8=0: 8
SORMHR | L N 3 2 1 3 . 3 . . 3 w 2, r t 2 3 2 3 . 3 . . 2 w 2, R T 0 3 1 3 . 3 . . 1 w -1 |
    1=X 2=C 3=-1 4=-1 5=0 5=4 6=4 8=2 11=2 13=1 | 5=2 6=1: 6, 1=R 6=2 13=2: 13, 1=R: 6
SHSEQR | S V 3 1 3 . 3 . . . 3 w 3, e n 3 1 3 . 3 . . . 1 w 3, E I 0 1 0 . 1 . . . 1 w 1, S N 3 1 3 . 3 . . . 1 w -1 |
    1=X 2=X 3=-1 4=0 4=4 5=4 7=2 11=2 13=2 | 4=2 5=1: 5, 2=N 11=0: 11
STREVC | B A . 3 . 3 . 3 . 3 3 . ., l b . 3 . 3 . 3 . 1 3 . ., R S . 0 . 1 . 1 . 1 0 . . |
    1=X 2=X 4=-1 6=2 8=2 10=2 11=2 | 1=R 8=0: 8, 1=L 10=0: 10
STREXC | V 3 . 3 . 3 1 3 ., n 3 . 3 . 1 3 3 ., N 0 . 1 . 1 0 0 . | 1=X 2=-1 4=2 6=2 7=0 7=4 8=0 8=4 | 1=N 6=0: 6
SGEEV | V V 3 . 3 . . . 3 . 3 w 12, n n 3 . 3 . . . 1 . 1 w 9, V N 0 . 1 . . . 1 . 1 w 1, N V 3 . 3 . . . 1 . 3 w -1 |
    1=X 2=X 3=-1 5=2 9=2 11=2 13=11 | 1=N 9=0: 9, 2=N 11=0: 11, 1=N 2=N 13=8: 13
SLATBS | U N N N 4 2 . 3 . . ., l t u y 0 2 . 3 . . ., L C N Y 2 0 . 1 . . . | 1=X 2=X 3=X 4=X 5=-1 6=-1 8=2
SLASCL CLASCL | B 2 2 1 1 3 3 . 3, G 9 9 2 1 3 2 . 3, z 1 0 -1 0 3 4 . 3, q 1 1 1 1 2 2 . 2, H 0 0 1 1 0 0 . 1 |
    1=X 4=0 4=nan 5=nan 6=-1 7=-1 7=2 2=-1 2=3 3=-1 3=1 9=2 | 1=Q 2=1 3=1 9=1: 9, 1=Z 2=1 3=1 9=3: 9, 1=Z 2=0 3=3: 3,
    1=G 9=2: 9, 1=L 2=9 9=2: 9
SSTERF | 3 . ., 0 . . | 1=-1
SSTEBZ | V B 3 0 5 9 9 0 . . . . . . . . ., i e 3 1 0 1 3 -1 . . . . . . . . ., A B 0 1 0 9 9 0 . . . . . . . . .,
    I E 0 1 0 1 0 0 . . . . . . . . . | 1=X 2=X 3=-1 5=0 5=nan
SSTEBZ | I B 3 0 0 2 3 0 . . . . . . . . . | 1=X 2=X 3=-1 6=0 6=4 7=1 7=4 | 3=0 6=1 7=1: 7, 3=0 6=2 7=0: 6
SLARRD | V B 3 0 5 9 9 . 0 . . . 1 1 . . . . . . . . . ., i e 3 1 0 1 3 . 0 . . . 1 1 . . . . . . . . . . |
    1=X 2=X 3=-1 5=0 5=nan
SLARRD | I B 3 0 0 2 3 . 0 . . . 1 1 . . . . . . . . . . | 6=0 6=4 7=1 7=4
SSTEIN | 3 . . 3 . . . . 3 . . ., 0 . . 0 . . . . 1 . . . | 1=-1 4=-1 4=4 9=2 6=v 5=v | 1=0 4=0 9=0: 9
SSTEMR | V V 3 . . 0 5 9 9 . . . 3 3 . 1 w 54 w 30, n a 0 . . 5 0 9 9 . . . 1 0 . 0 w 1 w 1,
    V I 3 . . 5 0 2 2 . . . 3 1 . 0 w 54 w 30, V A 3 . . 5 0 0 0 . . . 3 -1 . 0 w 54 w 30,
    N A 3 . . 5 0 0 0 . . . 1 0 . 0 w -1 w 24, N A 3 . . 5 0 0 0 . . . 1 0 . 0 w 36 w -1 |
    1=X 2=X 3=-1 7=0 7=nan 13=2 13=0 14=-2 | 1=N 13=0: 13, 18=53: 17, 18=53 20=29: 17, 20=29: 19, 20=29 14=-2: 19,
    18=-2: 17
SSTEMR | V I 3 . . 5 0 2 3 . . . 3 2 . 1 w 54 w 30 | 1=X 2=X 3=-1 8=0 8=4 9=1 9=4 13=2 14=1 | 18=53: 17, 20=29: 19,
    8=2 9=3 1=N 18=35: 17, 2=A 14=2: 14
SSYTRD | U 3 . 3 . . . w 1, l 0 . 1 . . . w 1, L 3 . 3 . . . w -1 | 1=X 2=-1 4=2 9=0 9=-2 | 2=0 4=0: 4
SSYTD2 | U 3 . 3 . . ., l 0 . 1 . . . | 1=X 2=-1 4=2 | 2=0 4=0: 4
SORMTR | L U N 3 2 . 3 . . 3 w 2, r l t 2 3 . 3 . . 2 w 2, L L N 0 2 . 1 . . 1 w 2, R U T 3 0 . 1 . . 3 w -1 |
    1=X 2=X 3=C 3=X 4=-1 5=-1 7=2 10=2 12=1 | 1=R 7=1: 7, 1=R 12=2: 12, 4=0 5=0 12=0: 12
SSYEVR | V V U 3 . 3 0 5 9 9 0 . . . 3 . w 78 w 30, n a l 0 . 1 5 0 9 9 0 . . . 1 . w 1 w 1,
    V A L 3 . 3 5 0 9 9 0 . . . 3 . w -1 w 30, N A L 3 . 3 5 0 9 9 0 . . . 1 . w 78 w -1,
    N V L 0 . 1 5 0 9 9 0 . . . 1 . w 1 w 1 | 1=X 2=X 3=X 4=-1 6=2 8=0 8=nan 15=2 15=0 18=77 20=29 | 1=N 15=0: 15
SSYEVR | V I U 3 . 3 5 0 2 3 0 . . . 3 . w 78 w 30 | 1=X 2=X 3=X 4=-1 6=2 9=0 9=4 10=1 10=4 15=2 18=77 20=29 |
    4=0 9=1 10=1: 10
SLASQ1 | 3 . . ., 0 . . . | 1=-1
SLASQ2 | 3 ., 0 . | 1=-1
SLASRT | I 3 ., d 0 . | 1=X 2=-1
SLAGTF | 3 . 0.5 . . 0 . ., 0 . 0.5 . . 0 . . | 1=-1
SLAGTS | -1 3 . . . . . . 0, 2 0 . . . . . . 0 | 1=0 1=3 1=-3 2=-1
)";

// ---- The rows of src/routines -------------------------------------------------------------------------------------

using namespace lapack;
using namespace entry;

Routines routines;

#pragma GCC diagnostic ignored "-Wunused-parameter"
#define CHECKED_AS(text, entry, name, PARAMETERS, CHECKS)                                                              \
    std::set<int> name##_positions PARAMETERS {                                                                        \
        return positions_of CHECKS;                                                                                    \
    }                                                                                                                  \
    const bool name##_enrolled = enroll(routines, text, entry, name##_positions);
#define CHECKED(NAME, name, PARAMETERS, CHECKS, ...)                                                                   \
    CHECKED_AS(QRV_MEMBER_TEXT(NAME), QRV_MEMBER(NAME), name, PARAMETERS, CHECKS)
#define REPORTED CHECKED
#define ROUTE(NAME, name, PARAMETERS, CHECKS, ...)                                                                     \
    CHECKED_AS(QRV_MEMBER_TEXT(NAME) ":" #name, QRV_LAPACK_MEMBER(name), name, PARAMETERS, CHECKS)
#define UNCHECKED(...)
#define QRV_ROUTINES "routines/lapack.def"
#include "routines/members.def"

TEST(Arguments, BadOnesAreReportedInTheirOrder) {
    expect_bad_arguments_reported(rows, routines);
}

// The lengths that callers are told.
template <class T>
void expect_work_lengths(std::int64_t gecon, std::int64_t geconSecond, std::int64_t trcon, std::int64_t trconSecond) {
    for (const int n : {0, 1, 7, 1 << 30}) {
        EstimateWork<T> general(nullptr, nullptr), triangular(nullptr, nullptr);
        gecon_work(n, general);
        EXPECT_EQ(general.work.taken, gecon * n);
        EXPECT_EQ(general.second.taken, geconSecond * n);
        triangle_work(n, triangular);
        EXPECT_EQ(triangular.work.taken, trcon * n);
        EXPECT_EQ(triangular.second.taken, trconSecond * n);
    }
}

TEST(WorkLengths, OfConditionEstimates) {
    expect_work_lengths<float>(4, 1, 3, 1);
    expect_work_lengths<SingleComplex>(2, 2, 2, 1);
}

} // namespace
} // namespace qrv::test
