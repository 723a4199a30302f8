// qrv manual and qrv completion: the manual page and the completion of shells, from the same options as the help. The
// build runs them; the help does not list them.
#include <algorithm>
#include <fmt/core.h>
#include <map>

#include "command.hpp"

namespace tools {
namespace {

std::vector<const CLI::App*> commands(const CLI::App& program) {
    return program.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

// Options and places of a command, its groups of options included; --help is every one's.
std::vector<const CLI::Option*> options(const CLI::App& command, bool arePlaces) {
    std::vector<const CLI::Option*> list =
        command.get_options([&](const CLI::Option* option) { return option->get_positional() == arePlaces; });
    for (const CLI::App* group : command.get_subcommands([](const CLI::App* part) { return part->get_name().empty(); }))
        for (const CLI::Option* option : options(*group, arePlaces))
            if (option != group->get_help_ptr())
                list.push_back(option);
    return list;
}

// What an option takes: nothing, one of some words, or anything.
std::string value_of(const CLI::Option& option) {
    if (option.get_items_expected_max() == 0)
        return "";
    const std::string words = option.get_option_text();
    const std::string type = option.get_type_name(); // "TEXT:FILE", the second from a check
    return words.empty() ? type.substr(type.find(':') + 1) : words;
}
bool is_choice(const std::string& value) {
    return value.find('|') != std::string::npos;
}

// "-o,--out" as its parts.
std::vector<std::string> spellings(const CLI::Option& option) {
    std::vector<std::string> list;
    for (const std::string& letter : option.get_snames())
        list.push_back("-" + letter);
    for (const std::string& word : option.get_lnames())
        list.push_back("--" + word);
    return list;
}

std::string replaced(std::string text, const std::map<char, std::string>& replacements) {
    std::string result;
    for (const char c : text)
        if (const auto found = replacements.find(c); found != replacements.end())
            result += found->second;
        else
            result += c;
    return result;
}

std::string joined(const std::vector<std::string>& words, const char* between) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : between) + word;
    return text;
}

// ---- The manual page, in the macros of man(7) -----------------------------------------------------------------------

std::string roff(const std::string& text) {
    return replaced(text, {{'\\', "\\e"}, {'-', "\\-"}, {'\'', "\\(aq"}});
}

void print_command(const CLI::App& command) {
    std::string places;
    for (const CLI::Option* place : options(command, true))
        places += place->get_required() ? " \\fI" + roff(place->get_name()) + "\\fR"
                                        : " [\\fI" + roff(place->get_name()) + "\\fR]";
    fmt::print(".SS \"qrv {}{} [\\fIoptions\\fR]\"\n{}.\n", command.get_name(), places,
               roff(command.get_description()));
    for (const CLI::Option* place : options(command, true))
        fmt::print(".TP\n.I {}\n{}\n", roff(place->get_name()), roff(place->get_description()));
    for (const CLI::Option* option : options(command, false)) {
        const std::string value = value_of(*option);
        fmt::print(".TP\n.B {}{}\n{}\n", roff(joined(spellings(*option), ", ")),
                   value.empty() ? "" : " \\fI" + roff(value) + "\\fR", roff(option->get_description()));
    }
}

constexpr const char* afterCommands = R"(.SH FILES
A file named *.npy is NumPy's: one array of one or two dimensions, of float32, float64, complex64 or complex128 in either order;
written are float32 and complex64.
Others are in the Matrix Market format: array or coordinate; real, integer or complex; general, symmetric, Hermitian or
skew\-symmetric.
The name \- is standard input, where the first byte tells the format, and standard output, which gets the format of the matrix that
came in; the report goes to standard error then.
A result appears whole or not at all.
.SH EXIT STATUS
.TP
.B 0
All went well.
.TP
.B 1
The problem could not be solved, or its result not be written.
.TP
.B 2
Bad usage or bad input.
.SH ENVIRONMENT
.TP
.B QRV_NUM_THREADS
Threads requested for everything; without it those of
.BR OMP_NUM_THREADS ,
within the cores counted.
.TP
.B QRV_DEBUG_CPU_TYPE
Forces the processor class: 0 generic, 2 SSE2, 3 SSE3, 4 SSSE3, 5 SSE4.2.
.SH EXAMPLES
.nf
qrv solve A.mtx b.mtx \-o x.mtx
qrv svd A.npy \-\-json | jq .rank
qrv invert \- \-o \- < A.npy > X.npy
)";

