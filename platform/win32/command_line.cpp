#include "platform/command_line.h"

#include "platform/winapi/wide_text.h"

#include <windows.h>

#include <shellapi.h>

namespace KAV::Platform {

std::vector<std::string> CommandLine(int, char**) {
    std::vector<std::string> arguments;
    int count = 0;
    wchar_t** const values = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 1; i < count; ++i) arguments.push_back(ToUtf8(values[i]));
    LocalFree(values);
    return arguments;
}

bool ShellExpandsWildcards() noexcept {
    return false;
}

} // namespace KAV::Platform
