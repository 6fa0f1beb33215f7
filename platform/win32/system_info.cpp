#include "platform/system_info.h"

#include "platform/winapi/wide_text.h"

#include <array>
#include <ctime>
#include <vector>
#include <windows.h>

#include <sddl.h>

namespace KAV::Platform {

namespace {

std::wstring WideMachineName() {
    std::array<wchar_t, MAX_COMPUTERNAME_LENGTH + 1> name{};
    auto length = static_cast<DWORD>(name.size());
    return GetComputerNameW(name.data(), &length) != 0 ? std::wstring(name.data(), length) : std::wstring();
}

struct SSystem {
    const char* name;
    DWORD major;
    DWORD minor;
    WORD servicePack;
};

constexpr std::array Systems{
    SSystem{"Windows 10 or greater", 10, 0, 0},
    SSystem{"Windows 8 Point 10", 6, 3, 0},
    SSystem{"Windows 8", 6, 2, 0},
    SSystem{"Windows 7 SP1", 6, 1, 1},
    SSystem{"Windows 7", 6, 1, 0},
    SSystem{"Windows Vista SP2", 6, 0, 2},
    SSystem{"Windows Vista SP1", 6, 0, 1},
    SSystem{"Windows Vista", 6, 0, 0},
    SSystem{"Windows XP SP3", 5, 1, 3},
    SSystem{"Windows XP SP2", 5, 1, 2},
    SSystem{"Windows XP SP1", 5, 1, 1},
    SSystem{"Windows XP", 5, 1, 0},
};

bool IsServer() noexcept {
    OSVERSIONINFOEXW asked{};
    asked.dwOSVersionInfoSize = sizeof(asked);
    asked.wProductType = VER_NT_WORKSTATION;
    return VerifyVersionInfoW(
               &asked, VER_PRODUCT_TYPE, VerSetConditionMask(0, VER_PRODUCT_TYPE, VER_EQUAL)) == 0;
}

bool IsAtLeast(const SSystem& system) noexcept {
    OSVERSIONINFOEXW asked{};
    asked.dwOSVersionInfoSize = sizeof(asked);
    asked.dwMajorVersion = system.major;
    asked.dwMinorVersion = system.minor;
    asked.wServicePackMajor = system.servicePack;
    ULONGLONG mask = VerSetConditionMask(0, VER_MAJORVERSION, VER_GREATER_EQUAL);
    mask = VerSetConditionMask(mask, VER_MINORVERSION, VER_GREATER_EQUAL);
    mask = VerSetConditionMask(mask, VER_SERVICEPACKMAJOR, VER_GREATER_EQUAL);
    return VerifyVersionInfoW(&asked, VER_MAJORVERSION | VER_MINORVERSION | VER_SERVICEPACKMAJOR, mask) != 0;
}

} // namespace

std::uint32_t TickMs() noexcept {
    return GetTickCount();
}

std::tm LocalTime() noexcept {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    if (localtime_s(&parts, &now) != 0) return {};
    return parts;
}

std::string SystemName() {
    if (IsServer()) return "Windows Server";
    for (const auto& system : Systems) {
        if (IsAtLeast(system)) return system.name;
    }
    return "Undefined";
}

std::string ProcessorName() {
    std::array<wchar_t, 256> name{};
    DWORD bytes = sizeof(name) - sizeof(wchar_t);
    if (RegGetValueW(HKEY_LOCAL_MACHINE, L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0",
            L"ProcessorNameString", RRF_RT_REG_SZ, nullptr, name.data(), &bytes) != ERROR_SUCCESS) {
        return {};
    }
    return ToUtf8(name.data());
}

std::string MachineName() {
    return ToUtf8(WideMachineName());
}

std::string MachineIdentifier() {
    const auto account = L"\\\\" + WideMachineName();
    DWORD bytes = 0;
    DWORD letters = 0;
    SID_NAME_USE use{};
    LookupAccountNameW(nullptr, account.c_str(), nullptr, &bytes, nullptr, &letters, &use);
    if (bytes == 0) return {};
    std::vector<BYTE> sid(bytes);
    std::wstring domain(letters + 1, L'\0');
    if (LookupAccountNameW(nullptr, account.c_str(), sid.data(), &bytes, domain.data(), &letters, &use) == 0)
        return {};
    wchar_t* text = nullptr;
    if (ConvertSidToStringSidW(sid.data(), &text) == 0) return {};
    auto result = ToUtf8(text);
    LocalFree(text);
    return result;
}

SMemory PhysicalMemory() noexcept {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof(status);
    if (GlobalMemoryStatusEx(&status) == 0) return {};
    return {status.ullAvailPhys, status.ullTotalPhys};
}

SDisplay Display() {
    SDisplay display;
    display.monitors = GetSystemMetrics(SM_CMONITORS);
    display.width = GetSystemMetrics(SM_CXSCREEN);
    display.height = GetSystemMetrics(SM_CYSCREEN);
    display.primaryWidth = display.width;
    if (const HDC screen = GetDC(nullptr)) {
        display.refreshHz = GetDeviceCaps(screen, VREFRESH);
        display.dotsPerInch = GetDeviceCaps(screen, LOGPIXELSX);
        display.scalePercent = MulDiv(100, display.dotsPerInch, 96);
        ReleaseDC(nullptr, screen);
    }
    return display;
}

SDisplay DisplayAtOnce() {
    return Display();
}

} // namespace KAV::Platform
