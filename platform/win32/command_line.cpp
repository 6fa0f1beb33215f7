#include "platform/command_line.h"

#include <windows.h>

#include <shellapi.h>

namespace KAV::Platform {

namespace {

std::string ToUtf8(const wchar_t* wide) {
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide, -1, text.data(), bytes, nullptr, nullptr);
    if (!text.empty()) text.pop_back(); // the closing zero
    return text;
}

} // namespace

std::vector<std::string> CommandLine(int, char**) {
    std::vector<std::string> arguments;
    int count = 0;
    wchar_t** const values = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 1; i < count; ++i) arguments.push_back(ToUtf8(values[i]));
    LocalFree(values);
    return arguments;
}

} // namespace KAV::Platform
