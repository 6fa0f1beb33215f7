#pragma once

#include "tools/kavhost/audio/sample_format.h"

#include <cstdint>
#include <istream>
#include <span>
#include <vector>

namespace KAV::Host {

/// A WAV file: whole numbers of 8, 16, 24 and 32 bits, floats of 32 and 64, plain and extensible headers. No
/// size in the file is trusted: chunks end where the file ends, and a cut file gives the whole frames that it
/// has.
class CWavReader final {
public:
    /// `stream` is binary, at its start, can seek, and outlives the reader. Throws CFailure with a text that
    /// wants a file name in front if this is not a WAV file, or one with another coding.
    explicit CWavReader(std::istream& stream);

    const SAudioFormat& Format() const noexcept { return _format; }
    std::uint64_t Frames() const noexcept { return _frames; }

    /// Fills whole frames of `interleaved` from where the last call ended; returns how many, fewer only at
    /// the end. Throws CFailure when the system cannot read what is there.
    std::size_t Read(std::span<float> interleaved);

    /// The next call of Read() begins with that frame, or at the end. Throws CFailure when the system cannot
    /// go there.
    void Seek(std::uint64_t frame);

private:
    void ReadFormat(std::span<const unsigned char> chunk);

    std::istream& _stream;
    SAudioFormat _format;
    std::size_t _sampleBytes = 0;
    std::uint64_t _begin = 0;  ///< where the first frame is
    std::uint64_t _frames = 0; ///< whole ones that the file really has
    std::uint64_t _left = 0;   ///< of these, not yet read
    std::vector<unsigned char> _bytes;
};

} // namespace KAV::Host
