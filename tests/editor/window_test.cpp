// The window of the system around an instance in this process: what the test can't reach in the delivered
// library, the window's own thread and what it waits for.

#include "panel/layout.h"
#include "tests/support/dialog_script.h"
#include "tests/support/own_settings.h"
#include "tests/support/state_fixture.h"
#include "tests/support/together.h"
#include "tests/support/watched_system.h"
#include "tests/support/x_test_host.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Tests {

namespace {

namespace fs = std::filesystem;

/// Or a zombie, unless it is one that only the system's first process can reap.
bool IsRunning(pid_t process) {
    const auto status = ReadText("/proc/" + std::to_string(process) + "/stat");
    const bool isOrphan = status.find(") Z 1 ") != std::string::npos;
    return kill(process, 0) == 0 && !isOrphan;
}

/// An instance whose editor opens on a display, in a host that hears of edits.
class EditorWindow : public testing::Test {
protected:
    CXTestHost windows{CXTestHost::SOptions{.width = 800, .height = 600}};
    CDialogScripts scripts; // after the display, whose server is one of the user's programs
    CUserDocuments documents;
    COwnSettings settings;
    CRecordingHost host;
    CPresentLoop loop;
    std::atomic<int> edits = 0; ///< that have begun
    std::unique_ptr<CHostedEffect> effect;

    void SetUp() override {
        fs::create_directories(documents.Routing(""));
        fs::create_directories(documents.Patch(""));
        host.record = false;
        host.answer = [this](VST::AEffect*, std::int32_t opcode, std::int32_t index, void*, float) {
            Hear(opcode, index);
            return std::intptr_t{0};
        };
        effect = std::make_unique<CHostedEffect>(
            host.Callback(), Utils::SMakerService{}, std::make_unique<CWatchedSystem>(loop));
    }
    void TearDown() override {
        effect.reset();
        unsetenv("KAV_FILE_DIALOG");
    }
    virtual void Hear(std::int32_t opcode, std::int32_t) {
        if (opcode == VST::audioMasterBeginEdit) ++edits;
    }

    CXXXGUI& Gui() { return effect->Device().GUI(); }
    bool Open(xcb_window_t parent) {
        return effect->Dispatch(
                   VST::effEditOpen, 0, 0, reinterpret_cast<void*>(static_cast<std::uintptr_t>(parent))) == 1;
    }
    void OpenEditor() {
        ASSERT_TRUE(Open(windows.Parent()));
        const auto editor = windows.Editor();
        ASSERT_NE(editor, 0u);
        ASSERT_TRUE(Eventually([&] {
            auto pixels = windows.Pixels(editor, 0, 0, 300, 200);
            std::sort(pixels.begin(), pixels.end());
            return std::unique(pixels.begin(), pixels.end()) - pixels.begin() > 20;
        })) << "no picture";
    }
    void Close() { effect->Dispatch(VST::effEditClose); }
    std::string Chunk() {
        void* data = nullptr;
        const auto size = effect->Dispatch(VST::effGetChunk, 0, 0, &data);
        return {static_cast<const char*>(data), static_cast<std::size_t>(size)};
    }
    /// The top-level windows that are shown, apart from the host's.
    std::vector<xcb_window_t> Others() {
        std::vector<xcb_window_t> shown;
        for (const auto window : windows.Children(windows.Root())) {
            if (window != windows.Top() && windows.IsViewable(window)) shown.push_back(window);
        }
        return shown;
    }
    xcb_window_t AwaitList() {
        EXPECT_TRUE(Eventually([this] { return Others().size() == 1; }));
        const auto shown = Others();
        return shown.size() == 1 ? shown[0] : 0;
    }
    /// What the user does to turn a knob.
    void TurnAKnob() {
        const auto& rect = Panel::RowOf("Main Input Gain").rect;
        const auto x = static_cast<std::int32_t>(rect.CentreX());
        const auto y = static_cast<std::int32_t>(rect.CentreY());
        windows.MoveTo(x, y);
        windows.Press(1);
        for (std::int32_t dy = 5; dy <= 40; dy += 5) windows.MoveTo(x, y - dy);
        windows.Release(1);
    }
    std::vector<fs::path> UserFiles() const {
        std::vector<fs::path> files;
        for (const auto& folder : {documents.Routing(""), documents.Patch("")}) {
            for (const auto& entry : fs::directory_iterator(folder)) files.push_back(entry.path());
        }
        return files;
    }
};

constexpr int Rounds = 3;
constexpr int Calls = 50; // of a thread that waits for nothing

std::chrono::seconds Length() {
    return std::chrono::seconds(std::getenv("KAV_LONG") != nullptr ? 60 : KAV_RACE_SECONDS);
}

/// The host's window and audio threads, its automation, its saving, and its user, all at once.
class RaceOnADisplay : public EditorWindow {
protected:
    CTogether threads;
    std::atomic<int> together = 0; ///< edits that the host heard while it heard another
    std::atomic<int> heard = 0;

