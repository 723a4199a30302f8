// qrv_bench: our library in its forms against the peers that are installed and against the machine's own limits.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <fmt/os.h>
#include <fstream>
#include <regex>
#include <thread>

#include "busy.hpp"
#include "case.hpp"
#include "library.hpp"
#include "measure.hpp"
#include "operand.hpp"
#include "report.hpp"
#include "support/peak.hpp"

namespace {

using namespace bench;

struct Options {
    std::string filter;
    std::vector<std::string> ours, peers, classes;
    std::vector<int> threads = {1, 2};
    std::filesystem::path out = "build/bench";
    int beta = 1, busy = 0;
    bool quick = false, detectedOnly = false;
    Effort effort;
};

NamedPath named_path(const std::string& text) {
    const std::size_t sign = text.find('=');
    return {text.substr(0, sign), text.substr(sign + 1)};
}

std::filesystem::path program_folder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

std::string machine_name() {
    std::ifstream facts("/proc/cpuinfo");
    for (std::string line; std::getline(facts, line);)
        if (line.rfind("model name", 0) == 0)
            return line.substr(line.find(':') + 2);
    return "unknown processor";
}

// What cannot be loaded is named in one line, and the run goes on without it.
template <class Load, class... Args>
void add(std::vector<Library>& libraries, Load load, const Args&... args) {
    try {
        libraries.push_back(load(args...));
        const Library& library = libraries.back();
        fmt::print("{:<12} {} ({}){}\n", library.name, library.path, library.kernels,
                   library.setThreads ? "" : ", one thread only");
    } catch (const LoadError& problem) {
        fmt::print("not measured: {}\n", problem.what());
    }
}

std::vector<Library> load_libraries(const Options& options) {
    std::vector<Library> libraries;
    const std::filesystem::path folder = program_folder().parent_path() / "lib";
    const std::string own = (folder / "libqrv.so").string(), forms = (folder / "libqrv_forms.so").string();
    add(libraries, load_ours, std::string("qrv"), own, std::string());
    if (__builtin_cpu_supports("avx512f")) // else it is what qrv runs, or cannot be
        add(libraries, load_form, std::string("qrv-avx2"), forms, Form::avx2);
    add(libraries, load_form, std::string("qrv-sse"), forms, Form::sse);
    for (const std::string& type : options.classes)
        add(libraries, load_ours, "qrv-" + type, own, type);
    for (const std::string& text : options.ours)
        add(libraries, load_ours, named_path(text).name, named_path(text).path, std::string());

    if (std::none_of(libraries.begin(), libraries.end(), [](const Library& library) { return library.ours; }))
        throw std::runtime_error("no build of our library to measure");

    std::vector<std::string> missing;
    std::vector<NamedPath> peers;
    for (const std::string& text : options.peers)
        peers.push_back(named_path(text));
    if (peers.empty())
        peers = installed_peers(missing);
    for (const std::string& name : missing)
        fmt::print("not installed: {}\n", name);
    for (const NamedPath& peer : peers) {
        const std::size_t before = libraries.size();
        add(libraries, load_peer, peer.name, peer.path, CoreType{});
        if (libraries.size() == before || options.detectedOnly)
            continue;
        for (const CoreType& coreType : other_core_types(libraries.back()))
            add(libraries, load_peer, peer.name + "-" + coreType.name, peer.path, coreType);
    }
    return libraries;
}

constexpr const char* plainLoop = "plain"; // the name of a workload's own loop among the peers

Field field_of(const std::vector<Library>& libraries, const std::vector<Peak>& peaks) {
    Field field;
    for (const Library& library : libraries)
        (library.ours ? field.ours : field.peers).push_back(library.name);
    for (const Peak& peak : peaks)
        field.peaks.push_back(peak.name);
    field.peers.push_back(plainLoop);
    return field;
}

constexpr double longestSeconds = 8; // of one contestant in one case

class Run {
public:
    Run(const Options& options, std::vector<Library> libraries)
        : options_(options), libraries_(std::move(libraries)), peaks_(machine_peaks()),
          field_(field_of(libraries_, peaks_)) {}

