#pragma once

#include <string>

namespace KAV::Host {

/// A setting in words: "Threshold (1)", "-12.00 dB".
struct SNamedValue {
    std::string name;
    std::string value;

    std::string Words() const { return name + " " + value; }
};

} // namespace KAV::Host
