#include "patch/patch_files.h"

#include "patch/patch_formats.h"
#include "platform/whole_file.h"
#include "utils/location.h"
#include "utils/number.h"
#include "utils/path.h"
#include "utils/product.h"
#include "utils/scan_folder.h"
#include "utils/session_log.h"
#include "utils/text.h"

namespace KAV {

namespace {

constexpr std::u16string_view DefaultName = u"Default";

/// Text patches in memory end with a zero, like those from a host.
std::string WithZero(std::string text) {
    text += '\0';
    return text;
}

} // namespace

std::u16string PatchFolder() {
    const auto documents = Utils::GetDocumentsFolder();
    return documents.empty() ? documents : documents + u"" KAV_VENDOR "/" KAV_PRODUCT "/";
}

std::vector<std::u16string> PatchNames() {
    auto names = Utils::ScanFolder(PatchFolder(), u"kvp");
    if (names.empty()) names.emplace_back(DefaultName);
    return names;
}

std::u16string PatchPath(std::u16string_view name) {
    const auto folder = PatchFolder();
    if (folder.empty()) return {};
    const auto base = folder + std::u16string(name);
    const auto fxp = base + u".fxp";
    return Utils::ExistsUniversal(fxp) ? fxp : base + u".kvp";
}

std::unique_ptr<char[]> ReadUserFile(std::u16string_view path, std::size_t& size) {
    auto bytes = Utils::ReadUniversal(path, size, {}, LargestUserFile);
    if (bytes == nullptr && size > 0) {
        Utils::LogLineOnce(u"Error=FileTooLarge:\"" + Utils::GetFileName(path) + u"\", nSize=" +
                           Utils::ToUtf16(std::to_string(size)) + u"[nMaxSize=" +
                           Utils::FormatInt(static_cast<std::int32_t>(LargestUserFile)) + u"]");
    }
    return bytes;
}

SPatchFile ReadPatchFile(std::u16string_view path) {
    const auto title = FileTitle(path);
    std::size_t size = 0;
    const auto bytes = ReadUserFile(path, size);
    if (bytes == nullptr)
        return {title == DefaultName ? WithZero(Patch::DefaultText()) : std::string(), false};
    const std::span<const char> content(bytes.get(), size);
    if (Utils::GetExtension(path) == u"kvp") {
        auto text = Patch::TextFromFile(Patch::TextOf(content), Utils::ToUtf8(title));
        if (text.empty()) return {{}, true};
        return {WithZero(std::move(text)), false};
    }
    if (!Patch::IsFxpOfOurs(content)) return {{}, true};
    const auto patch = Patch::PatchFromFxp(content, title);
    return {std::string(patch.begin(), patch.end()), false};
}

std::u16string ForeignPatchMessage(std::u16string_view path) {
    return u"Patch \"" + Utils::GetFileName(path) + u"\" was created for another plug-in.";
}

std::u16string FileTitle(std::u16string_view path) {
    return Utils::StripExtension(Utils::GetFileName(path));
}

std::u16string WithExtension(std::u16string_view path, std::u16string_view extension) {
    const bool hasIt = Utils::GetExtension(Utils::GetFileName(path)) == extension;
    auto result = hasIt ? Utils::StripExtension(path) : std::u16string(path);
    return result.append(u".").append(extension);
}

void WriteUserFile(std::u16string_view path, std::string_view content) noexcept {
    try {
        Platform::MakeFolders(Utils::ToSystemPath(Utils::GetFolder(path)));
        Utils::WriteUniversal(path, content.data(), content.size());
    } catch (...) { // no memory: as any other failure
        return;
    }
}

} // namespace KAV
