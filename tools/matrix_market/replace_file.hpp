// Writes a file that appears whole or not at all.
#pragma once

#include <cstdio>
#include <string>

namespace tools {

// What is written goes to a temporary file beside the target, which commit() gives the target's name. Without commit()
// the temporary is removed and a file that was there before stays. A target that is there and is no ordinary file, such
// as a device, is written directly. All members raise OutputError.
class ReplacedFile {
public:
    explicit ReplacedFile(const std::string& target);
    ~ReplacedFile();
    ReplacedFile(const ReplacedFile&) = delete;
    ReplacedFile& operator=(const ReplacedFile&) = delete;

    void write(const std::string& text);
    void commit();

private:
    [[noreturn]] void fail(int error) const;
    bool is_direct() const { return temporary.empty(); }

    std::string shown, target, temporary;
    std::FILE* file = nullptr;
};

} // namespace tools
