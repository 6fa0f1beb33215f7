#include "tools/kavhost/tags/bext.h"

#include "tools/kavhost/base/text.h"
#include "tools/kavhost/tags/bytes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace KAV::Host {

namespace {

struct STextField {
    std::size_t place;
    std::size_t size;
    std::string_view key;
};

constexpr std::array TextFields{
    STextField{0, 256, "DESCRIPTION"},
    STextField{256, 32, "ORIGINATOR"},
    STextField{288, 32, "ORIGINATOR_REFERENCE"},
    STextField{320, 10, "ORIGINATION_DATE"},
    STextField{330, 8, "ORIGINATION_TIME"},
};
constexpr std::size_t TimeReferencePlace = 338;
constexpr std::size_t VersionPlace = 346;
constexpr std::size_t UmidPlace = 348;
constexpr std::size_t UmidBytes = 64;
constexpr std::size_t LoudnessPlace = 412;
constexpr std::size_t HistoryPlace = 602; // and the size of all before it
constexpr std::string_view TimeReferenceKey = "TIME_REFERENCE";
constexpr std::string_view UmidKey = "UMID";
constexpr std::string_view HistoryKey = "CODING_HISTORY";

std::uint64_t Version(std::string_view bext) noexcept {
    return NumberAt(bext, VersionPlace, 2, EByteOrder::LowFirst);
}

/// Hundredths, or the value for what has not been measured.
std::uint64_t StoredFigure(const std::optional<double>& value) noexcept {
    constexpr double most = 99.99; // what the standard allows
    if (!value || !(std::abs(*value) <= most)) return 0x7FFF;
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(std::lround(*value * 100))) & 0xFFFF;
}

std::string HexOf(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const char letter : bytes) {
        const auto byte = static_cast<unsigned char>(letter);
        text.push_back(digits[byte >> 4]);
        text.push_back(digits[byte & 15]);
    }
    return text;
}

std::string BytesOfHex(std::string_view text) {
    if (text.substr(0, 2) == "0x") text.remove_prefix(2);
    std::string bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        unsigned byte = 0;
        const auto digits = text.substr(i, 2);
        const auto end = digits.data() + digits.size();
        if (std::from_chars(digits.data(), end, byte, 16).ptr != end) return {};
        bytes.push_back(static_cast<char>(byte));
    }
    return bytes;
}

} // namespace

std::string UpdatedBext(std::string bext, const SLoudnessFigures& figures, std::string_view historyLine) {
    if (bext.size() < HistoryPlace || Version(bext) < 2) return bext;
    std::string stored;
    for (const auto& value : {figures.integratedLufs, figures.rangeLu, figures.truePeakDbtp,
             figures.momentaryLufs, figures.shortTermLufs}) {
        AppendNumber(stored, StoredFigure(value), 2, EByteOrder::LowFirst);
    }
    bext.replace(LoudnessPlace, stored.size(), stored);
    // The history may be filled up with zeros, after which a reader would not find the line.
    while (bext.size() > HistoryPlace && bext.back() == '\0') bext.pop_back();
    if (bext.size() > HistoryPlace && bext.back() != '\n') bext += "\r\n";
    return bext.append(historyLine).append("\r\n");
}

void AddBextFields(std::string_view bext, STagSet& tags) {
    for (const auto& field : TextFields) {
        if (field.place < bext.size())
            tags.AddMissing(field.key, ChunkText(bext.substr(field.place, field.size)));
    }
    if (bext.size() < VersionPlace) return;
    tags.AddMissing(
        TimeReferenceKey, std::to_string(NumberAt(bext, TimeReferencePlace, 8, EByteOrder::LowFirst)));
    if (bext.size() < HistoryPlace) return;
    const auto umid = bext.substr(UmidPlace, UmidBytes);
    if (Version(bext) > 0 && umid.find_first_not_of('\0') != std::string_view::npos)
        tags.AddMissing(UmidKey, HexOf(umid));
    tags.AddMissing(HistoryKey, ChunkText(bext.substr(HistoryPlace)));
}

std::string TakeBext(STagSet& tags) {
    const auto has = [&tags](std::string_view key) { return tags.Find(key) != nullptr; };
    const bool isWanted =
        std::ranges::any_of(TextFields.begin() + 1, TextFields.end(), has, &STextField::key) ||
        has(TimeReferenceKey) || has(UmidKey) || has(HistoryKey);
    if (!isWanted) return {};
    std::string bext;
    for (const auto& field : TextFields) bext += FixedField(tags.Take(field.key), field.size);
    const auto reference = tags.Take(TimeReferenceKey);
    std::uint64_t samples = 0;
    std::from_chars(reference.data(), reference.data() + reference.size(), samples);
    AppendNumber(bext, samples, 8, EByteOrder::LowFirst);
    AppendNumber(bext, 2, 2, EByteOrder::LowFirst);
    auto umid = BytesOfHex(tags.Take(UmidKey));
    umid.resize(UmidBytes);
    bext += umid;
    bext.resize(HistoryPlace);
    auto history = tags.Take(HistoryKey);
    if (!history.empty()) bext.append(history).append("\r\n");
    return bext;
}

} // namespace KAV::Host
