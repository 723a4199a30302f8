#include "memory_limit.hpp"

#include <algorithm>
#include <fstream>
#include <string>
#include <unistd.h>

namespace tools {
namespace {

namespace fs = std::filesystem;

// The limit that a folder of the hierarchy and those above it set: "max", or no file, is none.
double least_of_groups(const fs::path& hierarchy, const fs::path& group, const char* name, double least) {
    for (fs::path folder = group.relative_path();; folder = folder.parent_path()) {
        double bytes = 0;
        if (std::ifstream(hierarchy / folder / name) >> bytes)
            least = std::min(least, bytes);
        if (folder.empty())
            return least;
    }
}

} // namespace

// A line of the process's groups is "0::/group" of the unified hierarchy, or "4:memory:/group".
double memory_limit(const fs::path& root) {
    double least = static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE));
    const fs::path hierarchies = root / "sys/fs/cgroup";
    std::ifstream groups(root / "proc/self/cgroup");
    for (std::string line; std::getline(groups, line);) {
        const std::size_t first = line.find(':'), second = line.find(':', first + 1);
        if (second == std::string::npos)
            continue;
        const std::string controllers = "," + line.substr(first + 1, second - first - 1) + ",";
        const fs::path group = line.substr(second + 1);
        if (controllers == ",,")
            least = least_of_groups(hierarchies, group, "memory.max", least);
        else if (controllers.find(",memory,") != std::string::npos)
            least = least_of_groups(hierarchies / "memory", group, "memory.limit_in_bytes", least);
    }
    return least;
}

} // namespace tools
