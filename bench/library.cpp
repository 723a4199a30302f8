#include "library.hpp"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {
namespace {

namespace fs = std::filesystem;

// Kernels are chosen once in an instance, at its load or its first call; the variable matters only that long.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const std::string& value) : name_(name) {
        if (const char* text = std::getenv(name))
            before_ = text;
        if (!value.empty())
            setenv(name, value.c_str(), 1);
    }
    ~ScopedVariable() { before_ ? setenv(name_, before_->c_str(), 1) : unsetenv(name_); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    const char* name_;
    std::optional<std::string> before_;
};

fs::path temporary_copy(const fs::path& path) {
    std::string name = (fs::temp_directory_path() / "qrv_bench_XXXXXX").string();
    const int file = mkstemp(name.data());
    if (file < 0)
        throw LoadError(
            fmt::format("cannot make a copy of {} in {}", path.string(), fs::temp_directory_path().string()));
    close(file);
    fs::copy_file(path, name, fs::copy_options::overwrite_existing);
    return name;
}

// The loader tells objects apart by device and inode, so a second instance of a file needs a copy of it. The copy
// is removed once it is loaded. RTLD_LOCAL keeps the equal names of all libraries apart; nothing is ever unloaded,
// since the threads of an instance live on.
void* open_instance(const std::string& path) {
    static std::set<std::pair<dev_t, ino_t>> loaded;
    struct stat facts {};
    if (stat(path.c_str(), &facts) != 0)
        throw LoadError(fmt::format("there is no file {}", path));
    const bool first = loaded.insert({facts.st_dev, facts.st_ino}).second;
    const fs::path file = first ? fs::absolute(path) : temporary_copy(path);
    void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    const std::string problem = handle ? "" : dlerror();
    if (!first)
        fs::remove(file);
    if (!handle)
        throw LoadError(fmt::format("cannot load {}: {}", path, problem));
    return handle;
}

// How many threads and which kernels: the same question has another name in each library.
void describe_peer(Library& library) {
    library.kernels = "unknown";
    if (auto* corename = library.find<const char*()>("openblas_get_corename")) {
        library.kernels = corename();
        auto* parallel = library.find<int()>("openblas_get_parallel");
        auto* setThreads = library.find<void(int)>("openblas_set_num_threads");
        if (setThreads && parallel && parallel() != 0)
            library.setThreads = setThreads;
    } else if (auto* archName = library.find<const char*(int)>("bli_arch_string")) {
        if (auto* initialize = library.find<void()>("bli_init")) // a forced architecture is checked against its tables
            initialize();
        if (auto* arch = library.find<int()>("bli_arch_query_id"))
            library.kernels = archName(arch());
        auto* parallel = library.find<std::int64_t()>("bli_info_get_enable_threading");
        auto* setThreads = library.find<void(std::int64_t)>("bli_thread_set_num_threads");
        if (setThreads && parallel && parallel() != 0)
            library.setThreads = setThreads;
    }
}

} // namespace

Library load_ours(const std::string& name, const std::string& path, const std::string& cpuType) {
    const ScopedVariable variable("QRV_DEBUG_CPU_TYPE", cpuType);
    Library library{name, path, {}, true, {}, open_instance(path)};
    auto* type = library.find<int()>("qrv_serv_get_cpu_type");
    auto* version = library.find<const char*()>("qrv_serv_get_version");
    auto* setThreads = library.find<int(int)>("qrv_serv_set_num_threads");
    if (!type || !version || !setThreads)
        throw LoadError(fmt::format("{} is no build of this library", path));
    if (!cpuType.empty() && std::to_string(type()) != cpuType)
        throw LoadError(fmt::format("{} runs class {} where {} was asked for", name, type(), cpuType));
    library.kernels = fmt::format("class {}, version {}", type(), version());
    library.setThreads = setThreads;
    return library;
}

Library load_form(const std::string& name, const std::string& path, Form form) {
    Library library = load_ours(name, path);
    auto* restrict = library.find<int(int)>("qrv_bench_restrict_vector_form");
    if (!restrict || restrict(static_cast<int>(form)) != static_cast<int>(form))
        throw LoadError(fmt::format("{}: this processor or this build has no such form", name));
    return library;
}

Library load_peer(const std::string& name, const std::string& path, const CoreType& forced) {
    const ScopedVariable variable(forced.variable, forced.value);
    Library library{name, path, {}, false, {}, open_instance(path)};
    describe_peer(library);
    if (library.kernels != forced.name && !forced.name.empty())
        throw LoadError(fmt::format("{} runs {} where {} was asked for", name, library.kernels, forced.name));
    return library;
}

std::vector<CoreType> other_core_types(const Library& detected) {
    // A forced type is believed without a look at the processor: an illegal instruction would follow.
    const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    const bool avx512 =
        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq");
    std::vector<CoreType> types;
    const auto offer = [&](bool possible, const char* name, const char* variable, const std::string& value) {
        if (possible && detected.kernels != name)
            types.push_back({name, variable, value});
    };
    if (detected.find<void>("openblas_get_corename")) {
        offer(avx512, "SkylakeX", "OPENBLAS_CORETYPE", "SkylakeX");
        offer(avx2, "Haswell", "OPENBLAS_CORETYPE", "Haswell");
        offer(true, "Nehalem", "OPENBLAS_CORETYPE", "Nehalem");
    } else if (auto* archName = detected.find<const char*(int)>("bli_arch_string")) {
        // The variable takes the number of an architecture, which only the library knows; its list ends at "generic".
        for (int id = 0; std::string_view(archName(id)) != "generic"; ++id)
            for (const char* name : {"skx", "haswell"})
                if (std::string_view(archName(id)) == name)
                    offer(name[0] == 's' ? avx512 : avx2, name, "BLIS_ARCH_TYPE", std::to_string(id));
    }
    return types;
}

std::vector<NamedPath> installed_peers(std::vector<std::string>& missing) {
    struct Known {
        const char* name;
        std::vector<const char*> files; // the first that exists; builds with threads before those without
    };
    const Known known[] = {
        {"OB",
         {"openblas-pthread/libopenblas.so.0", "openblas-openmp/libopenblas.so.0", "openblas-serial/libopenblas.so.0",
          "libopenblas.so.0"}},
        {"BLIS", {"blis-pthread/libblis.so.4", "blis-openmp/libblis.so.4", "blis-serial/libblis.so.4", "libblis.so.4"}},
        {"ref", {"blas/libblas.so.3"}},
    };
    std::vector<NamedPath> found;
    for (const Known& peer : known) {
        const std::size_t before = found.size();
        for (const char* file : peer.files)
            for (const char* folder : {"/usr/lib/x86_64-linux-gnu", "/usr/lib64", "/usr/lib"})
                if (const fs::path path = fs::path(folder) / file; found.size() == before && fs::exists(path))
                    found.push_back({peer.name, path.string()});
        if (found.size() == before)
            missing.push_back(peer.name);
    }
    return found;
}

} // namespace bench
