// The program as a function.
#pragma once

namespace tools {

// Runs a command line; the result is the exit status. What cannot be done is said in one line on standard error.
int run_program(int argc, char** argv);

} // namespace tools
