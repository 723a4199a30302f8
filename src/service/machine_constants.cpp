#include "service/machine_constants.hpp"

#include "qrv/native.h"
#include "service/options.hpp"

using namespace qrv;

namespace {

struct MachineConstant {
    char letter;
    float value;
};

constexpr MachineConstant machineConstants[] = {
    {'E', machine::epsilon},
    {'S', machine::safeMinimum},
    {'U', machine::underflow},
    {'B', machine::base},
    {'P', machine::precision},
    {'N', machine::digits},
    {'R', machine::roundsToNearest},
    {'M', machine::minimumExponent},
    {'L', machine::maximumExponent},
    {'O', machine::overflow},
    // Limits for scaled sums of squares.
    {'A', 0x1p-42F},
    {'F', 0x1p-51F},
    {'I', 0x1p42F},
    {'X', 0x1p51F},
    {'T', 8},
};

} // namespace

float SLAMCH(const char* cmach) {
    for (const MachineConstant& constant : machineConstants)
        if (same_letter(*cmach, constant.letter))
            return constant.value;
    return 0;
}
