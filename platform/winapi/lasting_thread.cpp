#include "platform/winapi/lasting_thread.h"

#include <memory>
#include <utility>
#include <windows.h>

namespace KAV::Platform {

namespace {

struct SWork {
    HMODULE library = nullptr; // this thread's own reference
    std::function<void()> run;
};

DWORD WINAPI Run(void* given) {
    HMODULE library = nullptr;
    {
        const std::unique_ptr<SWork> work(static_cast<SWork*>(given));
        library = work->library;
        work->run();
    }
    FreeLibraryAndExitThread(library, 0); // our code may be unloaded by now, so we can't return to it
}

} // namespace

bool StartLastingThread(std::function<void()> work) {
    auto given = std::make_unique<SWork>();
    given->run = std::move(work);
    if (GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&Run), &given->library) == 0) {
        return false;
    }
    const HANDLE thread = CreateThread(nullptr, 0, Run, given.get(), 0, nullptr);
    if (thread == nullptr) {
        FreeLibrary(given->library);
        return false;
    }
    (void)given.release(); // the thread owns it now
    CloseHandle(thread);
    return true;
}

} // namespace KAV::Platform
