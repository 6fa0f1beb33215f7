#include "tools/kavhost/audio/stored_mask.h"

#include "tools/kavhost/audio/speaker_layout.h"
#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <bit>
#include <vector>

namespace KAV::Host {

namespace {

using namespace Speakers;

constexpr std::size_t ExtensibleFormat = 40; // bytes of that form of a format chunk
constexpr std::size_t MaskPlace = 20;        // within it
constexpr std::string_view FlacKey = "WAVEFORMATEXTENSIBLE_CHANNEL_MASK=";

std::uint32_t Number(
    std::span<const unsigned char> bytes, std::size_t place, int count, bool bigEndian) noexcept {
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i) {
        const auto byte = bytes[place + static_cast<std::size_t>(bigEndian ? i : count - 1 - i)];
        value = value << 8 | byte;
    }
    return value;
}

std::uint32_t Little(std::string_view bytes, std::size_t place, int count) noexcept {
    return Number({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()}, place, count, false);
}

void PutLittle(std::string& bytes, std::size_t place, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i) {
        bytes[place + static_cast<std::size_t>(i)] = static_cast<char>(value >> (8 * i) & 0xFF);
    }
}

/// Nothing at the end of the file.
std::optional<std::uint32_t> Next(std::istream& file, int count, bool bigEndian) {
    std::array<unsigned char, 4> bytes{};
    if (!file.read(reinterpret_cast<char*>(bytes.data()), count)) return std::nullopt;
    return Number(bytes, 0, count, bigEndian);
}

/// The fixed layouts of a channel layout chunk by their number, with the speakers in the file's order. A
/// single pair of surrounds is taken for the sides, as other readers do.
struct STaggedLayout {
    std::uint32_t number;
    std::vector<std::uint32_t> speakers;
};

const std::vector<STaggedLayout>& TaggedLayouts() {
    constexpr auto l = FrontLeft, r = FrontRight, c = FrontCentre, lfe = Lfe, cs = BackCentre;
    constexpr auto ls = SideLeft, rs = SideRight, rls = BackLeft, rrs = BackRight;
    static const std::vector<STaggedLayout> layouts{
        {100, {c}},
        {101, {l, r}},
        {102, {l, r}},
        {108, {l, r, ls, rs}},
        {113, {l, r, c}},
        {114, {c, l, r}},
        {115, {l, r, c, cs}},
        {116, {c, l, r, cs}},
        {117, {l, r, c, ls, rs}},
        {118, {l, r, ls, rs, c}},
        {119, {l, c, r, ls, rs}},
        {120, {c, l, r, ls, rs}},
        {121, {l, r, c, lfe, ls, rs}},
        {122, {l, r, ls, rs, c, lfe}},
        {123, {l, c, r, ls, rs, lfe}},
        {124, {c, l, r, ls, rs, lfe}},
        {125, {l, r, c, lfe, ls, rs, cs}},
        {126, {l, r, c, lfe, ls, rs, FrontLeftOfCentre, FrontRightOfCentre}},
        {128, {l, r, c, lfe, ls, rs, rls, rrs}},
        {131, {l, r, cs}},
        {132, {l, r, ls, rs}},
        {133, {l, r, lfe}},
        {134, {l, r, lfe, cs}},
        {135, {l, r, lfe, ls, rs}},
        {136, {l, r, c, lfe}},
        {137, {l, r, c, lfe, cs}},
        {138, {l, r, ls, rs, lfe}},
    };
    return layouts;
}

/// Nothing if a speaker is there twice.
std::optional<SChannelLayout> LayoutOf(const std::vector<std::uint32_t>& speakers) {
    SChannelLayout layout;
    for (const auto speaker : speakers) {
        if (speaker == 0 || (layout.mask & speaker) != 0) return std::nullopt;
        layout.mask |= speaker;
    }
    std::vector<std::uint8_t> places;
    places.reserve(speakers.size());
    for (const auto speaker : speakers) {
        places.push_back(static_cast<std::uint8_t>(std::popcount(layout.mask & (speaker - 1))));
    }
    layout.order = CChannelOrder(std::move(places));
    return layout;
}

