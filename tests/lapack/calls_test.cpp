// Calls of every routine, BLAS and LAPACK. With ordinary matrices: a host may have invalid operations, divisions by
// zero and overflows trapped, so that no flag of these is raised, whatever is computed on the way and not used; it may
// give its threads small stacks, and call on many of them. With numbers that are none, and without memory, calls end
// all the same.
#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <memory>
#include <omp.h>
#include <set>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "blas/complex.hpp"
#include "lapack/lapack.hpp"
#include "service/work_pool.hpp"
#include "support/argument_rows.hpp"
#include "support/flags.hpp"
#include "support/operand.hpp"
#include "support/reserved.hpp"
#include "support/sample.hpp"
#include "support/stack.hpp"
#include "support/teams.hpp"

namespace qrv::test {
namespace {

struct OrdinaryCalls {
    const char* names;
    std::vector<const char*> calls;
};

const OrdinaryCalls rows[] = {
    {"SGETRF CGETRF SGETRF:getrf_ib_omp CGETRF:getrf_ib_omp",
     {"300 280 m300x280 301 .280", "400 390 m400x390 400 .390"}},
    {"SGETRS CGETRS", {"N 70 9 m70x70 70 .70 m70x9 71", "T 70 9 m70x70 70 .70 m70x9 71"}},
    {"SGESV CGESV", {"70 9 m70x70 70 .70 m70x9 71"}},
    {"SGETRI CGETRI", {"70 m70x70 70 .70 w 70", "140 m140x140 140 .140 w 9000"}},
    {"SGECON", {"1 70 m70x70 70 200 .1 .280 .70", "I 70 m70x70 70 200 .1 .280 .70"}},
    {"CGECON", {"1 70 m70x70 70 200 .1 .140 .140", "I 70 m70x70 70 200 .1 .140 .140"}},
    {"SLASWP CLASWP", {"30 m20x30 40 1 20 .20 1"}},
    {"STRTRS CTRTRS", {"U N N 70 9 m70x70 70 m70x9 70", "L T U 70 9 m70x70 70 m70x9 70", "U C N 3 1 m3x3 3 m3x1 3"}},
    {"STRTRI CTRTRI STRTI2 CTRTI2", {"U N 100 m100x100 100", "L N 70 m70x70 70"}},
    {"STRCON", {"1 U N 40 m40x40 40 .1 .120 .40", "I L N 40 m40x40 40 .1 .120 .40"}},
    {"CTRCON", {"1 U N 40 m40x40 40 .1 .80 .40", "I L N 40 m40x40 40 .1 .80 .40"}},
    {"SLATRS CLATRS",
     {"U N N N 40 m40x40 40 .40 .1 .40", "L T N N 40 m40x40 40 .40 .1 .40", "U C U N 4 m4x4 4 .4 .1 .4"}},
    {"SPOTRF CPOTRF", {"U 280 m280x280 280", "L 280 m280x280 280", "L 520 m520x520 520"}},
    {"SPOTF2 CPOTF2 SPOTRI CPOTRI SLAUUM CLAUUM SLAUU2 CLAUU2", {"U 70 m70x70 70", "L 70 m70x70 70"}},
    {"SPOTRS CPOTRS", {"U 70 9 m70x70 70 m70x9 70"}},
    {"SPOSV CPOSV", {"U 70 9 m70x70 70 m70x9 70"}},
    {"SPOCON", {"L 70 m70x70 70 200 .1 .210 .70"}},
    {"CPOCON", {"L 70 m70x70 70 200 .1 .140 .70"}},
    {"SGBTRF SGBTF2", {"90 90 2 1 b3x90 6 .90", "90 90 36 40 b76x90 113 .90", "90 90 36 70 b106x90 143 .90"}},
    {"SGBTRS", {"N 90 2 1 2 b3x90 6 .90 m90x2 90", "T 90 2 1 2 b3x90 6 .90 m90x2 90"}},
    {"SGBSV", {"90 2 1 2 b3x90 6 .90 m90x2 90"}},
    {"SGBCON", {"1 90 2 1 b3x90 6 .90 20 .1 .270 .90"}},
    {"SPBTRF SPBTF2", {"U 90 2 b2x90 3", "L 90 40 b0x90 41"}},
    {"SPBTRS", {"U 90 2 2 b2x90 3 m90x2 90"}},
    {"SPBSV", {"U 90 2 2 b2x90 3 m90x2 90"}},
    {"SPBCON", {"U 90 2 b2x90 3 12 .1 .270 .90"}},
    {"STBTRS", {"U N N 90 2 2 b2x90 3 m90x2 90"}},
    {"SLATBS", {"U N N N 90 2 b2x90 3 .90 .1 .90"}},
    {"SLANGE CLANGE",
     {"M 70 60 m70x60 70 .0", "1 70 60 m70x60 70 .0", "I 70 60 m70x60 70 .70", "F 70 60 m70x60 70 .0"}},
    {"SLANTR CLANTR",
     {"M U N 60 70 m60x70 70 .0", "1 L N 70 60 m70x60 70 .0", "I U U 60 70 m60x70 70 .60", "F L N 70 60 m70x60 70 .0"}},
    {"SLANSY", {"M U 60 m60x60 60 .0", "1 L 60 m60x60 60 .60", "F U 60 m60x60 60 .0"}},
    {"SLANST", {"M 60 .60 .59", "1 60 .60 .59", "F 60 .60 .59"}},
    {"SLASSQ CLASSQ", {"60 m1x60 1 0 1"}},
    {"SLACPY CLACPY", {"A 60 70 m60x70 70 m60x70 60"}},
    {"SLASET CLASET", {"A 60 70 0 1 m60x70 70"}},
    {"SLASCL CLASCL", {"G 0 0 3 1e-30 60 70 m60x70 70"}},
    {"SRSCL CSRSCL", {"60 3 m1x60 1"}},
    {"SLACN2", {"40 .40 .40 .40 .1 .1 .3"}},
    {"CLACN2", {"40 .40 .40 .1 .1 .3"}},
    {"SGEQRF CGEQRF", {"200 180 m200x180 200 .180 w 200", "300 40 m300x40 300 .40 w 40"}},
    {"SGELS", {"N 70 60 9 m70x60 70 m70x9 70 w 120", "T 60 70 3 m60x70 60 m70x3 70 w 5000"}},
    {"CGELS", {"C 70 60 9 m70x60 70 m70x9 70 w 120", "N 60 70 3 m60x70 60 m70x3 70 w 5000"}},
    {"SGEQP3", {"100 80 m100x80 100 .80 .80 w 500"}},
    {"CGEQP3", {"100 80 m100x80 100 .80 .80 w 500 .160"}},
    {"SLAQPS CLAQPS", {"40 30 0 8 .1 m40x30 40 .30 .8 .30 .30 .8 m30x8 30"}},
    {"SLAQP2 CLAQP2", {"40 30 0 m40x30 40 .30 .30 .30 .30 .30"}},
    {"SGELQF CGELQF", {"120 140 m120x140 120 .120 w 120"}},
    {"SGEQR2 CGEQR2", {"50 40 m50x40 50 .40 .40"}},
    {"SGELQ2 CGELQ2", {"50 40 m50x40 50 .40 .50"}},
    {"SORMQR SORMQL", {"L T 30 40 17 m30x17 30 .17 m30x40 30 w 40"}},
    {"CUNMQR CUNMQL", {"R C 40 30 6 m30x6 30 .6 m40x30 40 w 40"}},
    {"SORMLQ", {"L N 30 40 17 m17x30 17 .17 m30x40 30 w 40"}},
    {"CUNMLQ", {"R N 40 30 6 m6x30 6 .6 m40x30 40 w 40"}},
    {"SORM2R SORM2L", {"L T 30 40 9 m30x9 30 .9 m30x40 30 .40"}},
    {"CUNM2R CUNM2L", {"R C 40 30 6 m30x6 30 .6 m40x30 40 .40"}},
    {"SORML2", {"L N 30 40 9 m9x30 9 .9 m30x40 30 .40"}},
    {"CUNML2", {"R N 40 30 6 m6x30 6 .6 m40x30 40 .40"}},
    {"SORGQR", {"34 33 33 m34x33 34 .33 w 500"}},
    {"CUNGQR", {"30 20 6 m30x20 30 .6 w 20"}},
    {"SORGLQ", {"33 34 33 m33x34 33 .33 w 500"}},
    {"CUNGLQ", {"20 30 6 m20x30 20 .6 w 20"}},
    {"SORG2R CUNG2R", {"30 20 6 m30x20 30 .6 .20"}},
    {"SORGL2 CUNGL2", {"20 30 6 m20x30 20 .6 .20"}},
    {"SLARFG CLARFG SLARFP CLARFP", {"40 2 m1x39 1 .1"}},
    {"SLARF CLARF", {"L 40 30 m1x40 1 1 m40x30 40 .30"}},
    {"SLARFT CLARFT", {"F C 40 8 m40x8 40 .8 m8x8 8", "B R 40 8 m8x40 8 .8 m8x8 8"}},
    {"SLARFB CLARFB", {"L N F C 40 30 8 m40x8 40 m8x8 8 m40x30 40 m30x8 30"}},
    {"SLAPY2", {"3 4"}},
    {"SLAPY3", {"3 4 0"}},
    {"SLADIV", {"3 4 2 1 .1 .1"}},
    {"CLADIV", {".1 4 2"}},
    {"SLARTG", {"3 4 .1 .1 .1", "0 4 .1 .1 .1"}},
    {"SLAS2", {"3 4 2 .1 .1"}},
    {"SLASV2", {"3 4 2 .1 .1 .1 .1 .1 .1", "0 4 2 .1 .1 .1 .1 .1 .1"}},
    {"SLASR", {"L V F 40 30 .39 .39 m40x30 40", "R B B 40 30 .29 .29 m40x30 40"}},
    {"SGEBRD CGEBRD",
     {"410 405 m410x405 410 .405 .404 .405 .405 w 30000", "90 70 m90x70 90 .70 .69 .70 .70 w 5000",
      "40 90 m40x90 40 .40 .39 .40 .40 w 130"}},
    {"SORGBR CUNGBR",
     {"Q 60 50 50 m60x50 60 .50 w 2000", "P 40 60 40 m40x60 60 .40 w 2000", "Q 50 50 60 m50x50 50 .50 w 2000"}},
    {"SORMBR", {"Q L T 60 40 50 m60x50 60 .50 m60x40 60 w 4000", "P R N 40 50 60 m50x50 60 .50 m40x50 40 w 4000"}},
    {"CUNMBR", {"Q L C 60 40 50 m60x50 60 .50 m60x40 60 w 4000", "P R N 40 50 60 m50x50 60 .50 m40x50 40 w 4000"}},
    {"SGESDD",
     {"A 70 60 m70x60 70 .60 m70x70 70 m60x60 60 w 30000 .480",
      "S 90 40 m90x40 90 .40 m90x40 90 m40x40 90 w 30000 .320", "O 50 90 m50x90 50 .50 m50x50 50 .0 1 w 30000 .400",
      "N 40 40 m40x40 40 .40 .0 1 .0 1 w 30000 .320"}},
    {"CGESDD",
     {"A 9 8 m9x8 9 .8 m9x9 9 m8x8 9 w 900 .376 .64", "S 18 8 m18x8 18 .8 m18x8 18 m8x8 18 w 900 .424 .64",
      "O 13 8 m13x8 13 .8 .0 1 m8x8 13 w 900 .376 .64", "N 40 40 m40x40 40 .40 .0 1 .0 1 w 9000 .200 .320"}},
    {"CLACRM", {"15 12 m15x12 20 m12x12 20 m15x12 20 .360"}},
    {"CLARCM", {"15 12 m15x15 20 m15x12 20 m15x12 20 .360"}},
    {"CLACP2", {"U 20 15 m20x15 20 m20x15 20"}},
    {"SGEBD2 CGEBD2", {"40 30 m40x30 40 .30 .29 .30 .30 .40"}},
    {"SLABRD CLABRD", {"40 30 4 m40x30 40 .4 .4 .4 .4 m40x4 40 m30x4 30"}},
    {"SBDSQR", {"U 40 40 40 0 v40 .39 m40x40 40 m40x40 40 .0 1 .160", "L 40 0 0 0 v40 .39 .0 1 .0 1 .0 1 .160"}},
    {"SLASDQ", {"U 1 20 21 20 0 v20 .20 m21x21 21 m20x20 20 .0 1 .80"}},
    {"SLASD0", {"20 0 v20 .19 m20x20 20 m20x20 20 25 .160 .1240"}},
    {"SLASD1", {"1 1 0 .3 1 1 m3x3 3 m3x3 3 .3 .12 .33"}},
    {"SLASD4", {"1 1 .1 .1 .1 1 .1 .1", "2 2 .2 .2 .2 1 .1 .2"}},
    {"SBDSDC",
     {"U I 10 .10 .9 m10x10 10 m10x10 10 .0 .0 .340 .80", "L N 40 .40 .39 .0 1 .0 1 .0 .0 .160 .320",
      "U P 15 v15 .14 .0 1 .0 1 .915 .45 .90 .120"}},
    {"SLASD2", {"1 1 1 .1 .3 .4 1 1 m3x3 3 m4x4 4 .3 m3x3 3 m4x4 4 .3 .3 .3 .3 .4"}},
    {"SLASD3", {"1 1 0 1 .1 m1x1 1 .1 m3x3 3 m3x3 3 m3x3 3 m3x3 3 .3 .4 .1"}},
    {"SLASD6", {"1 1 1 1 .3 .4 .4 1 1 .3 .3 .1 .6 3 .6 3 .6 .3 .6 .4 .1 .1 .1 .16 .9"}},
    {"SLASD7", {"1 1 1 1 .1 .3 .4 .4 .4 .4 .4 .4 1 1 .3 .3 .3 .3 .3 .1 .6 3 .6 3 .1 .1"}},
    {"SLASD8", {"1 1 .1 .1 .1 .1 .1 .2 1 .1 .3"}},
    {"SLASDA",
     {"1 3 9 1 v9 .9 .30 10 .40 .9 .20 .40 .20 .40 .9 .36 9 .18 .40 .9 .9 .70 .63",
      "0 3 9 1 v9 .9 .30 10 .40 .9 .20 .40 .20 .40 .9 .36 9 .18 .40 .9 .9 .70 .63"}},
    {"SLASD5", {"1 .2 .2 .2 1 .1 .2", "2 .2 .2 .2 1 .1 .2"}},
    {"SLAED6", {"2 1 1 .3 .3 0 .1"}},
    {"CLACGV", {"3 .3 1", "3 .3 -1"}},
    {"SLASDT", {"60 .1 .1 .60 .60 .60 25"}},
    {"SLAMRG", {"3 3 .6 1 1 .6"}},
    {"SLANV2", {"1 2 3 4 .1 .1 .1 .1 .1 .1", "1 -2 3 4 .1 .1 .1 .1 .1 .1"}},
    {"SLALN2", {"0 2 2 1e-30 1 m2x2 2 1 1 m2x2 2 0.5 0.5 m2x2 2 .1 .1"}},
    {"SLASY2", {"0 0 1 2 2 m2x2 2 m2x2 2 m2x2 2 .1 m2x2 2 .1"}},
    {"SGEBAL", {"B 40 m40x40 40 .1 .1 .40"}},
    {"SGEBAK", {"B R 40 1 40 .40 30 m40x30 40"}},
    {"SGEHRD", {"150 1 150 m150x150 150 .149 w 4800", "30 1 30 m30x30 30 .29 w 30"}},
    {"SGEHD2", {"30 1 30 m30x30 30 .29 .30"}},
    {"SLAHR2", {"100 1 16 m100x100 100 .16 m16x16 17 m100x16 100"}},
    {"SORGHR", {"20 1 20 m20x20 20 .19 w 40"}},
    {"SORMHR", {"L T 20 5 1 20 m20x20 20 .19 m20x5 20 w 40"}},
    {"SHSEQR",
     {"S I 130 1 130 m130x130 130 .130 .130 m130x130 130 w 9000", "E N 20 1 20 m20x20 20 .20 .20 .0 20 w 20"}},
    {"SLAHQR", {"1 1 40 1 40 m40x40 40 .40 .40 1 40 m40x40 40"}},
    {"SLAQR0 SLAQR4",
     {"1 1 40 1 40 m40x40 40 .40 .40 1 40 m40x40 40 w 400", "0 0 20 1 20 m20x20 20 .20 .20 1 20 .0 20 w 20"}},
    {"SLAQR1", {"2 m2x2 2 1 2 1 -2 .2", "3 m3x3 3 2 0 1 0 .3"}},
    {"SLAQR3 SLAQR2",
     {"1 1 90 1 90 12 m90x90 90 1 90 m90x90 90 .1 .1 .90 .90 m12x12 12 40 m12x40 12 40 m40x12 40 w 900"}},
    {"SLAQR5",
     {"1 1 0 60 1 60 4 .4 .4 m60x60 60 1 60 m60x60 60 m3x2 3 m9x9 9 20 m20x9 20 20 m9x20 9",
      "1 1 2 60 1 60 4 .4 .4 m60x60 60 1 60 m60x60 60 m3x2 3 m9x9 9 20 m20x9 20 20 m9x20 9"}},
    {"STREVC", {"B A .0 2 m2x2 2 m2x2 2 m2x2 2 2 .1 .6", "B B .0 2 m2x2 2 m2x2 2 m2x2 2 2 .1 .6"}},
    {"STREXC", {"V 2 m2x2 2 m2x2 2 1 2 .2"}},
    {"SLAEXC", {"1 4 m4x4 4 m4x4 4 1 1 1 .4", "1 4 m4x4 4 m4x4 4 2 1 1 .4"}},
    {"SLARFX", {"L 3 20 .3 0.5 m3x20 20 .20", "R 20 12 .12 0.5 m20x12 20 .20"}},
    {"SGEEV",
     {"V V 100 m100x100 100 .100 .100 m100x100 100 m100x100 100 w 4000", "N N 20 m20x20 20 .20 .20 .0 1 .0 1 w 60"}},
    {"SSTERF", {"40 .40 .39"}},
    {"SSTEBZ",
     {"A B 40 0 1 9 9 0 .40 .39 .1 .1 .40 .40 .40 .160 .120", "I E 40 0 0 2 3 0 .40 .39 .1 .1 .40 .40 .40 .160 .120"}},
    {"SSTEIN", {"40 .40 .39 1 .40 .40 .40 m40x1 40 .200 .40 .1"}},
    {"SSYTRD",
     {"U 300 m300x300 300 .300 .299 .299 w 6000", "L 300 m300x300 300 .300 .299 .299 w 6000",
      "L 60 m60x60 60 .60 .59 .59 w 1", "L 610 m610x610 610 .610 .609 .609 w 20000"}},
    {"SSYTD2", {"U 40 m40x40 40 .40 .39 .39", "L 40 m40x40 40 .40 .39 .39"}},
    {"SLATRD", {"U 40 8 m40x40 40 .39 .39 m40x8 40", "L 40 8 m40x40 40 .39 .39 m40x8 40"}},
    {"SORMTR", {"L U N 40 30 m40x40 40 .39 m40x30 40 w 300", "R L T 30 40 m40x40 40 .39 m30x40 40 w 300"}},
    {"SSYEVR",
     {"V A U 60 m60x60 60 0 0 0 0 0 .1 .60 m60x60 60 .120 w 3000 w 600",
      "N A L 60 m60x60 60 0 0 0 0 0 .1 .60 .0 60 .120 w 3000 w 600",
      "V I L 60 m60x60 60 0 0 3 9 0 .1 .60 m60x7 60 .14 w 3000 w 600"}},
    {"SSTEMR",
     {"V A 40 .40 .40 0 0 0 0 .1 .40 m40x40 40 40 .80 1 w 720 w 400",
      "N I 40 .40 .40 0 0 3 9 .1 .40 .0 40 40 .80 0 w 720 w 400"}},
    {"SLASQ1", {"40 v40 .40 .160"}},
    {"SLASQ2", {"40 v160", "3 v12"}},
    {"SLASQ3", {"1 40 v160 0 1 0 0 1 0 0 0 0 0 1 1 1 1 1 0 0"}},
    {"SLASQ4", {"1 40 v160 0 40 1 1 1 1 1 1 .1 .1 .1", "1 3 v12 1 4 1 1 1 1 1 1 .1 .1 .1"}},
    {"SLASQ5", {"1 40 v160 0 0.5 .1 .1 .1 .1 .1 .1 1"}},
    {"SLASQ6", {"1 40 v160 1 .1 .1 .1 .1 .1 .1"}},
    {"SLAEBZ",
     {"1 30 40 9 3 0 0 1e-6 1e-30 v40 .1 .39 .9 .18 .9 .1 .18 .9 .9",
      "2 30 40 9 3 0 0 1e-6 1e-30 v40 .1 .39 .9 .18 .9 .1 .18 .9 .9",
      "3 30 40 9 3 0 0 1e-6 1e-30 v40 .1 .39 .9 .18 .9 .1 .18 .9 .9"}},
    {"SLARRA", {"40 v40 .39 .39 -1e-6 90 .1 .40"}},
    {"SLARRB", {"40 v40 .39 3 3 1e-3 1e-4 2 0.37 0.1 0.01 .1 .1 1e-30 99 40"}},
    {"SLARRJ", {"40 v40 .39 3 9 1e-5 2 v7 .7 .1 .1 1e-30 99"}},
    {"SLARRD", {"A E 40 0 1 9 9 .80 1e-5 v40 .39 .39 1e-30 1 40 .1 .40 .40 .1 .1 .40 .40 .160 .120"}},
    {"SLARRE",
     {"A 40 .1 .1 0 0 v40 .40 .39 1e-4 1e-4 -1e-6 .1 .40 .1 .40 .40 .40 .40 .40 .80 .1 .240 .200",
      "I 40 .1 .1 2 9 v40 .40 .39 1e-4 1e-4 -1e-6 .1 .40 .1 .40 .40 .40 .40 .40 .80 .1 .240 .200"}},
    {"SLARRF", {"40 v40 .39 .39 1 2 .2 .2 .2 99 1 1 1e-30 .1 .40 .39 .80"}},
    {"SLARRV", {"2 0 9 v2 .2 1e-30 2 1 1 1 1e-3 1e-4 1e-4 0.37 0.01 .1 .1 .1 .4 m2x1 2 .2 .24 .14"}},
    {"SLAR1V",
     {"40 1 40 0.5 v40 .39 .39 .39 1e-30 0 .40 1 .1 .1 .1 0 .2 .1 .1 .1 .160",
      "40 3 30 0.5 v40 .39 .39 .39 1e-30 0 .40 0 .1 .1 .1 9 .2 .1 .1 .1 .160"}},
    {"SLARUV", {".4 100 .100"}},
    {"SLARRR", {"40 v500 .40"}},
    {"SLARRC", {"T 40 0.1 2 v40 .40 1e-30 .1 .1 .1", "L 40 0.1 2 v40 .40 1e-30 .1 .1 .1"}},
    {"SLARRK", {"40 3 -9 9 v40 .39 1e-30 1e-6 .1 .1"}},
    {"SLANEG", {"40 v40 .39 0.3 1e-30 20"}},
    {"SLASRT", {"I 40 v40"}},
    {"SLAGTF", {"40 .40 0.5 .39 .39 0 .38 .40"}},
    {"SLAGTS", {"-1 3 .3 .2 .2 .1 .3 .3 0"}},
    {"SLARNV", {"3 .4 40 .40"}},
    {"SLAE2", {"1 2 3 .1 .1"}},
    {"SLAEV2", {"1 2 3 .1 .1 .1 .1"}},

    {"SGEMM CGEMM",
     {"N T 140 130 120 2 m140x120 141 m130x120 130 1 m140x130 140", "T N 9 300 31 1 m31x9 31 m31x300 32 0 m9x300 9",
      "C C 70 3 150 1 m150x70 150 m3x150 3 0.5 m70x3 70"}},
    {"STRMM STRSM CTRMM CTRSM",
     {"L U N N 150 90 1 m150x150 150 m150x90 151", "R L C U 90 130 2 m130x130 130 m90x130 90"}},
    {"SSYMM CSYMM CHEMM",
     {"L U 120 70 2 m120x120 121 m120x70 120 1 m120x70 120", "R L 9 130 1 m130x130 130 m9x130 9 0 m9x130 9"}},
    {"SSYRK CSYRK", {"U N 150 40 2 m150x40 150 1 m150x150 151", "L T 130 90 1 m90x130 90 0 m130x130 130"}},
    {"CHERK", {"U N 150 40 2 m150x40 150 1 m150x150 151", "L C 130 90 1 m90x130 90 0 m130x130 130"}},
    {"SSYR2K CSYR2K",
     {"U T 120 40 2 m40x120 41 m40x120 40 1 m120x120 120", "L N 70 50 1 m70x50 70 m70x50 70 0 m70x70 70"}},
    {"CHER2K", {"U C 120 40 2 m40x120 41 m40x120 40 1 m120x120 120", "L N 70 50 1 m70x50 70 m70x50 70 0 m70x70 70"}},
    {"SGEMV CGEMV",
     {"N 300 270 2 m300x270 301 m1x270 1 1 m1x300 -2", "T 270 33 1 m270x33 270 m1x270 -1 0 m1x33 3",
      "C 5 130 1 m5x130 5 m1x5 1 0 m1x130 1"}},
    {"SGBMV CGBMV", {"N 60 70 3 4 2 b7x70 8 m1x70 1 1 m1x60 2", "T 60 50 3 4 1 b7x50 8 m1x60 -2 0 m1x50 1"}},
    {"SSYMV CHEMV", {"U 270 2 m270x270 271 m1x270 1 1 m1x270 -2", "L 90 1 m90x90 90 m1x90 2 0 m1x90 1"}},
    {"SSBMV CHBMV", {"U 70 5 2 b5x70 6 m1x70 1 1 m1x70 1", "L 70 5 2 b0x70 6 m1x70 -1 0 m1x70 2"}},
    {"STRMV STRSV CTRMV CTRSV",
     {"U N N 170 m170x170 171 m1x170 1", "L T U 90 m90x90 90 m1x90 -2", "L C N 33 m33x33 33 m1x33 1"}},
    {"STBMV STBSV CTBMV CTBSV", {"U N N 70 5 b5x70 6 m1x70 1", "L T U 70 5 b0x70 6 m1x70 -2"}},
    {"SSPMV CHPMV", {"U 70 2 .2485 m1x70 1 1 m1x70 2"}},
    {"STPMV STPSV CTPMV CTPSV", {"U N U 20 .210 m1x20 1"}},
    {"SSPR CHPR", {"U 70 2 m1x70 1 .2485"}},
    {"SSPR2 CHPR2", {"L 70 2 m1x70 1 m1x70 -2 .2485"}},
    {"SGER CGERU CGERC", {"170 140 2 m1x170 1 m1x140 -2 m170x140 171"}},
    {"SSYR CHER", {"U 170 2 m1x170 -2 m170x170 170", "L 90 2 m1x90 1 m90x90 91"}},
    {"SSYR2 CHER2", {"U 170 2 m1x170 1 m1x170 2 m170x170 170", "L 90 2 m1x90 1 m1x90 1 m90x90 91"}},
    {"SAXPY CAXPY", {"300 2 m1x300 1 m1x300 1", "70 2 m1x70 2 m1x70 -3"}},
    {"SCOPY CCOPY SSWAP CSWAP", {"300 m1x300 1 m1x300 1", "70 m1x70 2 m1x70 -3"}},
    {"SSCAL CSCAL CSSCAL", {"300 2 m1x300 1", "70 2 m1x70 3"}},
    {"SDOT DSDOT", {"300 m1x300 1 m1x300 1", "70 m1x70 2 m1x70 -3"}},
    {"SDSDOT", {"300 2 m1x300 1 m1x300 1"}},
    {"CDOTC CDOTU", {".1 300 m1x300 1 m1x300 1", ".1 70 m1x70 2 m1x70 -3"}},
    {"SNRM2 SCNRM2 SASUM SCASUM ISAMAX ICAMAX", {"300 m1x300 1", "70 m1x70 2"}},
    {"SROT CSROT", {"300 m1x300 1 m1x300 1 0.8 0.6", "70 m1x70 2 m1x70 -3 0.8 0.6"}},
    {"SROTG CROTG", {".1 .1 .1 .1"}},
    {"SROTM", {"300 m1x300 1 m1x300 1 .5"}},
    {"SROTMG", {".1 .1 .1 .1 .5"}},
    {"SCABS1", {".1"}},
};

// ---- The rows of src/routines -------------------------------------------------------------------------------------

std::map<std::string, Function<int>> routines;

template <class Entry>
bool add(const char* name, Entry* routine) {
    return routines.insert({name, function_of<int>(routine)}).second;
}

#define CHECKED(NAME, name, ...) const bool name##_added = add(QRV_MEMBER_TEXT(NAME), QRV_MEMBER(NAME));
#define UNCHECKED(Result, NAME, name, ...) CHECKED(NAME, name)
#define REPORTED CHECKED
#define GUARDED(NAME, ...) const bool NAME##_added = add(QRV_MEMBER_TEXT(NAME), QRV_MEMBER(NAME));
#define DIRECT(Result, NAME, ...) GUARDED(NAME)
#define DIRECT_NAMED(Result, NAME, ...) const bool NAME##_named = add(#NAME, NAME);
#define ROUTE(NAME, name, ...) const bool name##_added = add(QRV_MEMBER_TEXT(NAME) ":" #name, QRV_LAPACK_MEMBER(name));
#define QRV_ROUTINES "routines/lapack.def"
#include "routines/members.def"
#undef QRV_ROUTINES
#define QRV_ROUTINES "routines/blas.def"
#include "routines/members.def"

using Arguments = std::vector<Argument>;

struct Case {
    std::string text;
    const Function<int>* routine;
    bool hasInfo;
    Arguments given, found; // before a call and after one

