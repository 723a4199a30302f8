// Calls of every routine. With ordinary matrices: a host may have invalid operations, divisions by zero and overflows
// trapped, so that no flag of these is raised, whatever is computed on the way and not used; it may give its threads
// small stacks, and call on many of them. With numbers that are none, and without memory, calls end all the same.
#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <memory>
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
    {"SGETRF CGETRF SGETRF:getrf_ib_omp CGETRF:getrf_ib_omp", {"300 280 m 301 .", "400 390 m 400 ."}},
    {"SGETRS CGETRS", {"N 70 9 m 70 . m 71", "T 70 9 m 70 . m 71"}},
    {"SGESV CGESV", {"70 9 m 70 . m 71"}},
    {"SGETRI CGETRI", {"70 m 70 . w 70", "140 m 140 . w 9000"}},
    {"SGECON CGECON", {"1 70 m 70 200 . . .", "I 70 m 70 200 . . ."}},
    {"SLASWP CLASWP", {"30 m 40 1 20 . 1"}},
    {"STRTRS CTRTRS", {"U N N 70 9 m 70 m 70", "L T U 70 9 m 70 m 70", "U C N 3 1 m 3 m 3"}},
    {"STRTRI CTRTRI STRTI2 CTRTI2", {"U N 100 m 100", "L N 70 m 70"}},
    {"STRCON CTRCON", {"1 U N 40 m 40 . . .", "I L N 40 m 40 . . ."}},
    {"SLATRS CLATRS", {"U N N N 40 m 40 . . .", "L T N N 40 m 40 . . .", "U C U N 4 m 4 . . ."}},
    {"SPOTRF CPOTRF", {"U 280 m 280", "L 280 m 280", "L 520 m 520"}},
    {"SPOTF2 CPOTF2 SPOTRI CPOTRI SLAUUM CLAUUM SLAUU2 CLAUU2", {"U 70 m 70", "L 70 m 70"}},
    {"SPOTRS CPOTRS", {"U 70 9 m 70 m 70"}},
    {"SPOSV CPOSV", {"U 70 9 m 70 m 70"}},
    {"SPOCON CPOCON", {"L 70 m 70 200 . . ."}},
    {"SGBTRF SGBTF2", {"90 90 2 1 b3 6 .", "90 90 36 40 b76 113 .", "90 90 36 70 b106 143 ."}},
    {"SGBTRS", {"N 90 2 1 2 b3 6 . m 90", "T 90 2 1 2 b3 6 . m 90"}},
    {"SGBSV", {"90 2 1 2 b3 6 . m 90"}},
    {"SGBCON", {"1 90 2 1 b3 6 . 20 . . ."}},
    {"SPBTRF SPBTF2", {"U 90 2 b2 3", "L 90 40 b0 41"}},
    {"SPBTRS", {"U 90 2 2 b2 3 m 90"}},
    {"SPBSV", {"U 90 2 2 b2 3 m 90"}},
    {"SPBCON", {"U 90 2 b2 3 12 . . ."}},
    {"STBTRS", {"U N N 90 2 2 b2 3 m 90"}},
    {"SLATBS", {"U N N N 90 2 b2 3 . . ."}},
    {"SLANGE CLANGE", {"M 70 60 m 70 .", "1 70 60 m 70 .", "I 70 60 m 70 .", "F 70 60 m 70 ."}},
    {"SLANTR CLANTR", {"M U N 60 70 m 70 .", "1 L N 70 60 m 70 .", "I U U 60 70 m 70 .", "F L N 70 60 m 70 ."}},
    {"SLANSY", {"M U 60 m 60 .", "1 L 60 m 60 .", "F U 60 m 60 ."}},
    {"SLANST", {"M 60 . .", "1 60 . .", "F 60 . ."}},
    {"SLASSQ CLASSQ", {"60 m 1 0 1"}},
    {"SLACPY CLACPY", {"A 60 70 m 70 m 60"}},
    {"SLASET CLASET", {"A 60 70 0 1 m 70"}},
    {"SLASCL CLASCL", {"G 0 0 3 1e-30 60 70 m 70"}},
    {"SRSCL CSRSCL", {"60 3 m 1"}},
    {"SLACN2", {"40 . . . . . ."}},
    {"CLACN2", {"40 . . . . ."}},
    {"SGEQRF CGEQRF", {"200 180 m 200 . . 200", "300 40 m 300 . . 40"}},
    {"SGELS", {"N 70 60 9 m 70 m 70 w 120", "T 60 70 3 m 60 m 70 w 5000"}},
    {"CGELS", {"C 70 60 9 m 70 m 70 w 120", "N 60 70 3 m 60 m 70 w 5000"}},
    {"SGEQP3", {"100 80 m 100 . . . 500"}},
    {"CGEQP3", {"100 80 m 100 . . . 500 ."}},
    {"SLAQPS CLAQPS", {"40 30 0 8 . m 40 . . . . . m 30"}},
    {"SLAQP2 CLAQP2", {"40 30 0 m 40 . . . . ."}},
    {"SGELQF CGELQF", {"120 140 m 120 . . 120"}},
    {"SGEQR2 CGEQR2 SGELQ2 CGELQ2", {"50 40 m 50 . ."}},
    {"SORMQR SORMQL", {"L T 30 40 17 m 30 . m 30 . 40"}},
    {"CUNMQR CUNMQL", {"R C 40 30 6 m 30 . m 40 . 40"}},
    {"SORMLQ", {"L N 30 40 17 m 17 . m 30 . 40"}},
    {"CUNMLQ", {"R N 40 30 6 m 6 . m 40 . 40"}},
    {"SORM2R SORM2L", {"L T 30 40 9 m 30 . m 30 ."}},
    {"CUNM2R CUNM2L", {"R C 40 30 6 m 30 . m 40 ."}},
    {"SORML2", {"L N 30 40 9 m 9 . m 30 ."}},
    {"CUNML2", {"R N 40 30 6 m 6 . m 40 ."}},
    {"SORGQR", {"34 33 33 m 34 . . 500"}},
    {"CUNGQR", {"30 20 6 m 30 . . 20"}},
    {"SORGLQ", {"33 34 33 m 33 . . 500"}},
    {"CUNGLQ", {"20 30 6 m 20 . . 20"}},
    {"SORG2R CUNG2R", {"30 20 6 m 30 . ."}},
    {"SORGL2 CUNGL2", {"20 30 6 m 20 . ."}},
    {"SLARFG CLARFG SLARFP CLARFP", {"40 2 m 1 ."}},
    {"SLARF CLARF", {"L 40 30 m 1 1 m 40 ."}},
    {"SLARFT CLARFT", {"F C 40 8 m 40 . . 8", "B R 40 8 m 8 . . 8"}},
    {"SLARFB CLARFB", {"L N F C 40 30 8 m 40 m 8 m 40 . 30"}},
    {"SLAPY2", {"3 4"}},
    {"SLAPY3", {"3 4 0"}},
    {"SLADIV", {"3 4 2 1 . ."}},
    {"CLADIV", {". 4 2"}},
    {"SLARTG", {"3 4 . . .", "0 4 . . ."}},
    {"SLAS2", {"3 4 2 . ."}},
    {"SLASV2", {"3 4 2 . . . . . .", "0 4 2 . . . . . ."}},
    {"SLASR", {"L V F 40 30 . . m 40", "R B B 40 30 . . m 40"}},
    {"SGEBRD CGEBRD", {"410 405 m 410 . . . . w 30000", "90 70 m 90 . . . . w 5000", "40 90 m 40 . . . . w 130"}},
    {"SORGBR CUNGBR", {"Q 60 50 50 m 60 . w 2000", "P 40 60 40 m 60 . w 2000", "Q 50 50 60 m 50 . w 2000"}},
    {"SORMBR", {"Q L T 60 40 50 m 60 . m 60 w 4000", "P R N 40 50 60 m 60 . m 40 w 4000"}},
    {"CUNMBR", {"Q L C 60 40 50 m 60 . m 60 w 4000", "P R N 40 50 60 m 60 . m 40 w 4000"}},
    {"SGESDD",
     {"A 70 60 m 70 . m 70 m 60 w 30000 .", "S 90 40 m 90 . m 90 m 90 w 30000 .", "O 50 90 m 50 . m 50 . 1 w 30000 .",
      "N 40 40 m 40 . . 1 . 1 w 30000 ."}},
    {"CGESDD",
     {"A 9 8 m 9 . m 9 m 9 w 900 . .", "S 18 8 m 18 . m 18 m 18 w 900 . .", "O 13 8 m 13 . . 1 m 13 w 900 . .",
      "N 40 40 m 40 . . 1 . 1 w 9000 . ."}},
    {"CLACRM CLARCM", {"15 12 m 20 m 20 m 20 ."}},
    {"CLACP2", {"U 20 15 m 20 m 20"}},
    {"SGEBD2 CGEBD2", {"40 30 m 40 . . . . ."}},
    {"SLABRD CLABRD", {"40 30 4 m 40 . . . . m 40 m 30"}},
    {"SBDSQR", {"U 40 40 40 0 v . m 40 m 40 . 1 .", "L 40 0 0 0 v . . 1 . 1 . 1 ."}},
    {"SLASDQ", {"U 1 20 21 20 0 v . m 21 m 20 . 1 ."}},
    {"SLASD0", {"20 0 v . m 20 m 20 25 . ."}},
    {"SLASD1", {"1 1 0 . 1 1 m 3 m 3 . . ."}},
    {"SLASD4", {"1 1 . . . 1 . .", "2 2 . . . 1 . ."}},
    {"SBDSDC", {"U I 10 . . m 10 m 10 . . . .", "L N 40 . . m 1 m 1 . . . .", "U P 15 v . . 1 . 1 . . . ."}},
    {"SLASD2", {"1 1 1 . . . 1 1 m 3 m 4 . m 3 m 4 . . . . ."}},
    {"SLASD3", {"1 1 0 1 . m 1 . m 3 m 3 m 3 m 3 . . ."}},
    {"SLASD6", {"1 1 1 1 . . . 1 1 . . . . 3 . 3 . . . . . . . . ."}},
    {"SLASD7", {"1 1 1 1 . . . . . . . . 1 1 . . . . . . . 3 . 3 . ."}},
    {"SLASD8", {"1 1 . . . . . . 1 . ."}},
    {"SLASDA", {"1 3 9 1 v . . 10 . . . . . . . . 9 . . . . . .", "0 3 9 1 v . . 10 . . . . . . . . 9 . . . . . ."}},
    {"SLASD5", {"1 . . . 1 . .", "2 . . . 1 . ."}},
    {"SLAED6", {"2 1 1 . . 0 ."}},
    {"CLACGV", {"3 . 1", "3 . -1"}},
    {"SLASDT", {"60 . . . . . 25"}},
    {"SLAMRG", {"3 3 . 1 1 ."}},
    {"SLANV2", {"1 2 3 4 . . . . . .", "1 -2 3 4 . . . . . ."}},
    {"SLALN2", {"0 2 2 1e-30 1 m 2 1 1 m 2 0.5 0.5 m 2 . ."}},
    {"SLASY2", {"0 0 1 2 2 m 2 m 2 m 2 . m 2 ."}},
    {"SGEBAL", {"B 40 m 40 . . ."}},
    {"SGEBAK", {"B R 40 1 40 . 30 m 40"}},
    {"SGEHRD", {"150 1 150 m 150 . w 4800", "30 1 30 m 30 . w 30"}},
    {"SGEHD2", {"30 1 30 m 30 . ."}},
    {"SLAHR2", {"100 1 16 m 100 . m 17 m 100"}},
    {"SORGHR", {"20 1 20 m 20 . . 40"}},
    {"SORMHR", {"L T 20 5 1 20 m 20 . m 20 . 40"}},
    {"SHSEQR", {"S I 130 1 130 m 130 . . m 130 w 9000", "E N 20 1 20 m 20 . . m 20 w 20"}},
    {"SLAHQR", {"1 1 40 1 40 m 40 . . 1 40 m 40"}},
    {"SLAQR0 SLAQR4", {"1 1 40 1 40 m 40 . . 1 40 m 40 w 400", "0 0 20 1 20 m 20 . . 1 20 m 20 w 20"}},
    {"SLAQR1", {"2 m 2 1 2 1 -2 .", "3 m 3 2 0 1 0 ."}},
    {"SLAQR3 SLAQR2", {"1 1 90 1 90 12 m 90 1 90 m 90 . . . . m 12 40 m 12 40 m 40 w 900"}},
    {"SLAQR5",
     {"1 1 0 60 1 60 4 . . m 60 1 60 m 60 m 3 m 9 20 m 20 20 m 9",
      "1 1 2 60 1 60 4 . . m 60 1 60 m 60 m 3 m 9 20 m 20 20 m 9"}},
    {"STREVC", {"B A . 2 m 2 m 2 m 2 2 . .", "B B . 2 m 2 m 2 m 2 2 . ."}},
    {"STREXC", {"V 2 m 2 m 2 1 2 ."}},
    {"SLAEXC", {"1 4 m 4 m 4 1 1 1 .", "1 4 m 4 m 4 2 1 1 ."}},
    {"SLARFX", {"L 3 20 . 0.5 m 20 .", "R 20 12 . 0.5 m 20 ."}},
    {"SGEEV", {"V V 100 m 100 . . m 100 m 100 w 4000", "N N 20 m 20 . . . 1 . 1 w 60"}},
    {"SSTERF", {"40 . ."}},
    {"SSTEBZ", {"A B 40 0 1 9 9 0 . . . . . . . . .", "I E 40 0 0 2 3 0 . . . . . . . . ."}},
    {"SSTEIN", {"40 . . 1 . . . . 40 . . ."}},
    {"SSYTRD",
     {"U 300 m 300 . . . w 6000", "L 300 m 300 . . . w 6000", "L 60 m 60 . . . w 1", "L 610 m 610 . . . w 20000"}},
    {"SSYTD2", {"U 40 m 40 . . .", "L 40 m 40 . . ."}},
    {"SLATRD", {"U 40 8 m 40 . . m 40", "L 40 8 m 40 . . m 40"}},
    {"SORMTR", {"L U N 40 30 m 40 . m 40 w 300", "R L T 30 40 m 40 . m 40 w 300"}},
    {"SSYEVR",
     {"V A U 60 m 60 0 0 0 0 0 . . m 60 . w 3000 w 600", "N A L 60 m 60 0 0 0 0 0 . . m 60 . w 3000 w 600",
      "V I L 60 m 60 0 0 3 9 0 . . m 60 . w 3000 w 600"}},
    {"SSTEMR", {"V A 40 . . 0 0 0 0 . . m 40 40 . 1 w 720 w 400", "N I 40 . . 0 0 3 9 . . m 40 40 . 0 w 720 w 400"}},
    {"SLASQ1", {"40 v . ."}},
    {"SLARUV", {". 100 ."}},
    {"SLARRR", {"40 v ."}},
    {"SLARRC", {"T 40 0.1 2 v . 1e-30 . . .", "L 40 0.1 2 v . 1e-30 . . ."}},
    {"SLARRK", {"40 3 -9 9 v . 1e-30 1e-6 . ."}},
    {"SLANEG", {"40 v . 0.3 1e-30 20"}},
    {"SLASRT", {"I 40 v"}},
    {"SLAGTF", {"40 . 0.5 . . 0 . ."}},
    {"SLAGTS", {"-1 3 . . . . . . 0"}},
    {"SLARNV", {"3 . 40 ."}},
    {"SLAE2", {"1 2 3 . ."}},
    {"SLAEV2", {"1 2 3 . . . ."}},
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
#define ROUTE(NAME, name, ...) const bool name##_added = add(QRV_MEMBER_TEXT(NAME) ":" #name, QRV_LAPACK_MEMBER(name));
#define QRV_ROUTINES "routines/lapack.def"
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
    for (const int team : {2, 3, 5}) {
        const ForcedTeam forced(team);
        for (Case& c : all_cases()) {
            if (c.text.substr(1, 5) == "POTRF" || !sample.takes()) // the one whose bits a team may change
                continue;
            c.run(c.found);
            for (int repeated = 0; repeated < 3; ++repeated)
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

// Signs and order of what some find hang on the last bits.
bool is_unique(const Case& c) {
    const std::set<std::string> others = {"GEBRD", "GEEV ", "GEHRD", "GESDD", "HSEQR",
                                          "LABRD", "LATRD", "SYEVR", "SYTRD"};
    return others.count(c.text.substr(1, 5)) == 0;
}

// As large arrays lie that malloc gives.
TEST(Calls, OnArraysOffALine) {
    auto cases = all_cases();
    for (Case& c : cases)
        c.run(c.found);
    OnLines<unsigned char>::bytesOff = 16;
    auto off = all_cases();
    OnLines<unsigned char>::bytesOff = 0;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        off[i].run(off[i].given);
        EXPECT_EQ(off[i].info(off[i].given), 0) << off[i].text;
        for (std::size_t k = 0; k < cases[i].found.size(); ++k) {
            const auto distance = off[i].given[k].distance(cases[i].found[k]);
            EXPECT_TRUE((is_unique(cases[i]) ? distance.ofElements : distance.ofNorms) <= 0.02)
                << off[i].text << ": argument " << k + 1 << " off by " << distance.ofElements << ' '
                << distance.ofNorms;
        }
    }
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
            const auto ld = static_cast<std::size_t>(arguments_[k + 1].value());
            far_.push_back({k, ld * element, (ld + gap) * element, arguments_[k].bytes() / (ld * element)});
            const Far& far = far_.back();
            memory_.push_back(std::make_unique<Reserved>(far.columns * far.distance));
            ok_ = ok_ && memory_.back()->ok();
        }
        for (std::size_t m = 0; ok_ && m < far_.size(); ++m) {
            addresses_[far_[m].position] = memory_[m]->floats();
            move(m, [](char* far, char* near, std::size_t bytes) { std::memcpy(far, near, bytes); });
        }
        for (const Far& far : far_)
            arguments_[far.position + 1].store(0, arguments_[far.position + 1].value() + gap);
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
        std::size_t position, bytes, distance, columns;
    };

    template <class Copy>
    void move(std::size_t m, Copy copy) {
        auto* const far = reinterpret_cast<char*>(memory_[m]->floats());
        auto* const near = static_cast<char*>(arguments_[far_[m].position].address());
        for (std::size_t j = 0; j < far_[m].columns; ++j)
            copy(far + j * far_[m].distance, near + j * far_[m].bytes, far_[m].bytes);
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

// ---- What goes wrong ------------------------------------------------------------------------------------------------

char underWay[200]; // for the message of a call that does not end

void say_what_does_not_end(int) {
    if (write(STDERR_FILENO, underWay, std::strlen(underWay)) >= 0)
        _exit(1);
}

TEST(Calls, EndWhateverTheNumbers) {
    const auto saved = std::signal(SIGALRM, say_what_does_not_end);
    Sample sample(11);
    for (const Case& c : all_cases())
        for (std::size_t k = 0; k < c.given.size(); ++k)
            for (const float value : {nan, infinity, -infinity, 0x1.fp127F, 0x1p-149F, -0.0F})
                for (const std::size_t step : {1 << 30, 37, 1}) { // one element, some, all
                    if (!c.given[k].is_floating() || !sample.takes())
                        continue;
                    auto arguments = c.given;
                    arguments[k].replace(step, value);
                    std::snprintf(underWay, sizeof underWay, "%s: %g at argument %d, step %zu, does not end\n",
                                  c.text.c_str(), static_cast<double>(value), static_cast<int>(k + 1), step);
                    alarm(60);
                    c.run(arguments);
                    alarm(0);
                }
    std::signal(SIGALRM, saved);
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
                for (std::size_t k = 0; k < arguments.size() && c.info(arguments) == 0; ++k) {
                    const auto distance = arguments[k].distance(c.found[k]);
                    EXPECT_TRUE((is_unique(c) ? distance.ofElements : distance.ofNorms) <= 0.02)
                        << c.text << ": request " << which << " of " << made << " refused, team " << team
                        << ", argument " << k + 1 << " off by " << distance.ofElements << ' ' << distance.ofNorms;
                }
            }
        }
    }
    qrv_serv_free_buffers();
    allocatorSlots = saved;
}

} // namespace
} // namespace qrv::test
