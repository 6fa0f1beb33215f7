#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Numbers and texts in the chunks of sound files.
namespace KAV::Host {

/// Which byte of a number comes first: WAV has the lowest, AIFF the highest.
enum class EByteOrder { LowFirst, HighFirst };

/// The number in `count` bytes from `place` on; 0 where the bytes end before.
std::uint64_t NumberAt(
    std::string_view bytes, std::size_t place, std::size_t count, EByteOrder order) noexcept;

void AppendNumber(std::string& bytes, std::uint64_t value, std::size_t count, EByteOrder order);

/// Text of a chunk as UTF-8: up to the first zero, without spaces at its ends. What isn't UTF-8 is taken for
/// Latin-1.
std::string ChunkText(std::string_view bytes);

/// `text` in a field of `size` bytes, cut or filled up with zeros. A cut never splits a character.
std::string FixedField(std::string_view text, std::size_t size);

/// The first `most` bytes of a UTF-8 text, or fewer, so that no character is split.
std::string_view CutUtf8(std::string_view text, std::size_t most) noexcept;

} // namespace KAV::Host
