#pragma once

#include "tests/tools/kavhost/support.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// WAV and AIFF files built and taken apart without any code of the host.
namespace KAV::Tests {

/// A number's bytes, the lowest or the highest first.
std::string Little(std::uint64_t value, int bytes);
std::string Big(std::uint64_t value, int bytes);

using ChunkRecords = std::vector<std::pair<std::string, std::string>>; ///< name and content

std::string WavChunk(const std::string& name, const std::string& content);
std::string AiffChunk(const std::string& name, const std::string& content);

/// A tenth of a second of soft noise, stereo, 16 bits at 48 kHz, with chunks on both sides of the audio.
std::string WavWith(const ChunkRecords& before, const ChunkRecords& after = {});
std::string AiffWith(const ChunkRecords& after);

/// All chunks but those of format and audio. Fails the test unless every size in the file is right.
ChunkRecords ChunksOf(const std::string& file);

/// The contents of all chunks with that name.
std::vector<std::string> Contents(const ChunkRecords& chunks, const std::string& name);

/// The fields of a broadcast extension chunk; the history is what follows its 602 bytes.
std::string Bext(unsigned version, const std::string& history);

/// A text in a list, with its closing zero.
std::string InfoText(const std::string& name, const std::string& text);

/// Cue points at these frames, and the list of their names.
std::string Cues(const std::vector<std::uint32_t>& frames);
std::string CueLabels(const std::vector<std::string>& labels);

/// An ID3v2.3 tag with these frames, and a frame of text in Latin-1.
std::string Id3(const std::string& frames);
std::string Id3Frame(const std::string& name, const std::string& content);
std::string Id3Text(const std::string& name, const std::string& text);
std::string Id3UserText(const std::string& name, const std::string& text);

} // namespace KAV::Tests
