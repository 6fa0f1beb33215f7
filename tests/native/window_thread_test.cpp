#include "native/linux/window_thread.h"

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace KAV::Tests {

namespace {

using Native::CWindowThread;
using namespace std::chrono_literals;

/// How a display behaves that the window is connected to.
struct SDisplayDouble {
    std::atomic<bool> silent{false}; ///< it answers nothing: whoever asks waits until the connection ends
    std::atomic<bool> takesAway{false};
    std::atomic<int> rounds{0};
    std::atomic<bool> ended{false}; ///< the window, in order
    std::atomic<bool> gone{false};  ///< the window's object
};

/// A window on the one end of a pair of sockets; the display is the other end.
class CWindowDouble final : public Native::CX11Window {
public:
    explicit CWindowDouble(SDisplayDouble& display) : _display(display) {
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, _ends.data()), 0);
    }
    ~CWindowDouble() override {
        close(_ends[0]);
        close(_ends[1]);
        _display.gone = true;
    }

    void Begin(GUI::IWindowClient&, Platform::CWindowLoop&, std::uint32_t) override {}
    void End() noexcept override {
        Ask();
        _display.ended = true;
    }
    bool Round(int wake) noexcept override {
        ++_display.rounds;
        Ask();
        if (_display.takesAway) return false;
        pollfd wait{wake, POLLIN, 0};
        poll(&wait, 1, 1);
        return true;
    }
    int Descriptor() const noexcept override { return _ends[0]; }
    bool IsThere() const noexcept override { return true; }

    void Show(bool) noexcept override {}
    void Resize(std::int32_t, std::int32_t) noexcept override {}
    void ResizeParent(std::int32_t, std::int32_t) noexcept override {}
    void SetRate(std::uint32_t) noexcept override {}
    void Capture(bool) noexcept override {}
    void SetCursor(GUI::ECursor) noexcept override {}
    void Focus() noexcept override {}
    void TrackLeave() noexcept override {}
    bool IsShiftDown() const noexcept override { return false; }
    bool IsLeftControlDown() const noexcept override { return false; }
    std::int32_t HotX() const noexcept override { return 0; }
    std::int32_t HotY() const noexcept override { return 0; }
    std::int32_t DotsPerInch() const noexcept override { return 96; }
    void ShowMenu(const GUI::Menu&) noexcept override {}
    void CloseMenu() noexcept override {}
    bool OpenTextBox(const GUI::SPixelRect&, std::u16string_view, bool) noexcept override { return false; }
    std::u16string BoxText() const override { return {}; }
    void CloseTextBox() noexcept override {}
    bool Put(const std::uint32_t*, std::int32_t, std::int32_t, std::int32_t,
        std::span<const Platform::SArea>) noexcept override {
        return true;
    }

private:
    /// Waits for the display's answer, as the client library does.
    void Ask() noexcept {
        while (_display.silent) {
            pollfd answer{_ends[0], POLLIN | POLLRDHUP, 0};
            if (poll(&answer, 1, 5) > 0) return;
        }
    }

    SDisplayDouble& _display;
    std::array<int, 2> _ends{-1, -1};
};

/// An editor that notes its calls and the threads they came on.
class CEditorDouble final : public Native::IEditor {
public:
    std::function<void()> inClosing;
    std::atomic<int> opened{0};
    std::atomic<int> rounds{0};
    std::atomic<int> closed{0};
    std::thread::id openedOn;
    std::thread::id closedOn;
    bool loopWasThere = false;
    bool signalsBlocked = false;

    void OnOpened() noexcept override {
        openedOn = std::this_thread::get_id();
        loopWasThere = Platform::CWindowLoop::OfThisThread() != nullptr;
        sigset_t blocked;
        pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
        signalsBlocked = sigismember(&blocked, SIGTERM) == 1;
        ++opened;
    }
    /// Runs `once` in the next round.
    void InRound(std::function<void()> once) {
        const std::scoped_lock lock(_mutex);
        _inRound = std::move(once);
    }
    void OnRound() noexcept override {
        ++rounds;
        std::unique_lock lock(_mutex);
        const auto once = std::exchange(_inRound, nullptr);
        lock.unlock();
        if (once) once();
    }
    void OnClosing() noexcept override {
        if (inClosing) inClosing();
        closedOn = std::this_thread::get_id();
        ++closed;
    }

private:
    std::mutex _mutex;
    std::function<void()> _inRound; // under the lock
};

class WindowThread : public testing::Test {
protected:
    std::shared_ptr<CWindowThread> Opened() {
        auto thread = std::make_shared<CWindowThread>(std::make_unique<CWindowDouble>(display), editor);
        thread->Start();
        return thread;
    }
    static void Until(const std::function<bool()>& holds) {
        const auto guard = std::chrono::steady_clock::now() + 30s;
        while (!holds() && std::chrono::steady_clock::now() < guard) std::this_thread::sleep_for(1ms);
        EXPECT_TRUE(holds());
    }

    SDisplayDouble display;
    CEditorDouble editor;
};

/// What a host's call is told to do while the window's thread is inside it.
struct SHostCall {
    std::promise<void> isInside;
    std::promise<void> mayReturn;
};

} // namespace

TEST_F(WindowThread, OpensAndClosesTheEditorOnOneThreadThatIsNotTheHosts) {
    const auto thread = Opened();
    Until([&] { return editor.rounds > 3; });
    EXPECT_EQ(editor.closed, 0);
    thread->Close();
    EXPECT_EQ(editor.opened, 1);
    EXPECT_EQ(editor.closed, 1);
    EXPECT_EQ(editor.openedOn, editor.closedOn);
    EXPECT_NE(editor.openedOn, std::this_thread::get_id());
    EXPECT_TRUE(editor.loopWasThere);
    EXPECT_TRUE(display.gone);
}

