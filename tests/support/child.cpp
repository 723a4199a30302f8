#include "support/child.hpp"

#include <cstdlib>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/wait.h>

#include "support/folder.hpp"

namespace qrv::test {
namespace {

// As one word of a shell.
std::string quoted(const std::string& text) {
    std::string word = " '";
    for (const char c : text)
        word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return word + "'";
}

} // namespace

ChildResult run_program(const std::string& path, const std::vector<std::string>& arguments,
                        const Environment& environment) {
    const Folder folder;
    std::string command = "exec env -i";
    for (const auto& [name, value] : environment)
        command += quoted(name + '=' + value);
    command += quoted(path);
    for (const std::string& argument : arguments)
        command += quoted(argument);
    command += " >" + quoted(folder.file("out")) + " 2>" + quoted(folder.file("err"));
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, content(folder.file("out")), content(folder.file("err"))};
}

std::map<std::string, std::string> probe(const std::vector<std::string>& arguments, const Environment& environment) {
    const ChildResult run = run_program(QRV_PROBE, arguments, environment);
    EXPECT_EQ(run.exitStatus, 0) << run.out << run.err;
    std::map<std::string, std::string> values;
    std::istringstream lines(run.out);
    for (std::string line; std::getline(lines, line);)
        if (const auto equals = line.find('='); equals != std::string::npos)
            values[line.substr(0, equals)] = line.substr(equals + 1);
    return values;
}

void expect_found(const std::vector<std::string>& arguments, const Environment& environment,
                  const std::string& expected) {
    auto found = probe(arguments, environment);
    std::istringstream words(expected);
    for (std::string word; words >> word;) {
        const std::string name = word.substr(0, word.find('='));
        EXPECT_EQ(name + '=' + found[name], word) << arguments[0] << ", " << testing::PrintToString(environment);
    }
}

} // namespace qrv::test
