#include "platform/winapi/wininet_library.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>

namespace KAV::Platform {

namespace {

template<typename Function>
bool Find(HMODULE library, const char* name, Function& function) noexcept {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
    return function != nullptr;
}

/// From the system's own folder: the host's current folder may contain anything under that name.
HMODULE LoadSystemLibrary(const wchar_t* name) {
    std::array<wchar_t, MAX_PATH> folder{};
    const UINT length = GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size()));
    if (length == 0 || length >= folder.size()) return nullptr;
    const auto path = std::wstring(folder.data(), length) + L"\\" + name;
    return LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

std::optional<SWinInet> Load() noexcept {
    try {
        const HMODULE library = LoadSystemLibrary(L"wininet.dll");
        SWinInet net{};
        if (library == nullptr || !Find(library, "InternetOpenW", net.Open) ||
            !Find(library, "InternetConnectW", net.Connect) ||
            !Find(library, "InternetSetOptionW", net.SetOption) ||
            !Find(library, "HttpOpenRequestW", net.OpenRequest) ||
            !Find(library, "HttpSendRequestW", net.SendRequest) ||
            !Find(library, "HttpQueryInfoW", net.QueryInfo) ||
            !Find(library, "InternetQueryDataAvailable", net.QueryDataAvailable) ||
            !Find(library, "InternetReadFile", net.ReadFile) ||
            !Find(library, "InternetCloseHandle", net.CloseHandle)) {
            return std::nullopt;
        }
        return net;
    } catch (...) { // no memory
        return std::nullopt;
    }
}

} // namespace

const SWinInet* WinInet() noexcept {
    static const std::optional<SWinInet> net = Load();
    return net ? &*net : nullptr;
}

} // namespace KAV::Platform
