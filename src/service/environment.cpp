#include "service/environment.hpp"

#include <cstdlib>
#include <cstring>

namespace qrv {

const char* process_environment(const char* name) {
    return std::getenv(name);
}

const char* read_variable(EnvironmentReader read, const char* name, std::size_t room) {
    const char* text = read(name);
    if (!text || !*text || std::strlen(text) >= room)
        return nullptr;
    return text;
}

} // namespace qrv
