#pragma once

#include "utils/turn.h"

namespace KAV {

/// Sees the state that a patch is about to replace.
class IPatchWitness {
public:
    virtual void BeforePatch(Utils::CTurn& turn) = 0;

protected:
    IPatchWitness() = default;
    ~IPatchWitness() = default;
};

} // namespace KAV
