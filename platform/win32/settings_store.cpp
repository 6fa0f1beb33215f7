#include "platform/settings_store.h"

#include "platform/winapi/wide_text.h"

#include <algorithm>
#include <limits>
#include <windows.h>

namespace KAV::Platform {

namespace {

HKEY Root(ESettingsRoot root) noexcept {
    switch (root) {
    case ESettingsRoot::ClassesRoot:
        return HKEY_CLASSES_ROOT;
    case ESettingsRoot::LocalMachine:
        return HKEY_LOCAL_MACHINE;
    case ESettingsRoot::Users:
        return HKEY_USERS;
    case ESettingsRoot::CurrentConfig:
        return HKEY_CURRENT_CONFIG;
    case ESettingsRoot::CurrentUser:
        break;
    }
    return HKEY_CURRENT_USER;
}

/// The registry's form of a key: each part is followed by a backslash.
std::wstring KeyPath(const std::string& key) {
    auto path = ToWide(key);
    std::replace(path.begin(), path.end(), L'/', L'\\');
    return path + L'\\';
}

/// An open key, closed at the end of the scope.
class CKey final {
public:
    CKey() = default;
    ~CKey() {
        if (_key != nullptr) RegCloseKey(_key);
    }
    CKey(const CKey&) = delete;
    CKey& operator=(const CKey&) = delete;

    bool Open(ESettingsRoot root, const std::string& key, REGSAM access) {
        return RegOpenKeyExW(Root(root), KeyPath(key).c_str(), 0, access, &_key) == ERROR_SUCCESS;
    }
    bool Create(ESettingsRoot root, const std::string& key) {
        return RegCreateKeyExW(Root(root), KeyPath(key).c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &_key,
                   nullptr) == ERROR_SUCCESS;
    }
    HKEY Get() const noexcept { return _key; }

private:
    HKEY _key = nullptr;
};

SBytes Read(ESettingsRoot root, const std::string& key, const std::string& name) {
    CKey open;
    if (!open.Open(root, key, KEY_READ)) return {};
    const auto value = ToWide(name);
    DWORD size = 0;
    if (RegQueryValueExW(open.Get(), value.c_str(), nullptr, nullptr, nullptr, &size) != ERROR_SUCCESS)
        return {};
    SBytes bytes = NewBytes(size);
    if (bytes.data == nullptr) return {};
    DWORD read = size;
    const LSTATUS status = RegQueryValueExW(
        open.Get(), value.c_str(), nullptr, nullptr, reinterpret_cast<BYTE*>(bytes.data.get()), &read);
    if (status != ERROR_SUCCESS || read != size) return {}; // another process wrote in between
    return bytes;
}

bool Write(
    ESettingsRoot root, const std::string& key, const std::string& name, const void* data, std::size_t size) {
    CKey open;
    return size <= std::numeric_limits<DWORD>::max() && open.Create(root, key) &&
           RegSetValueExW(open.Get(), ToWide(name).c_str(), 0, REG_BINARY, static_cast<const BYTE*>(data),
               static_cast<DWORD>(size)) == ERROR_SUCCESS;
}

} // namespace

SBytes ReadSetting(ESettingsRoot root, const std::string& key, const std::string& name) noexcept {
    try {
        return Read(root, key, name);
    } catch (...) { // no memory
        return {};
    }
}

bool WriteSetting(ESettingsRoot root, const std::string& key, const std::string& name, const void* data,
    std::size_t size) noexcept {
    try {
        return Write(root, key, name, data, size);
    } catch (...) { // no memory
        return false;
    }
}

bool SettingExists(ESettingsRoot root, const std::string& key, const std::string& name) noexcept {
    try {
        CKey open;
        return open.Open(root, key, KEY_QUERY_VALUE) &&
               RegQueryValueExW(open.Get(), ToWide(name).c_str(), nullptr, nullptr, nullptr, nullptr) ==
                   ERROR_SUCCESS;
    } catch (...) { // no memory
        return false;
    }
}

} // namespace KAV::Platform
