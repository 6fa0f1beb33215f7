#pragma once

#include "plugin/device_dsp.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace KAV::Tests {

/// What the sound of an instance depends on apart from the sound it has had so far: every word that the user,
/// a patch or the host can set and the engine reads, and the routing documents. States are equal when their
/// bits are. The settings of the automatic gain are left out, because nothing switches that stage on.
struct SSoundingState {
    std::vector<std::uint32_t> words;
    std::array<std::string, DeviceGroups> routings;

    bool operator==(const SSoundingState&) const = default;
};

/// In one turn of the instance, so that no edit is seen in half.
SSoundingState SoundingStateOf(CDeviceDSP& device);

/// What word `word` of a state is: "Threshold (2)" or "slot 3 of macro 1".
const std::string& WordName(std::size_t word);
/// Sets one word and nothing that follows from it: a macro that is moved this way moves no other parameter.
void WriteWord(CDeviceDSP& device, std::size_t word, std::uint32_t bits);

} // namespace KAV::Tests
