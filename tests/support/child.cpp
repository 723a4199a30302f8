#include "support/child.hpp"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace qrv::test {
namespace {

std::string read_all(std::FILE* file) {
    std::string text;
    std::array<char, 4096> block;
    std::rewind(file);
    while (const std::size_t n = std::fread(block.data(), 1, block.size(), file))
        text.append(block.data(), n);
    return text;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

} // namespace

ChildResult run_program(const std::string& path, const std::vector<std::string>& arguments,
                        const Environment& environment) {
    std::vector<std::string> argv{path};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    std::vector<std::string> envp;
    for (const auto& [name, value] : environment)
        envp.push_back(name + "=" + value);

    std::FILE* out = std::tmpfile();
    std::FILE* err = std::tmpfile();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fileno(out), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fileno(err), STDERR_FILENO);
    pid_t pid = 0;
    const int failure =
        posix_spawn(&pid, path.c_str(), &actions, nullptr, pointers(argv).data(), pointers(envp).data());
    posix_spawn_file_actions_destroy(&actions);
    EXPECT_EQ(failure, 0) << "cannot start " << path;

    ChildResult result;
    if (failure == 0) {
        int status = 0;
        waitpid(pid, &status, 0);
        result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        result.out = read_all(out);
        result.err = read_all(err);
    }
    std::fclose(out);
    std::fclose(err);
    return result;
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
