#pragma once

#include "device_gui/editor_system.h"
#include "tests/support/recording_pictures.h"
#include "tests/support/recording_window.h"
#include "utils/clock.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace KAV::Tests {

/// The thread of one opening of an editor, as a system's would be: it runs what it is given, a round after
/// each, and at last the editor's closing.
class CEditorThread final {
public:
    explicit CEditorThread(Native::IEditor& editor, bool ticks) : _editor(editor), _ticks(ticks) {}
    ~CEditorThread() {
        if (_thread.joinable()) _thread.join();
    }
    CEditorThread(const CEditorThread&) = delete;
    CEditorThread& operator=(const CEditorThread&) = delete;

    /// `self` keeps this object while the thread lives. `tick`: what it does by itself between the tasks.
    void Start(std::shared_ptr<CEditorThread> self, std::function<void()> tick) {
        _thread =
            std::thread([self = std::move(self), tick = std::move(tick)]() mutable { Loop(*self, tick); });
    }
    /// Runs a task and the round after it, on the thread; returns when both have ended.
    void Run(std::function<void()> task) {
        std::unique_lock lock(_mutex);
        _tasks.push_back(std::move(task));
        const auto number = ++_given;
        _changed.notify_all();
        _changed.wait(lock, [&] { return _done >= number; });
    }
    bool CallOut(const std::function<void()>& call) {
        {
            const std::lock_guard lock(_mutex);
            _isInCall = true;
        }
        call();
        const std::lock_guard lock(_mutex);
        _isInCall = false;
        return !_left;
    }
    /// As a system does whose patience is over at once: a thread that is inside a call is left alone.
    void Close() {
        {
            std::unique_lock lock(_mutex);
            if (_isInCall) {
                _left = true;
                lock.unlock();
                _editor.OnClosing();
                _changed.notify_all();
                return;
            }
            _isClosing = true;
            _changed.notify_all();
        }
        _thread.join();
    }
    void Join() {
        if (_thread.joinable()) _thread.join();
    }

private:
    static void Loop(CEditorThread& self, const std::function<void()>& tick) {
        self._editor.OnOpened();
        std::unique_lock lock(self._mutex);
        for (;;) {
            const auto isDue = [&] { return self._isClosing || !self._tasks.empty(); };
            if (self._ticks) {
                self._changed.wait_for(lock, std::chrono::milliseconds(1), isDue);
            } else {
                self._changed.wait(lock, isDue);
            }
            if (self._isClosing) break; // what is still to be done has lost its editor
            const auto task = self._tasks.empty() ? tick : std::move(self._tasks.front());
            const bool isGiven = !self._tasks.empty();
            if (isGiven) self._tasks.pop_front();
            lock.unlock();
            task();
            self._editor.OnRound();
            lock.lock();
            if (isGiven) ++self._done;
            self._changed.notify_all();
            if (self._left) return; // the editor may be gone
        }
        self._done = self._given;
        self._changed.notify_all();
        lock.unlock();
        self._editor.OnClosing();
    }

    Native::IEditor& _editor;
    const bool _ticks;
    std::thread _thread;
    std::mutex _mutex;
    std::condition_variable _changed;
    std::deque<std::function<void()>> _tasks;
    std::uint64_t _given = 0;
    std::uint64_t _done = 0;
    bool _isInCall = false;
    bool _isClosing = false;
    bool _left = false;
};

/// Where editors open: what the system answers, and what has been asked of it. It outlives the instance.
class CDesk final {
public:
    // What it answers
    bool available = true;
    bool opens = true;
    std::u16string missing; ///< library
    std::int32_t firstWidth = 754;
    bool ticks = false;                 ///< windows tick by themselves, all the time
    bool ownThread = true;              ///< otherwise windows belong to the thread that opens them
    std::function<void()> whileOpening; ///< what happens before the window's thread begins

    CRecordingWindow window; ///< of the thread while one is open
    CRecordingPictures pictures;
    std::vector<Native::SPictureWish> wishes;
    std::thread::id painter; ///< that prepared the pictures last
    std::vector<std::pair<std::int32_t, std::int32_t>> parentSizes;

    ~CDesk() {
        for (const auto& left : _all) left->Join();
    }

