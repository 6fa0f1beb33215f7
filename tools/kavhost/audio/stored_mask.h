#pragma once

#include "tools/kavhost/audio/channel_order.h"

#include <array>
#include <cstdint>
#include <istream>
#include <optional>
#include <span>
#include <string>

/// Where containers keep their speaker mask, byte by byte. Nothing that is read here is trusted.
namespace KAV::Host {

/// Of a WAV file's format chunk; nothing if that is of a form without a mask.
std::optional<std::uint32_t> MaskInWavFormat(std::span<const unsigned char> chunk) noexcept;

/// The front of a WAV file or of one in its 64-bit form, with an extensible header, gets this mask. Without
/// one the header becomes a plain one, and what it no longer needs a chunk that readers skip. False if the
/// header is none of these; then nothing is changed.
bool SetMaskInWavHead(std::string& head, std::optional<std::uint32_t> mask);

/// What a channel layout says of a file's channels.
struct SChannelLayout {
    std::uint32_t mask = 0;
    CChannelOrder order;
};

/// Of the channel layout chunk that AIFF calls CHAN and CAF chan; nothing if it is damaged, belongs to
/// another count of channels, or names speakers that a mask can't.
std::optional<SChannelLayout> LayoutInChannelChunk(std::span<const unsigned char> chunk, int channels);

/// That chunk's content with exactly this mask.
std::array<unsigned char, 12> ChannelChunkOf(std::uint32_t mask) noexcept;

/// Of a FLAC file's comments. `file` is binary and at its start.
std::optional<std::uint32_t> MaskInFlac(std::istream& file);

/// The comment that holds this mask in FLAC.
std::string FlacMaskComment(std::uint32_t mask);

/// An Opus file numbers its channels by the speakers of Vorbis; other files leave their meaning open. `file`
/// is binary and at its start.
bool HasOpusSpeakers(std::istream& file);

} // namespace KAV::Host
