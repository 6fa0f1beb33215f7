#include "platform/settings_store.h"

#include "platform/file_system.h"
#include "platform/xdg/xdg_folders.h"

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <optional>
#include <thread>
#include <vector>

// A key is a file in the configuration folder: kavelin/settings/<root>/<part>/.../<part>.json. It is an
// object with one member per value, whose bytes are hexadecimal digits. A part that is too long for a file
// name is a chain of folders, all but the last of which end with "%+". A process that writes or moves a file
// holds the lock file of the whole store; readers need no lock, since files are only ever replaced whole.

namespace KAV::Platform {

namespace {

using Json = nlohmann::json;
namespace fs = std::filesystem;

constexpr std::size_t LongestPart = 255;              // UTF-16 code units, as in the registry
constexpr std::size_t LongestName = 230;              // bytes; ".json.damaged-100" has to fit after it
constexpr std::uint64_t LargestFile = 16u << 20;      // of one key; a larger file isn't ours
constexpr auto LongestWait = std::chrono::seconds(2); // for another process's write, which takes milliseconds

const char* RootName(ESettingsRoot root) noexcept {
    switch (root) {
    case ESettingsRoot::ClassesRoot:
        return "HKEY_CLASSES_ROOT";
    case ESettingsRoot::LocalMachine:
        return "HKEY_LOCAL_MACHINE";
    case ESettingsRoot::Users:
        return "HKEY_USERS";
    case ESettingsRoot::CurrentConfig:
        return "HKEY_CURRENT_CONFIG";
    case ESettingsRoot::CurrentUser:
        break;
    }
    return "HKEY_CURRENT_USER";
}

fs::path StoreFolder() {
    const auto configuration = ConfigurationFolder();
    return configuration.empty() ? configuration : configuration / "kavelin" / "settings";
}

std::string Hexadecimal(const unsigned char* data, std::size_t size) {
    constexpr const char* digits = "0123456789abcdef";
    std::string text;
    text.reserve(size * 2);
    for (std::size_t i = 0; i < size; ++i) {
        text += digits[data[i] >> 4];
        text += digits[data[i] & 15];
    }
    return text;
}

int DigitValue(char digit) noexcept {
    if (digit >= '0' && digit <= '9') return digit - '0';
    return digit >= 'a' && digit <= 'f' ? digit - 'a' + 10 : -1;
}

bool IsHexadecimal(const std::string& text) {
    return text.size() % 2 == 0 &&
           std::all_of(text.begin(), text.end(), [](char digit) { return DigitValue(digit) >= 0; });
}

bool ContinuesACharacter(unsigned char byte) noexcept {
    return (byte & 0xC0u) == 0x80u;
}

/// The length of UTF-8 text in UTF-16 code units.
std::size_t Length(std::string_view text) {
    std::size_t length = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (!ContinuesACharacter(byte)) length += byte < 0xF0u ? 1 : 2;
    }
    return length;
}

/// A part of a key as a path that means only itself: no separators, no dots, nothing unprintable. Empty for a
/// part that can't be one.
fs::path PartPath(std::string_view part) {
    if (part.empty() || Length(part) > LongestPart) return {};
    constexpr std::size_t longestCharacter = 4; // bytes
    fs::path path;
    std::string name;
    for (const char c : part) {
        const auto byte = static_cast<unsigned char>(c);
        if (!ContinuesACharacter(byte) && name.size() + longestCharacter > LongestName) {
            path /= name + "%+";
            name.clear();
        }
        if (byte < 0x20 || byte == 0x7F || c == '/' || c == '\\' || c == '%' || c == '.') {
            name += '%' + Hexadecimal(&byte, 1);
        } else {
            name += c;
        }
    }
    return path / name;
}

/// Empty if the key can't be stored.
fs::path KeyFile(ESettingsRoot root, std::string_view key) {
    fs::path file = StoreFolder();
    if (file.empty()) return {};
    file /= RootName(root);
    while (true) {
        const auto slash = key.find('/');
        const auto part = PartPath(key.substr(0, slash));
        if (part.empty()) return {};
        file /= part;
        if (slash == std::string_view::npos) return file += ".json";
        key.remove_prefix(slash + 1);
    }
}

bool IsOurs(const Json& values) {
    return values.is_object() && std::all_of(values.begin(), values.end(), [](const Json& value) {
        return value.is_string() && IsHexadecimal(value.get_ref<const std::string&>());
    });
}

enum class EKey { Missing, Unreadable, Damaged, Good };

/// Why a key couldn't be read. A file that can't be opened at the moment isn't damaged.
EKey WhyNothing(const fs::path& file) {
    const auto handle = Files().OpenToRead(file);
    if (handle == IFileSystem::NoFile)
        return Files().Kind(file) == IFileSystem::EKind::Missing ? EKey::Missing : EKey::Unreadable;
    std::uint64_t size = 0;
    // A crash of the whole system can leave an empty file.
    const bool empty = Files().Size(handle, size) && size == 0;
    Files().Close(handle);
    return empty ? EKey::Damaged : EKey::Unreadable;
}

EKey ReadKey(const fs::path& file, Json& values) {
    values = Json::object();
    const SBytes text = ReadWholeFile(file);
    if (text.data == nullptr) return WhyNothing(file);
    if (text.size > LargestFile) return EKey::Damaged;
    auto parsed = Json::parse(text.data.get(), text.data.get() + text.size, nullptr, false);
    if (parsed.is_discarded() || !IsOurs(parsed)) return EKey::Damaged;
    values = std::move(parsed);
    return EKey::Good;
}

/// While this object lives and Held() is true, no other process or thread has the store.
class CStoreLock final {
public:
    CStoreLock() {
        const auto folder = StoreFolder();
        if (folder.empty() || !MakeFolders(folder)) return;
        const auto deadline = std::chrono::steady_clock::now() + LongestWait;
        do {
            _file = Files().OpenAlone(folder / "lock");
            if (_file != IFileSystem::NoFile) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        } while (std::chrono::steady_clock::now() < deadline);
    }
    ~CStoreLock() {
        if (_file != IFileSystem::NoFile) Files().Close(_file);
    }
    CStoreLock(const CStoreLock&) = delete;
    CStoreLock& operator=(const CStoreLock&) = delete;

