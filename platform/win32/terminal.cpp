#include "platform/terminal.h"

#include <cstdlib>
#include <windows.h>

namespace KAV::Platform {

void PrepareTerminal() noexcept {
    static const UINT before = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
    std::atexit([] { SetConsoleOutputCP(before); }); // the console outlives the program
}

int ErrorStreamColumns() noexcept {
    CONSOLE_SCREEN_BUFFER_INFO console{}; // only a console has one
    if (GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &console) == 0) return 0;
    return console.srWindow.Right - console.srWindow.Left + 1;
}

bool OutputStreamIsTerminal() noexcept {
    DWORD mode = 0; // only a console has a mode; the null device is a character device, too
    return GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) != 0;
}

} // namespace KAV::Platform
