#include "platform/library.h"

#include "platform/winapi/wide_text.h"

#include <array>
#include <windows.h>

namespace KAV::Platform {

namespace {

std::string ErrorText(DWORD code) {
    std::array<wchar_t, 512> wide{};
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        code, 0, wide.data(), static_cast<DWORD>(wide.size()), nullptr);
    std::string result = ToUtf8({wide.data(), length});
    if (const auto place = result.find("%1"); place != std::string::npos)
        result.replace(place, 2, "the file");
    while (!result.empty() && static_cast<unsigned char>(result.back()) <= ' ') result.pop_back();
    return result.empty() ? "error " + std::to_string(code) : result;
}

} // namespace

std::string_view LibrarySuffix() noexcept {
    return ".dll";
}

void* OpenLibrary(const std::filesystem::path& file, std::string& reason) {
    // Without this the system may ask for a missing library in a message box, which would stop a batch run.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    // The altered search order finds the libraries that this one needs in its own folder. It requires
    // backslashes.
    auto native = file;
    native.make_preferred();
    const HMODULE library = LoadLibraryExW(native.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (library == nullptr) reason = ErrorText(GetLastError());
    return library;
}

void* FindSymbol(void* library, const char* name) noexcept {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

void CloseLibrary(void* library) noexcept {
    FreeLibrary(static_cast<HMODULE>(library));
}

} // namespace KAV::Platform
