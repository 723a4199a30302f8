// Address space for elements that lie far apart.
#pragma once

#include <cstddef>
#include <sys/mman.h>

namespace qrv::test {

// Address space of which only what is touched takes memory; with `readable` false nothing may be.
class Reserved {
public:
    explicit Reserved(std::size_t bytes, bool readable = true)
        : bytes_(bytes), start_(mmap(nullptr, bytes, readable ? PROT_READ | PROT_WRITE : PROT_NONE,
                                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {}
    Reserved(const Reserved&) = delete;
    ~Reserved() {
        if (ok())
            munmap(start_, bytes_);
    }
    bool ok() const { return start_ != MAP_FAILED; }
    float* floats() const { return static_cast<float*>(start_); }

private:
    std::size_t bytes_;
    void* start_;
};

} // namespace qrv::test
