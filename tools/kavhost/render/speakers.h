#pragma once

#include "tools/kavhost/report/report.h"

#include <cstdint>
#include <optional>
#include <string>

namespace KAV::Host {

/// The speakers that a user gives to a file, whatever the file says.
struct SLayoutChoice {
    std::uint32_t mask = 0;
    std::string name; ///< of a layout, which has a certain count of channels; empty for a number
};

/// Throws CFailure, which wants a file name in front, if the layout has another count of channels.
void SetLayout(SAudioFormat& format, const SLayoutChoice& layout);

/// What the container makes of the format's speakers, if it can't hold them as they are.
std::optional<SNote> SpeakerNote(EContainer container, const SAudioFormat& format);

} // namespace KAV::Host