    // True if our library computed right results in every form. What is measured is in the CSV file at once.
    bool measure(const std::vector<Case>& cases) {
        std::filesystem::create_directories(options_.out);
        const auto path = options_.out / "bench.csv";
        fmt::ostream csv = fmt::output_file(path.string());
        csv.print("{}", csv_head());
        fmt::print("\n{}", table_head(field_));
        for (const Case& work : cases) {
            outcomes_.push_back({work, {}, {}});
            one_contest(outcomes_.back());
            fmt::print("{}", table_rows(field_, outcomes_.back()));
            std::fflush(stdout);
            csv.print("{}", csv_rows(outcomes_.back()));
            csv.flush();
        }
        fmt::print("\n{}\n", path.string());
        return !wrong_;
    }

    void plot(const std::string& machine) const {
        std::map<std::pair<std::string, int>, std::vector<Outcome>> plots;
        for (const Outcome& outcome : outcomes_)
            if (!outcome.work.plot.empty())
                plots[{outcome.work.plot, outcome.work.threads}].push_back(outcome);
        for (const auto& [key, outcomes] : plots) {
            const auto& [family, threads] = key;
            std::string name = fmt::format("{}-t{}.svg", family, threads);
            std::replace(name.begin(), name.end(), '/', '-');
            const std::string title =
                fmt::format("{}, {} thread{}, {}", family, threads, threads == 1 ? "" : "s", machine);
            if (write_plot(options_.out / name, title, field_, outcomes))
                fmt::print("{}\n", (options_.out / name).string());
        }
    }

private:
    void one_contest(Outcome& outcome) {
        const Case& work = outcome.work;
        const std::unique_ptr<Workload> workload = work.prepare();
        std::vector<Contestant> contestants;
        for (const Peak& peak : peaks_)
            if (work.work.unit == Unit::flop)
                contestants.push_back({peak_contestant(peak.name), peak.flops * work.threads,
                                       [this, &peak, threads = work.threads](benchmark::State& state) {
                                           settle(threads);
                                           for (auto _ : state)
                                               peak.run(threads);
                                       }});
        for (const Library& library : libraries_) {
            if ((work.threads > 1 && !library.setThreads) || takes_too_long(work, library))
                continue;
            settle(library, work.threads, work.threads);
            const Verdict verdict = workload->judge(library);
            if (verdict == Verdict::wrong) {
                fmt::print("{}: wrong result of {} ({}), not measured\n", work.name, library.name, library.kernels);
                wrong_ = wrong_ || library.ours; // the fault of a peer is told, and is none of ours
            }
            if (verdict != Verdict::correct) {
                outcome.out[library.name] = verdict == Verdict::wrong ? "wrong" : "absent";
                continue;
            }
            const auto enter = [&](const std::string& name, int threads) {
                contestants.push_back({name, work.work.amount, [&, threads](benchmark::State& state) {
                                           settle(library, threads, work.threads);
                                           workload->run(state, library);
                                       }});
            };
            enter(library.name, work.threads);
            if (library.ours && work.threads > 1)
                enter(one_thread_contestant(library.name), 1);
        }
        if (const auto loop = workload->plain_loop(); loop && work.threads == 1)
            contestants.push_back({plainLoop, work.work.amount, loop});
        outcome.timings = contest(contestants, options_.effort);
        if (work.work.unit == Unit::flop)
            for (const auto& [name, timing] : outcome.timings)
                gflops_[name] = std::max(gflops_[name], timing.rate());
    }

    void settle(const Library& library, int threads, int mostThreads) const {
        if (library.setThreads)
            library.setThreads(threads);
        settle(mostThreads);
    }

    // Waiting threads of the contestant before spin for a while and would take processors from the next one.
    void settle(int mostThreads) const {
        if (mostThreads > 1)
            std::this_thread::sleep_for(std::chrono::milliseconds(options_.quick ? 1 : 40));
    }

    // By its best speed so far: the slowest contestants would take most of the time at the largest sizes.
    bool takes_too_long(const Case& work, const Library& library) const {
        const auto known = gflops_.find(library.name);
        return work.work.unit == Unit::flop && known != gflops_.end() &&
               work.work.amount * options_.effort.repetitions > longestSeconds * known->second * 1e9;
    }

