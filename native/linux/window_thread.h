#pragma once

#include "native/linux/x11_window.h"
#include "native/native_window.h"
#include "platform/window_loop.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace KAV::Native {

/// One opening of an editor: its window and the thread that the window belongs to. The thread holds this
/// object as long as it runs, which can be longer than the editor lives: when it was closed while the thread
/// was in a call to the host.
///
/// Threads: Start() and Close() the host's, Window() and CallOut() this thread; Loop() any.
class CWindowThread final : public std::enable_shared_from_this<CWindowThread> {
public:
    /// How long closing waits for the thread before it cuts its connection, and how long for a call to the
    /// host before it leaves the thread alone.
    static constexpr std::chrono::milliseconds LongestEnd{2000};
    static constexpr std::chrono::milliseconds LongestCall{250};

    /// Throws std::bad_alloc, or std::system_error without a descriptor.
    CWindowThread(std::unique_ptr<CX11Window> window, IEditor& editor);
    ~CWindowThread();
    CWindowThread(const CWindowThread&) = delete;
    CWindowThread& operator=(const CWindowThread&) = delete;

    /// Throws std::system_error if there can be no thread.
    void Start();
    void Close() noexcept;

    CX11Window& Window() const noexcept { return *_window; }
    Platform::CWindowLoop& Loop() const noexcept { return *_loop; }
    /// As CNativeWindow::CallOut().
    bool CallOut(const std::function<void()>& call);

private:
    enum class EState { Running, CallingOut, Ended };

    void Run() noexcept;
    void Wake() const noexcept;
    void TakeWakes() const noexcept;
    bool IsQuitting();
    bool IsLeftAlone();
    bool WaitForEnd(std::unique_lock<std::mutex>& lock);
    void EndEditor() noexcept;
    void LeaveAlone() noexcept;

    std::unique_ptr<CX11Window> _window; // used by the thread, or by Close() once the thread is left alone
    IEditor& _editor;                    // the same
    std::shared_ptr<Platform::CWindowLoop> _loop;
    int _connection; // the window's socket under a number of our own: the window may end at any time
    int _wake;       // an event descriptor: readable when the loop has something to do
    std::thread _thread;

    std::mutex _mutex;
    std::condition_variable _changed;
    EState _state = EState::Running; // under the lock, as the next three
    std::thread::id _id;
    bool _isQuitting = false;
    bool _isLeftAlone = false; // the thread ends after its call and touches nothing
};

} // namespace KAV::Native
