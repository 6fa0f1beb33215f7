#include "platform/opener.h"

#include "platform/winapi/wide_text.h"

#include <windows.h>

#include <shellapi.h>

namespace KAV::Platform {

bool OpenWithDesktop(const std::string& target, const std::string& arguments, EOpen how) noexcept {
    try {
        const auto file = ToWide(target);
        const auto parameters = ToWide(arguments);
        SHELLEXECUTEINFOW request{};
        request.cbSize = sizeof(request);
        request.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_FLAG_NO_UI;
        request.lpVerb = how == EOpen::Elevated ? L"runas" : L"open";
        request.lpFile = file.c_str();
        request.lpParameters = arguments.empty() ? nullptr : parameters.c_str();
        request.nShow = SW_SHOWNORMAL;
        if (ShellExecuteExW(&request) == 0) return false;
        if (request.hProcess != nullptr) {
            SetPriorityClass(request.hProcess, NORMAL_PRIORITY_CLASS); // not the host's raised priority
            CloseHandle(request.hProcess);
        }
        return true;
    } catch (...) { // no memory
        return false;
    }
}

} // namespace KAV::Platform
