#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/audio/channel_order.h"
#include "tools/kavhost/audio/open_sound.h"
#include "tools/kavhost/audio/quantiser.h"
#include "tools/kavhost/audio/stored_mask.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/pending_file.h"
#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <functional>
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
    return format.mask ? SF_FORMAT_WAVEX : SF_FORMAT_WAV;
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

/// What the library has written to a pending file.
struct SOutput {
    std::ofstream& stream;
    std::string front{}; ///< the first bytes as they are now; their length is fixed from the beginning

    void KeepFront(std::streamoff place, std::string_view bytes) {
        const auto begin = static_cast<std::size_t>(place);
        if (place < 0 || begin >= front.size()) return;
        bytes = bytes.substr(0, front.size() - begin);
        std::ranges::copy(bytes, front.begin() + place);
    }
};

constexpr std::size_t FrontBytes = 1024; // beyond any header, and the comments that are written here

SOutput& OutputOf(void* user) noexcept {
    return *static_cast<SOutput*>(user);
}

/// The library's view of a pending file's stream. The library forgets errors of what it writes late, in
/// closing; the stream's state forgets nothing.
SF_VIRTUAL_IO PendingOutput() noexcept {
    SF_VIRTUAL_IO io{};
    io.get_filelen = [](void* user) -> sf_count_t {
        auto& file = OutputOf(user).stream;
        const auto place = file.tellp();
        file.seekp(0, std::ios::end);
        const auto length = file.tellp();
        file.seekp(place);
        return length;
    };
    io.seek = [](sf_count_t offset, int whence, void* user) -> sf_count_t {
        auto& file = OutputOf(user).stream;
        file.seekp(offset, whence == SEEK_SET   ? std::ios::beg
                           : whence == SEEK_CUR ? std::ios::cur
                                                : std::ios::end);
        return file.tellp();
    };
    io.read = [](void*, sf_count_t, void*) -> sf_count_t { return 0; };
    io.write = [](const void* bytes, sf_count_t count, void* user) -> sf_count_t {
        auto& output = OutputOf(user);
        const std::string_view text(static_cast<const char*>(bytes), static_cast<std::size_t>(count));
        output.KeepFront(output.stream.tellp(), text);
        output.stream.write(text.data(), count);
        return output.stream ? count : 0;
    };
    io.tell = [](void* user) -> sf_count_t { return OutputOf(user).stream.tellp(); };
    return io;
}

/// The front of the first chunk of that name; nothing if there is none.
std::vector<unsigned char> ChunkOf(SNDFILE* file, std::string_view name) {
    SF_CHUNK_INFO wanted{};
    std::ranges::copy(name, wanted.id);
    wanted.id_size = static_cast<unsigned>(name.size());
    auto* const place = sf_get_chunk_iterator(file, &wanted);
    if (place == nullptr) return {};
    constexpr std::size_t most = 1024; // a description for each of fifty channels
    std::vector<unsigned char> bytes(most);
    SF_CHUNK_INFO chunk{};
    chunk.data = bytes.data();
    chunk.datalen = static_cast<unsigned>(bytes.size());
    if (sf_get_chunk_data(place, &chunk) != SF_ERR_NO_ERROR) return {};
    bytes.resize(std::min<std::size_t>(most, chunk.datalen));
    return bytes;
}

