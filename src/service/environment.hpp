// Environment variables as the services read them.
#pragma once

#include <cstddef>

namespace qrv {

// Gives a variable's text, or null. Tests supply their own.
using EnvironmentReader = const char* (*)(const char* name);

// Reads the process's environment.
const char* process_environment(const char* name);

// The variable's text if it is set, not empty and shorter than `room` characters, else null: an unset and an
// empty variable are the same, and a text too long for its reader is treated as unset.
const char* read_variable(EnvironmentReader read, const char* name, std::size_t room);

} // namespace qrv
