#include "platform/winapi/lasting_thread.h"

#include <memory>
#include <utility>
#include <windows.h>

namespace KAV::Platform {

namespace {

struct SWork {
    HMODULE library = nullptr; // held once more by this thread
    std::function<void()> run;
};

DWORD WINAPI Run(void* given) {
    HMODULE library = nullptr;
    {
        const std::unique_ptr<SWork> work(static_cast<SWork*>(given));
        library = work->library;
        work->run();
    }
    FreeLibraryAndExitThread(library, 0); // there may be no code of ours to return to
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
    (void)given.release(); // the thread's
    CloseHandle(thread);
    return true;
}

} // namespace KAV::Platform