/// The speaker of a channel's label; 0 if a mask has no such speaker.
std::uint32_t SpeakerOfLabel(std::uint32_t label, bool hasRears) noexcept {
    constexpr std::uint32_t leftSurround = 5, rightSurround = 6, last = 18, rearLeft = 33, rearRight = 34;
    if (hasRears && label == leftSurround) return SideLeft;
    if (hasRears && label == rightSurround) return SideRight;
    if (label == rearLeft) return BackLeft;
    if (label == rearRight) return BackRight;
    return label >= 1 && label <= last ? 1u << (label - 1) : 0;
}

std::optional<SChannelLayout> LayoutOfLabels(std::span<const unsigned char> chunk, int channels) {
    constexpr std::size_t head = 12, description = 20;
    const auto count = static_cast<std::size_t>(channels);
    if (Number(chunk, 8, 4, true) != count || chunk.size() < head + count * description) return std::nullopt;
    std::vector<std::uint32_t> labels;
    for (std::size_t i = 0; i < count; ++i) labels.push_back(Number(chunk, head + i * description, 4, true));
    const bool hasRears = std::ranges::find(labels, 33u) != labels.end();
    for (auto& label : labels) label = SpeakerOfLabel(label, hasRears);
    return LayoutOf(labels);
}

/// The mask in a block of comments that ends `bytes` later, if it has one.
std::optional<std::uint32_t> MaskInComments(std::istream& file, std::uint32_t bytes) {
    const auto take = [&]() -> std::optional<std::uint32_t> {
        if (bytes < 4) return std::nullopt;
        bytes -= 4;
        return Next(file, 4, false);
    };
    const auto vendor = take();
    if (!vendor || *vendor > bytes) return std::nullopt;
    file.seekg(*vendor, std::ios::cur);
    bytes -= *vendor;
    const auto count = take();
    for (std::uint32_t i = 0; count && i < *count; ++i) {
        const auto length = take();
        if (!length || *length > bytes) return std::nullopt;
        bytes -= *length;
        constexpr std::uint32_t longest = 64; // a picture may be among the comments
        if (*length > longest) {
            file.seekg(*length, std::ios::cur);
            continue;
        }
        std::string comment(*length, '\0');
        if (!file.read(comment.data(), static_cast<std::streamsize>(comment.size()))) return std::nullopt;
        if (!EqualIgnoringCase(std::string_view(comment).substr(0, FlacKey.size()), FlacKey)) continue;
        const auto value = Trim(std::string_view(comment).substr(FlacKey.size()));
        if (IsMaskNumber(value)) return MaskOf(value);
    }
    return std::nullopt;
}

/// Skips the ID3 tag that some programs write in front of the audio.
void SkipId3(std::istream& file) {
    std::array<unsigned char, 10> head{};
    file.read(reinterpret_cast<char*>(head.data()), head.size());
    const bool isTag = file && head[0] == 'I' && head[1] == 'D' && head[2] == '3';
    std::uint32_t size = 0;
    for (std::size_t i = 6; i < head.size(); ++i) size = size << 7 | (head[i] & 0x7Fu);
    file.clear();
    file.seekg(isTag ? static_cast<std::streamoff>(size + head.size()) : 0);
}

} // namespace

std::optional<std::uint32_t> MaskInWavFormat(std::span<const unsigned char> chunk) noexcept {
    if (chunk.size() < ExtensibleFormat) return std::nullopt;
    const bool isBigEndian = chunk[0] == 0xFF && chunk[1] == 0xFE;
    if (Number(chunk, 0, 2, isBigEndian) != 0xFFFE) return std::nullopt;
    return Number(chunk, MaskPlace, 4, isBigEndian);
}