    Case(const std::string& name, const std::string& call) : text(name + ' ' + call), routine(&routines.at(name)) {
        hasInfo = words_of(call).size() + 1 == routine->kinds.size();
        given = arguments_of(routine->kinds, hasInfo ? call + " -99" : call);
        found = given;
    }
    void run(Arguments& arguments) const { (*routine)(arguments); }
    int info(const Arguments& arguments) const { return hasInfo ? arguments.back().value() : 0; }
    bool same_bits_on_a_team() const { return text.substr(1, 5) != "POTRF"; } // whose tiles go to whom is ready
    // How far argument k is from what was found: its elements, or its norm where signs and order of what is found hang
    // on the last bits.
    double distance(const Arguments& arguments, std::size_t k) const {
        static const std::set<std::string> notUnique = {"GEBRD", "GEEV ", "GEHRD", "GESDD", "HSEQR",
                                                        "LABRD", "LATRD", "SYEVR", "SYTRD"};
        const auto distance = arguments[k].distance(found[k]);
        return notUnique.count(text.substr(1, 5)) ? distance.ofNorms : distance.ofElements;
    }
};

std::vector<Case> all_cases() {
    std::vector<Case> cases;
    for (const auto& [names, calls] : rows)
        for (const std::string& name : words_of(names))
            for (const char* call : calls)
                cases.emplace_back(name, call);
    return cases;
}

TEST(Calls, AreToldOfEveryRoutine) {
    auto untold = routines;
    for (const auto& [names, calls] : rows)
        for (const std::string& name : words_of(names))
            untold.erase(name);
    for (const auto& [name, routine] : untold)
        ADD_FAILURE() << name << " has no ordinary call in the table of this file";
}

// ---- Ordinary matrices ----------------------------------------------------------------------------------------------

TEST(Calls, RaiseNoFlags) {
    for (const int team : {1, 2}) {
        const ForcedTeam forced(team);
        for (Case& c : all_cases()) {
            EXPECT_EQ(flags_raised([&] { c.run(c.found); }), 0) << c.text;
            EXPECT_EQ(c.info(c.found), 0) << c.text << ": not ordinary";
        }
    }
}

TEST(Calls, TakeLittleStack) {
#ifdef QRV_CHECKED
    GTEST_SKIP() << "sanitizers and asserts take stack of their own";
#endif
    const ForcedTeam alone(1);
    for (Case& c : all_cases())
        EXPECT_LE(stack_taken([&] { c.run(c.found); }), stackOfACall) << c.text;
}

void expect_the_same_bits(const Case& c) {
    auto arguments = c.given;
    c.run(arguments);
    for (std::size_t i = 0; i < arguments.size(); ++i)
        EXPECT_TRUE(arguments[i].same_bits(c.found[i])) << c.text << ": argument " << i + 1;
}

TEST(Calls, BitsOfATeam) {
    Sample sample(4);
    for (const int team : {2, 3, 5, 24}) {
        const ForcedTeam forced(team);
        for (Case& c : all_cases()) {
            if (!c.same_bits_on_a_team() || !sample.takes())
                continue;
            c.run(c.found);
            for (int repeated = 0; repeated < sample.of_each(3, 50); ++repeated)
                expect_the_same_bits(c);
        }
    }
}

// Threads of a host that call everything in orders of their own find what one finds alone.
TEST(Calls, ConcurrencyOfHostThreads) {
    const ForcedTeam alone(1);
    auto cases = all_cases();
    for (Case& c : cases)
        c.run(c.found);
    const int calls = Sample::of_many(4'000, 1'000'000);
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < 8; ++t)
        threads.emplace_back([&, t] {
            std::minstd_rand random(t + 1);
            for (int k = calls / 8; k > 0; --k)
                expect_the_same_bits(cases[random() % cases.size()]);
        });
    for (std::thread& thread : threads)
        thread.join();
}

// From a region, a task and a section of a host a call takes one thread, as long as the number may be adjusted; if not,
// and regions may nest, each has a team of its own.
TEST(Calls, ConcurrencyInsideRegions) {
    auto cases = all_cases();
    const auto expect_of_every_thread = [&cases] {
        const auto count = static_cast<int>(cases.size());
#pragma omp parallel num_threads(3)
        {
            for (int i = omp_get_thread_num(); i < count; i += 2)
                expect_the_same_bits(cases[static_cast<std::size_t>(i)]);
#pragma omp single
            for (int i = 0; i < count; i += 3)
#pragma omp task
                expect_the_same_bits(cases[static_cast<std::size_t>(i)]);
#pragma omp sections
            {
                expect_the_same_bits(cases.front());
#pragma omp section
                expect_the_same_bits(cases.back());
            }
        }
    };
    const int dynamic = qrv_serv_get_dynamic(), levels = omp_get_max_active_levels();
    qrv_serv_set_dynamic(1);
    {
        const ForcedTeam alone(1);
        for (Case& c : cases)
            c.run(c.found);
    }
    qrv_serv_set_dynamic(1);
    expect_of_every_thread();
    if (omp_get_thread_limit() > 8) {
        const ForcedTeam forced(2);
        cases = all_cases();
        for (Case& c : cases)
            c.run(c.found);
        omp_set_max_active_levels(2);
        cases.erase(std::remove_if(cases.begin(), cases.end(), [](const Case& c) { return !c.same_bits_on_a_team(); }),
                    cases.end());
        expect_of_every_thread();
        omp_set_max_active_levels(levels);
    }
    qrv_serv_set_dynamic(dynamic);
}

// Threads that end with warm teams take nothing along that others need.
TEST(Calls, ConcurrencyOfEndingThreads) {
    const ForcedTeam forced(2);
    auto cases = all_cases();
    for (Case& c : cases)
        c.run(c.found);
    constexpr std::size_t threads = 12;
    for (std::size_t t = 0; t < threads; ++t)
        std::thread([&] {
            for (std::size_t i = t; i < cases.size(); i += threads)
                if (cases[i].same_bits_on_a_team())
                    expect_the_same_bits(cases[i]);
            if (t % 2)
                qrv_serv_free_thread_buffers();
        }).join();
}

// A child of a process whose teams are warm computes alone.
TEST(Calls, InAChildOfATeam) {
    auto cases = all_cases();
    {
        const ForcedTeam alone(1);
        for (Case& c : cases)
            c.run(c.found);
    }
    const ForcedTeam forced(2);
    for (const Case& c : cases) {
        auto arguments = c.given;
        c.run(arguments);
    }
    const pid_t child = fork();
    if (child == 0) {
        alarm(120);
        for (const Case& c : cases)
            expect_the_same_bits(c);
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

char underWay[200]; // for the message of a call that does not come back

[[noreturn]] void say_what_is_under_way(int) {
    _exit(write(STDERR_FILENO, underWay, std::strlen(underWay)) >= 0 ? 1 : 2);
}

// The arguments of a call, each with the last or the first byte of accessible memory as its own.
class BesideWalls {
public:
    BesideWalls(const Case& c, bool atFront) : arguments_(c.given) {
        for (Argument& a : arguments_) {
            const std::size_t bytes = a.is_text() ? 1 : a.bytes(), floats = (bytes + 3) / 4;
            walls_.push_back(std::make_unique<GuardPageArray>(floats, atFront));
            auto* const first = reinterpret_cast<char*>(walls_.back()->data());
            addresses_.push_back(atFront ? first : first + 4 * floats - bytes);
            std::copy_n(static_cast<const char*>(a.address()), bytes, addresses_.back());
        }
    }
    const Arguments& call(const Function<int>& routine) {
        const std::vector<void*> addresses(addresses_.begin(), addresses_.end());
        routine.invoke(routine.function, addresses.data());
        for (std::size_t k = 0; k < arguments_.size(); ++k)
            if (!arguments_[k].is_text())
                std::copy_n(addresses_[k], arguments_[k].bytes(), static_cast<char*>(arguments_[k].address()));
        return arguments_;
    }

private:
    Arguments arguments_;
    std::vector<std::unique_ptr<GuardPageArray>> walls_;
    std::vector<char*> addresses_;
};

// Neither what lies behind an argument nor what lies before it is read, wherever on a line of the caches it begins.
TEST(Calls, StayWithinTheirArguments) {
    const auto saved = std::signal(SIGSEGV, say_what_is_under_way);
    for (const int team : {1, 2}) {
        const ForcedTeam forced(team);
        for (Case& c : all_cases()) {
            c.run(c.found);
            for (const bool atFront : {false, true}) {
                std::snprintf(underWay, sizeof underWay, "%s: touches what lies %s an argument\n", c.text.c_str(),
                              atFront ? "before" : "behind");
                BesideWalls walls(c, atFront);
                const Arguments& found = walls.call(*c.routine);
                EXPECT_EQ(c.info(found), 0) << c.text;
                for (std::size_t k = 0; k < found.size(); ++k)
                    EXPECT_LE(c.distance(found, k), 0.02) << c.text << ": argument " << k + 1;
            }
        }
    }
    std::signal(SIGSEGV, saved);
}

// ---- Wide indices ---------------------------------------------------------------------------------------------------

// The matrices of a call with their columns so far apart that offsets pass 2^31 elements.
class FarApart {
public:
    static constexpr int gap = 1 << 29;

    explicit FarApart(const Case& c) : arguments_(c.given) {
        for (std::size_t k = 0; k < arguments_.size(); ++k) {
            addresses_.push_back(arguments_[k].address());
            if (!arguments_[k].is_floating() || !arguments_[k].is_matrix())
                continue;
            const std::size_t element = c.routine->kinds[k] == Kind::complex ? 8 : 4;
            const auto ld = static_cast<std::size_t>(std::abs(arguments_[k + 1].value()));
            far_.push_back({k, ld * element, (ld + gap) * element});
            const Far& far = far_.back();
            memory_.push_back(std::make_unique<Reserved>((arguments_[k].bytes() / far.bytes + 1) * far.distance));
            ok_ = ok_ && memory_.back()->ok();
        }
        for (std::size_t m = 0; ok_ && m < far_.size(); ++m) {
            addresses_[far_[m].position] = memory_[m]->floats();
            move(m, [](char* far, char* near, std::size_t bytes) { std::memcpy(far, near, bytes); });
        }
        for (const Far& far : far_) {
            const int ld = arguments_[far.position + 1].value();
            arguments_[far.position + 1].store(0, ld < 0 ? ld - gap : ld + gap);
        }
    }
    bool ok() const { return ok_; }
    bool any() const { return !far_.empty(); }

    // With the columns put together again.
    const Arguments& call(const Function<int>& routine) {
        routine.invoke(routine.function, addresses_.data());
        for (std::size_t m = 0; m < far_.size(); ++m)
            move(m, [](char* far, char* near, std::size_t bytes) { std::memcpy(near, far, bytes); });
        return arguments_;
    }

private:
    struct Far {
        std::size_t position, bytes, distance; // of a column
    };

    template <class Copy>
    void move(std::size_t m, Copy copy) {
        auto* const far = reinterpret_cast<char*>(memory_[m]->floats());
        auto* const near = static_cast<char*>(arguments_[far_[m].position].address());
        const std::size_t all = arguments_[far_[m].position].bytes(), column = far_[m].bytes;
        for (std::size_t j = 0; j * column < all; ++j)
            copy(far + j * far_[m].distance, near + j * column, std::min(column, all - j * column));
    }

    Arguments arguments_;
    std::vector<void*> addresses_;
    std::vector<Far> far_;
    std::vector<std::unique_ptr<Reserved>> memory_;
    bool ok_ = true;
};

TEST(Calls, ReachFarColumns) {
#ifdef QRV_CHECKED
    GTEST_SKIP() << "the sanitizer keeps a shadow of all addresses";
#endif
    if (sizeof(void*) == 4)
        GTEST_SKIP() << "no such addresses";
    Sample sample(2);
    for (Case& c : all_cases()) {
        if (!sample.takes())
            continue;
        FarApart far(c);
        if (!far.any())
            continue;
        if (!far.ok())
            GTEST_SKIP() << "no room for such matrices";
        c.run(c.found);
        const Arguments& found = far.call(*c.routine);
        for (std::size_t k = 0; k < found.size(); ++k)
            EXPECT_TRUE(found[k].distance(c.found[k]).ofElements <= 1e-3) << c.text << ": argument " << k + 1;
    }
}

// Of the first work array.
std::size_t work_of(const std::string& call) {
    const auto words = words_of(call);
    return static_cast<std::size_t>(std::find(words.begin(), words.end(), "w") - words.begin());
}

// What a caller is told that asks for the length of work arrays.
TEST(Calls, TellLengthsBeyondTheIntegers) {
    const OrdinaryCalls queries[] = {
        {"SGETRI CGETRI", {"# .1 # .1 w -1"}},
        {"SGEQRF CGEQRF SGELQF CGELQF", {"# # .1 # .1 w -1"}},
        {"SGEQP3", {"# # .1 # .1 .1 w -1"}},
        {"CGEQP3", {"# # .1 # .1 .1 w -1 .1"}},
        {"SORMQR SORMQL SORMLQ", {"L T # # # .1 # .1 .1 # w -1"}},
        {"CUNMQR CUNMQL CUNMLQ", {"R C # # # .1 # .1 .1 # w -1"}},
        {"SORGQR CUNGQR SORGLQ CUNGLQ", {"# # # .1 # .1 w -1"}},
        {"SGELS CGELS", {"N # # # .1 # .1 # w -1"}},
        {"SGEBRD CGEBRD", {"# # .1 # .1 .1 .1 .1 w -1"}},
        {"SORGBR CUNGBR", {"Q # # # .1 # .1 w -1"}},
        {"SORMBR", {"P L T # # # .1 # .1 .1 # w -1"}},
        {"CUNMBR", {"Q L C # # # .1 # .1 .1 # w -1"}},
        {"SGESDD", {"A # # .1 # .1 .1 # .1 # w -1 .1"}},
        {"CGESDD", {"O # # .1 # .1 .1 # .1 # w -1 .1 .1"}},
        {"SSYTRD", {"U # .1 # .1 .1 .1 w -1"}},
        {"SORMTR", {"L U N # # .1 # .1 .1 # w -1"}},
        {"SSYEVR", {"V A U # .1 # 0 0 0 0 0 .1 .1 .1 # .1 w -1 w -1"}},
        {"SGEHRD", {"# 1 # .1 # .1 w -1"}},
        {"SORGHR", {"# 1 # .1 # .1 w -1"}},
        {"SORMHR", {"L T # # 1 # .1 # .1 .1 # w -1"}},
        {"SHSEQR", {"S I # 1 # .1 # .1 .1 .1 # w -1"}},
        {"SGEEV", {"V V # .1 # .1 .1 .1 # .1 # w -1"}},
    };
    for (const auto& [names, calls] : queries)
        for (const std::string& name : words_of(names)) {
            std::string call = calls[0];
            while (call.find('#') != std::string::npos)
                call.replace(call.find('#'), 1, "2147483647");
            const Case c(name, call);
            BesideWalls walls(c, false);
            const Arguments& found = walls.call(*c.routine);
            EXPECT_EQ(c.info(found), 0) << c.text;
            float told = 0;
            std::memcpy(&told, found[work_of(call)].address(), sizeof told);
            EXPECT_TRUE(told >= 0x1p31F && told < 0x1p68F) << c.text << ": " << told;
        }
}

// ---- What goes wrong ------------------------------------------------------------------------------------------------

TEST(Calls, EndWhateverTheNumbers) {
    const auto alarmed = std::signal(SIGALRM, say_what_is_under_way);
    const auto strayed = std::signal(SIGSEGV, say_what_is_under_way);
    Sample sample(37);
    for (Case& c : all_cases())
        for (std::size_t k = 0; k < c.given.size(); ++k)
            for (const auto& place : c.given[k].places())
                for (const float value : {nan, infinity, -infinity, 0x1.fp127F, 0x1p-149F, -0.0F}) {
                    if (!sample.takes())
                        continue;
                    const Argument ordinary = c.given[k];
                    c.given[k].replace(place, value);
                    std::snprintf(underWay, sizeof underWay,
                                  "%s: %g at argument %d, from %zu on by %zu: does not end, or strays\n",
                                  c.text.c_str(), static_cast<double>(value), static_cast<int>(k + 1), place.first,
                                  place.step);
                    BesideWalls walls(c, false);
                    alarm(60);
                    walls.call(*c.routine);
                    alarm(0);
                    c.given[k] = ordinary;
                }
    std::signal(SIGALRM, alarmed);
    std::signal(SIGSEGV, strayed);
}

std::atomic<int> requests, refused;

void* refusing_malloc(std::size_t size) {
    return ++requests == refused ? nullptr : std::malloc(size);
}

// A request for memory that is refused is done without, and the result is that of another order of the same sums, or
// info tells.
TEST(Calls, BearRefusedMemory) {
    const AllocatorSlots saved = allocatorSlots;
    allocatorSlots.malloc = refusing_malloc;
    const auto run = [](const Case& c, Arguments& arguments, int which) {
        qrv_serv_free_buffers();
        requests = 0;
        refused = which;
        c.run(arguments);
        return requests.load();
    };
    Sample sample(11);
    for (const int team : {1, 2}) {
        const ForcedTeam forced(team);
        for (Case& c : all_cases()) {
            const int made = run(c, c.found, 0);
            for (int which = 1; which <= made; ++which) {
                if (!sample.takes())
                    continue;
                auto arguments = c.given;
                run(c, arguments, which);
                for (std::size_t k = 0; k < arguments.size() && c.info(arguments) == 0; ++k)
                    EXPECT_LE(c.distance(arguments, k), 0.02) << c.text << ": request " << which << " of " << made
                                                              << " refused, team " << team << ", argument " << k + 1;
            }
        }
    }
    qrv_serv_free_buffers();
    allocatorSlots = saved;
}

} // namespace
} // namespace qrv::test
