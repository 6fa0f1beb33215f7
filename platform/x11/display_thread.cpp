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

constexpr auto LongestWait = std::chrono::seconds(3);

/// The display of a name like ":0" or "unix:0.0" or "localhost:10" is near.
bool IsHere(std::string_view display) noexcept {
    const auto host = display.substr(0, display.rfind(':'));
    return host.size() < display.size() &&
           (host.empty() || host == "unix" || host == "localhost" || host.front() == '/');
}

/// Displays with work that was left to itself.
struct SOverdue {
    std::mutex mutex;
    std::multiset<std::string> displays; // under the mutex
};

/// Never destroyed: work that was left to itself may end at any time.
SOverdue& Overdue() {
    static auto& overdue = *new SOverdue;
    return overdue;
}

bool IsOverdue(const std::string& display) {
    const std::scoped_lock lock(Overdue().mutex);
    return Overdue().displays.contains(display);
}

/// What the thread and the one that waits for it share.
class CCall final {
public:
    explicit CCall(std::string display) : _display(std::move(display)) {}

    const std::string& Display() const noexcept { return _display; }

    /// True when the work has ended in time.
    bool Wait() noexcept {
        std::unique_lock lock(Overdue().mutex);
        if (_end.wait_for(lock, LongestWait, [this] { return _ended; })) return true;
        try {
            _leftAlone = Overdue().displays.insert(_display);
        } catch (...) { // no memory: the display will be asked again too early
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
    bool _ended = false; // under the mutex, as is the next
    std::multiset<std::string>::iterator _leftAlone = Overdue().displays.end();
};

} // namespace

bool RunOnDisplayThread(std::function<void(const std::string& display)> work) {
    const char* const name = std::getenv("DISPLAY");
    if (name == nullptr || !IsHere(name) || Xcb() == nullptr || IsOverdue(name)) return false;
    const auto call = std::make_shared<CCall>(name);
    const CQuietSignals quiet;
    std::thread thread([call, work = std::move(work)] {
        try {
            work(call->Display());
        } catch (...) { // no memory: there is no answer
        }
        call->End();
    });
    const bool ended = call->Wait();
    if (ended) {
        thread.join(); // at once
    } else {
        thread.detach();
    }
    return ended;
}

} // namespace KAV::Platform
