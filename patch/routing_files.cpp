#include "patch/routing_files.h"

#include "patch/patch_files.h"
#include "patch/patch_formats.h"
#include "patch/patch_text.h"
#include "routing/routing_document.h"
#include "routing/routing_record.h"
#include "utils/location.h"
#include "utils/marked_text.h"
#include "utils/path.h"
#include "utils/product.h"
#include "utils/scan_folder.h"
#include "utils/text.h"

namespace KAV {

namespace {

constexpr std::u16string_view NotFound = u"Not found";

std::string ReadText(const std::u16string& path) {
    std::size_t size = 0;
    const auto bytes = ReadUserFile(path, size);
    return bytes == nullptr ? std::string() : std::string(Patch::TextOf({bytes.get(), size}));
}

} // namespace

std::u16string RoutingFolder() {
    const auto documents = Utils::GetDocumentsFolder();
    return documents.empty() ? documents : documents + u"" KAV_VENDOR "/Routings/";
}

std::vector<std::u16string> RoutingNames() {
    auto names = Utils::ScanFolder(RoutingFolder(), u"kvt");
    names.emplace_back(NotFound);
    return names;
}

std::string ReadRoutingFile(std::u16string_view name) {
    const auto folder = RoutingFolder();
    const auto path = folder + std::u16string(name) + u".kvt";
    if (name == NotFound && (folder.empty() || !Utils::ExistsUniversal(path)))
        return std::string(DefaultRoutingText());
    if (folder.empty()) return {};
    const auto text = ReadText(path);
    const auto element = [](std::string_view value) {
        return std::string("<name>").append(value).append("</name>");
    };
    return Utils::ReplaceAll(text, element(RoutingValue(text, "<name")), element(Utils::ToUtf8(name)));
}

std::size_t RoutingEntryCount(std::string_view document) noexcept {
    std::size_t count = 0;
    Utils::CPieces entries(RoutingValue(document, "<map"), RoutingSeparator);
    while (entries.Next()) ++count;
    return count;
}

std::string CLegacyRoutings::Block(float index, int group) {
    const bool isPossible = index > -1.0f && index < 1e6f; // false for not-a-number
    const int place = isPossible ? static_cast<int>(index) : -1;
    const auto name = LegacyRoutingName(place);
    if (name.empty()) return {};
    auto known = _documents.find(place);
    if (known == _documents.end()) {
        const auto folder = RoutingFolder();
        const auto path = folder + u"/Legacy/" + Utils::ToUtf16(name) + u".kvt";
        known = _documents.emplace(place, folder.empty() ? std::string() : ReadText(path)).first;
    }
    return known->second.empty() ? std::string() : Patch::RoutingBlock(known->second, group);
}

} // namespace KAV
