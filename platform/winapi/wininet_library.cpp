#include "platform/winapi/wininet_library.h"

#include "platform/winapi/system_library.h"

#include <optional>

namespace KAV::Platform {

namespace {

std::optional<SWinInet> LoadWinInet() noexcept {
    const HMODULE library = LoadSystemLibrary(L"wininet.dll");
    SWinInet net{};
    if (library == nullptr || !FindFunction(library, "InternetOpenW", net.Open) ||
        !FindFunction(library, "InternetConnectW", net.Connect) ||
        !FindFunction(library, "InternetSetOptionW", net.SetOption) ||
        !FindFunction(library, "HttpOpenRequestW", net.OpenRequest) ||
        !FindFunction(library, "HttpSendRequestW", net.SendRequest) ||
        !FindFunction(library, "HttpQueryInfoW", net.QueryInfo) ||
        !FindFunction(library, "InternetQueryDataAvailable", net.QueryDataAvailable) ||
        !FindFunction(library, "InternetReadFile", net.ReadFile) ||
        !FindFunction(library, "InternetCloseHandle", net.CloseHandle)) {
        return std::nullopt;
    }
    return net;
}

} // namespace

const SWinInet* WinInet() noexcept {
    static const std::optional<SWinInet> net = LoadWinInet();
    return net ? &*net : nullptr;
}

} // namespace KAV::Platform
