#pragma once

#include "tools/kavhost/audio/sample_format.h"

#include <span>
#include <string>
#include <vector>

namespace KAV::Host {

/// The weight of a speaker 60 to 120 degrees to the side at ear height, by ITU-R BS.1770. All others weigh 1,
/// and low-frequency effects nothing.
inline constexpr double SideWeight = 1.41;

/// How much each channel of a file counts for its loudness, and why.
struct SSpeakerWeights {
    enum class EOrigin { Mask, Routing, Usual, Nothing };

    std::vector<double> channels;
    EOrigin origin = EOrigin::Nothing;
    std::string layout; ///< by name, or the labels in the order of the channels; empty without an origin
};

/// By the file's speaker mask. Without one, or with one that leaves all speakers unspecified: by the labels
/// that a routing gives the channels, if `labels` is not empty; otherwise by the usual layout of that count,
/// up to 8 channels; otherwise all weigh 1.
SSpeakerWeights WeightsFor(const SAudioFormat& format, std::span<const std::string> labels = {});

/// For people, in one sentence: "by the speaker mask: 5.1(side)".
std::string Explained(const SSpeakerWeights& weights);

} // namespace KAV::Host