    void Hear(std::int32_t opcode, std::int32_t index) override {
        EditorWindow::Hear(opcode, index);
        if (opcode != VST::audioMasterAutomate && opcode != VST::audioMasterBeginEdit &&
            opcode != VST::audioMasterEndEdit)
            return;
        if (_inside++ > 0) ++together;
        ++heard;
        // No lock: one thread at a time tells the host of edits, and each has seen what the one before did.
        auto& open = _open.at(static_cast<std::size_t>(index));
        open += opcode == VST::audioMasterBeginEdit ? 1 : opcode == VST::audioMasterEndEdit ? -1 : 0;
        EXPECT_TRUE(open == 0 || open == 1) << index;
        --_inside;
    }
    bool IsEditing() const {
        return std::any_of(_open.begin(), _open.end(), [](int open) { return open != 0; });
    }

    void PlaySound(int) {
        std::vector<std::vector<float>> sound(2, std::vector<float>(64));
        for (auto& channel : sound) {
            for (auto& x : channel) x = 1.5f * std::sin(static_cast<float>(_phase++ % 1000) * 0.2f);
        }
        effect->Process(sound);
        for (const auto& channel : sound) {
            for (const float x : channel) ASSERT_TRUE(std::isfinite(x));
        }
    }
    void Automate(int round) {
        const auto index = round * 37 % 100; // the last ones choose the oversampling
        effect->Set(index, static_cast<float>(round % 11) / 10.0f);
        EXPECT_TRUE(std::isfinite(effect->Get(round % 100)));
        effect->Display(index);
    }
    /// Only one thread asks, because the bytes are the host's until the next request.
    void SaveAndRestore(int round) {
        std::string chunk = Chunk();
        ASSERT_TRUE(chunk.starts_with("<patch_format>textual</patch_format>"));
        ASSERT_EQ(chunk.find('\0'), chunk.size() - 1);
        if (round % 4 != 0) return;
        EXPECT_EQ(
            effect->Dispatch(VST::effSetChunk, 0, static_cast<std::intptr_t>(chunk.size()), chunk.data()), 1);
    }
    /// The host's main thread: it opens, idles at 60 Hz and closes, now and then without closing before.
    void ShowTheEditor(int round, const std::array<xcb_window_t, 2>& parents) {
        EXPECT_TRUE(Open(parents.at(static_cast<std::size_t>(round) % 2)));
        for (int idle = 0; idle < 30; ++idle) {
            effect->Dispatch(VST::effEditIdle);
            VST::ERect* size = nullptr;
            effect->Dispatch(VST::effEditGetRect, 0, 0, &size);
            std::this_thread::sleep_for(std::chrono::microseconds(16'667));
        }
        if (round % 3 != 2) Close();
    }
    /// The user has no plan; the same one every time.
    void UseThePointer(int round, const std::array<xcb_window_t, 2>& parents) {
        windows.Raise(parents.at(static_cast<std::size_t>(round / 4) % 2));
        const int x = round * 97 % 754;
        const int y = round * 61 % 553;
        windows.MoveTo(x, y);
        windows.Press(1);
        for (int step = 1; step <= 4; ++step) windows.MoveTo(x + step * 2, y - step * 7);
        windows.Release(1);
        windows.Click(round % 2 == 0 ? 4 : 5);
        if (round % 7 == 0) windows.Click(3); // a box to type in
        if (round % 5 == 0) windows.Type(XKB_KEY_Escape);
        if (round % 3 == 0) TurnAKnob();
    }

private:
    int _phase = 0; // of the audio thread
    std::atomic<int> _inside = 0;
    std::array<int, 128> _open{}; // edits that have begun
};

} // namespace

TEST_F(EditorWindow, EndsItsListOfFilesWhenItIsClosed) {
    setenv("KAV_FILE_DIALOG", "list", 1);
    OpenEditor();
    ASSERT_TRUE(loop.Run([this] { Gui().SaveRouting(u""); }));
    const auto list = AwaitList();
    Close();
    EXPECT_TRUE(Eventually([&] { return !windows.Exists(list); }));
    EXPECT_TRUE(UserFiles().empty());
    EXPECT_FALSE(loop.Run([] {})) << "the window's thread has ended";
    // The instance's question has been answered: it asks the next one.
    OpenEditor();
    ASSERT_TRUE(loop.Run([this] { Gui().SaveRouting(u""); }));
    const auto next = AwaitList();
    EXPECT_TRUE(Eventually([&] { return windows.Focused() == next; }));
    for (const auto key : {XKB_KEY_x, XKB_KEY_y, XKB_KEY_Return})
        windows.Type(static_cast<std::uint32_t>(key));
    EXPECT_TRUE(Eventually([this] { return fs::exists(documents.Routing("xy.kvt")); }));
    EXPECT_TRUE(Eventually([this] { return Others().empty(); }));
}

TEST_F(EditorWindow, EndsADialogThatHangsWhenItIsClosed) {
    scripts.Put("zenity", "while :; do /bin/sleep 1000; done");
    OpenEditor();
    ASSERT_TRUE(loop.Run([this] { effect->Device().State().SavePatch(u"", 0); }));
    const auto program = scripts.Process("zenity");
    ASSERT_GT(program, 0);
    EXPECT_TRUE(IsRunning(program));
    Close();
    EXPECT_TRUE(Eventually([&] { return !IsRunning(program); }));
    EXPECT_TRUE(UserFiles().empty());
    // The instance's question has been answered: it asks the next one, and this user answers.
    const auto chosen = documents.Patch("xy.kvp");
    scripts.Put("zenity", "echo '" + chosen.string() + "'");
    OpenEditor();
    ASSERT_TRUE(loop.Run([this] { effect->Device().State().SavePatch(u"", 0); }));
    EXPECT_TRUE(Eventually([&] { return fs::exists(chosen); }));
}

TEST_F(EditorWindow, AnswersAnOpenQuestionAsCancelledBeforeItHasClosed) {
    for (const char* const road : {"list", "zenity"}) {
        setenv("KAV_FILE_DIALOG", road, 1);
        scripts.Put("zenity", "while :; do /bin/sleep 1000; done");
        OpenEditor();
        std::vector<std::u16string> answers;
        std::thread::id asker;
        std::thread::id answerer;
        ASSERT_TRUE(loop.Run([&] {
            asker = std::this_thread::get_id();
            Utils::SystemDialogs().OpenFile({}, [&](std::u16string_view path) {
                answers.emplace_back(path);
                answerer = std::this_thread::get_id();
            });
        }));
        if (std::string_view(road) == "list") {
            AwaitList();
        } else {
            scripts.Process("zenity");
        }
        EXPECT_TRUE(answers.empty());
        Close();
        EXPECT_EQ(answers, std::vector<std::u16string>{u""}) << road;
        EXPECT_EQ(answerer, asker) << road << ": the window has gone before the answer";
    }
}

TEST_F(EditorWindow, LeavesThePanelAloneWhileTheUserIsAsked) {
    setenv("KAV_FILE_DIALOG", "list", 1);
    OpenEditor();
    const auto before = Chunk();
    ASSERT_TRUE(loop.Run([this] { Gui().SaveRouting(u""); }));
    const auto list = AwaitList();
    EXPECT_TRUE(Eventually([&] { return windows.Focused() == list; }));
    windows.Raise(windows.Top()); // the panel is within reach of the pointer again
    TurnAKnob();
    // The press brings the list to the front, and does nothing else.
    EXPECT_TRUE(Eventually([&] { return windows.Children(windows.Root()).back() == list; }));
    ASSERT_TRUE(loop.Run([] {}));
    effect->Dispatch(VST::effEditIdle);
    EXPECT_EQ(edits, 0);
    EXPECT_EQ(Chunk(), before);
    // Once the user has answered, the same press is one.
    EXPECT_TRUE(Eventually([&] { return windows.Focused() == list; }));
    windows.Type(XKB_KEY_Escape);
    EXPECT_TRUE(Eventually([this] { return Others().empty(); }));
    TurnAKnob();
    EXPECT_TRUE(Eventually([&] {
        effect->Dispatch(VST::effEditIdle);
        return edits > 0 && Chunk() != before; // the press begins the edit, and the movement comes later
    }));
}

TEST_F(RaceOnADisplay, TheWindowMeetsItsHostAndItsUser) {
    const auto other = windows.MakeWindow(windows.Top(), 20, 30, 800, 600);
    windows.Show(other, true);
    const std::array<xcb_window_t, 2> parents{windows.Parent(), other};
    effect->Dispatch(VST::effMainsChanged, 0, 1);
    threads.Add([this](int n) { PlaySound(n); }, Calls);
    threads.Add([this](int n) { Automate(n); }, Calls);
    threads.Add([this](int n) { SaveAndRestore(n); }, Calls);
    threads.Add([&](int n) { ShowTheEditor(n, parents); }, Rounds);
    threads.Add([&](int n) { UseThePointer(n, parents); }, Calls);
    threads.Run(Length());
    Close();
    EXPECT_EQ(together, 0);
    EXPECT_FALSE(IsEditing());
    EXPECT_TRUE(Eventually([&] { return windows.Children(windows.Parent()).empty(); }));
    EXPECT_TRUE(Eventually([&] { return windows.Children(other).empty(); }));
    // It still works.
    windows.Destroy(other);
    OpenEditor();
    const int before = heard;
    TurnAKnob();
    EXPECT_TRUE(Eventually([&] {
        effect->Dispatch(VST::effEditIdle);
        return heard > before;
    }));
}

} // namespace KAV::Tests
