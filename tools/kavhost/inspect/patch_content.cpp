#include "tools/kavhost/inspect/patch_content.h"

#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/file_bytes.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/setup/patch_file.h"
#include "tools/kavhost/setup/patch_needs.h"
#include "tools/kavhost/setup/setting_words.h"
#include "tools/kavhost/setup/state_text.h"
#include "utils/marked_text.h"
#include "utils/text.h"

#include <array>
#include <bit>
#include <cmath>

namespace KAV::Host {

namespace {

using Utils::CPieces;
using Utils::ExtractTag;
using Utils::FindMark;

constexpr int Macros = 5;

// The binary patch, its numbers with their lowest byte first: a mark, a name in UTF-16, pairs of a
// parameter's number and its value.
constexpr std::uint32_t BinaryMark = 1;
constexpr std::size_t NameAt = 4;
constexpr std::size_t PairsAt = 140;
constexpr std::size_t PairSize = 8;

std::uint32_t LittleEndian(std::string_view bytes, std::size_t place, std::size_t size) noexcept {
    std::uint32_t number = 0;
    for (std::size_t i = size; i-- > 0;) number = number << 8 | static_cast<unsigned char>(bytes[place + i]);
    return number;
}

std::int32_t WholeNumber(std::string_view text) noexcept {
    return ReadIndex(Trim(text)).value_or(0);
}

/// 0 for a number that can't be read, and for text that isn't a number, as in the effect.
double RealNumber(std::string_view text) noexcept {
    if (Trim(text).starts_with(MinusSign)) return 0; // only people write this sign
    const auto number = ReadNumber(text);
    return number ? number->value : 0;
}

std::vector<std::string> List(std::string_view text) {
    std::vector<std::string> names;
    CPieces pieces(text, ListSeparator);
    while (pieces.Next()) names.emplace_back(pieces.Piece());
    return names;
}

void ReadParameters(std::string_view text, SPatchContent& content) {
    CPieces lines(text, "\r\n");
    while (lines.Next()) {
        const auto line = lines.Piece();
        const auto tag = ReadIndex(ExtractTag(line, "tag=", "\"", "\""));
        const auto value = ExtractTag(line, "<param ", ">", "</");
        if (!tag || *tag < 0 || value.empty()) continue;
        content.parameters.push_back(
            {*tag, {}, std::string(ExtractTag(line, "namew=", "\"", "\"")), RealNumber(value)});
    }
}

void ReadMacros(std::string_view text, SPatchContent& content) {
    for (int macro = 0; macro < Macros; ++macro) {
        auto& targets = content.macroTargets.emplace_back();
        const auto opening = "<macro group=\"" + std::to_string(macro);
        CPieces pieces(ExtractTag(text, opening, "\">", "</"), "||");
        while (pieces.Next()) {
            CPieces halves(pieces.Piece(), ";");
            SPatchMacroTarget target;
            if (halves.Next()) target.tag = WholeNumber(halves.Piece());
            if (halves.Next()) target.sensitivity = RealNumber(halves.Piece());
            targets.push_back(target);
        }
    }
}

SPatchRouting ReadRoutingBlock(std::string_view block) {
    const auto value = [block](std::string_view opening) { return ExtractTag(block, opening, ">", "<"); };
    SPatchRouting routing{
        ReadIndex(value("<fx")), std::string(value("<name")), std::string(value("<type")), {}};
    CPieces entries(value("<map"), ListSeparator);
    CPieces labels(value("<ch_names"), ListSeparator);
    while (routing.entries.size() < MostRoutingEntries && entries.Next()) {
        CPieces channels(entries.Piece(), ",");
        SPatchRoutingEntry entry;
        entry.first = channels.Next() ? WholeNumber(channels.Piece()) : 0;
        entry.second = channels.Next() ? WholeNumber(channels.Piece()) : 0;
        if (labels.Next()) entry.label = labels.Piece();
        routing.entries.push_back(std::move(entry));
    }
    return routing;
}

void ReadRoutings(std::string_view text, SPatchContent& content) {
    constexpr std::string_view end = "</kav_input_routing>";
    for (;;) {
        const auto begin = FindMark(text, "<kav_input_routing>");
        if (begin == std::string_view::npos) return;
        text.remove_prefix(begin);
        const auto size = FindMark(text, end);
        if (size == std::string_view::npos) return;
        content.routings.push_back(ReadRoutingBlock(text.substr(0, size)));
        text.remove_prefix(size + end.size());
    }
}

SPatchContent ReadText(std::string_view text) {
    SPatchContent content;
    content.form = "text";
    const auto value = [text](std::string_view opening) { return ExtractTag(text, opening, ">", "<"); };
    content.program = value("<app_title");
    content.uniqueId = ReadIndex(value("<plugin_id"));
    content.name = value("<patch_name");
    for (const auto& need : ReadNeeds(text)) content.needs.push_back(need.words);
    content.isRelative = value("<multi_fx").empty();
    content.groups = List(ExtractTag(text, "<fx_names", ">", "</"));
    content.macros = List(ExtractTag(text, "<macro_group_names", ">", "</"));
    ReadParameters(text, content);
    ReadMacros(text, content);
    ReadRoutings(text, content);
    for (const auto name : SettingNames()) {
        const auto setting = ExtractTag(text, std::string("<").append(name), ">", "</");
        if (!setting.empty()) content.settings.emplace_back(name, setting);
    }
    return content;
}

SPatchContent ReadBinary(std::string_view bytes) {
    SPatchContent content;
    content.form = "binary";
    content.isRelative = true;
    std::u16string name;
    for (std::size_t place = NameAt; place + 2 <= std::min(PairsAt, bytes.size()); place += 2) {
        const auto unit = static_cast<char16_t>(LittleEndian(bytes, place, 2));
        if (unit == 0) break;
        name.push_back(unit);
    }
    content.name = Utils::ToUtf8(name);
    for (std::size_t place = PairsAt; place + PairSize <= bytes.size(); place += PairSize) {
        const auto tag = static_cast<std::int32_t>(LittleEndian(bytes, place, 4));
        const auto value = std::bit_cast<float>(LittleEndian(bytes, place + 4, 4));
        if (tag >= 0)
            content.parameters.push_back({tag, {}, {}, std::isnan(value) ? 0.0 : static_cast<double>(value)});
    }
    return content;
}

/// A routing alone. It belongs to no group before it is loaded into one.
std::optional<SPatchContent> ReadRoutingAlone(std::string_view bytes) {
    const auto document = ReadRouting(bytes);
    if (!document) return std::nullopt;
    SPatchContent content;
    content.form = "routing";
    content.routings.push_back(ReadRoutingBlock(document->document));
    content.name = content.routings.front().name;
    return content;
}

} // namespace

SPatchContent ParsePatch(std::string_view bytes) {
    if (bytes.starts_with(StateOpening) && bytes.size() > StateOpening.size()) {
        return ReadText(bytes.substr(0, bytes.find('\0')));
    }
    if (bytes.size() >= NameAt && LittleEndian(bytes, 0, NameAt) == BinaryMark) return ReadBinary(bytes);
    if (auto routing = ReadRoutingAlone(bytes)) return *std::move(routing);
    throw CFailure("not a patch, a state or a routing");
}

SPatchContent ReadPatch(const std::filesystem::path& file) {
    const auto bytes = ReadFileBytes(file);
    if (!CPatchFile::IsRecord(bytes)) return Naming(Utf8(file), [&] { return ParsePatch(bytes); });
    const CPatchFile patch(file);
    if (const auto* const values = patch.Values()) {
        SPatchContent content;
        content.form = "values";
        content.uniqueId = patch.UniqueId();
        content.name = patch.Name();
        for (const float value : *values) {
            const auto index = static_cast<std::int32_t>(content.parameters.size());
            content.parameters.push_back({{}, index, {}, static_cast<double>(value)});
        }
        return content;
    }
    auto content = Naming(Utf8(file), [&] { return ParsePatch(*patch.Chunk()); });
    if (!content.uniqueId) content.uniqueId = patch.UniqueId();
    return content;
}

} // namespace KAV::Host
