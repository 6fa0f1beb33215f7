#include "utils/location.h"

#include "platform/clipboard.h"
#include "platform/file_system.h"
#include "platform/settings_store.h"
#include "platform/whole_file.h"
#include "utils/http.h"
#include "utils/path.h"
#include "utils/text.h"

#include <array>
#include <atomic>
#include <optional>
#include <string>

namespace KAV::Utils {

namespace {

using Platform::ESettingsRoot;

constexpr std::u16string_view WebPrefix = u"http";
constexpr std::u16string_view SettingsPrefix = u"HKEY_";
constexpr std::u16string_view ClipboardPrefix = u"clipboard:";

std::unique_ptr<char[]> ReadWeb(std::u16string_view url, std::size_t& size, std::u16string_view postData) {
    HttpOptions options;
    options.body = postData;
    return HttpGet(url, size, &options);
}

std::atomic<WebReader> webReader{&ReadWeb};

struct SRoot {
    std::u16string_view name;
    ESettingsRoot root;
};

constexpr std::array Roots{
    SRoot{u"HKEY_CURRENT_USER", ESettingsRoot::CurrentUser},
    SRoot{u"HKEY_CLASSES_ROOT", ESettingsRoot::ClassesRoot},
    SRoot{u"HKEY_LOCAL_MACHINE", ESettingsRoot::LocalMachine},
    SRoot{u"HKEY_USERS", ESettingsRoot::Users},
    SRoot{u"HKEY_CURRENT_CONFIG", ESettingsRoot::CurrentConfig},
};

struct SSetting {
    ESettingsRoot root;
    std::string key;
    std::string name;
};

/// Empty if the location has fewer than three parts, an unknown root or ill-formed text.
std::optional<SSetting> ParseSetting(std::u16string_view location) {
    const auto first = location.find(u'/');
    const auto last = location.rfind(u'/');
    if (first == last) return std::nullopt;
    for (const auto& root : Roots) {
        if (root.name != location.substr(0, first)) continue;
        const auto text = ToUtf8(location);
        if (text.empty() || text.find('\0') != std::string::npos) return std::nullopt;
        const auto key = text.find('/') + 1; // the names of the roots have the same length in both encodings
        const auto name = text.rfind('/') + 1;
        return SSetting{root.root, text.substr(key, name - 1 - key), text.substr(name)};
    }
    return std::nullopt;
}

Platform::SBytes Read(std::u16string_view location, std::u16string_view postData, std::size_t largestFile) {
    if (location.empty()) return {};
    if (location.starts_with(WebPrefix)) {
        Platform::SBytes bytes;
        if (const WebReader reader = webReader.load()) bytes.data = reader(location, bytes.size, postData);
        return bytes.data != nullptr ? std::move(bytes) : Platform::SBytes{};
    }
    if (location.starts_with(SettingsPrefix)) {
        const auto setting = ParseSetting(location);
        return setting ? Platform::ReadSetting(setting->root, setting->key, setting->name)
                       : Platform::SBytes{};
    }
    if (location.starts_with(ClipboardPrefix)) {
        const auto format = ToUtf8(location);
        return format.empty() ? Platform::SBytes{} : Platform::ReadClipboard(format);
    }
    const auto file = ToSystemPath(location);
    return file.empty() ? Platform::SBytes{} : Platform::ReadWholeFile(file, largestFile);
}

bool Write(std::u16string_view location, const void* data, std::size_t size) {
    if (location.empty() || data == nullptr || size == 0 || location.starts_with(WebPrefix)) return false;
    if (location.starts_with(SettingsPrefix)) {
        const auto setting = ParseSetting(location);
        return setting && Platform::WriteSetting(setting->root, setting->key, setting->name, data, size);
    }
    if (location.starts_with(ClipboardPrefix)) {
        const auto format = ToUtf8(location);
        return !format.empty() && Platform::WriteClipboard(format, data, size);
    }
    const auto file = ToSystemPath(location);
    return !file.empty() && Platform::ReplaceWholeFile(file, data, size);
}

bool Exists(std::u16string_view location) {
    if (location.empty()) return false;
    if (location.starts_with(SettingsPrefix)) {
        const auto setting = ParseSetting(location);
        return setting && Platform::SettingExists(setting->root, setting->key, setting->name);
    }
    const auto path = ToSystemPath(location);
    return !path.empty() && Platform::Files().Kind(path) != Platform::IFileSystem::EKind::Missing;
}

} // namespace

std::unique_ptr<char[]> ReadUniversal(std::u16string_view location, std::size_t& size,
    std::u16string_view postData, std::size_t largestFile) noexcept {
    Platform::SBytes bytes;
    try {
        bytes = Read(location, postData, largestFile);
    } catch (...) { // no memory
        bytes = {};
    }
    size = bytes.size;
    return std::move(bytes.data);
}

std::size_t WriteUniversal(std::u16string_view location, const void* data, std::size_t size) noexcept {
    try {
        return Write(location, data, size) ? size : 0;
    } catch (...) { // no memory
        return 0;
    }
}

bool ExistsUniversal(std::u16string_view location) noexcept {
    try {
        return Exists(location);
    } catch (...) { // no memory
        return false;
    }
}

void SetWebReader(WebReader reader) noexcept {
    webReader.store(reader);
}

} // namespace KAV::Utils
