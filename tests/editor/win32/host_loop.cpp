#include "tests/editor/host_loop.h"

#include "platform/winapi/windows_header.h"

#include <deque>
#include <future>
#include <mutex>
#include <utility>

namespace KAV::Tests {

namespace {

constexpr UINT HasWork = WM_APP + 1;
constexpr UINT_PTR IdleTimer = 1;

} // namespace

struct CHostLoop::SParts {
    int idleHz = 0;
    std::function<void()> idle;
    std::mutex mutex;
    std::deque<std::function<void()>> work; // under the lock
    std::promise<HWND> made;
    HWND window = nullptr; ///< seen by nobody; its messages come from any loop of the thread
    std::thread thread;

    void Serve() {
        WNDCLASSW kind{};
        kind.lpfnWndProc = &SParts::OnMessage;
        kind.hInstance = GetModuleHandleW(nullptr);
        kind.lpszClassName = L"HostLoop";
        RegisterClassW(&kind);
        const HWND own =
            CreateWindowW(L"HostLoop", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, kind.hInstance, nullptr);
        SetWindowLongPtrW(own, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        if (idleHz > 0) SetTimer(own, IdleTimer, static_cast<UINT>(1000 / idleHz), nullptr);
        made.set_value(own);
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        DestroyWindow(own);
    }
    void RunFirst() {
        std::function<void()> first;
        {
            const std::scoped_lock lock(mutex);
            if (work.empty()) return;
            first = std::move(work.front());
            work.pop_front();
        }
        first();
    }
    static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* const self = reinterpret_cast<SParts*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (self != nullptr && message == HasWork) {
            self->RunFirst();
            return 0;
        }
        if (self != nullptr && message == WM_TIMER) {
            self->idle();
            return 0;
        }
        return DefWindowProcW(window, message, wParam, lParam);
    }
};

CHostLoop::CHostLoop(int idleHz, std::function<void()> idle) : _parts(std::make_unique<SParts>()) {
    _parts->idleHz = idleHz;
    _parts->idle = std::move(idle);
    auto made = _parts->made.get_future();
    _parts->thread = std::thread([parts = _parts.get()] { parts->Serve(); });
    _parts->window = made.get();
}

CHostLoop::~CHostLoop() {
    Run([] { PostQuitMessage(0); });
    _parts->thread.join();
}

void CHostLoop::Run(const std::function<void()>& work) {
    std::promise<void> isDone;
    {
        const std::scoped_lock lock(_parts->mutex);
        _parts->work.emplace_back([&] {
            work();
            isDone.set_value();
        });
    }
    PostMessageW(_parts->window, HasWork, 0, 0);
    isDone.get_future().wait();
}

std::thread::id CHostLoop::Thread() const noexcept {
    return _parts->thread.get_id();
}

} // namespace KAV::Tests
