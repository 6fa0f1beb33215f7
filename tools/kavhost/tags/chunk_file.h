#pragma once

#include "tools/kavhost/tags/bytes.h"

#include <cstdint>
#include <filesystem>
#include <istream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Files that consist of chunks, each a name of four letters, a size and its bytes.
namespace KAV::Host {

enum class EChunkFile {
    None,    ///< not made of chunks, or unknown
    Wav,     ///< RIFF, and RF64 or BW64, its forms for more than 4 GiB
    Aiff,    ///< AIFF and AIFF-C
    Foreign, ///< CAF, Wave64, or WAV with numbers the other way round: nothing is carried, only named
};

struct SChunk {
    std::string name; ///< four letters
    std::string bytes;

    bool operator==(const SChunk&) const = default;
};

/// What a file has besides its audio. Chunks that only describe how the audio is stored are in none of the
/// lists, nor are those that only fill up space.
struct SChunkList {
    EChunkFile kind = EChunkFile::None;
    std::vector<SChunk> carried;        ///< all of a kind that any program can go on using, in their order
    std::vector<std::string> ofSamples; ///< names of those that describe the samples as they were
    std::vector<std::string> unknown;   ///< names
    std::vector<std::string> leftOut;   ///< what should have been carried, each with the reason
};

/// "LIST INFO", "cue": a chunk's name for people.
std::string ChunkLabel(std::string_view name, std::string_view bytes);

/// Reads the chunks of a binary stream at its start. No size in the file is trusted, and memory is bounded.
SChunkList ReadChunks(std::istream& stream);

/// Appends chunks to a complete WAV, RF64 or AIFF file, and corrects its sizes. False, with the file as it
/// was, if the container cannot count that many bytes. Throws CFailure, with a text that wants a file name in
/// front, if the file cannot be written.
bool AppendChunks(const std::filesystem::path& file, std::span<const SChunk> chunks);

} // namespace KAV::Host