/// The speaker that the library's number stands for; 0 if a mask has none.
std::uint32_t SpeakerOf(int number) noexcept {
    constexpr std::array<std::pair<int, int>, 19> bits{
        {{SF_CHANNEL_MAP_MONO, 2}, {SF_CHANNEL_MAP_LEFT, 0}, {SF_CHANNEL_MAP_RIGHT, 1},
            {SF_CHANNEL_MAP_CENTER, 2}, {SF_CHANNEL_MAP_LFE, 3}, {SF_CHANNEL_MAP_REAR_LEFT, 4},
            {SF_CHANNEL_MAP_REAR_RIGHT, 5}, {SF_CHANNEL_MAP_FRONT_LEFT_OF_CENTER, 6},
            {SF_CHANNEL_MAP_FRONT_RIGHT_OF_CENTER, 7}, {SF_CHANNEL_MAP_REAR_CENTER, 8},
            {SF_CHANNEL_MAP_SIDE_LEFT, 9}, {SF_CHANNEL_MAP_SIDE_RIGHT, 10}, {SF_CHANNEL_MAP_TOP_CENTER, 11},
            {SF_CHANNEL_MAP_TOP_FRONT_LEFT, 12}, {SF_CHANNEL_MAP_TOP_FRONT_CENTER, 13},
            {SF_CHANNEL_MAP_TOP_FRONT_RIGHT, 14}, {SF_CHANNEL_MAP_TOP_REAR_LEFT, 15},
            {SF_CHANNEL_MAP_TOP_REAR_CENTER, 16}, {SF_CHANNEL_MAP_TOP_REAR_RIGHT, 17}}};
    for (const auto& [known, bit] : bits) {
        if (known == number) return 1u << bit;
    }
    return 0;
}

/// The mask of a file whose chunks the library doesn't hand out, if all of its channels are in a mask's
/// order.
std::optional<std::uint32_t> MappedMask(SNDFILE* file, int channels) {
    std::vector<int> map(static_cast<std::size_t>(channels));
    const auto bytes = static_cast<int>(map.size() * sizeof(int));
    if (sf_command(file, SFC_GET_CHANNEL_MAP_INFO, map.data(), bytes) == SF_FALSE) return std::nullopt;
    std::uint32_t mask = 0;
    for (const int number : map) {
        const auto speaker = SpeakerOf(number);
        if (speaker <= mask) return std::nullopt; // also 0
        mask |= speaker;
    }
    return mask;
}

} // namespace

struct CAudioReader::SNative {
    void FindSpeakers(const std::filesystem::path& path, int storedFormat);

    std::string name;
    SAudioFormat format;
    std::uint64_t frames = 0;
    bool mayBeCutOff = false; ///< where it ends too early, the library reports an error
    bool isDamaged = false;   ///< it has ended before its end
    CFile file;
    CChannelOrder order; ///< of the file
};

void CAudioReader::SNative::FindSpeakers(const std::filesystem::path& path, int storedFormat) {
    const auto define = [this](EContainer container) {
        format.mask = DefinedMask(container, format.channels);
        format.isMaskDefined = format.mask.has_value();
    };
    switch (storedFormat & SF_FORMAT_TYPEMASK) {
    case SF_FORMAT_WAV:
    case SF_FORMAT_WAVEX:
    case SF_FORMAT_RF64:
        format.mask = MaskInWavFormat(ChunkOf(file.get(), "fmt "));
        break;
    case SF_FORMAT_AIFF:
    case SF_FORMAT_CAF: {
        const bool isAiff = (storedFormat & SF_FORMAT_TYPEMASK) == SF_FORMAT_AIFF;
        auto layout = LayoutInChannelChunk(ChunkOf(file.get(), isAiff ? "CHAN" : "chan"), format.channels);
        if (!layout) break;
        format.mask = layout->mask;
        order = std::move(layout->order);
        break;
    }
    case SF_FORMAT_FLAC: {
        std::ifstream stream(path, std::ios::binary);
        format.mask = MaskInFlac(stream);
        if (!format.mask) define(EContainer::Flac);
        break;
    }
    case SF_FORMAT_OGG: {
        const auto coding = storedFormat & SF_FORMAT_SUBMASK;
        std::ifstream stream(path, std::ios::binary);
        if (coding != SF_FORMAT_VORBIS && !(coding == SF_FORMAT_OPUS && HasOpusSpeakers(stream))) break;
        define(EContainer::Ogg);
        order = OggOrder(format.channels);
        break;
    }
    default:
        format.mask = MappedMask(file.get(), format.channels);
    }
}

