#include "tools/kavhost/audio/wav_writer.h"

#include "tools/kavhost/base/errors.h"

#include <bit>
#include <limits>
#include <string_view>

namespace KAV::Host {

namespace {

/// The part after the tag of a coding's identifier in the extensible header; see wav_reader.cpp.
constexpr std::string_view CodingTail{"\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 14};

} // namespace

CWavWriter::CWavWriter(std::ostream& stream, const SAudioFormat& format, bool dither)
    : _stream(stream), _format(format), _sampleBytes(SampleBytes(format.samples)) {
    if (!Holds(EContainer::Wav, format.samples)) throw CFailure("WAV cannot store this sample format");
    const int bits = IntegerBits(format.samples);
    if (bits > 0) _quantiser.emplace(bits, dither);
    PutHeader();
    _headerBytes = _bytes.size();
}

void CWavWriter::Write(std::span<float> interleaved) {
    const auto bytes = interleaved.size() * static_cast<std::size_t>(_sampleBytes);
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
    if (_dataBytes + bytes + _headerBytes > most) throw CFailure("longer than a WAV file can be, 4 GiB");
    for (float& sample : interleaved) PutSample(sample);
    _dataBytes += bytes;
    _stream.write(_bytes.data(), static_cast<std::streamsize>(_bytes.size()));
    _bytes.clear();
}

void CWavWriter::Finish() {
    if ((_dataBytes & 1) != 0) Put(0, 1); // the next chunk would begin at an even place
    _stream.write(_bytes.data(), static_cast<std::streamsize>(_bytes.size()));
    _bytes.clear();
    _stream.seekp(0);
    PutHeader();
    _stream.write(_bytes.data(), static_cast<std::streamsize>(_bytes.size()));
    _bytes.clear();
}

void CWavWriter::Put(std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) _bytes.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

void CWavWriter::PutSample(float& sample) {
    if (_quantiser) {
        const std::int32_t number = _quantiser->Quantise(sample);
        sample = SampleOf(number);
        const std::uint32_t bits = static_cast<std::uint32_t>(number) >> (32 - 8 * _sampleBytes);
        Put(_sampleBytes == 1 ? bits ^ 0x80 : bits, _sampleBytes); // 8 bits are stored without a sign
    } else if (_sampleBytes == 8) {
        Put(std::bit_cast<std::uint64_t>(static_cast<double>(sample)), 8);
    } else {
        Put(std::bit_cast<std::uint32_t>(sample), 4);
    }
}

void CWavWriter::PutHeader() {
    const bool isInteger = _quantiser.has_value();
    const bool extensible = _format.mask.has_value();
    const std::uint64_t tag = isInteger ? 1 : 3;
    const auto channels = static_cast<std::uint64_t>(_format.channels);
    const auto rate = static_cast<std::uint64_t>(_format.rateHz);
    const auto sampleBytes = static_cast<std::uint64_t>(_sampleBytes);
    const std::uint64_t formatBytes = extensible ? 40 : isInteger ? 16 : 18;
    const bool counted = extensible || !isInteger; // all but the oldest form count their frames once more
    const std::uint64_t padding = _dataBytes & 1;

    _bytes.append("RIFF");
    Put(4 + (8 + formatBytes) + (counted ? 12 : 0) + (8 + _dataBytes + padding), 4);
    _bytes.append("WAVEfmt ");
    Put(formatBytes, 4);
    Put(extensible ? 0xFFFE : tag, 2);
    Put(channels, 2);
    Put(rate, 4);
    Put(rate * channels * sampleBytes, 4);
    Put(channels * sampleBytes, 2);
    Put(sampleBytes * 8, 2);
    if (counted) Put(extensible ? 22 : 0, 2); // bytes of the header that follow
    if (extensible) {
        Put(sampleBytes * 8, 2);
        Put(*_format.mask, 4);
        Put(tag, 2);
        _bytes.append(CodingTail);
    }
    if (counted) {
        _bytes.append("fact");
        Put(4, 4);
        Put(_dataBytes / (channels * sampleBytes), 4);
    }
    _bytes.append("data");
    Put(_dataBytes, 4);
}

} // namespace KAV::Host
