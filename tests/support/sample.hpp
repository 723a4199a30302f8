// Long batteries: a run of all tests takes a sample of their cases, one with QRV_SOAK in its environment all of them,
// and prints how many these were.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace qrv::test {

class Sample {
public:
    // One of so many cases.
    explicit Sample(int oneOf) : oneOf_(whole() ? 1 : oneOf) {}
    // So many cases drawn at random, `many` if all are run.
    static int of_many(int few, int many) {
        if (whole())
            std::printf("[  CASES   ] %d\n", many);
        return whole() ? many : few;
    }
    Sample(const Sample&) = delete;
    ~Sample() {
        if (whole())
            std::printf("[  CASES   ] %d\n", count_);
    }
    // How often a case is repeated.
    static int of_each(int few, int many) { return whole() ? many : few; }
    bool takes() { return ++count_ % oneOf_ == 0; }

private:
    static bool whole() { return std::getenv("QRV_SOAK") != nullptr; }

    int oneOf_, count_ = 0;
};

} // namespace qrv::test
