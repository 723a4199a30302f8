// Long batteries: a run of all tests takes a sample of their cases, one with QRV_SOAK in its environment all of them.
#pragma once

#include <cstdlib>

namespace qrv::test {

class Sample {
public:
    explicit Sample(int oneOf) : oneOf_(std::getenv("QRV_SOAK") ? 1 : oneOf) {}
    bool takes() { return ++count_ % oneOf_ == 0; }

private:
    int oneOf_, count_ = 0;
};

} // namespace qrv::test