bool SetMaskInWavHead(std::string& head, std::optional<std::uint32_t> mask) {
    constexpr std::size_t chunkHead = 8;
    std::size_t place = 12;
    while (place + chunkHead + ExtensibleFormat <= head.size() && head.compare(place, 4, "fmt ") != 0) {
        place += chunkHead + Little(head, place + 4, 4);
    }
    if (place + chunkHead + ExtensibleFormat > head.size()) return false;
    const std::size_t format = place + chunkHead;
    if (Little(head, place + 4, 4) != ExtensibleFormat || Little(head, format, 2) != 0xFFFE) return false;
    if (mask) {
        PutLittle(head, format + MaskPlace, *mask, 4);
        return true;
    }
    // The plain form of floats counts the bytes that follow, which are none.
    const auto tag = Little(head, format + 24, 2);
    const std::uint32_t plain = tag == 1 ? 16 : 18;
    PutLittle(head, place + 4, plain, 4);
    PutLittle(head, format, tag, 2);
    std::fill(head.begin() + static_cast<std::ptrdiff_t>(format + 16),
        head.begin() + static_cast<std::ptrdiff_t>(format + ExtensibleFormat), '\0');
    head.replace(format + plain, 4, "JUNK");
    PutLittle(head, format + plain + 4, static_cast<std::uint32_t>(ExtensibleFormat - plain - chunkHead), 4);
    return true;
}

std::optional<SChannelLayout> LayoutInChannelChunk(std::span<const unsigned char> chunk, int channels) {
    constexpr std::uint32_t labels = 0, bitmap = 1u << 16, discrete = 147;
    if (chunk.size() < 12) return std::nullopt;
    const auto tag = Number(chunk, 0, 4, true);
    if (tag == bitmap) return SChannelLayout{Number(chunk, 4, 4, true), {}};
    if (tag == labels) return LayoutOfLabels(chunk, channels);
    if ((tag & 0xFFFF) != static_cast<std::uint32_t>(channels)) return std::nullopt;
    if (tag >> 16 == discrete) return SChannelLayout{};
    for (const auto& layout : TaggedLayouts()) {
        if (layout.number == tag >> 16 && layout.speakers.size() == (tag & 0xFFFF))
            return LayoutOf(layout.speakers);
    }
    return std::nullopt;
}

std::array<unsigned char, 12> ChannelChunkOf(std::uint32_t mask) noexcept {
    std::array<unsigned char, 12> chunk{0, 1, 0, 0}; // the layout is a mask
    for (std::size_t i = 0; i < 4; ++i)
        chunk[4 + i] = static_cast<unsigned char>(mask >> (24 - 8 * i) & 0xFF);
    return chunk;
}

std::optional<std::uint32_t> MaskInFlac(std::istream& file) {
    SkipId3(file);
    std::array<char, 4> mark{};
    if (!file.read(mark.data(), mark.size()) || std::string_view(mark.data(), mark.size()) != "fLaC")
        return std::nullopt;
    constexpr std::uint32_t last = 0x80, comments = 4;
    for (;;) {
        const auto kind = Next(file, 1, true);
        const auto bytes = Next(file, 3, true);
        if (!kind || !bytes) return std::nullopt;
        if ((*kind & ~last) == comments) return MaskInComments(file, *bytes);
        if ((*kind & last) != 0) return std::nullopt;
        file.seekg(*bytes, std::ios::cur);
    }
}

std::string FlacMaskComment(std::uint32_t mask) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string comment = std::string(FlacKey) + "0x";
    for (int shift = 28; shift >= 0; shift -= 4) {
        if (shift < 16 || mask >> shift != 0) comment += digits[mask >> shift & 0xF]; // four digits or more
    }
    return comment;
}

bool HasOpusSpeakers(std::istream& file) {
    std::string head(512, '\0');
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(file.gcount()));
    constexpr std::size_t familyPlace = 18;
    const auto place = head.find("OpusHead");
    if (place == std::string::npos || place + familyPlace >= head.size()) return false;
    return static_cast<unsigned char>(head[place + familyPlace]) <= 1;
}

} // namespace KAV::Host
