#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/audio/quantiser.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/pending_file.h"
#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <sndfile.h>
#include <vector>

namespace KAV::Host {

namespace {

constexpr double VorbisQuality = 0.8; // of 0 to 1: about 256 kbit/s in stereo, beyond doubt for listeners

struct SCloser {
    void operator()(SNDFILE* file) const noexcept { sf_close(file); }
};
using CFile = std::unique_ptr<SNDFILE, SCloser>;

ESampleFormat SamplesOf(int format) noexcept {
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
        return ESampleFormat::Int8;
    case SF_FORMAT_PCM_16:
        return ESampleFormat::Int16;
    case SF_FORMAT_PCM_24:
        return ESampleFormat::Int24;
    case SF_FORMAT_PCM_32:
        return ESampleFormat::Int32;
    case SF_FORMAT_FLOAT:
        return ESampleFormat::Float32;
    case SF_FORMAT_DOUBLE:
        return ESampleFormat::Float64;
    default:
        return ESampleFormat::Coded;
    }
}

int MajorFormat(EContainer container, const SAudioFormat& format, std::uint64_t frames) noexcept {
    switch (container) {
    case EContainer::Flac:
        return SF_FORMAT_FLAC;
    case EContainer::Aiff:
        return SF_FORMAT_AIFF;
    case EContainer::Ogg:
        return SF_FORMAT_OGG;
    case EContainer::Wav:
        break;
    }
    // Beyond what WAV's sizes can count, its 64-bit form; room is left for the header and for an estimate
    // that is a little low.
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max() - (std::uint64_t{64} << 20);
    const auto frameBytes = static_cast<std::uint64_t>(SampleBytes(format.samples) * format.channels);
    if (frames > most / frameBytes) return SF_FORMAT_RF64;
    return format.channels > 2 ? SF_FORMAT_WAVEX : SF_FORMAT_WAV;
}

int MinorFormat(EContainer container, ESampleFormat samples) noexcept {
    switch (samples) {
    case ESampleFormat::Int8:
        return container == EContainer::Wav ? SF_FORMAT_PCM_U8 : SF_FORMAT_PCM_S8;
    case ESampleFormat::Int16:
        return SF_FORMAT_PCM_16;
    case ESampleFormat::Int24:
        return SF_FORMAT_PCM_24;
    case ESampleFormat::Int32:
        return SF_FORMAT_PCM_32;
    case ESampleFormat::Float32:
        return SF_FORMAT_FLOAT;
    case ESampleFormat::Float64:
        return SF_FORMAT_DOUBLE;
    case ESampleFormat::Coded:
        return SF_FORMAT_VORBIS;
    }
    return 0;
}

std::ofstream& StreamOf(void* user) noexcept {
    return *static_cast<std::ofstream*>(user);
}

/// The library's view of a pending file's stream. The library forgets errors of what it writes late, in
/// closing; the stream's state forgets nothing.
SF_VIRTUAL_IO PendingOutput() noexcept {
    SF_VIRTUAL_IO io{};
    io.get_filelen = [](void* user) -> sf_count_t {
        auto& file = StreamOf(user);
        const auto place = file.tellp();
        file.seekp(0, std::ios::end);
        const auto length = file.tellp();
        file.seekp(place);
        return length;
    };
    io.seek = [](sf_count_t offset, int whence, void* user) -> sf_count_t {
        auto& file = StreamOf(user);
        file.seekp(offset, whence == SEEK_SET   ? std::ios::beg
                           : whence == SEEK_CUR ? std::ios::cur
                                                : std::ios::end);
        return file.tellp();
    };
    io.read = [](void*, sf_count_t, void*) -> sf_count_t { return 0; };
    io.write = [](const void* bytes, sf_count_t count, void* user) -> sf_count_t {
        auto& file = StreamOf(user);
        file.write(static_cast<const char*>(bytes), count);
        return file ? count : 0;
    };
    io.tell = [](void* user) -> sf_count_t { return StreamOf(user).tellp(); };
    return io;
}

} // namespace

struct CAudioReader::SNative {
    std::string name;
    SAudioFormat format;
    std::uint64_t frames = 0;
    CFile file;
};

CAudioReader::CAudioReader(const std::filesystem::path& file) : _native(std::make_unique<SNative>()) {
    _native->name = Utf8(file);
    if (!std::filesystem::exists(file)) throw CFailure(_native->name + ": no such file");
    if (std::filesystem::is_directory(file)) throw CFailure(_native->name + ": a folder, not an audio file");
    SF_INFO info{};
    _native->file.reset(sf_open(file.c_str(), SFM_READ, &info));
    if (!_native->file) {
        throw CFailure(
            _native->name + ": cannot be read as audio: " + std::string(Trim(sf_strerror(nullptr))));
    }
    _native->format = {info.samplerate, info.channels, SamplesOf(info.format)};
    _native->frames = info.frames > 0 ? static_cast<std::uint64_t>(info.frames) : 0;
    if (info.samplerate <= 0 || info.channels <= 0)
        throw CFailure(_native->name + ": no usable rate or channels");
}