CAudioReader::CAudioReader(const std::filesystem::path& file) : _native(std::make_unique<SNative>()) {
    _native->name = Utf8(file);
    if (!std::filesystem::exists(file)) throw CFailure(_native->name + ": no such file");
    if (std::filesystem::is_directory(file)) throw CFailure(_native->name + ": a folder, not an audio file");
    SF_INFO info{};
    _native->file.reset(OpenSound(file, info));
    if (!_native->file) {
        throw CFailure(
            _native->name + ": cannot be read as audio: " + std::string(Trim(sf_strerror(nullptr))));
    }
    _native->format = {info.samplerate, info.channels, SamplesOf(info.format)};
    _native->frames = info.frames > 0 ? static_cast<std::uint64_t>(info.frames) : 0;
    if (info.frames == SF_COUNT_MAX) _native->frames = 0; // an Ogg file without its end
    _native->mayBeCutOff = (info.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_FLAC;
    if (info.samplerate <= 0 || info.channels <= 0)
        throw CFailure(_native->name + ": no usable rate or channels");
    _native->FindSpeakers(file, info.format);
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
    const int error = read < frames ? sf_error(_native->file.get()) : SF_ERR_NO_ERROR;
    if (error != SF_ERR_NO_ERROR && (error == SF_ERR_SYSTEM || !_native->mayBeCutOff)) {
        throw CFailure(_native->name + ": damaged: " + std::string(Trim(sf_strerror(_native->file.get()))));
    }
    _native->isDamaged = _native->isDamaged || error != SF_ERR_NO_ERROR;
    _native->order.ToWav(interleaved.first(static_cast<std::size_t>(read) * channels));
    return static_cast<std::size_t>(read);
}

void CAudioReader::Seek(std::uint64_t frame) {
    const auto place = static_cast<sf_count_t>(std::min(frame, _native->frames));
    if (sf_seek(_native->file.get(), place, SEEK_SET) == place) return;
    throw CFailure(_native->name +
                   (_native->isDamaged ? ": damaged: " : ": its reading position cannot be changed: ") +
                   std::string(Trim(sf_strerror(_native->file.get()))));
}

struct CAudioWriter::SNative {
    SNative(const std::filesystem::path& target, const SAudioFormat& format, bool dither)
        : name(Utf8(target)), channels(format.channels), pending(target), output{pending.Stream()} {
        if (const int bits = IntegerBits(format.samples); bits > 0) quantiser.emplace(bits, dither);
        output.front.resize(FrontBytes);
    }

    int Close();
    void AnnounceSpeakers(int storedFormat, const SAudioFormat& format);
    void StoreSpeakers();

    std::string name;
    int channels;
    std::optional<CQuantiser> quantiser; ///< for whole numbers
    std::vector<std::int32_t> numbers;
    CChannelOrder order; ///< of the file
    std::vector<float> ordered;
    std::function<bool(std::string& front)> setMask; ///< at the end; empty if nothing is to be done
    CPendingFile pending;
    SOutput output;
    SF_VIRTUAL_IO io{};
    bool hasHeader = true; ///< false until the library has written it, which it does late for FLAC
    CFile file;            ///< ends before the pending file
};

/// The library's error.
int CAudioWriter::SNative::Close() {
    if (!file) return SF_ERR_NO_ERROR;
    // Without a single frame the library would leave an empty FLAC file.
    if (!hasHeader) sf_command(file.get(), SFC_UPDATE_HEADER_NOW, nullptr, 0);
    return sf_close(file.release());
}

/// Before the first sample: what the library can write by itself, and room for what it can't.
void CAudioWriter::SNative::AnnounceSpeakers(int storedFormat, const SAudioFormat& format) {
    const auto mask = format.mask;
    switch (storedFormat & SF_FORMAT_TYPEMASK) {
    case SF_FORMAT_WAVEX: // the library guesses a mask from the count of channels
    case SF_FORMAT_RF64:
        setMask = [mask](std::string& front) { return SetMaskInWavHead(front, mask); };
        break;
    case SF_FORMAT_AIFF:
        if (mask) {
            auto content = ChannelChunkOf(*mask);
            SF_CHUNK_INFO chunk{};
            std::ranges::copy(std::string_view("CHAN"), chunk.id);
            chunk.id_size = 4;
            chunk.data = content.data();
            chunk.datalen = static_cast<unsigned>(content.size());
            sf_set_chunk(file.get(), &chunk);
        }
        break;
    case SF_FORMAT_FLAC:
        hasHeader = false;
        if (mask && !(format.isMaskDefined && mask == DefinedMask(EContainer::Flac, channels))) {
            // The library writes no comments of other names than its own, so a title lends its place.
            const auto comment = FlacMaskComment(*mask);
            const std::string borrowed = "title=";
            sf_set_string(file.get(), SF_STR_TITLE, comment.substr(borrowed.size()).c_str());
            setMask = [comment, borrowed](std::string& front) {
                const auto place = front.find(borrowed + comment.substr(borrowed.size()));
                if (place == std::string::npos) return false;
                front.replace(place, comment.size(), comment);
                return true;
            };
        }
        break;
    case SF_FORMAT_OGG:
        order = OggOrder(channels);
        break;
    default:
        break;
    }
}

/// After the last sample: sets the mask in what is there.
void CAudioWriter::SNative::StoreSpeakers() {
    if (!setMask) return;
    pending.Check();
    auto& stream = pending.Stream();
    stream.seekp(0, std::ios::end);
    const auto end = stream.tellp();
    output.front.resize(std::min(output.front.size(), static_cast<std::size_t>(end)));
    if (!setMask(output.front)) throw CFailure(name + ": cannot be written: no place for the speaker mask");
    stream.seekp(0);
    stream.write(output.front.data(), static_cast<std::streamsize>(output.front.size()));
    setMask = nullptr;
}

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
    _native->file.reset(sf_open_virtual(&_native->io, SFM_WRITE, &info, &_native->output));
    if (!_native->file) {
        _native->pending.Check();
        throw CFailure(_native->name + ": cannot be written: " + std::string(Trim(sf_strerror(nullptr))));
    }
    // The peak chunk contains the time of day, so the same input would never produce the same file twice.
    sf_command(_native->file.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    double quality = VorbisQuality;
    sf_command(_native->file.get(), SFC_SET_VBR_ENCODING_QUALITY, &quality, sizeof(quality)); // of OGG alone
    _native->AnnounceSpeakers(info.format, format);
}

CAudioWriter::~CAudioWriter() = default;

void CAudioWriter::Write(std::span<float> interleaved) {
    const auto frames = static_cast<sf_count_t>(interleaved.size()) / _native->channels;
    sf_count_t written = 0;
    if (frames > 0) _native->hasHeader = true;
    if (_native->quantiser) {
        auto& numbers = _native->numbers;
        numbers.resize(interleaved.size());
        _native->quantiser->Quantise(interleaved, numbers);
        written = sf_writef_int(_native->file.get(), numbers.data(), frames);
        for (std::size_t i = 0; i < numbers.size(); ++i) interleaved[i] = SampleOf(numbers[i]);
    } else {
        std::span<const float> stored = interleaved;
        if (!_native->order.IsKept()) {
            _native->ordered.assign(interleaved.begin(), interleaved.end());
            _native->order.ToFile(_native->ordered);
            stored = _native->ordered;
        }
        written = sf_writef_float(_native->file.get(), stored.data(), frames);
    }
    _native->pending.Check();
    if (written != frames) {
        throw CFailure(
            _native->name + ": cannot be written: " + std::string(Trim(sf_strerror(_native->file.get()))));
    }
}

const std::filesystem::path& CAudioWriter::Complete() {
    if (_native->file) {
        const int error = _native->Close();
        _native->pending.Check();
        if (error != SF_ERR_NO_ERROR) {
            throw CFailure(_native->name + ": cannot be written: " + std::string(sf_error_number(error)));
        }
        _native->StoreSpeakers();
        _native->pending.Stream().flush();
        _native->pending.Check();
    }
    return _native->pending.Temporary();
}

void CAudioWriter::Commit(EExisting existing) {
    Complete();
    _native->pending.Commit(existing);
}

std::uint64_t CAudioWriter::Clipped() const noexcept {
    return _native->quantiser ? _native->quantiser->Clipped() : 0;
}

double CAudioWriter::ClippedBySteps() const noexcept {
    return _native->quantiser ? _native->quantiser->ClippedBySteps() : 0;
}

} // namespace KAV::Host
