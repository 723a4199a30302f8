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
#include "lapack/ordinary_calls.hpp"
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
    for (const ArgumentRow& row : argument_rows(ordinaryCalls))
        for (const std::string& name : row.names)
            for (const std::string& call : row.good)
                cases.emplace_back(name, call);
    return cases;
}
// Each of them, on teams of at most so many.
template <class Body>
void each_case(std::initializer_list<int> teams, const Body& body) {
    for (const int team : teams) {
        const ForcedTeam forced(team);
        for (Case& c : all_cases())
            body(c);
    }
}

// Run once on a team of this size.
std::vector<Case> cases_found_on(int team) {
    const ForcedTeam forced(team);
    auto cases = all_cases();
    for (Case& c : cases)
        c.run(c.found);
    return cases;
}

TEST(Calls, AreToldOfEveryRoutine) {
    auto untold = routines;
    for (const ArgumentRow& row : argument_rows(ordinaryCalls))
        for (const std::string& name : row.names)
            untold.erase(name);
    for (const auto& [name, routine] : untold)
        ADD_FAILURE() << name << " has no ordinary call in ordinary_calls.hpp";
}

// ---- Ordinary matrices ----------------------------------------------------------------------------------------------

TEST(Calls, RaiseNoFlags) {
    each_case({1, 2}, [](Case& c) {
        EXPECT_EQ(flags_raised([&] { c.run(c.found); }), 0) << c.text;
        EXPECT_EQ(c.info(c.found), 0) << c.text << ": not ordinary";
    });
}

TEST(Calls, TakeLittleStack) {
#ifdef QRV_CHECKED
    GTEST_SKIP() << "sanitizers and asserts take stack of their own";
#endif
    each_case({1}, [](Case& c) { EXPECT_LE(stack_taken([&] { c.run(c.found); }), stackOfACall) << c.text; });
}

void expect_the_same_bits(const Case& c) {
    auto arguments = c.given;
    c.run(arguments);
    for (std::size_t i = 0; i < arguments.size(); ++i)
        EXPECT_TRUE(arguments[i].same_bits(c.found[i])) << c.text << ": argument " << i + 1;
}

TEST(Calls, BitsOfATeam) {
    Sample sample(4);
    each_case({2, 3, 5, 24}, [&](Case& c) {
        if (!c.same_bits_on_a_team() || !sample.takes())
            return;
        c.run(c.found);
        for (int repeated = 0; repeated < sample.of_each(3, 50); ++repeated)
            expect_the_same_bits(c);
    });
}

