#include "platform/file_dialog.h"

#include "platform/winapi/lasting_thread.h"
#include "platform/winapi/system_library.h"
#include "platform/winapi/wide_text.h"

#include <shlobj.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <string_view>
#include <system_error>
#include <utility>

namespace KAV::Platform {

/// Shared with the dialog's thread.
struct CFileDialog::SParts {
    SFileRequest request;
    Answered answered;
    std::atomic<bool> isEnded{false};
    std::atomic<DWORD> thread{0}; // while the dialog may be up
};

namespace {

constexpr UINT LookMs = 50; // how often the dialog's thread looks whether it is to end

struct SRelease {
    void operator()(IUnknown* object) const noexcept { object->Release(); }
};
template<typename TObject>
using Owned = std::unique_ptr<TObject, SRelease>;

/// What is loaded only when the first file is asked for.
struct SOle {
    decltype(&::CoInitializeEx) initialize = nullptr;
    decltype(&::CoUninitialize) uninitialize = nullptr;
    decltype(&::CoCreateInstance) create = nullptr;
    decltype(&::CoTaskMemFree) free = nullptr;
    decltype(&::SHCreateItemFromParsingName) itemOf = nullptr;

    bool Load() noexcept {
        const HMODULE ole = LoadSystemLibrary(L"ole32.dll");
        const HMODULE shell = LoadSystemLibrary(L"shell32.dll");
        return ole != nullptr && shell != nullptr && FindFunction(ole, "CoInitializeEx", initialize) &&
               FindFunction(ole, "CoUninitialize", uninitialize) &&
               FindFunction(ole, "CoCreateInstance", create) && FindFunction(ole, "CoTaskMemFree", free) &&
               FindFunction(shell, "SHCreateItemFromParsingName", itemOf);
    }
};

/// Calls `visit` for each dialog of a thread that can be seen: that for files, and what it asks itself.
void VisitDialogs(DWORD thread, void (*visit)(HWND dialog) noexcept) noexcept {
    EnumThreadWindows(
        thread,
        [](HWND window, LPARAM given) -> BOOL {
            std::array<wchar_t, 8> name{};
            GetClassNameW(window, name.data(), static_cast<int>(name.size()));
            if (IsWindowVisible(window) != 0 && std::wstring_view(name.data()) == L"#32770")
                reinterpret_cast<void (*)(HWND) noexcept>(given)(window);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(visit));
}

void Dismiss(HWND dialog) noexcept {
    PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
}

void BringToFront(HWND dialog) noexcept {
    if (IsWindowEnabled(dialog) != 0) SetForegroundWindow(dialog);
}

thread_local const std::atomic<bool>* isEnded = nullptr; // of the dialog on this thread

/// From the dialog's own loop, so that no dialog is missed, however early or late it is ended.
void CALLBACK OnLook(HWND, UINT, UINT_PTR, DWORD) noexcept {
    if (isEnded != nullptr && *isEnded) VisitDialogs(GetCurrentThreadId(), &Dismiss);
}

std::wstring Patterns(const SFileFilter& filter) {
    std::string joined;
    for (const auto& pattern : filter.patterns) joined += (joined.empty() ? "" : ";") + pattern;
    return ToWide(joined);
}

void Prepare(const SOle& ole, IFileDialog& dialog, const SFileRequest& request) {
    FILEOPENDIALOGOPTIONS options = 0;
    dialog.GetOptions(&options);
    options |= FOS_FORCEFILESYSTEM | FOS_NOCHANGEDIR;
    options |= request.saves ? FOS_OVERWRITEPROMPT | FOS_PATHMUSTEXIST : FOS_FILEMUSTEXIST;
    dialog.SetOptions(options);
    dialog.SetTitle(ToWide(request.title).c_str());

    std::vector<std::pair<std::wstring, std::wstring>> texts;
    for (const auto& filter : request.filters) texts.emplace_back(ToWide(filter.title), Patterns(filter));
    std::vector<COMDLG_FILTERSPEC> filters;
    filters.reserve(texts.size());
    for (const auto& [title, patterns] : texts) filters.push_back({title.c_str(), patterns.c_str()});
    if (!filters.empty()) dialog.SetFileTypes(static_cast<UINT>(filters.size()), filters.data());

    if (!request.name.empty()) dialog.SetFileName(ToWide(request.name).c_str());
    auto folder = ToWide(request.folder);
    std::replace(folder.begin(), folder.end(), L'/', L'\\');
    IShellItem* item = nullptr;
    if (!folder.empty() &&
        SUCCEEDED(ole.itemOf(folder.c_str(), nullptr, IID_IShellItem, reinterpret_cast<void**>(&item)))) {
        dialog.SetFolder(item);
        item->Release();
    }
}

SFileAnswer Chosen(const SOle& ole, IFileDialog& dialog) {
    IShellItem* found = nullptr;
    if (FAILED(dialog.GetResult(&found))) return {EFileAnswer::Unusable, {}};
    const Owned<IShellItem> item(found);
    LPWSTR name = nullptr;
    if (FAILED(item->GetDisplayName(SIGDN_FILESYSPATH, &name))) return {EFileAnswer::Unusable, {}};
    const std::unique_ptr<wchar_t, decltype(&::CoTaskMemFree)> owned(name, ole.free);
    auto path = ToUtf8(name);
    if (path.empty()) return {EFileAnswer::Unusable, {}};
    return {EFileAnswer::Chosen, std::move(path)};
}

/// The answer is told while the dialog's objects still exist: ending them takes a noticeable time, in which
/// the window that asked would take no input though the dialog has gone.
using Tell = std::function<void(const SFileAnswer&)>;

void Show(const SOle& ole, const SFileRequest& request, const Tell& tell) {
    IFileDialog* made = nullptr;
    if (FAILED(ole.create(request.saves ? CLSID_FileSaveDialog : CLSID_FileOpenDialog, nullptr,
            CLSCTX_INPROC_SERVER, IID_IFileDialog, reinterpret_cast<void**>(&made))))
        return tell({EFileAnswer::NotAsked, {}});
    const Owned<IFileDialog> dialog(made);
    Prepare(ole, *dialog, request);
    const UINT_PTR timer = SetTimer(nullptr, 0, LookMs, &OnLook);
    const HRESULT result = dialog->Show(reinterpret_cast<HWND>(request.hostWindow));
    KillTimer(nullptr, timer);
    if (result == HRESULT_FROM_WIN32(ERROR_CANCELLED)) return tell({});
    if (FAILED(result)) return tell({EFileAnswer::NotAsked, {}});
    tell(Chosen(ole, *dialog));
}

void Ask(const SFileRequest& request, const Tell& tell) {
    SOle ole;
    if (!ole.Load()) return tell({EFileAnswer::NotAsked, {}});
    if (FAILED(ole.initialize(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)))
        return tell({EFileAnswer::NotAsked, {}});
    try {
        Show(ole, request, tell); // which throws nothing once it has told
    } catch (...) {               // no memory: as if the user had cancelled
        tell({});
    }
    ole.uninitialize();
}

} // namespace

CFileDialog::CFileDialog(SFileRequest request, Answered answered) : _parts(std::make_shared<SParts>()) {
    _parts->request = std::move(request);
    _parts->answered = std::move(answered);
    const bool isStarted = StartLastingThread([parts = _parts] {
        parts->thread = GetCurrentThreadId();
        isEnded = &parts->isEnded;
        const Tell tell = [&parts](const SFileAnswer& answer) {
            isEnded = nullptr;
            parts->thread = 0;
            parts->answered(parts->isEnded ? SFileAnswer{} : answer);
        };
        parts->isEnded ? tell({}) : Ask(parts->request, tell);
    });
    if (!isStarted) throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
}

CFileDialog::~CFileDialog() {
    End();
}

void CFileDialog::Raise() noexcept {
    if (const DWORD thread = _parts->thread; thread != 0) VisitDialogs(thread, &BringToFront);
}

void CFileDialog::End() noexcept {
    _parts->isEnded = true;
}

} // namespace KAV::Platform