    bool Held() const noexcept { return _file != IFileSystem::NoFile; }

private:
    IFileSystem::Handle _file = IFileSystem::NoFile;
};

/// Renames a damaged file, so that nothing in it is lost. Call only with the lock held.
bool KeepAside(const fs::path& file) {
    constexpr int kept = 100; // the last of them is overwritten
    for (int number = 1; number <= kept; ++number) {
        fs::path aside = file;
        aside += ".damaged-" + std::to_string(number);
        if (number == kept || Files().Kind(aside) == IFileSystem::EKind::Missing)
            return Files().Replace(file, aside);
    }
    return false;
}

/// The values of a key for a reader. A damaged file is kept under another name and counts as empty.
Json Values(const fs::path& file) {
    Json values;
    if (ReadKey(file, values) != EKey::Damaged) return values;
    const CStoreLock lock;
    if (lock.Held() && ReadKey(file, values) == EKey::Damaged) KeepAside(file); // read again under the lock
    return values;
}

std::optional<std::vector<unsigned char>> Find(
    ESettingsRoot root, const std::string& key, const std::string& name) {
    const auto file = KeyFile(root, key);
    if (file.empty()) return std::nullopt;
    const Json values = Values(file);
    const auto found = values.find(name);
    if (found == values.end()) return std::nullopt;
    const auto& digits = found->get_ref<const std::string&>();
    std::vector<unsigned char> bytes(digits.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<unsigned char>(DigitValue(digits[2 * i]) * 16 + DigitValue(digits[2 * i + 1]));
    }
    return bytes;
}

bool Store(ESettingsRoot root, const std::string& key, const std::string& name, std::string digits) {
    const auto file = KeyFile(root, key);
    if (file.empty()) return false;
    const CStoreLock lock;
    if (!lock.Held() || !MakeFolders(file.parent_path())) return false;
    Json values;
    const EKey state = ReadKey(file, values);
    if (state == EKey::Unreadable || (state == EKey::Damaged && !KeepAside(file))) return false;
    values[name] = std::move(digits);
    const auto text = values.dump(1) + "\n";
    return ReplaceWholeFile(file, text.data(), text.size());
}

} // namespace

SBytes ReadSetting(ESettingsRoot root, const std::string& key, const std::string& name) noexcept {
    try {
        const auto found = Find(root, key, name);
        if (!found) return {};
        SBytes bytes = NewBytes(found->size());
        if (bytes.data != nullptr) std::copy(found->begin(), found->end(), bytes.data.get());
        return bytes;
    } catch (...) { // no memory
        return {};
    }
}

bool WriteSetting(ESettingsRoot root, const std::string& key, const std::string& name, const void* data,
    std::size_t size) noexcept {
    try {
        return Store(root, key, name, Hexadecimal(static_cast<const unsigned char*>(data), size));
    } catch (...) { // no memory
        return false;
    }
}

bool SettingExists(ESettingsRoot root, const std::string& key, const std::string& name) noexcept {
    try {
        return Find(root, key, name).has_value();
    } catch (...) { // no memory
        return false;
    }
}

} // namespace KAV::Platform
