// Long batteries: a run of all tests takes a sample of their cases, one with QRV_SOAK in its environment all of them.
#pragma once

#include <cstdlib>

namespace qrv::test {

inline bool whole_batteries() {
    return std::getenv("QRV_SOAK") != nullptr;
}

// How many of cases that are drawn at random.
inline int of_many(int few, int many) {
    return whole_batteries() ? many : few;
}

class Sample {
public:
    explicit Sample(int oneOf) : oneOf_(whole_batteries() ? 1 : oneOf) {}
    bool takes() { return ++count_ % oneOf_ == 0; }

private:
    int oneOf_, count_ = 0;
};

} // namespace qrv::test
