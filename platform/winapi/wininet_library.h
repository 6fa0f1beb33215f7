#pragma once

#include <windows.h>

#include <wininet.h>

/// The system's client for HTTP, loaded when it is first needed: it brings two dozen libraries into a host.
/// Only for the Windows part of this folder. Any thread.
namespace KAV::Platform {

/// The library's functions, under their names there.
struct SWinInet {
    decltype(&::InternetOpenW) Open;
    decltype(&::InternetConnectW) Connect;
    decltype(&::InternetSetOptionW) SetOption;
    decltype(&::HttpOpenRequestW) OpenRequest;
    decltype(&::HttpSendRequestW) SendRequest;
    decltype(&::HttpQueryInfoW) QueryInfo;
    decltype(&::InternetQueryDataAvailable) QueryDataAvailable;
    decltype(&::InternetReadFile) ReadFile;
    decltype(&::InternetCloseHandle) CloseHandle;
};

/// The functions, for the life of the process; null if the library is missing.
const SWinInet* WinInet() noexcept;

} // namespace KAV::Platform