    /// What the host's threads have asked, as "Open 754x553".
    std::vector<std::string> Calls() {
        const std::lock_guard lock(_mutex);
        return _calls;
    }
    std::vector<std::pair<std::int32_t, std::int32_t>> ParentSizes() {
        const std::lock_guard lock(_mutex);
        return parentSizes;
    }
    /// Runs something on the window's thread, as its events do, and waits for it.
    void Run(std::function<void()> task) {
        if (const auto thread = Present()) {
            thread->Run(std::move(task));
        } else if (_editor != nullptr) {
            _editor->OnMessage();
            task();
            if (_editor != nullptr) _editor->OnRound();
        }
    }
    /// What has been asked of the window's thread so far is done.
    void Settle() {
        Run([] {});
    }
    void Tick() {
        Run([this] {
            if (window.client != nullptr) window.client->OnTick(Utils::TickMs());
        });
    }
    std::shared_ptr<CEditorThread> Present() {
        const std::lock_guard lock(_mutex);
        return _present;
    }

private:
    friend class CThreadedSystem;

    void Note(const std::string& call) {
        const std::lock_guard lock(_mutex);
        if (_calls.size() < 1000) _calls.push_back(call);
    }
    void Begin(const std::shared_ptr<CEditorThread>& thread) {
        const std::lock_guard lock(_mutex);
        _present = thread;
        _all.push_back(thread);
    }
    std::shared_ptr<CEditorThread> End() {
        const std::lock_guard lock(_mutex);
        return std::exchange(_present, nullptr);
    }

    std::mutex _mutex;
    std::vector<std::string> _calls;
    std::shared_ptr<CEditorThread> _present;
    std::vector<std::shared_ptr<CEditorThread>> _all;
    Native::IEditor* _editor = nullptr; // of a window without a thread
};

/// A system whose windows are recorded and have a thread each.
class CThreadedSystem final : public IEditorSystem {
public:
    explicit CThreadedSystem(std::shared_ptr<CDesk> desk) : _desk(std::move(desk)) {}
    ~CThreadedSystem() override { _desk->Note("Gone"); }

    bool IsAvailable() const noexcept override { return _desk->available; }
    GUI::SSurroundings Surroundings() noexcept override { return {&_desk->window, &_desk->pictures}; }
    std::int32_t FirstWidth(std::int32_t width) noexcept override {
        _desk->Note("FirstWidth " + std::to_string(width));
        return _desk->firstWidth;
    }
    std::u16string BeginPictures() override {
        _desk->Note("BeginPictures");
        return _desk->missing;
    }
    void EndPictures() noexcept override { _desk->Note("EndPictures"); }
    void Prepare(std::span<const Native::SPictureWish> wishes) noexcept override {
        _desk->window.lines.emplace_back("Prepare");
        _desk->wishes.assign(wishes.begin(), wishes.end());
        _desk->painter = std::this_thread::get_id();
    }
    bool Open(void*, std::int32_t width, std::int32_t height, Native::IEditor& editor) override {
        _desk->Note("Open " + std::to_string(width) + "x" + std::to_string(height));
        if (!_desk->opens) return false;
        if (_desk->whileOpening) _desk->whileOpening();
        if (!_desk->ownThread) {
            _desk->_editor = &editor;
            editor.OnOpened();
            return true;
        }
        const auto thread = std::make_shared<CEditorThread>(editor, _desk->ticks);
        _desk->Begin(thread);
        thread->Start(thread, [desk = _desk.get()] {
            if (desk->window.client != nullptr) desk->window.client->OnTick(Utils::TickMs());
        });
        return true;
    }
    void Close() noexcept override {
        const auto thread = _desk->Present();
        if (thread != nullptr) thread->Close();
        if (auto* const editor = std::exchange(_desk->_editor, nullptr)) editor->OnClosing();
        _desk->End();
        _desk->Note("Close");
    }
    bool CallOut(const std::function<void()>& call) noexcept override {
        const auto thread = _desk->Present();
        if (thread != nullptr) return thread->CallOut(call);
        const auto desk = _desk; // the instance may end in the call
        call();
        return desk->_editor != nullptr;
    }
    void ResizeParent(std::int32_t width, std::int32_t height) noexcept override {
        const std::lock_guard lock(_desk->_mutex);
        _desk->parentSizes.emplace_back(width, height);
    }

private:
    std::shared_ptr<CDesk> _desk;
};

} // namespace KAV::Tests
