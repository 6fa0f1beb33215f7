#pragma once

#include "tools/kavhost/tags/tag_set.h"

#include <optional>
#include <string>
#include <string_view>

/// The broadcast extension chunk of WAV files, after EBU Tech 3285.
namespace KAV::Host {

/// What the second version of the chunk says about loudness; what isn't known is empty.
struct SLoudnessFigures {
    std::optional<double> integratedLufs;
    std::optional<double> rangeLu;
    std::optional<double> truePeakDbtp;
    std::optional<double> momentaryLufs; ///< the highest
    std::optional<double> shortTermLufs; ///< the highest
};

/// The chunk with these figures, and with `historyLine`, which needs no line end, at the end of its coding
/// history. Versions that have no loudness, and chunks shorter than their version, stay as they are.
std::string UpdatedBext(std::string bext, const SLoudnessFigures& figures, std::string_view historyLine);

/// Adds the chunk's texts to tags that don't have them, under the names by which other programs know them in
/// FLAC and Ogg files: ORIGINATOR, TIME_REFERENCE and so on.
void AddBextFields(std::string_view bext, STagSet& tags);

/// The opposite: takes those names out of `tags`. Empty if there are none but a description.
std::string TakeBext(STagSet& tags);

} // namespace KAV::Host
