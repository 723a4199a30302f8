// Runs a program in a child process with an environment of its own and collects what it prints.
//
// What the library reads once per process (environment, processor class) is tested through the probe program.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace qrv::test {

struct ChildResult {
    int exitStatus = -1; // -1: ended by a signal
    std::string out;     // standard output
    std::string err;     // standard error
};

using Environment = std::map<std::string, std::string>;

// `environment` replaces the whole environment of the child.
ChildResult run_program(const std::string& path, const std::vector<std::string>& arguments,
                        const Environment& environment = {});

// Runs the probe program and gives its "name=value" lines.
std::map<std::string, std::string> probe(const std::vector<std::string>& arguments,
                                         const Environment& environment = {});

// Expects of these lines those that are told: "name=value name=value".
void expect_found(const std::vector<std::string>& arguments, const Environment& environment,
                  const std::string& expected);

} // namespace qrv::test
