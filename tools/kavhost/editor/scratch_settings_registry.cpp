#include "platform/winapi/windows_header.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/editor/scratch_settings.h"

#include <array>
#include <cwchar>
#include <string>
#include <vector>

namespace KAV::Host {

namespace {

constexpr const wchar_t* AllScratch = L"Software\\kavhost"; ///< a key for each process below it

/// They say where the user's documents are.
constexpr std::array FolderKeys{L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders"};

std::wstring KeyOf(DWORD process) {
    return std::wstring(AllScratch) + L"\\" + std::to_wstring(process);
}

bool IsRunning(DWORD process) noexcept {
    const HANDLE handle = OpenProcess(SYNCHRONIZE, FALSE, process);
    if (handle == nullptr) return GetLastError() == ERROR_ACCESS_DENIED;
    const bool runs = WaitForSingleObject(handle, 0) == WAIT_TIMEOUT;
    CloseHandle(handle);
    return runs;
}

/// Removes what processes have left that were killed.
void RemoveAbandoned() {
    HKEY all = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, AllScratch, 0, KEY_READ, &all) != ERROR_SUCCESS) return;
    std::vector<DWORD> processes;
    for (DWORD i = 0;; ++i) {
        std::array<wchar_t, 256> name{};
        auto length = static_cast<DWORD>(name.size());
        if (RegEnumKeyExW(all, i, name.data(), &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
            break;
        processes.push_back(static_cast<DWORD>(std::wcstoul(name.data(), nullptr, 10)));
    }
    RegCloseKey(all);
    for (const auto process : processes)
        if (!IsRunning(process)) RegDeleteTreeW(HKEY_CURRENT_USER, KeyOf(process).c_str());
}

void CopyKey(HKEY to, const wchar_t* name) {
    HKEY from = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, name, 0, KEY_READ, &from) != ERROR_SUCCESS) return;
    HKEY copy = nullptr;
    if (RegCreateKeyExW(to, name, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &copy, nullptr) == ERROR_SUCCESS) {
        RegCopyTreeW(from, nullptr, copy);
        RegCloseKey(copy);
    }
    RegCloseKey(from);
}

} // namespace

CScratchSettings::CScratchSettings() {
    RemoveAbandoned();
    const auto name = KeyOf(GetCurrentProcessId());
    RegDeleteTreeW(HKEY_CURRENT_USER, name.c_str());
    HKEY scratch = nullptr;
    auto status = RegCreateKeyExW(
        HKEY_CURRENT_USER, name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &scratch, nullptr);
    if (status == ERROR_SUCCESS) {
        for (const auto* const folders : FolderKeys) CopyKey(scratch, folders);
        status = RegOverridePredefKey(HKEY_CURRENT_USER, scratch);
        RegCloseKey(scratch);
    }
    if (status != ERROR_SUCCESS) throw CFailure("no temporary settings can be created");
    _name = std::filesystem::path(name);
}

CScratchSettings::~CScratchSettings() {
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegDeleteTreeW(HKEY_CURRENT_USER, _name.c_str());
    RegDeleteKeyW(HKEY_CURRENT_USER, AllScratch); // fails while another process has one
}

} // namespace KAV::Host
