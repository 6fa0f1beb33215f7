#include "utils/path.h"

#include "platform/folders.h"
#include "platform/module.h"
#include "utils/text.h"

#include <algorithm>
#include <utility>

namespace KAV::Utils {

namespace {

bool IsSlash(char16_t c) noexcept {
    return c == u'/' || c == u'\\';
}

/// Appends a character to a normalized path and keeps it normalized. A slash that completes "/./" removes the
/// dot and leaves the slash before it.
void Append(std::u16string& path, char16_t c) {
    if (c == u'/') {
        if (path.ends_with(u"/.")) path.pop_back();
        if (path.ends_with(u'/')) return;
    }
    path += c;
}

std::u16string WithSlash(std::u16string folder) {
    if (!folder.empty() && folder.back() != u'/') folder += u'/';
    return folder;
}

/// Set by a test; never destroyed, because the folder is needed until the very end of the process.
std::optional<std::u16string>& DocumentsOfTest() {
    static auto* const folder = new std::optional<std::u16string>;
    return *folder;
}

} // namespace

std::u16string NormalizePath(std::u16string_view path) {
    std::u16string normal;
    normal.reserve(path.size());
    for (const char16_t c : path) Append(normal, c == u'\\' ? u'/' : c);
    const bool isNetwork = path.size() > 1 && IsSlash(path[0]) && IsSlash(path[1]);
    return isNetwork ? u'/' + normal : normal;
}

std::u16string GetFileName(std::u16string_view path) {
    auto normal = NormalizePath(path);
    return normal.substr(normal.rfind(u'/') + 1); // no slash: npos + 1 is the beginning
}

std::u16string GetFolder(std::u16string_view path) {
    auto normal = NormalizePath(path);
    const auto slash = normal.rfind(u'/');
    if (slash != std::u16string::npos) normal.resize(slash + 1);
    return normal;
}

std::u16string GetExtension(std::u16string_view path) {
    const auto point = path.rfind(u'.');
    return point == std::u16string_view::npos ? std::u16string() : ToLower(path.substr(point + 1));
}

std::u16string StripExtension(std::u16string_view path) {
    return std::u16string(path.substr(0, path.rfind(u'.')));
}

std::u16string GetDocumentsFolder() {
    if (DocumentsOfTest()) return *DocumentsOfTest();
    return WithSlash(FromSystemPath(Platform::DocumentsFolder()));
}

void UseDocumentsFolder(std::optional<std::u16string> folder) {
    DocumentsOfTest() = std::move(folder);
}

std::u16string GetTemporaryFolder() {
    return WithSlash(FromSystemPath(Platform::TemporaryFolder()));
}

std::u16string GetModulePath() {
    return FromSystemPath(Platform::ModuleFile());
}

std::filesystem::path ToSystemPath(std::u16string_view path) {
    if (path.find(u'\0') != std::u16string_view::npos) return {}; // the system would stop there
    const auto text = ToUtf8(path);
    return std::u8string(text.begin(), text.end());
}

std::u16string FromSystemPath(const std::filesystem::path& path) {
    const auto text = path.u8string();
    return NormalizePath(ToUtf16(std::string(text.begin(), text.end())));
}

} // namespace KAV::Utils