    const Options& options_;
    std::vector<Library> libraries_;
    std::vector<Peak> peaks_;
    Field field_;
    std::vector<Outcome> outcomes_;
    std::map<std::string, double> gflops_;
    bool wrong_ = false;
};

void parse(CLI::App& app, Options& options) {
    const CLI::Validator pair(
        [](const std::string& text) {
            const std::size_t sign = text.find('=');
            return sign == std::string::npos || sign == 0 ? std::string("expected NAME=PATH") : std::string();
        },
        "NAME=PATH");
    app.add_option("filter", options.filter,
                   "only cases whose name matches, such as 'sgemm/NN/.*/t1' (a regular expression)");
    app.add_option("--ours", options.ours, "a further build of our library")->check(pair)->allow_extra_args(false);
    app.add_option("--peer", options.peers, "a library to compare with, instead of the installed ones")
        ->check(pair)
        ->allow_extra_args(false);
    app.add_option("--classes", options.classes, "also our kernels of these processor classes")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check(CLI::IsMember({"0", "2", "3", "4", "5"}));
    app.add_flag("--detected-only", options.detectedOnly, "peers only with the kernels that they pick by themselves");
    app.add_option("--threads", options.threads, "thread counts")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check(CLI::Range(1, 1024));
    app.add_option("--beta", options.beta, "C := A*B + beta*C")->check(CLI::IsMember({0, 1}))->capture_default_str();
    app.add_option("--offset", operandOffset, "bytes past a cache line where operands begin, as malloc's do by 16")
        ->check(CLI::IsMember({0, 4, 8, 16, 32, 48}))
        ->capture_default_str();
    app.add_option("--busy", options.busy, "so many processes that compute beside the contest")
        ->check(CLI::Range(0, 1024))
        ->capture_default_str();
    app.add_option("--repetitions", options.effort.repetitions)->check(CLI::Range(1, 1000))->capture_default_str();
    app.add_option("--seconds", options.effort.seconds, "least time of a repetition")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_flag("--best", options.effort.best, "the fastest repetition counts, not the median (on a busy machine)");
    app.add_option("--out", options.out, "folder for the CSV file and the plots")->capture_default_str();
    app.add_flag("--quick", options.quick, "a few small cases, shortly: does the program work?");
}

int run(Options& options) {
    if (options.quick) {
        options.effort.repetitions = 1;
        options.effort.seconds = 0.001;
    }
    const int processors = static_cast<int>(std::thread::hardware_concurrency());
    std::erase_if(options.threads, [&](int threads) {
        if (threads > processors)
            fmt::print("not measured: {} threads on {} processor(s)\n", threads, processors);
        return threads > processors;
    });

    const CaseOptions caseOptions{options.threads, static_cast<float>(options.beta), options.quick};
    std::vector<Case> cases;
    for (auto* family : {vector_cases, matrix_vector_cases, gemm_cases, matrix_cases, symmetric_cases, getrf_cases,
                         cholesky_cases, band_cases, qr_cases, singular_cases, nonsymmetric_cases, syevr_cases})
        for (Case& work : family(caseOptions))
            cases.push_back(std::move(work));
    const std::regex filter(options.filter);
    std::erase_if(cases, [&](const Case& work) { return !std::regex_search(work.name, filter); });
    if (cases.empty())
        throw std::runtime_error(fmt::format("no case matches '{}'", options.filter));

    const std::string machine = fmt::format("{}, {} processors", machine_name(), processors);
    double load = 0;
    getloadavg(&load, 1);
    fmt::print("{}, load {:.1f}{}\n\n", machine, load, load > 0.5 ? ": not quiet, expect noise (see --best)" : "");
    const BusyNeighbours neighbours(options.busy);
    initialize(options.effort);
    Run bench(options, load_libraries(options));
    const bool correct = bench.measure(cases);
    bench.plot(machine);
    return correct ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app("Speed of this library beside installed peers and the machine's measured peak.");
    Options options;
    parse(app, options);
    CLI11_PARSE(app, argc, argv);
    try {
        return run(options);
    } catch (const std::exception& problem) {
        fmt::print(stderr, "qrv_bench: {}\n", problem.what());
        return 1;
    }
}
