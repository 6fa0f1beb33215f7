#pragma once

#include "tools/kavhost/audio/quantiser.h"
#include "tools/kavhost/audio/sample_format.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <span>
#include <string>

namespace KAV::Host {

/// Writes a WAV file. The header is extensible if there is a speaker mask, which the plain one can't hold.
class CWavWriter final {
public:
    /// `stream` is binary, empty, can seek, and outlives the writer; the caller looks after its errors.
    /// Throws CFailure with a text that wants a file name in front for a format that WAV does not have.
    CWavWriter(std::ostream& stream, const SAudioFormat& format, bool dither);

    /// Appends whole frames, and leaves in `interleaved` what the file now holds. Throws CFailure when the
    /// file would outgrow the 4 GiB that WAV can count.
    void Write(std::span<float> interleaved);

    /// Completes the header. The last call.
    void Finish();

    std::uint64_t Clipped() const noexcept { return _quantiser ? _quantiser->Clipped() : 0; }
    double ClippedBySteps() const noexcept { return _quantiser ? _quantiser->ClippedBySteps() : 0; }

private:
    void Put(std::uint64_t value, int bytes);
    void PutSample(float& sample);
    void PutHeader();

    std::ostream& _stream;
    SAudioFormat _format;
    int _sampleBytes;
    std::optional<CQuantiser> _quantiser; ///< for whole numbers
    std::uint64_t _dataBytes = 0;
    std::uint64_t _headerBytes = 0;
    std::string _bytes; ///< not yet in the stream
};

} // namespace KAV::Host
