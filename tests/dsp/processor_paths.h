#pragma once

#include "dsp/processor_path.h"
#include "utils/cpu_features.h"

#include <string>
#include <vector>

namespace KAV::Tests {

/// The paths that this processor can run, the plain one first.
inline std::vector<DSP::EProcessorPath> ProcessorPaths() {
    std::vector<DSP::EProcessorPath> paths{DSP::EProcessorPath::Plain};
    for (const auto features : {std::uint64_t{0}, Utils::DetectFeatures()}) {
        if (DSP::PathFor(features) != paths.back()) paths.push_back(DSP::PathFor(features));
    }
    return paths;
}

inline std::string NameOf(DSP::EProcessorPath path) {
    switch (path) {
    case DSP::EProcessorPath::Narrow:
        return "Narrow";
    case DSP::EProcessorPath::Wide:
        return "Wide";
    case DSP::EProcessorPath::Plain:
        break;
    }
    return "Plain";
}

} // namespace KAV::Tests
