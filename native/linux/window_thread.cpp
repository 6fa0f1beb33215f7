#include "native/linux/window_thread.h"

#include "platform/quiet_signals.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace KAV::Native {

namespace {

int Opened(int descriptor) {
    if (descriptor < 0) throw std::system_error(errno, std::generic_category(), "descriptor");
    return descriptor;
}

/// `other` is closed if there is no descriptor.
int OpenedBeside(int other, int descriptor) {
    if (descriptor < 0) close(other);
    return Opened(descriptor);
}

void WaitFor(int descriptor) noexcept {
    pollfd wait{descriptor, POLLIN, 0};
    poll(&wait, 1, -1);
}

} // namespace

CWindowThread::CWindowThread(std::unique_ptr<CX11Window> window, IEditor& editor)
    : _window(std::move(window)), _editor(editor),
      _loop(std::make_shared<Platform::CWindowLoop>([this] { Wake(); })),
      _connection(Opened(fcntl(_window->Descriptor(), F_DUPFD_CLOEXEC, 0))),
      _wake(OpenedBeside(_connection, eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))) {}

CWindowThread::~CWindowThread() {
    _loop->End(); // others may hold it, and would wake a descriptor that is no longer ours
    close(_wake);
    close(_connection);
}

void CWindowThread::Start() {
    const Platform::CQuietSignals quiet;
    _thread = std::thread([self = shared_from_this()] { self->Run(); });
}

// The thread

void CWindowThread::Run() noexcept {
    {
        const std::scoped_lock lock(_mutex);
        _id = std::this_thread::get_id();
    }
    Platform::CWindowLoop::SetOfThisThread(_loop.get());
    _editor.OnOpened();
    bool isThere = true;
    while (!IsQuitting()) {
        if (isThere) {
            isThere = _window->Round(_wake);
        } else {
            WaitFor(_wake); // the window was taken away; what is left is to be closed
        }
        TakeWakes();
        _loop->RunPosted();
        if (!IsQuitting()) _editor.OnRound();
    }
    if (!IsLeftAlone()) EndEditor();
    Platform::CWindowLoop::SetOfThisThread(nullptr);
    const std::scoped_lock lock(_mutex);
    _state = EState::Ended;
    _changed.notify_all();
}

/// What is modal ends first: its answer may still want the editor.
void CWindowThread::EndEditor() noexcept {
    _loop->End();
    _editor.OnClosing();
    _window.reset();
}

bool CWindowThread::CallOut(const std::function<void()>& call) {
    const auto self = shared_from_this(); // the window that owns this thread may end in the call
    {
        const std::scoped_lock lock(_mutex);
        if (_isQuitting) return true; // the host hears of it when the editor has closed
        _state = EState::CallingOut;
    }
    call();
    const std::scoped_lock lock(_mutex);
    _state = EState::Running;
    _changed.notify_all();
    return !_isLeftAlone;
}

void CWindowThread::Wake() const noexcept {
    eventfd_write(_wake, 1);
}

void CWindowThread::TakeWakes() const noexcept {
    eventfd_t count = 0;
    eventfd_read(_wake, &count);
}

bool CWindowThread::IsQuitting() {
    const std::scoped_lock lock(_mutex);
    return _isQuitting;
}

bool CWindowThread::IsLeftAlone() {
    const std::scoped_lock lock(_mutex);
    return _isLeftAlone;
}

// The host

void CWindowThread::Close() noexcept {
    std::unique_lock lock(_mutex);
    _isQuitting = true;
    Wake();
    if (std::this_thread::get_id() == _id) { // from inside CallOut()
        _isLeftAlone = true;
        lock.unlock();
        LeaveAlone();
        return;
    }
    if (!WaitForEnd(lock)) {
        if (_state == EState::CallingOut) {
            _isLeftAlone = true;
            lock.unlock();
            // This thread ends the editor, and mustn't wait for the display in it.
            shutdown(_connection, SHUT_RDWR);
            LeaveAlone();
            return;
        }
        // It waits for the display, which has stopped. Every such wait ends with the connection.
        if (_state != EState::Ended) shutdown(_connection, SHUT_RDWR);
    }
    lock.unlock();
    _thread.join();
}

/// False if the thread should be dealt with: it is in a call for too long, or hasn't ended in time.
bool CWindowThread::WaitForEnd(std::unique_lock<std::mutex>& lock) {
    const auto now = std::chrono::steady_clock::now();
    _changed.wait_until(lock, now + LongestCall, [this] { return _state == EState::Ended; });
    if (_state == EState::CallingOut) return false;
    _changed.wait_until(lock, now + LongestEnd, [this] { return _state == EState::Ended; });
    return _state == EState::Ended;
}

void CWindowThread::LeaveAlone() noexcept {
    EndEditor();
    _thread.detach();
}

} // namespace KAV::Native
