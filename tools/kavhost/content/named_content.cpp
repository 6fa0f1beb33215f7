#include "tools/kavhost/content/named_content.h"

#include "platform/directory.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "utils/product.h"

#include <algorithm>
#include <map>
#include <span>
#include <system_error>

namespace KAV::Host {

namespace {

namespace fs = std::filesystem;

/// What is stored under names, and where. Of two extensions with one name the first counts.
struct SKind {
    const char* option;
    const char* word;
    const char* usersFolder;
    const char* factoryFolder;
    std::span<const std::string_view> extensions;
};

constexpr std::string_view PatchExtensions[]{".fxp", ".kvp"};
constexpr std::string_view RoutingExtensions[]{".kvt"};
constexpr SKind Patches{"--patch", "patch", KAV_VENDOR "/" KAV_PRODUCT, "Patches", PatchExtensions};
constexpr SKind Routings{"--routing", "routing", KAV_VENDOR "/Routings", "Routings", RoutingExtensions};

const SKind& KindOf(ENamedContent kind) noexcept {
    return kind == ENamedContent::Patch ? Patches : Routings;
}

using NamesToFiles = std::map<std::string, SContentName, std::less<>>;

/// Adds the names in a folder that `names` lacks. Names may contain dots, so only a known extension is one.
void AddNames(
    const fs::path& folder, std::span<const std::string_view> extensions, bool isUsers, NamesToFiles& names) {
    auto entries = Platform::ListDirectory(folder);
    std::ranges::sort(entries, {}, &Platform::SDirectoryEntry::name);
    for (const auto extension : extensions) {
        for (const auto& entry : entries) {
            if (entry.isFolder || entry.name.size() <= extension.size()) continue;
            const auto length = entry.name.size() - extension.size();
            if (!EqualIgnoringCase(std::string_view(entry.name).substr(length), extension)) continue;
            auto name = entry.name.substr(0, length);
            names.try_emplace(name, SContentName{name, folder / PathOf(entry.name), isUsers});
        }
    }
}

NamesToFiles NamesOf(const SKind& kind, const SContentFolders& folders) {
    NamesToFiles names;
    if (!folders.documents.empty())
        AddNames(folders.documents / PathOf(kind.usersFolder), kind.extensions, true, names);
    if (!folders.factory.empty())
        AddNames(folders.factory / PathOf(kind.factoryFolder), kind.extensions, false, names);
    return names;
}

bool IsPath(const fs::path& wanted) {
    return wanted.has_parent_path() || wanted.has_root_path() || !wanted.has_filename();
}

bool ContainsIgnoringCase(std::string_view text, std::string_view part) noexcept {
    for (std::size_t place = 0; place + part.size() <= text.size(); ++place) {
        if (EqualIgnoringCase(text.substr(place, part.size()), part)) return true;
    }
    return false;
}

/// A name that contains `wanted`, or one that is written nearly so; otherwise null.
const std::string* NearestName(std::string_view wanted, std::span<const std::string> names) {
    const auto whole =
        std::ranges::find_if(names, [&](const auto& name) { return ContainsIgnoringCase(name, wanted); });
    if (whole != names.end()) return &*whole;
    const auto* const nearest = Nearest(wanted, names);
    return nearest != nullptr && 2 * EditDistance(wanted, *nearest) <= wanted.size() ? nearest : nullptr;
}

[[noreturn]] void FailUnknown(const SKind& kind, const std::string& wanted, const NamesToFiles& known) {
    std::vector<std::string> names;
    names.reserve(known.size());
    for (const auto& [name, file] : known) names.push_back(name);
    std::string message = wanted + ": no such file, and no " + kind.word + " of this name";
    const auto* const nearest = NearestName(wanted, names);
    if (nearest != nullptr) message += "; the nearest is \"" + *nearest + "\"";
    throw CFailure(message);
}

} // namespace

std::vector<SContentName> ContentNames(ENamedContent kind, const SContentFolders& folders) {
    std::vector<SContentName> list;
    for (auto& [name, content] : NamesOf(KindOf(kind), folders)) {
        if (kind != ENamedContent::Patch || name != DefaultPatchName) list.push_back(content);
    }
    return list;
}

fs::path FindContent(ENamedContent kind, const fs::path& wanted, const SContentFolders& folders) {
    const auto name = Utf8(wanted);
    if (kind == ENamedContent::Patch && name == DefaultPatchName) return wanted;
    std::error_code error;
    const auto status = fs::status(wanted, error);
    if (IsPath(wanted) || (fs::exists(status) && !fs::is_directory(status))) return wanted;
    const auto known = NamesOf(KindOf(kind), folders);
    const auto found = known.find(name);
    if (found != known.end()) return found->second.file;
    if (!fs::exists(status)) FailUnknown(KindOf(kind), name, known);
    return wanted; // a folder
}

std::string ShellWord(std::string_view text) {
    if (text.find_first_of("\"$`\\!") == std::string_view::npos) return '"' + std::string(text) + '"';
    std::string word = "'";
    for (const char letter : text) {
        if (letter == '\'')
            word += "'\\''";
        else
            word += letter;
    }
    return word + "'";
}

std::string OptionFor(ENamedContent kind, std::string_view name) {
    return std::string(KindOf(kind).option) + " " + ShellWord(name);
}

} // namespace KAV::Host
