#include "tools/kavhost/audio/wav_reader.h"

#include "tools/kavhost/audio/quantiser.h"
#include "tools/kavhost/audio/stored_mask.h"
#include "tools/kavhost/base/errors.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string_view>

namespace KAV::Host {

namespace {

constexpr std::uint32_t TagInteger = 1;
constexpr std::uint32_t TagFloat = 3;
constexpr std::uint32_t TagExtensible = 0xFFFE;
constexpr std::size_t PlainFormat = 16;      // bytes of the shortest format chunk
constexpr std::size_t ExtensibleFormat = 40; // bytes of the extensible one
constexpr int MostChannels = 1024;
constexpr std::uint32_t HighestRate = 10'000'000;

/// What follows the two bytes of the tag in the extensible header's 16-byte name of a coding.
constexpr std::array<unsigned char, 14> CodingTail{
    0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

template<typename T>
T LittleEndian(const unsigned char* bytes, std::size_t count = sizeof(T)) noexcept {
    T value = 0;
    for (std::size_t i = 0; i < count; ++i)
        value = static_cast<T>(value | static_cast<T>(T{bytes[i]} << (8 * i)));
    return value;
}

bool ReadBytes(std::istream& stream, std::span<unsigned char> bytes) {
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return stream.gcount() == static_cast<std::streamsize>(bytes.size());
}

bool Named(const unsigned char* bytes, std::string_view name) noexcept {
    return std::memcmp(bytes, name.data(), name.size()) == 0;
}

float DecodeSample(const unsigned char* bytes, ESampleFormat format) noexcept {
    switch (format) {
    case ESampleFormat::Int8:
        return static_cast<float>(bytes[0] - 128) / 128.0f; // alone in having no sign
    case ESampleFormat::Int16:
        return SampleOf(static_cast<std::int32_t>(std::uint32_t{LittleEndian<std::uint16_t>(bytes)} << 16));
    case ESampleFormat::Int24:
        return SampleOf(static_cast<std::int32_t>(LittleEndian<std::uint32_t>(bytes, 3) << 8));
    case ESampleFormat::Int32:
        return SampleOf(static_cast<std::int32_t>(LittleEndian<std::uint32_t>(bytes)));
    case ESampleFormat::Float64:
        return static_cast<float>(std::bit_cast<double>(LittleEndian<std::uint64_t>(bytes)));
    default:
        return std::bit_cast<float>(LittleEndian<std::uint32_t>(bytes));
    }
}

} // namespace

CWavReader::CWavReader(std::istream& stream) : _stream(stream) {
    _stream.seekg(0, std::ios::end);
    const auto end = _stream.tellg();
    _stream.seekg(0);
    if (!_stream || end < 0) throw CFailure("cannot be read");
    const auto size = static_cast<std::uint64_t>(end);

    std::array<unsigned char, 12> head{};
    if (!ReadBytes(_stream, head) || !Named(head.data(), "RIFF") || !Named(head.data() + 8, "WAVE")) {
        throw CFailure("not a WAV file");
    }
    std::uint64_t position = head.size();
    for (;;) {
        std::array<unsigned char, 8> chunk{};
        if (!ReadBytes(_stream, chunk)) throw CFailure("no audio in this WAV file");
        position += chunk.size();
        const std::uint64_t claimed = LittleEndian<std::uint32_t>(chunk.data() + 4);
        const std::uint64_t present = std::min(claimed, size - position);
        if (Named(chunk.data(), "data")) {
            if (_sampleBytes == 0) throw CFailure("no format before this WAV file's audio");
            _frames = present / (_sampleBytes * static_cast<std::size_t>(_format.channels));
            _left = _frames;
            _begin = position;
            return;
        }
        if (Named(chunk.data(), "fmt ")) {
            std::array<unsigned char, ExtensibleFormat> format{};
            const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(present, format.size()));
            if (!ReadBytes(_stream, std::span(format).first(wanted))) throw CFailure("cannot be read");
            ReadFormat(std::span(format).first(wanted));
        }
        position += present + (claimed & 1); // chunks begin at even places
        if (position >= size) throw CFailure("no audio in this WAV file");
        _stream.seekg(static_cast<std::streamoff>(position));
    }
}

void CWavReader::ReadFormat(std::span<const unsigned char> chunk) {
    if (chunk.size() < PlainFormat) throw CFailure("a damaged WAV file: its format is cut off");
    std::uint32_t tag = LittleEndian<std::uint16_t>(chunk.data());
    const int channels = LittleEndian<std::uint16_t>(chunk.data() + 2);
    const auto rate = LittleEndian<std::uint32_t>(chunk.data() + 4);
    const std::size_t frameBytes = LittleEndian<std::uint16_t>(chunk.data() + 12);
    const unsigned bits = LittleEndian<std::uint16_t>(chunk.data() + 14);
    if (tag == TagExtensible) {
        if (chunk.size() < ExtensibleFormat) throw CFailure("a damaged WAV file: its format is cut off");
        tag = LittleEndian<std::uint16_t>(chunk.data() + 24);
        if (!std::ranges::equal(chunk.subspan(26, CodingTail.size()), CodingTail)) tag = 0;
    }
    if (channels == 0 || channels > MostChannels)
        throw CFailure("a damaged WAV file: no usable channel count");
    if (rate == 0 || rate > HighestRate) throw CFailure("a damaged WAV file: no usable sample rate");

    if (tag == TagInteger && bits == 8)
        _format.samples = ESampleFormat::Int8;
    else if (tag == TagInteger && bits == 16)
        _format.samples = ESampleFormat::Int16;
    else if (tag == TagInteger && bits == 24)
        _format.samples = ESampleFormat::Int24;
    else if (tag == TagInteger && bits == 32)
        _format.samples = ESampleFormat::Int32;
    else if (tag == TagFloat && bits == 32)
        _format.samples = ESampleFormat::Float32;
    else if (tag == TagFloat && bits == 64)
        _format.samples = ESampleFormat::Float64;
    else
        throw CFailure("a WAV file with an unsupported coding (" + std::to_string(bits) + " bits)");
    _sampleBytes = bits / 8;
    if (frameBytes != _sampleBytes * static_cast<std::size_t>(channels)) {
        throw CFailure("a damaged WAV file: its frame size does not fit its channels");
    }
    _format.mask = MaskInWavFormat(chunk);
    _format.channels = channels;
    _format.rateHz = static_cast<int>(rate);
}

std::size_t CWavReader::Read(std::span<float> interleaved) {
    const auto channels = static_cast<std::size_t>(_format.channels);
    const auto frames =
        static_cast<std::size_t>(std::min<std::uint64_t>(interleaved.size() / channels, _left));
    _bytes.resize(frames * channels * _sampleBytes);
    if (!ReadBytes(_stream, _bytes)) throw CFailure("cannot be read to its end");
    for (std::size_t i = 0; i < frames * channels; ++i) {
        interleaved[i] = DecodeSample(_bytes.data() + i * _sampleBytes, _format.samples);
    }
    _left -= frames;
    return frames;
}

void CWavReader::Seek(std::uint64_t frame) {
    frame = std::min(frame, _frames);
    const auto frameBytes = _sampleBytes * static_cast<std::size_t>(_format.channels);
    _stream.clear();
    _stream.seekg(static_cast<std::streamoff>(_begin + frame * frameBytes));
    if (!_stream) throw CFailure("its reading position cannot be changed");
    _left = _frames - frame;
}

} // namespace KAV::Host
