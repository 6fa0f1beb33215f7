#pragma once

#include "tests/studio/sounding_state.h"
#include "tests/support/recording_host.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace KAV::Tests {

/// One call that changes what an instance sounds like, as the replay makes it: the host's own calls as they
/// were made, and what a user did in an editor as the words and routings that it changed.
struct SStudioCall {
    enum class EKind { New, Parameter, Chunk, Preset, ProgramName, Channels, Rate, Size, Word, Routing };

    EKind kind = EKind::New;
    std::size_t instance = 0;
    std::size_t index = 0;  ///< of the parameter or word; the group; a number of channels or frames
    float value = 0.0f;     ///< of the parameter; Hz
    std::uint32_t bits = 0; ///< of the word
    std::string text{};     ///< the chunk, the name, the routing
};

/// Makes any call but New on the instance.
void Make(const SStudioCall& call, CHostedEffect& effect);
std::string Described(const SStudioCall& call);

/// What leads from one state of an instance to another.
std::vector<SStudioCall> Edits(std::size_t instance, const SSoundingState& from, const SSoundingState& to);
/// The first differences of two states.
std::string Difference(const SSoundingState& is, const SSoundingState& shouldBe);

} // namespace KAV::Tests