// Threads of a host that call everything in orders of their own find what one finds alone.
TEST(Calls, ConcurrencyOfHostThreads) {
    const auto cases = cases_found_on(1);
    const ForcedTeam alone(1);
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

// Calls from a region, a task and a section of a host.
void expect_inside_regions(const std::vector<Case>& cases) {
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
}

// There a call takes one thread, as long as the number may be adjusted.
TEST(Calls, ConcurrencyInsideRegions) {
    const int dynamic = qrv_serv_get_dynamic();
    qrv_serv_set_dynamic(1);
    expect_inside_regions(cases_found_on(1));
    qrv_serv_set_dynamic(dynamic);
}

// If not, and regions may nest, each has a team of its own. The thread sanitizer does not run this: it loses the ends
// of nested regions and reports races between any two of them.
TEST(Calls, TeamsInsideRegions) {
    if (omp_get_thread_limit() <= 8)
        GTEST_SKIP() << "nested teams want more threads";
    const int levels = omp_get_max_active_levels();
    auto cases = cases_found_on(2);
    const ForcedTeam forced(2);
    omp_set_max_active_levels(2);
    cases.erase(std::remove_if(cases.begin(), cases.end(), [](const Case& c) { return !c.same_bits_on_a_team(); }),
                cases.end());
    expect_inside_regions(cases);
    omp_set_max_active_levels(levels);
}

// Threads that end with warm teams take nothing along that others need.
TEST(Calls, ConcurrencyOfEndingThreads) {
    const auto cases = cases_found_on(2);
    const ForcedTeam forced(2);
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
    const auto cases = cases_found_on(1);
    cases_found_on(2); // warms the team
    const ForcedTeam forced(2);
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

// The arguments of a call, each with the last or the first byte of accessible memory as its own, or so many bytes
// behind that and between numbers that are none.
class BesideWalls {
public:
    enum Side { atEnd, atFront };

    BesideWalls(const Case& c, Side side, std::size_t before = 0) : arguments_(c.given) {
        const std::size_t behind = before > 0 ? 64 : 0;
        for (Argument& a : arguments_) {
            const std::size_t bytes = size_of(a), floats = (before + bytes + behind + 3) / 4;
            walls_.push_back(std::make_unique<GuardPageArray>(floats, side == atFront));
            auto* const first = reinterpret_cast<char*>(walls_.back()->data());
            std::fill_n(first, 4 * floats, nothing);
            addresses_.push_back(side == atFront ? first + before : first + 4 * floats - bytes);
            margins_.push_back({first, addresses_.back()});
            margins_.push_back({addresses_.back() + bytes, first + 4 * floats});
            std::copy_n(static_cast<const char*>(a.address()), bytes, addresses_.back());
        }
    }
    bool are_kept() const {
        return std::all_of(margins_.begin(), margins_.end(), [](const Margin& m) {
            return std::all_of(m.first, m.last, [](char c) { return c == nothing; });
        });
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
    static constexpr auto nothing = static_cast<char>(0xFF); // a float of these is NaN
    struct Margin {
        const char *first, *last;
    };

    static std::size_t size_of(const Argument& a) { return a.is_text() ? 1 : a.bytes(); }

    Arguments arguments_;
    std::vector<std::unique_ptr<GuardPageArray>> walls_;
    std::vector<char*> addresses_;
    std::vector<Margin> margins_;
};

// Neither what lies behind an argument nor what lies before it is read, wherever on a line of the caches it begins.
TEST(Calls, StayWithinTheirArguments) {
    const auto saved = std::signal(SIGSEGV, say_what_is_under_way);
    const struct {
        BesideWalls::Side side;
        std::size_t before;
        int oneOf;
    } placements[] = {{BesideWalls::atEnd, 0, 1},    {BesideWalls::atFront, 0, 1},  {BesideWalls::atFront, 4, 4},
                      {BesideWalls::atFront, 16, 4}, {BesideWalls::atFront, 32, 4}, {BesideWalls::atFront, 48, 4}};
    for (const auto& [side, before, oneOf] : placements) {
        Sample sample(oneOf);
        each_case({1, 2}, [&, wall = side, bytes = before](Case& c) {
            if (!sample.takes())
                return;
            c.run(c.found);
            std::snprintf(underWay, sizeof underWay, "%s: touches what lies %s an argument\n", c.text.c_str(),
                          wall == BesideWalls::atFront ? "before" : "behind");
            BesideWalls walls(c, wall, bytes);
            const Arguments& found = walls.call(*c.routine);
            EXPECT_EQ(c.info(found), 0) << c.text;
            EXPECT_TRUE(walls.are_kept()) << c.text << ": written beside an argument";
            for (std::size_t k = 0; k < found.size(); ++k)
                EXPECT_TRUE(c.distance(found, k) <= 0.02) // which NaN is not
                    << c.text << ": argument " << k + 1 << ", " << bytes << " bytes off";
        });
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
    for (Case& c : all_cases()) {
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

// A call that asks for the length of its work arrays, with orders of 2^31 - 1 and one element of each array.
std::string query_of(const std::string& call) {
    std::string query, before;
    for (const std::string& word : words_of(call)) {
        const bool isArray = std::strchr(".vmb", word[0]) != nullptr,
                   isLarge = std::isdigit(word[0]) && word != "0" && word != "1";
        query += (before == "w" ? "-1" : isArray ? ".1" : isLarge ? "2147483647" : word) + ' ';
        before = word;
    }
    return query;
}

TEST(Calls, TellLengthsBeyondTheIntegers) {
    for (const ArgumentRow& row : argument_rows(ordinaryCalls))
        for (const std::string& name : row.names) {
            const auto words = words_of(row.good[0]);
            const auto work = std::find(words.begin(), words.end(), "w");
            if (work == words.end())
                continue;
            const Case c(name, query_of(row.good[0]));
            BesideWalls walls(c, BesideWalls::atEnd);
            const Arguments& found = walls.call(*c.routine);
            EXPECT_EQ(c.info(found), 0) << c.text;
            float told = 0;
            std::memcpy(&told, found[static_cast<std::size_t>(work - words.begin())].address(), sizeof told);
            EXPECT_TRUE(told >= 0x1p31F && told < 0x1p68F) << c.text << ": " << told;
        }
}

// ---- What goes wrong ------------------------------------------------------------------------------------------------

TEST(Calls, EndWhateverTheNumbers) {
    const auto alarmed = std::signal(SIGALRM, say_what_is_under_way);
    const auto strayed = std::signal(SIGSEGV, say_what_is_under_way);
    Sample sample(74);
    each_case({1, 2}, [&](Case& c) {
        for (std::size_t k = 0; k < c.given.size(); ++k)
            for (const auto& place : c.given[k].places())
                for (const float value : {nan, infinity, -infinity, 0x1.fp127F, 0x1p-149F, -0.0F}) {
                    if (!sample.takes())
                        continue;
                    const Argument ordinary = c.given[k];
                    c.given[k].replace(place, value);
                    std::snprintf(underWay, sizeof underWay,
                                  "%s: %g at argument %zu, from %zu on by %zu: does not end, or strays\n",
                                  c.text.c_str(), static_cast<double>(value), k + 1, place.first, place.step);
                    BesideWalls walls(c, BesideWalls::atEnd);
                    alarm(60);
                    walls.call(*c.routine);
                    alarm(0);
                    c.given[k] = ordinary;
                }
    });
    std::signal(SIGALRM, alarmed);
    std::signal(SIGSEGV, strayed);
}

// Eigenvalues and singular values of a matrix that is not finite somewhere on its diagonal are not all finite, or info
// tells.
TEST(Calls, FindNoFiniteValuesOfWhatIsNot) {
    const struct {
        const char* routine;
        std::size_t matrix, values; // the positions, from 0
    } rows[] = {{"SGEEV ", 3, 5}, {"SHSEQR", 5, 7}, {"SSYEVR", 4, 12}, {"SGESDD", 3, 5},
                {"CGESDD", 3, 5}, {"SBDSQR", 5, 5}, {"SBDSDC", 3, 3}};
    each_case({1}, [&](const Case& c) {
        for (const auto& [routine, matrix, values] : rows) {
            if (!c.text.starts_with(routine))
                continue;
            const Argument& given = c.given[matrix];
            const std::size_t step = given.is_matrix() ? std::size_t(c.given[matrix + 1].value()) + 1 : 1;
            for (const float x : {nan, infinity})
                for (const std::size_t row : {0U, 3U, 7U}) {
                    auto arguments = c.given;
                    arguments[matrix].replace({row * step, given.bytes()}, x);
                    c.run(arguments);
                    EXPECT_TRUE(c.info(arguments) > 0 || !arguments[values].is_finite()) << c.text << ": " << x << row;
                }
        }
    });
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
    each_case({1, 2}, [&](Case& c) {
        const int made = run(c, c.found, 0);
        for (int which = 1; which <= made; ++which) {
            if (!sample.takes())
                continue;
            auto arguments = c.given;
            run(c, arguments, which);
            for (std::size_t k = 0; k < arguments.size() && c.info(arguments) == 0; ++k)
                EXPECT_TRUE(c.distance(arguments, k) <= 0.02)
                    << c.text << ": request " << which << " of " << made << " refused, argument " << k + 1;
        }
    });
    qrv_serv_free_buffers();
    allocatorSlots = saved;
}

} // namespace
} // namespace qrv::test
