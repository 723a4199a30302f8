// qrv: linear algebra on matrix files, and what is running, through the provider.
#include "program.hpp"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fmt/core.h>
#include <qrv/service.h>

#include "command.hpp"
#include "report.hpp"

namespace tools {
namespace {

constexpr void (*commands[])(CLI::App&) = {add_info, add_norm, add_solve,    add_invert, add_fit,   add_qr,
                                           add_eig,  add_svd,  add_compress, add_bench,  add_manual};

enum ExitCode { good = 0, notSolved = 1, badInput = 2 };

void run(CLI::App& program, int argc, char** argv) {
    try {
        program.parse(argc, argv); // runs the command
        if (program.get_subcommands().empty())
            throw CLI::RequiredError("a command");
    } catch (const CLI::Success& request) { // help, version
        program.exit(request);
    }
    if (std::fflush(stdout) != 0)
        throw OutputError(std::string("cannot write standard output: ") + std::strerror(errno));
}

} // namespace

int run_program(int argc, char** argv) {
    CLI::App program{"Linear algebra on matrix files, Matrix Market or NumPy's .npy, in single precision. The name - "
                     "is standard input or "
                     "standard output."};
    program.name("qrv");
    program.require_subcommand(0, 1); // a word that is no command is named, then, as not expected
    program.set_version_flag("--version", qrv_serv_get_version());
    for (auto* const add : commands)
        add(program);
    std::signal(SIGXFSZ, SIG_IGN); // a file beyond its limit is an error of writing
    remove_temporary_files_on_signals();
    try {
        run(program, argc, argv);
        return good;
    } catch (const CLI::ParseError& error) {
        fmt::print(stderr, "qrv: {}; 'qrv --help' tells the usage\n", printable(error.what()));
        return badInput;
    } catch (const InputError& error) {
        fmt::print(stderr, "qrv: {}\n", printable(error.what()));
        return badInput;
    } catch (const std::bad_alloc&) {
        fmt::print(stderr, "qrv: not enough memory\n");
    } catch (const std::exception& error) {
        fmt::print(stderr, "qrv: {}\n", printable(error.what()));
    }
    return notSolved;
}

} // namespace tools
