#pragma once

#include "tools/kavhost/tags/chunk_file.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// Markers, and what samplers need, translated between WAV ("cue ", "LIST" of "adtl", "smpl", "inst") and
/// AIFF
/// ("MARK", "INST").
namespace KAV::Host {

struct SMarker {
    std::uint32_t frame = 0;
    std::string label;
};

struct SSampleLoop {
    std::uint32_t begin = 0;
    std::uint32_t end = 0; ///< the frame after the last one
    bool alternates = false;
};

struct SInstrument {
    int note = 60; ///< at which the sample sounds as recorded; the numbers are MIDI's
    int detuneCents = 0;
    int gainDb = 0;
    int lowNote = 0;
    int highNote = 127;
    int lowVelocity = 1;
    int highVelocity = 127;
    std::optional<SSampleLoop> loop; ///< while a key is held
};

struct SMarkers {
    std::vector<SMarker> markers;
    std::optional<SInstrument> instrument;
    std::vector<std::string> without; ///< names of parts that have no counterpart
};

SMarkers MarkersOfWav(std::span<const SChunk> chunks);
SMarkers MarkersOfAiff(std::span<const SChunk> chunks);

/// Chunks for the other container; none for nothing.
std::vector<SChunk> WavMarkers(const SMarkers& markers, int rateHz);
std::vector<SChunk> AiffMarkers(const SMarkers& markers);

} // namespace KAV::Host
