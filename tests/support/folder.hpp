// A folder for the files of a test, removed with all it holds.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace qrv::test {

class Folder {
public:
    Folder() {
        std::string name = (std::filesystem::temp_directory_path() / "qrv_test_XXXXXX").string();
        path = mkdtemp(name.data());
    }
    ~Folder() { std::filesystem::remove_all(path); }
    Folder(const Folder&) = delete;

    std::string file(const std::string& name) const { return (path / name).string(); }
    std::ptrdiff_t count() const { return std::distance(std::filesystem::directory_iterator(path), {}); }

private:
    std::filesystem::path path;
};

// What a file holds; empty if there is none.
inline std::string content(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace qrv::test
