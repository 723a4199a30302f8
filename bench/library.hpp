// The libraries that are measured: our own in its forms, and the peers that are installed. All are loaded at run time,
// each into a scope of its own, so that any number of them, and of instances of one, live in this process.
#pragma once

#include <dlfcn.h>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {

struct Library {
    std::string name, path;
    std::string kernels; // what the instance says that it runs
    bool ours = false;
    std::function<void(int)> setThreads; // empty: one thread only

    void* handle = nullptr;

    template <class Routine>
    Routine* find(const char* symbol) const {
        return reinterpret_cast<Routine*>(dlsym(handle, symbol));
    }
};

struct NamedPath {
    std::string name, path;
};

// A library that cannot be used; the text is one line for the user.
struct LoadError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Our library at `path`; a class from "0" to "5" forces the processor class of this instance, "" leaves it detected.
Library load_ours(const std::string& name, const std::string& path, const std::string& cpuType = "");

// The same with no wider vectors than `form`; for the library that has the door to it.
enum class Form : int { sse, avx2, avx512 };
Library load_form(const std::string& name, const std::string& path, Form form);

// Kernels that a peer can be made to choose, by an environment variable that it reads once.
struct CoreType {
    std::string name;
    const char* variable = "";
    std::string value;
};

// A library with the published Fortran names, with the kernels that it picks by itself, or with forced ones.
Library load_peer(const std::string& name, const std::string& path, const CoreType& forced = {});

// What else the library at hand could choose on this processor: one name for each vector width.
std::vector<CoreType> other_core_types(const Library& detected);

// The peers that this system has in its usual places; the names of known ones that it lacks go to `missing`.
std::vector<NamedPath> installed_peers(std::vector<std::string>& missing);

} // namespace bench