CAudioReader::~CAudioReader() = default;

const SAudioFormat& CAudioReader::Format() const noexcept {
    return _native->format;
}

std::uint64_t CAudioReader::Frames() const noexcept {
    return _native->frames;
}

std::size_t CAudioReader::Read(std::span<float> interleaved) {
    const auto channels = static_cast<std::size_t>(_native->format.channels);
    const auto frames = static_cast<sf_count_t>(interleaved.size() / channels);
    const sf_count_t read = sf_readf_float(_native->file.get(), interleaved.data(), frames);
    if (read < frames && sf_error(_native->file.get()) != SF_ERR_NO_ERROR) {
        throw CFailure(_native->name + ": damaged: " + std::string(Trim(sf_strerror(_native->file.get()))));
    }
    return static_cast<std::size_t>(read);
}

void CAudioReader::Seek(std::uint64_t frame) {
    const auto place = static_cast<sf_count_t>(std::min(frame, _native->frames));
    if (sf_seek(_native->file.get(), place, SEEK_SET) == place) return;
    throw CFailure(_native->name + ": another place in it cannot be found: " +
                   std::string(Trim(sf_strerror(_native->file.get()))));
}

struct CAudioWriter::SNative {
    SNative(const std::filesystem::path& target, const SAudioFormat& format, bool dither)
        : name(Utf8(target)), channels(format.channels), pending(target) {
        if (const int bits = IntegerBits(format.samples); bits > 0) quantiser.emplace(bits, dither);
    }

    std::string name;
    int channels;
    std::optional<CQuantiser> quantiser; ///< for whole numbers
    std::vector<std::int32_t> numbers;
    CPendingFile pending;
    SF_VIRTUAL_IO io{};
    CFile file; ///< ends before the pending file
};

CAudioWriter::CAudioWriter(const std::filesystem::path& file, EContainer container,
    const SAudioFormat& format, bool dither, std::uint64_t frames)
    : _native(std::make_unique<SNative>(file, format, dither)) {
    SF_INFO info{};
    info.samplerate = format.rateHz;
    info.channels = format.channels;
    info.format = MajorFormat(container, format, frames) | MinorFormat(container, format.samples);
    if (sf_format_check(&info) == 0) {
        throw CFailure(_native->name + ": " + std::string(ContainerName(container)) + " cannot hold " +
                       std::to_string(format.channels) + " channels at " + std::to_string(format.rateHz) +
                       " Hz");
    }
    _native->io = PendingOutput();
    _native->file.reset(sf_open_virtual(&_native->io, SFM_WRITE, &info, &_native->pending.Stream()));
    if (!_native->file) {
        _native->pending.Check();
        throw CFailure(_native->name + ": cannot be written: " + std::string(Trim(sf_strerror(nullptr))));
    }
    // The peak chunk contains the time of day, so the same input would never produce the same file twice.
    sf_command(_native->file.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    double quality = VorbisQuality;
    sf_command(_native->file.get(), SFC_SET_VBR_ENCODING_QUALITY, &quality, sizeof(quality)); // of OGG alone
}

CAudioWriter::~CAudioWriter() = default;

void CAudioWriter::Write(std::span<float> interleaved) {
    const auto frames = static_cast<sf_count_t>(interleaved.size()) / _native->channels;
    sf_count_t written = 0;
    if (_native->quantiser) {
        auto& numbers = _native->numbers;
        numbers.resize(interleaved.size());
        _native->quantiser->Quantise(interleaved, numbers);
        written = sf_writef_int(_native->file.get(), numbers.data(), frames);
        for (std::size_t i = 0; i < numbers.size(); ++i) interleaved[i] = SampleOf(numbers[i]);
    } else {
        written = sf_writef_float(_native->file.get(), interleaved.data(), frames);
    }
    _native->pending.Check();
    if (written != frames) {
        throw CFailure(
            _native->name + ": cannot be written: " + std::string(Trim(sf_strerror(_native->file.get()))));
    }
}

void CAudioWriter::Commit() {
    const int error = sf_close(_native->file.release());
    _native->pending.Check();
    if (error != SF_ERR_NO_ERROR) {
        throw CFailure(_native->name + ": cannot be written: " + std::string(sf_error_number(error)));
    }
    _native->pending.Commit();
}

std::uint64_t CAudioWriter::Clipped() const noexcept {
    return _native->quantiser ? _native->quantiser->Clipped() : 0;
}

} // namespace KAV::Host
