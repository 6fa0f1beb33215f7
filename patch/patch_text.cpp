#include "patch/patch_text.h"

#include "utils/number.h"
#include "utils/product.h"

namespace KAV::Patch {

namespace {

constexpr std::string_view RoutingOpening = "<kav_input_routing>";
constexpr std::string_view RoutingEnd = "</kav_input_routing>";

/// The number as it is written in a line, between the quotation marks after "tag=".
std::string_view TagText(std::string_view line) noexcept {
    return ExtractTag(line, "tag=", "\"", "\"");
}

} // namespace

void AddElement(std::string& text, std::string_view name, std::string_view value) {
    text.append("<").append(name).append(">").append(value).append("</").append(name).append(">");
    text += LineEnd;
}

std::string Head(std::string_view appVersion, std::string_view patchName) {
    std::string text(Opening);
    text += LineEnd;
    AddElement(text, "patch_version", "1");
    AddElement(text, "app_title", KAV_PRODUCT);
    AddElement(text, "app_version", appVersion);
    AddElement(text, "plugin_id", std::to_string(PluginId));
    AddElement(text, "patch_name", patchName);
    return text;
}

std::string JoinNames(std::span<const std::string> names) {
    std::string joined;
    for (const auto& name : names) {
        if (!joined.empty()) joined += ListSeparator;
        joined += name;
    }
    return joined;
}

void AddParamLine(std::string& text, std::int32_t tag, std::string_view name, float value) {
    text.append("<param tag=\"")
        .append(std::to_string(tag))
        .append("\" namew=\"")
        .append(name)
        .append("\" >");
    text.append(Utils::FormatFixed(value, 6)).append("</param>").append(LineEnd);
}

std::optional<SParamLine> ReadParamLine(std::string_view line) noexcept {
    const auto tagText = TagText(line);
    if (tagText.empty()) return std::nullopt;
    SParamLine result;
    result.tag = Utils::ToInt(tagText);
    result.rawValue = ExtractTag(line, "<param ", ">", "</");
    if (result.tag < 0 || result.rawValue.empty()) return std::nullopt;
    result.value = Utils::ToFloat(result.rawValue, 0.0f);
    result.name = ExtractTag(line, "namew=", "\"", "\"");
    return result;
}

std::string WithTag(std::string_view line, std::int32_t tag) {
    const auto old = TagText(line);
    if (old.data() == nullptr) return std::string(line);
    const auto place = static_cast<std::size_t>(old.data() - line.data());
    std::string result(line.substr(0, place));
    return result.append(std::to_string(tag)).append(line.substr(place + old.size()));
}

void AddMacroLine(std::string& text, int macro, std::span<const SMacroTarget> targets) {
    text.append("<macro group=\"").append(std::to_string(macro)).append("\">");
    for (std::size_t i = 0; i < targets.size(); ++i) {
        if (i > 0) text += "||";
        text.append(std::to_string(targets[i].tag)).append(";");
        text += Utils::FormatFixed(targets[i].sensitivity, 3);
    }
    text.append("</macro>").append(LineEnd);
}

std::string_view MacroTargets(std::string_view text, int macro) {
    return ExtractTag(text, "<macro group=\"" + std::to_string(macro), "\">", "</");
}

SMacroTarget ReadMacroTarget(std::string_view piece) noexcept {
    CPieces parts(piece, ";");
    SMacroTarget target;
    if (parts.Next()) target.tag = Utils::ToInt(parts.Piece());
    if (parts.Next()) target.sensitivity = Utils::ToFloat(parts.Piece(), 0.0f);
    return target;
}

std::string RoutingBlock(std::string_view document, int group) {
    std::string head(RoutingOpening);
    head.append(LineEnd).append("\t<fx>").append(std::to_string(group)).append("</fx>");
    return Utils::ReplaceAll(document, RoutingOpening, head).append(LineEnd);
}

bool CRoutingBlocks::Next() noexcept {
    const auto begin = Utils::FindMark(_rest, RoutingOpening);
    if (begin == std::string_view::npos) return false;
    _rest.remove_prefix(begin);
    const auto end = Utils::FindMark(_rest, RoutingEnd);
    if (end == std::string_view::npos) return false;
    _block = _rest.substr(0, end + RoutingEnd.size());
    _rest.remove_prefix(_block.size());
    return true;
}

std::string_view CRoutingBlocks::Group() const noexcept {
    return ExtractTag(_block, "<fx", ">", "<");
}

std::string CRoutingBlocks::Document() const {
    const auto line = std::string("<fx>").append(Group()).append("</fx>").append(LineEnd);
    return Utils::ReplaceAll(_block, line, "");
}

} // namespace KAV::Patch