void print_page(const CLI::App& program) {
    fmt::print(
        ".TH QRV 1 \"\" \"qrv {}\" \"User Commands\"\n.SH NAME\nqrv \\- linear algebra on matrix files, in single "
        "precision\n.SH SYNOPSIS\n.B qrv\n.I command\n[\\fIargument\\fR ...]\n.SH DESCRIPTION\n{}\n.SH COMMANDS\n",
        roff(program.version()), roff(program.get_description()));
    for (const CLI::App* command : commands(program))
        print_command(*command);
    fmt::print("{}", afterCommands);
}

// ---- Completion -----------------------------------------------------------------------------------------------------

void print_bash(const CLI::App& program) {
    std::vector<std::string> names;
    std::map<std::string, std::string> choices;
    fmt::print("_qrv() {{\n  local current=${{COMP_WORDS[COMP_CWORD]}} options=\n  case ${{COMP_WORDS[1]}} in\n");
    for (const CLI::App* command : commands(program)) {
        names.push_back(command->get_name());
        std::vector<std::string> all;
        for (const CLI::Option* option : options(*command, false))
            for (const std::string& spelling : spellings(*option)) {
                all.push_back(spelling);
                if (const std::string value = value_of(*option); is_choice(value))
                    choices[spelling] = replaced(value, {{'|', " "}});
            }
        fmt::print("    {}) options='{}' ;;\n", command->get_name(), joined(all, " "));
    }
    fmt::print("  esac\n  if [ \"$COMP_CWORD\" -eq 1 ]; then\n    COMPREPLY=($(compgen -W '{} --help --version' -- "
               "\"$current\"))\n    return\n  fi\n  case ${{COMP_WORDS[COMP_CWORD-1]}} in\n",
               joined(names, " "));
    for (const auto& [option, words] : choices)
        fmt::print("    {}) COMPREPLY=($(compgen -W '{}' -- \"$current\")); return ;;\n", option, words);
    fmt::print("  esac\n  case $current in\n    -*) COMPREPLY=($(compgen -W \"$options\" -- \"$current\")) ;;\n"
               "    *) compopt -o filenames 2> /dev/null; mapfile -t COMPREPLY < <(compgen -f -- \"$current\") ;;\n"
               "  esac\n}}\ncomplete -F _qrv qrv\n");
}

void print_zsh(const CLI::App& program) {
    const auto quoted = [](const std::string& text) {
        return replaced(text, {{'\'', "'\\''"}, {'[', "\\["}, {']', "\\]"}, {':', "\\:"}});
    };
    fmt::print("#compdef qrv\nlocal -a commands=(\n");
    for (const CLI::App* command : commands(program))
        fmt::print("  '{}:{}'\n", command->get_name(), quoted(command->get_description()));
    fmt::print(")\nif (( CURRENT == 2 )); then\n  _describe command commands\n  return\nfi\nlocal command=$words[2]\n"
               "shift words\n(( CURRENT-- ))\ncase $command in\n");
    for (const CLI::App* command : commands(program)) {
        fmt::print("  {})\n    _arguments", command->get_name());
        for (const CLI::Option* option : options(*command, false))
            for (const std::string& spelling : spellings(*option)) {
                const std::string value = value_of(*option);
                const std::string action = is_choice(value) ? "(" + replaced(value, {{'|', " "}}) + ")" : "_files";
                fmt::print(" \\\n      '{}[{}]{}'", spelling, quoted(option->get_description()),
                           value.empty() ? "" : ":value:" + action);
            }
        fmt::print(" \\\n      '*:file:_files' ;;\n");
    }
    fmt::print("esac\n");
}

} // namespace

void add_manual(CLI::App& program) {
    program.add_subcommand("manual", "Prints the manual page")->group("")->callback([&program] {
        print_page(program);
    });
    CLI::App* const completion = program.add_subcommand("completion", "Prints the completion of a shell")->group("");
    CLI::Option* const shell =
        completion->add_option("SHELL", "bash or zsh")->required()->check(CLI::IsMember({"bash", "zsh"}));
    completion->callback(
        [&program, shell] { shell->as<std::string>() == "bash" ? print_bash(program) : print_zsh(program); });
}

} // namespace tools
