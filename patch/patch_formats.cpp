#include "patch/patch_formats.h"

#include "patch/patch_text.h"
#include "utils/number.h"
#include "utils/product.h"
#include "utils/text.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace KAV::Patch {

namespace {

constexpr std::size_t NameOffset = 4;
constexpr std::size_t NameBytes = 136;
constexpr std::size_t PairsOffset = NameOffset + NameBytes;
constexpr std::size_t PairBytes = 8;
constexpr std::size_t FxpHead = 60; // bytes before the patch in an .fxp file

std::uint32_t LittleEndian(std::span<const char> data, std::size_t offset) noexcept {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;) value = value << 8 | static_cast<unsigned char>(data[offset + i]);
    return value;
}

std::uint32_t BigEndian(std::span<const char> data, std::size_t offset) noexcept {
    return __builtin_bswap32(LittleEndian(data, offset));
}

std::string NameOfBinary(std::span<const char> data) {
    std::u16string name;
    const auto end = std::min(PairsOffset, data.size());
    for (std::size_t i = NameOffset; i + 1 < end; i += 2) {
        const auto unit = static_cast<char16_t>(
            static_cast<unsigned char>(data[i]) | static_cast<unsigned char>(data[i + 1]) << 8);
        if (unit == 0) break;
        name += unit;
    }
    return Utils::ToUtf8(name);
}

void AddBinaryParam(std::string& text, std::uint32_t tag, float value) {
    text.append("<param tag=\"").append(std::to_string(static_cast<std::int32_t>(tag))).append("\" >");
    text.append(Utils::FormatFixed(value, 3)).append("</param>").append(LineEnd);
}

bool StartsWith(std::span<const char> data, std::string_view text) noexcept {
    return data.size() >= text.size() && std::equal(text.begin(), text.end(), data.begin());
}

} // namespace

bool IsText(std::span<const char> data) noexcept {
    return data.size() > Opening.size() && StartsWith(data, Opening);
}

bool IsBinary(std::span<const char> data) noexcept {
    return data.size() >= 4 && LittleEndian(data, 0) == 1;
}

std::string_view TextOf(std::span<const char> data) noexcept {
    const auto end = std::find(data.begin(), data.end(), '\0');
    return {data.data(), static_cast<std::size_t>(end - data.begin())};
}

std::string TextFromBinary(std::span<const char> data) {
    std::string text = Head(Utils::ProductVersionUtf8, NameOfBinary(data));
    AddElement(text, "patch_info", "FXP-converted");
    for (std::size_t pair = PairsOffset; pair + PairBytes <= data.size(); pair += PairBytes)
        AddBinaryParam(text, LittleEndian(data, pair), std::bit_cast<float>(LittleEndian(data, pair + 4)));
    return text;
}

bool IsFxpOfOurs(std::span<const char> file) noexcept {
    constexpr std::size_t idOffset = 16;
    return file.size() >= FxpHead && BigEndian(file, idOffset) == static_cast<std::uint32_t>(PluginId);
}

std::vector<char> PatchFromFxp(std::span<const char> file, std::u16string_view fileName) {
    constexpr std::size_t sizeOffset = 56;
    constexpr std::size_t largestChunk = PairsOffset + PairBytes;
    constexpr std::size_t longestName = 63;
    if (!IsFxpOfOurs(file)) return {};
    const auto size = std::min(
        {static_cast<std::size_t>(BigEndian(file, sizeOffset)), largestChunk, file.size() - FxpHead});
    std::vector<char> patch(
        file.begin() + FxpHead, file.begin() + static_cast<std::ptrdiff_t>(FxpHead + size));
    std::u16string name(fileName.substr(0, longestName));
    name += u'\0';
    for (std::size_t i = 0; i < name.size() * 2 && NameOffset + i < size; ++i)
        patch[NameOffset + i] = static_cast<char>(name[i / 2] >> (8 * (i % 2)));
    return patch;
}

std::string DefaultText() {
    return Head("1.0.0.0", "No KVP patches found!"); // the version of the first release, never changed
}

std::string TextFromFile(std::string_view text, std::string_view fileName) {
    if (text.find("<plugin_id>" + std::to_string(PluginId) + "</plugin_id>") == std::string_view::npos)
        return {};
    const auto named = [](std::string_view name) {
        return std::string("<patch_name>").append(name).append("</patch_name>");
    };
    return Utils::ReplaceAll(text, named(ExtractTag(text, "<patch_name", ">", "<")), named(fileName));
}

std::string CopyGroup(
    std::string_view text, int from, int to, const std::function<bool(std::int32_t tag)>& isParameter) {
    std::string copy;
    copy.reserve(text.size());
    CPieces lines(text, LineEnd);
    while (lines.Next()) {
        const auto line = lines.Piece();
        if (line.find("<param ") == std::string_view::npos) {
            copy.append(line).append(LineEnd);
            continue;
        }
        const std::int32_t tag = Utils::ToInt(ExtractTag(line, "tag=", "\"", "\""));
        const bool isGlobal = tag < GroupTagStep && !isParameter(tag + GroupTagStep);
        const bool isChannel = line.find("ToolCh") != std::string_view::npos;
        if (isGlobal || isChannel || tag / GroupTagStep != from) continue;
        const std::int32_t relative = tag - from * GroupTagStep;
        const std::int32_t moved = to * GroupTagStep + relative;
        copy.append(WithTag(line, isParameter(moved) ? moved : relative)).append(LineEnd);
    }
    return copy;
}

} // namespace KAV::Patch
