// What the user has to answer before the editor's window on Windows takes input again.

#include "native/native_window.h"
#include "platform/winapi/windows_header.h"
#include "platform/window_loop.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace KAV;

namespace {

using Platform::CWindowLoop;

/// A question that is answered by nobody but the end of the loop.
class CQuestion final : public Platform::IModal {
public:
    int raised = 0;
    std::function<void()> onCancel;
    void Raise() noexcept override { ++raised; }
    void Cancel() noexcept override { onCancel(); }
};

/// An editor's window, and what it hears, one line each.
class CEditor final : public Native::IEditor, public GUI::IWindowClient {
public:
    explicit CEditor(HWND parent) : _parent(parent) { EXPECT_TRUE(window.Open(parent, 100, 100, *this)); }
    ~CEditor() { window.Close(); }

    Native::CNativeWindow window;
    std::vector<std::string> lines;
    std::function<void()> onPress;

    LRESULT Send(UINT message, WPARAM wParam = 0) const {
        return SendMessageW(static_cast<HWND>(window.Handle()), message, wParam, MAKELPARAM(5, 5));
    }

    void OnOpened() noexcept override { window.Create(*this, _parent, 100, 100, 10); }
    void OnRound() noexcept override {}
    void OnClosing() noexcept override {
        lines.emplace_back("closing");
        window.Destroy();
    }
    void OnTick(std::uint32_t) override {}
    void OnPress(std::int32_t, std::int32_t, std::uint32_t, std::uint32_t) override {
        lines.emplace_back("press");
        if (onPress) onPress();
    }
    void OnRelease(std::int32_t, std::int32_t, std::uint32_t) override { lines.emplace_back("release"); }
    void OnMove(std::int32_t, std::int32_t, std::uint32_t) override {}
    void OnLeave() override {}
    void OnWheel(float, std::uint32_t) override { lines.emplace_back("wheel"); }
    void OnKey(std::uint32_t, bool) override { lines.emplace_back("key"); }
    void OnPaint() override {}
    void OnCancel() override {}
    void OnCommand(std::uint32_t) override {}
    void OnTyped() override {}
    void OnGone() override { lines.emplace_back("gone"); }

private:
    HWND _parent;
};

class NativeQuestions : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    HWND host = CreateWindowW(
        L"STATIC", L"", WS_POPUP, 10, 10, 300, 200, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    std::unique_ptr<CEditor> editor = std::make_unique<CEditor>(host);
    CQuestion question;
    std::shared_ptr<CWindowLoop> loop;

    void TearDown() override {
        editor.reset();
        DestroyWindow(host);
    }
    /// As a widget does, from inside a message.
    void Ask() {
        editor->onPress = [this] {
            loop = CWindowLoop::OfThisThread();
            loop->SetModal(&question);
            question.onCancel = [asked = editor.get()] { asked->lines.emplace_back("cancelled"); };
        };
        editor->Send(WM_LBUTTONDOWN, MK_LBUTTON);
        editor->lines.clear();
    }
    static void Pump() {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) DispatchMessageW(&message);
    }
};

} // namespace

TEST_F(NativeQuestions, APressBringsTheQuestionToTheFrontAndNothingElse) {
    Ask();
    editor->Send(WM_LBUTTONDOWN, MK_LBUTTON);
    editor->Send(WM_RBUTTONDOWN, MK_RBUTTON);
    EXPECT_EQ(question.raised, 2);
    editor->Send(WM_MOUSEWHEEL, MAKEWPARAM(0, WHEEL_DELTA));
    editor->Send(WM_KEYDOWN, VK_F1);
    EXPECT_FALSE(editor->window.OpenTextBox({0, 0, 10, 10}, u"", false));
    EXPECT_EQ(editor->lines, Lines{});
    EXPECT_EQ(question.raised, 2);
    editor->Send(WM_LBUTTONUP); // of the press that has asked
    EXPECT_EQ(editor->lines, Lines{"release"});
    loop->SetModal(nullptr);
    editor->lines.clear();
    editor->onPress = nullptr;
    editor->Send(WM_LBUTTONDOWN, MK_LBUTTON);
    editor->Send(WM_KEYDOWN, VK_F1);
    EXPECT_EQ(editor->lines, (Lines{"press", "key"}));
}

TEST_F(NativeQuestions, IsCancelledBeforeTheEditorCloses) {
    Ask();
    editor->onPress = nullptr;
    editor->window.Close();
    EXPECT_EQ(editor->lines, (Lines{"cancelled", "closing"})) << "the answer may want the editor";
    EXPECT_TRUE(loop->HasEnded());
    EXPECT_FALSE(loop->Post([] { ADD_FAILURE() << "for a window that has gone"; }));
    Pump();
}

TEST_F(NativeQuestions, IsCancelledWhenTheHostDestroysTheWindow) {
    Ask();
    DestroyWindow(static_cast<HWND>(editor->window.Handle()));
    EXPECT_EQ(editor->lines, (Lines{"cancelled", "gone"}));
    EXPECT_TRUE(loop->HasEnded());
}

TEST_F(NativeQuestions, AnswersOfOtherThreadsComeOnTheWindows) {
    Ask();
    std::thread::id answeredOn;
    std::shared_ptr<CWindowLoop> loopThen;
    std::thread([&] {
        loop->Post([&] {
            answeredOn = std::this_thread::get_id();
            loopThen = CWindowLoop::OfThisThread();
        });
    }).join();
    EXPECT_EQ(answeredOn, std::thread::id());
    Pump();
    EXPECT_EQ(answeredOn, std::this_thread::get_id());
    EXPECT_EQ(loopThen, loop);
}

TEST_F(NativeQuestions, EachEditorOfAThreadHasALoopWhileItHandlesAMessage) {
    CEditor other(host);
    std::shared_ptr<CWindowLoop> others;
    other.onPress = [&] { others = CWindowLoop::OfThisThread(); };
    std::shared_ptr<CWindowLoop> before;
    std::shared_ptr<CWindowLoop> after;
    editor->onPress = [&] {
        before = CWindowLoop::OfThisThread();
        other.Send(WM_LBUTTONDOWN, MK_LBUTTON); // a message within a message
        after = CWindowLoop::OfThisThread();
    };
    editor->Send(WM_LBUTTONDOWN, MK_LBUTTON);
    EXPECT_NE(before, nullptr);
    EXPECT_NE(others, nullptr);
    EXPECT_NE(before, others);
    EXPECT_EQ(before, after);
    EXPECT_EQ(CWindowLoop::OfThisThread(), nullptr);
    EXPECT_EQ(before->HostWindow(), reinterpret_cast<std::uintptr_t>(host));
}
