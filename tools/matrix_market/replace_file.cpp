#include "replace_file.hpp"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include "matrix_market.hpp"

namespace tools {

ReplacedFile::ReplacedFile(const std::string& path) : shown(path), target(path) {
    struct stat found {};
    const bool isThere = stat(path.c_str(), &found) == 0;
    if (isThere && S_ISDIR(found.st_mode))
        fail(EISDIR);
    if (isThere && !S_ISREG(found.st_mode)) {
        file = std::fopen(path.c_str(), "w");
    } else {
        if (isThere) { // what a link names is replaced, not the link
            std::error_code failure;
            target = std::filesystem::canonical(path, failure).string();
            if (failure)
                fail(failure.value());
            if (access(target.c_str(), W_OK) != 0) // renaming would go past a write protection
                fail(errno);
        }
        temporary = target + ".part" + std::to_string(getpid());
        const int descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor < 0) {
            const int error = errno;
            temporary.clear();
            fail(error);
        }
        if (isThere)
            fchmod(descriptor, found.st_mode & 07777);
        file = fdopen(descriptor, "w");
    }
    if (!file)
        fail(errno);
}

ReplacedFile::~ReplacedFile() {
    if (file)
        std::fclose(file);
    if (!temporary.empty())
        unlink(temporary.c_str());
}

void ReplacedFile::write(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), file) != text.size())
        fail(errno);
}

void ReplacedFile::commit() {
    std::FILE* const finished = file;
    file = nullptr;
    if (std::fclose(finished) != 0)
        fail(errno);
    if (is_direct())
        return;
    if (std::rename(temporary.c_str(), target.c_str()) != 0)
        fail(errno);
    temporary.clear();
}

void ReplacedFile::fail(int error) const {
    throw OutputError("cannot write " + shown + ": " + std::strerror(error));
}

} // namespace tools
