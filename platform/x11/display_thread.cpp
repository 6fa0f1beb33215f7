#include "platform/x11/display_thread.h"

#include "platform/quiet_signals.h"
#include "platform/x11/xcb_library.h"

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <set>
#include <string_view>
#include <thread>

namespace KAV::Platform {

namespace {

/// Whether a display with a name like ":0" or "unix:0.0" or "localhost:10" is on this machine.
bool IsHere(std::string_view display) noexcept {
    const auto host = display.substr(0, display.rfind(':'));
    return host.size() < display.size() &&
           (host.empty() || host == "unix" || host == "localhost" || host.front() == '/');
}

/// Displays on which abandoned work is still running.
struct SOverdue {
    std::mutex mutex;
    std::multiset<std::string> displays; // guarded by the mutex
};

/// Never destroyed: abandoned work may end at any time.
SOverdue& Overdue() {
    static auto& overdue = *new SOverdue;
    return overdue;
}

bool IsOverdue(const std::string& display) {
    const std::scoped_lock lock(Overdue().mutex);
    return Overdue().displays.contains(display);
}

/// What the thread shares with the caller that waits for it.
class CCall final {
public:
    explicit CCall(std::string display) : _display(std::move(display)) {}

    const std::string& Display() const noexcept { return _display; }

    /// True if the work ended in time.
    bool Wait(std::chrono::milliseconds limit) noexcept {
        std::unique_lock lock(Overdue().mutex);
        if (_end.wait_for(lock, limit, [this] { return _ended; })) return true;
        try {
            _leftAlone = Overdue().displays.insert(_display);
        } catch (...) { // no memory: this display will be tried again too early
        }
        return false;
    }

    void End() noexcept {
        const std::scoped_lock lock(Overdue().mutex);
        _ended = true;
        if (_leftAlone != Overdue().displays.end()) Overdue().displays.erase(_leftAlone);
        _end.notify_all();
    }

private:
    const std::string _display;
    std::condition_variable _end;
    bool _ended = false; // guarded by the mutex, like the next one
    std::multiset<std::string>::iterator _leftAlone = Overdue().displays.end();
};

} // namespace

bool RunOnDisplayThread(
    std::function<void(const std::string& display)> work, std::chrono::milliseconds limit) {
    return RunOnDisplayThread(std::getenv("DISPLAY"), std::move(work), limit);
}

bool RunOnDisplayThread(const char* display, std::function<void(const std::string& display)> work,
    std::chrono::milliseconds limit) {
    if (display == nullptr || !IsHere(display) || Xcb() == nullptr || IsOverdue(display)) return false;
    const auto call = std::make_shared<CCall>(display);
    const CQuietSignals quiet;
    std::thread thread([call, work = std::move(work)] {
        try {
            work(call->Display());
        } catch (...) { // no memory: no answer
        }
        call->End();
    });
    const bool ended = call->Wait(limit);
    if (ended) {
        thread.join(); // returns at once
    } else {
        thread.detach();
    }
    return ended;
}

} // namespace KAV::Platform
