#include "tools/kavhost/audio/completeness.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <span>
#include <string_view>
#include <system_error>
#include <vector>

namespace KAV::Host {

namespace {

constexpr int MostChunks = 10000; // of a file that leads in circles
constexpr std::uint64_t Unknown = ~std::uint64_t{0};

std::uint64_t Number(std::span<const char> bytes, bool isBigEndian) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[isBigEndian ? i : bytes.size() - 1 - i]);
        number = number << 8 | byte;
    }
    return number;
}

/// The sizes that programs write when they can't know it: none, or about the most that has 31 or 32 bits.
bool IsUnknown(std::uint64_t size) noexcept {
    constexpr std::uint64_t slack = 4096;
    constexpr std::uint64_t most31 = std::uint64_t{1} << 31, most32 = std::uint64_t{1} << 32;
    return size == 0 || (size >= most31 - slack && size <= most31) ||
           (size >= most32 - slack && size < most32);
}

std::string Announced(const char* unit, std::uint64_t announced, std::uint64_t present) {
    if (announced <= present) return {};
    return "the input is cut off: it announces " + std::to_string(announced) + " " + unit +
           " of audio but contains " + std::to_string(present);
}

/// A file, read here and there.
class CBytes final {
public:
    explicit CBytes(const std::filesystem::path& file) : _stream(file, std::ios::binary) {
        std::error_code error;
        _size = std::filesystem::file_size(file, error);
        if (error) _size = 0;
    }

    std::uint64_t Size() const noexcept { return _size; }

    /// What there is of `count` bytes.
    std::vector<char> At(std::uint64_t place, std::size_t count) {
        std::vector<char> bytes(count);
        _stream.clear();
        _stream.seekg(static_cast<std::streamoff>(place));
        _stream.read(bytes.data(), static_cast<std::streamsize>(count));
        bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(_stream.gcount(), 0)));
        return bytes;
    }

private:
    std::ifstream _stream;
    std::uint64_t _size = 0;
};

std::string_view Text(std::span<const char> bytes) noexcept {
    return {bytes.data(), bytes.size()};
}

/// How a format's chunks are laid out: a name of four letters, a size, the content.
struct SChunks {
    std::uint64_t first;
    std::string_view audio; ///< the chunk with the samples
    bool isBigEndian;
    std::size_t sizeBytes;
    std::uint64_t padding; ///< sizes are rounded up to multiples of this
};

std::string MissingOfChunks(CBytes& bytes, const SChunks& chunks) {
    std::uint64_t place = chunks.first, longSize = 0;
    for (int i = 0; i < MostChunks; ++i) {
        const std::size_t headBytes = 4 + chunks.sizeBytes;
        const auto head = bytes.At(place, headBytes);
        if (head.size() < headBytes) return {};
        const auto name = Text(head).substr(0, 4);
        auto size = Number(std::span(head).subspan(4), chunks.isBigEndian);
        place += headBytes;
        if (name == chunks.audio) {
            if (chunks.sizeBytes == 8 ? size == Unknown : IsUnknown(size)) size = longSize;
            return Announced("bytes", size, bytes.Size() - std::min(bytes.Size(), place));
        }
        if (name == "ds64") { // the sizes that 32 bits can't count: of the file, of the audio
            const auto sizes = bytes.At(place, 16);
            if (sizes.size() == 16) longSize = Number(std::span(sizes).subspan(8), false);
        }
        if (size >= bytes.Size()) return {};
        place += (size + chunks.padding - 1) / chunks.padding * chunks.padding;
    }
    return {};
}

std::string MissingOfSun(CBytes& bytes) {
    const auto head = bytes.At(4, 8);
    if (head.size() < 8) return {};
    const auto begin = Number(std::span(head).first(4), true),
               size = Number(std::span(head).subspan(4), true);
    if (IsUnknown(size)) return {};
    return Announced("bytes", size, bytes.Size() - std::min(bytes.Size(), begin));
}

/// The number of frames has 36 bits, after those of the rate, the channels and the sample format.
std::string MissingOfFlac(CBytes& bytes, std::uint64_t frames) {
    const auto numbers = bytes.At(21, 5);
    if (numbers.size() < 5) return {};
    const auto announced = Number(numbers, true) & 0xFFFFFFFFF;
    if (announced <= frames) return {};
    return "the input is cut off or damaged: it announces " + std::to_string(announced) +
           " frames, but only " + std::to_string(frames) + " could be read";
}

/// The last page of a stream is marked.
std::string MissingOfOgg(CBytes& bytes) {
    constexpr std::size_t largestPage = 27 + 255 + 255 * 255;
    const std::uint64_t begin = bytes.Size() - std::min<std::uint64_t>(bytes.Size(), 2 * largestPage);
    const auto tail = bytes.At(begin, 2 * largestPage);
    const auto text = Text(tail);
    for (auto page = text.rfind("OggS"); page != std::string_view::npos && text.size() - page >= 27;
         page = page == 0 ? std::string_view::npos : text.rfind("OggS", page - 1)) {
        const auto segments = static_cast<std::size_t>(static_cast<unsigned char>(text[page + 26]));
        if (text[page + 4] != 0) continue; // the letters were part of the audio
        std::size_t length = 27 + segments;
        for (std::size_t i = 0; i < segments && page + 27 + i < text.size(); ++i)
            length += static_cast<unsigned char>(text[page + 27 + i]);
        const bool isLast = (text[page + 5] & 4) != 0;
        if (isLast && page + length <= text.size()) return {};
        break;
    }
    return "the input is cut off: its last page is missing";
}

/// The first frame may be no audio but the number of bytes of the stream that begins with it.
std::string MissingOfMpeg(CBytes& bytes) {
    std::uint64_t place = 0;
    if (const auto tag = bytes.At(0, 10); tag.size() == 10 && Text(tag).starts_with("ID3")) {
        for (std::size_t i = 6; i < 10; ++i) place = place << 7 | (static_cast<unsigned char>(tag[i]) & 0x7F);
        place += 10;
    }
    const auto frame = bytes.At(place, 64);
    for (const std::size_t offset :
        {36u, 21u, 13u}) { // after the side information, which depends on the channels
        if (frame.size() < offset + 16) continue;
        const auto name = Text(frame).substr(offset, 4);
        if (name != "Xing" && name != "Info") continue;
        const auto flags = Number(std::span(frame).subspan(offset + 4, 4), true);
        if ((flags & 2) == 0) return {};
        const std::size_t size = offset + 8 + ((flags & 1) != 0 ? 4u : 0u);
        return Announced("bytes", Number(std::span(frame).subspan(size, 4), true),
            bytes.Size() - std::min(bytes.Size(), place));
    }
    return {};
}

} // namespace

std::string MissingPart(const std::filesystem::path& file, std::uint64_t frames) {
    CBytes bytes(file);
    const auto head = bytes.At(0, 12);
    const auto text = Text(head);
    const auto form = text.substr(0, 4);
    if (form == "RIFF" || form == "RF64" || form == "BW64")
        return MissingOfChunks(bytes, {12, "data", false, 4, 2});
    if (form == "RIFX") return MissingOfChunks(bytes, {12, "data", true, 4, 2});
    if (form == "FORM") return MissingOfChunks(bytes, {12, "SSND", true, 4, 2});
    if (form == "caff") return MissingOfChunks(bytes, {8, "data", true, 8, 1});
    if (form == ".snd") return MissingOfSun(bytes);
    if (form == "fLaC") return MissingOfFlac(bytes, frames);
    if (form == "OggS") return MissingOfOgg(bytes);
    return MissingOfMpeg(bytes);
}

} // namespace KAV::Host