TEST_F(WindowThread, TakesNoSignalsOfTheHost) {
    const auto thread = Opened();
    thread->Close();
    EXPECT_TRUE(editor.signalsBlocked);
}

TEST_F(WindowThread, RunsWhatIsPostedFromOtherThreads) {
    const auto thread = Opened();
    std::promise<std::thread::id> ran;
    EXPECT_TRUE(thread->Loop().Post([&] { ran.set_value(std::this_thread::get_id()); }));
    const auto on = ran.get_future().get();
    thread->Close();
    EXPECT_EQ(on, editor.openedOn);
    EXPECT_FALSE(thread->Loop().Post([] { ADD_FAILURE() << "after the end"; }));
}

TEST_F(WindowThread, EndsWhatIsModalBeforeTheEditor) {
    struct SModal final : Platform::IModal {
        CEditorDouble& editor;
        int cancelled = 0;
        explicit SModal(CEditorDouble& of) : editor(of) {}
        void Raise() noexcept override {}
        void Cancel() noexcept override {
            EXPECT_EQ(editor.closed, 0);
            ++cancelled;
        }
    } modal(editor);
    const auto thread = Opened();
    std::promise<void> isSet;
    thread->Loop().Post([&] {
        thread->Loop().SetModal(&modal);
        isSet.set_value();
    });
    isSet.get_future().wait();
    thread->Close();
    EXPECT_EQ(modal.cancelled, 1);
}

TEST_F(WindowThread, GoesOnWithoutAWindowThatWasTakenAway) {
    display.takesAway = true;
    const auto thread = Opened();
    Until([&] { return editor.rounds > 0; });
    std::promise<void> ran;
    thread->Loop().Post([&] { ran.set_value(); });
    ran.get_future().wait();
    EXPECT_EQ(display.rounds, 1); // asked once, and then no more
    thread->Close();
    EXPECT_EQ(editor.closed, 1);
}

TEST_F(WindowThread, ClosesThoughTheDisplayHasStopped) {
    const auto thread = Opened();
    Until([&] { return display.rounds > 0; });
    display.silent = true;
    Until([&] {
        const int before = display.rounds;
        std::this_thread::sleep_for(20ms);
        return display.rounds == before; // it waits for the display
    });
    thread->Close();
    EXPECT_EQ(editor.closed, 1);
    EXPECT_EQ(editor.closedOn, editor.openedOn);
    EXPECT_TRUE(display.gone);
}

TEST_F(WindowThread, ClosesThoughTheDisplayStopsInTheMiddleOfClosing) {
    const auto thread = Opened();
    editor.inClosing = [&] {
        display.silent = true;
        thread->Window().End();
    };
    thread->Close();
    EXPECT_EQ(editor.closed, 1);
    EXPECT_TRUE(display.ended);
}

TEST_F(WindowThread, MayBeClosedFromInsideACallToTheHost) {
    auto thread = Opened();
    std::atomic<int> answers{0};
    std::promise<void> isDone;
    Until([&] { return editor.rounds > 0; });
    thread->Loop().Post([&, owned = thread] {
        const bool stillOpen = owned->CallOut([&] { owned->Close(); });
        EXPECT_FALSE(stillOpen);
        ++answers;
        isDone.set_value();
    });
    isDone.get_future().wait();
    EXPECT_EQ(answers, 1);
    EXPECT_EQ(editor.closed, 1);
    const int rounds = editor.rounds;
    const std::weak_ptr<CWindowThread> watch = thread;
    thread.reset();
    Until([&] { return watch.expired(); }); // the thread has ended by itself
    EXPECT_LE(editor.rounds - rounds, 1);
    EXPECT_EQ(editor.closed, 1);
}

TEST_F(WindowThread, LeavesACallToTheHostAloneThatDoesNotReturn) {
    auto thread = Opened();
    SHostCall call;
    std::atomic<int> stillOpen{-1};
    editor.InRound([&] {
        stillOpen = thread->CallOut([&] {
            call.isInside.set_value();
            call.mayReturn.get_future().wait();
        });
    });
    call.isInside.get_future().wait();
    thread->Close(); // by the host's thread, while the other one is in the call
    EXPECT_EQ(editor.closed, 1);
    EXPECT_EQ(editor.closedOn, std::this_thread::get_id());
    EXPECT_TRUE(display.gone);
    const int rounds = editor.rounds;
    call.mayReturn.set_value();
    Until([&] { return stillOpen == 0; });
    EXPECT_EQ(editor.rounds, rounds); // after the call nothing of the editor is touched
    EXPECT_EQ(editor.closed, 1);
    Until([&] { return thread.use_count() == 1; });
}

TEST_F(WindowThread, WaitsForACallToTheHostThatReturnsSoon) {
    const auto thread = Opened();
    SHostCall call;
    std::atomic<int> stillOpen{-1};
    editor.InRound([&] {
        stillOpen = thread->CallOut([&] {
            call.isInside.set_value();
            call.mayReturn.get_future().wait();
        });
    });
    call.isInside.get_future().wait();
    call.mayReturn.set_value();
    thread->Close();
    EXPECT_EQ(stillOpen, 1);
    EXPECT_EQ(editor.closedOn, editor.openedOn);
}

TEST_F(WindowThread, CallsTheHostNoMoreOnceItIsToClose) {
    const auto thread = Opened();
    std::atomic<int> calls{0};
    editor.inClosing = [&] { thread->CallOut([&] { ++calls; }); };
    thread->Close();
    EXPECT_EQ(calls, 0);
}

} // namespace KAV::Tests
