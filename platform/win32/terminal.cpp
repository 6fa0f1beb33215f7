#include "platform/terminal.h"

#include <cstdlib>
#include <windows.h>

namespace KAV::Platform {

void PrepareTerminal() noexcept {
    static const UINT before = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
    std::atexit([] { SetConsoleOutputCP(before); }); // the console outlives the program
}

bool ErrorStreamIsTerminal() noexcept {
    DWORD mode = 0; // only a console has a mode; the null device is a character device, too
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

} // namespace KAV::Platform
