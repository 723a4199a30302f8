#include "output_file.hpp"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace tools {
namespace {

// ---- Temporary files that are there, for the handler of signals -----------------------------------------------------

std::array<std::atomic<const char*>, 8> temporaries; // null: free

std::size_t enter(const char* name) {
    for (std::size_t place = 0; place < temporaries.size(); ++place)
        if (const char* none = nullptr; temporaries[place].compare_exchange_strong(none, name))
            return place;
    return temporaries.size(); // a signal will not remove it
}

void leave(std::size_t place) {
    if (place < temporaries.size())
        temporaries[place] = nullptr;
}

void remove_and_end(int signal) {
    for (const auto& entry : temporaries)
        if (const char* const name = entry)
            unlink(name);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// ---- Where a name leads ---------------------------------------------------------------------------------------------

// The stream that this process was given, that this is and that may be written, or -1.
int given_stream(const struct stat& found) {
    constexpr int last = 255; // shells give standard ones and a few behind them
    for (int stream = 0; stream <= last; ++stream) {
        struct stat facts {};
        if (fstat(stream, &facts) == 0 && facts.st_dev == found.st_dev && facts.st_ino == found.st_ino &&
            (fcntl(stream, F_GETFL) & O_ACCMODE) != O_RDONLY)
            return stream;
    }
    return -1;
}

// The name at the end of all links, whether there is such a file or not.
std::filesystem::path end_of_links(std::filesystem::path path, int& error) {
    constexpr int mostLinks = 40; // as the system
    std::error_code failure;
    for (int links = 0; std::filesystem::is_symlink(path, failure); ++links) {
        if (links == mostLinks)
            failure = std::make_error_code(std::errc::too_many_symbolic_link_levels);
        else
            path = path.parent_path() / std::filesystem::read_symlink(path, failure);
        if (failure)
            break;
    }
    error = failure && failure != std::errc::no_such_file_or_directory ? failure.value() : 0;
    return path;
}

} // namespace

OutputFile::OutputFile(const std::string& path) : shown(path), target(path) {
    if (path == "-") {
        shown = "standard output";
        file = fdopen(dup(STDOUT_FILENO), "w");
        if (!file)
            fail(errno);
        return;
    }
    struct stat found {};
    const bool isThere = stat(path.c_str(), &found) == 0;
    if (isThere && S_ISDIR(found.st_mode))
        fail(EISDIR);
    if (const int stream = isThere ? given_stream(found) : -1; stream >= 0) {
        file = fdopen(dup(stream), "w");
    } else if (isThere && !S_ISREG(found.st_mode)) {
        file = std::fopen(path.c_str(), "w");
    } else {
        int error = 0;
        target = end_of_links(path, error).string();
        if (error != 0)
            fail(error);
        open_temporary(isThere, found.st_mode & 07777);
    }
    if (!file)
        fail(errno);
}

void OutputFile::open_temporary(bool replaces, mode_t mode) {
    if (replaces && access(target.c_str(), W_OK) != 0) // renaming would go past a write protection
        fail(errno);
    // Processes that were killed may have left files, and in a container all have the same number.
    constexpr int mostNames = 1000;
    int descriptor = -1;
    for (int name = 0; descriptor < 0; ++name) {
        temporary = target + ".part" + std::to_string(getpid()) + (name > 0 ? "." + std::to_string(name) : "");
        place = enter(temporary.c_str()); // first, so that a signal finds it
        descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (const int error = errno; descriptor < 0) {
            leave(place);
            if (error != EEXIST || name == mostNames)
                fail(error);
        }
    }
    if (replaces)
        fchmod(descriptor, mode);
    file = fdopen(descriptor, "w");
}

OutputFile::~OutputFile() {
    if (file)
        std::fclose(file);
    if (!temporary.empty()) {
        unlink(temporary.c_str());
        leave(place);
    }
}

void OutputFile::reserve(double bytes) {
    if (is_direct())
        return;
    if (fallocate(fileno(file), 0, 0, static_cast<off_t>(bytes)) != 0 &&
        (errno == ENOSPC || errno == EFBIG || errno == EDQUOT)) // others: this file system has no such service
        fail(errno);
}

void OutputFile::write(std::string_view text) {
    if (is_direct())
        std::fflush(stdout); // what was said before comes before
    if (std::fwrite(text.data(), 1, text.size(), file) != text.size())
        fail(errno);
}

void OutputFile::commit() {
    if (!is_direct() && (std::fflush(file) != 0 || ftruncate(fileno(file), ftello(file)) != 0))
        fail(errno);
    std::FILE* const finished = file;
    file = nullptr;
    if (std::fclose(finished) != 0)
        fail(errno);
    if (is_direct())
        return;
    if (std::rename(temporary.c_str(), target.c_str()) != 0)
        fail(errno);
    leave(place);
    temporary.clear();
}

void OutputFile::fail(int error) const {
    throw OutputError("cannot write " + shown + ": " + std::strerror(error));
}

void remove_temporary_files_on_signals() {
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGXCPU})
        if (std::signal(signal, remove_and_end) == SIG_IGN)
            std::signal(signal, SIG_IGN); // who started us wants it so
}

} // namespace tools
