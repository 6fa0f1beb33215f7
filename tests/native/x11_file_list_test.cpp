#include "native/linux/x11_file_list.h"

#include "platform/window_loop.h"
#include "tests/support/dialog_script.h"
#include "tests/support/file_text.h"
#include "tests/support/generic_event.h"
#include "tests/support/scratch_home.h"
#include "tests/support/x_test_host.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <thread>
#include <xkbcommon/xkbcommon-keysyms.h>

using namespace KAV;
using namespace KAV::Native;
using namespace KAV::Tests;
namespace fs = std::filesystem;
using Platform::Xcb;

namespace {

/// An editor's display with a list of a folder that holds "a.kvp", "b.kvp" and the folder "sub".
class X11FileList : public testing::Test {
protected:
    CXTestHost host;
    fs::path folder = ScratchFolder() / "list";
    Platform::SFileRequest request;
    std::vector<std::string> answers;
    std::unique_ptr<CX11Display> display;
    std::unique_ptr<CX11FileList> list;

    X11FileList() {
        fs::remove_all(folder);
        fs::create_directories(folder / "sub");
        WriteText(folder / "a.kvp", "x");
        WriteText(folder / "b.kvp", "x");
        request.title = "Title \xC3\xA4";
        request.folder = folder.string();
        request.filters = {{"Preset", {"*.kvp"}}};
        request.hostWindow = host.Top();
        host.Show(host.Top(), true);
        std::u16string reason;
        display = CX11Display::Connect(host.Display(), host.Parent(), reason);
        list = std::make_unique<CX11FileList>(*display);
    }

    void Open() {
        ASSERT_TRUE(list->Open(request, [this](const std::string& path) { answers.push_back(path); }));
        ASSERT_TRUE(Pumped([this] { return host.Focused() == list->Window(); }));
    }
    void OpenToSave(const std::string& name) {
        request.saves = true;
        request.name = name;
        Open();
    }
    template<typename Condition>
    bool Pumped(const Condition& condition) {
        return Eventually([&] {
            while (xcb_generic_event_t* const event = Xcb()->poll_for_event(display->Connection())) {
                list->OnEvent(*event);
                std::free(event);
            }
            display->Flush();
            return condition();
        });
    }
    bool Answered(std::size_t count = 1) {
        return Pumped([&] { return answers.size() >= count; });
    }
    /// Where the pointer is. On a slow machine the user's presses may be too far apart: then once more.
    bool AnsweredByADoubleClick() {
        return Pumped([&] {
            if (!answers.empty()) return true;
            host.Click(1);
            host.Click(1);
            return false;
        });
    }
    /// Handles everything that has arrived so far.
    void Pump() {
        host.Sync();
        int rounds = 0;
        Pumped([&] { return ++rounds > 5; });
    }
    std::string In(const std::string& name) const { return (folder / name).string(); }
    /// A press at a point of the list's window.
    void ClickAt(std::int32_t x, std::int32_t y) {
        const auto window = host.Place(list->Window());
        const auto parent = host.Place(host.Parent());
        const auto top = host.Place(host.Top());
        host.MoveTo(window.x + x - top.x - parent.x, window.y + y - top.y - parent.y);
        host.Click(1);
    }
};

constexpr std::int32_t FirstRow = 8 + 22 + 11; // a row is 22 pixels high at 96 dots per inch

} // namespace

TEST_F(X11FileList, IsATopLevelWindowThatBelongsToTheHosts) {
    Open();
    const auto window = list->Window();
    EXPECT_TRUE(host.IsViewable(window));
    const auto children = host.Children(host.Root());
    EXPECT_NE(std::find(children.begin(), children.end(), window), children.end());
    EXPECT_EQ(host.Property(window, "WM_TRANSIENT_FOR"), std::vector<std::uint32_t>{host.Top()});
    EXPECT_EQ(
        host.Property(window, "WM_PROTOCOLS"), std::vector<std::uint32_t>{host.Atom("WM_DELETE_WINDOW")});
}

TEST_F(X11FileList, TakesAFileByTheKeyboard) {
    Open();
    for (int n = 0; n < 3; ++n) host.Type(XKB_KEY_Down); // "..", "sub", "a.kvp"
    host.Type(XKB_KEY_Return);
    EXPECT_TRUE(Answered());
    EXPECT_EQ(answers, std::vector<std::string>{In("a.kvp")});
    EXPECT_EQ(list->Window(), 0u);
    host.Sync();
}

TEST_F(X11FileList, LeadsIntoFoldersAndUpAgainByTheKeyboard) {
    WriteText(folder / "sub" / "c.kvp", "x");
    Open();
    host.Type(XKB_KEY_Down);
    host.Type(XKB_KEY_Down);
    host.Type(XKB_KEY_Return); // sub
    host.Type(XKB_KEY_BackSpace);
    host.Type(XKB_KEY_Return); // sub, which is selected
    host.Type(XKB_KEY_End);
    host.Type(XKB_KEY_Return);
    EXPECT_TRUE(Answered());
    EXPECT_EQ(answers, std::vector<std::string>{In("sub/c.kvp")});
}

TEST_F(X11FileList, IsCancelledByEscapeAndByItsWindow) {
    Open();
    host.Type(XKB_KEY_Escape);
    EXPECT_TRUE(Answered());
    Open();
    host.Destroy(list->Window());
    EXPECT_TRUE(Answered(2));
    EXPECT_EQ(answers, (std::vector<std::string>{"", ""}));
    EXPECT_EQ(list->Window(), 0u);
}

TEST_F(X11FileList, TakesAFileByADoubleClickOnly) {
    Open();
    ClickAt(60, FirstRow + 3 * 22); // "b.kvp"
    Pump();
    EXPECT_TRUE(answers.empty());
    ClickAt(60, FirstRow + 2 * 22); // the second press is on another one
    Pump();
    EXPECT_TRUE(answers.empty());
    EXPECT_TRUE(AnsweredByADoubleClick());
    EXPECT_EQ(answers, std::vector<std::string>{In("a.kvp")});
}

TEST_F(X11FileList, HasButtons) {
    Open();
    const auto size = host.Place(list->Window());
    ClickAt(60, FirstRow + 2 * 22);
    ClickAt(size.width - 8 - 110 - 8 - 55, size.height - 8 - 11);
    EXPECT_TRUE(Answered());
    EXPECT_EQ(answers, std::vector<std::string>{In("a.kvp")});
    Open();
    ClickAt(size.width - 8 - 55, size.height - 8 - 11);
    EXPECT_TRUE(Answered(2));
    EXPECT_EQ(answers[1], "");
}

TEST_F(X11FileList, SavesUnderATypedName) {
    OpenToSave("proposed");
    for (const auto key : {XKB_KEY_x, XKB_KEY_y, XKB_KEY_z, XKB_KEY_BackSpace})
        host.Type(static_cast<std::uint32_t>(key));
    host.Type(XKB_KEY_Return);
    EXPECT_TRUE(Answered());
    EXPECT_EQ(answers, std::vector<std::string>{In("xy")});
}

TEST_F(X11FileList, AsksBeforeAFileIsReplaced) {
    OpenToSave("a.kvp");
    host.Type(XKB_KEY_Return);
    Pump();
    EXPECT_TRUE(answers.empty()) << "it asks";
    host.Type(XKB_KEY_Escape);
    Pump();
    EXPECT_TRUE(answers.empty()) << "back in the list";
    host.Type(XKB_KEY_Return);
    host.Type(XKB_KEY_Return);
    EXPECT_TRUE(Answered());
    EXPECT_EQ(answers, std::vector<std::string>{In("a.kvp")});
}

TEST_F(X11FileList, ShowsOtherEntriesByTheWheel) {
    for (int n = 10; n < 99; ++n) WriteText(folder / ("a" + std::to_string(n) + ".kvp"), "x");
    Open();
    ClickAt(60, FirstRow);
    for (int n = 0; n < 100; ++n) host.Click(5);
    for (int n = 0; n < 100; ++n) host.Click(4);
    host.Click(5); // three rows
    Pump();
    ClickAt(60, FirstRow); // "a10.kvp" after "..", "sub" and "a.kvp"
    EXPECT_TRUE(AnsweredByADoubleClick());
    EXPECT_EQ(answers, std::vector<std::string>{In("a10.kvp")});
}

TEST_F(X11FileList, IsClosedWithoutAnAnswer) {
    Open();
    const auto window = list->Window();
    list->Close();
    EXPECT_EQ(list->Window(), 0u);
    host.Sync();
    EXPECT_TRUE(Pumped([&] { return !host.Exists(window); }));
    EXPECT_TRUE(answers.empty());
    list->Raise(); // does nothing
    EXPECT_FALSE(list->OnEvent(xcb_generic_event_t{}));
}

TEST_F(X11FileList, ComesToTheFrontAgain) {
    Open();
    host.Raise(host.Top());
    host.Focus(host.Top());
    EXPECT_EQ(host.Children(host.Root()).back(), host.Top());
    list->Raise();
    EXPECT_TRUE(Pumped([&] {
        return host.Children(host.Root()).back() == list->Window() && host.Focused() == list->Window();
    }));
}

TEST_F(X11FileList, MayBeOpenedAgainByItsAnswer) {
    request.saves = false;
    ASSERT_TRUE(list->Open(request, [this](const std::string&) { Open(); }));
    ASSERT_TRUE(Pumped([this] { return host.Focused() == list->Window(); }));
    const auto first = list->Window();
    host.Type(XKB_KEY_Escape);
    EXPECT_TRUE(Pumped([&] { return list->Window() != 0 && list->Window() != first; }));
}

namespace {

/// The same, in a window's loop, on a disk that stands still while the test says so.
class X11FileListOnASlowDisk : public X11FileList {
protected:
    struct SDisk {
        std::atomic<bool> isStill{false};
        std::atomic<int> reading{0};
    };
    std::shared_ptr<SDisk> disk = std::make_shared<SDisk>();
    std::shared_ptr<Platform::CWindowLoop> loop = std::make_shared<Platform::CWindowLoop>([] {});

    X11FileListOnASlowDisk() {
        Platform::CWindowLoop::SetOfThisThread(loop.get());
        list = std::make_unique<CX11FileList>(*display, [disk = disk] {
            ++disk->reading;
            while (disk->isStill) std::this_thread::sleep_for(std::chrono::milliseconds(1));
            --disk->reading;
        });
    }
    ~X11FileListOnASlowDisk() override {
        disk->isStill = false;
        EXPECT_TRUE(Eventually([this] { return disk->reading == 0; }));
        list.reset();
        loop->End();
        Platform::CWindowLoop::SetOfThisThread(nullptr);
    }
    bool Heard(std::size_t count) {
        return Pumped([&] {
            loop->RunPosted();
            return answers.size() >= count;
        });
    }
    void Hear() {
        Pump();
        loop->RunPosted();
    }
};

} // namespace

TEST_F(X11FileListOnASlowDisk, HearsWhatIsTypedMeanwhileWhenTheDiskAnswers) {
    disk->isStill = true;
    Open();                                              // it is shown, and the editor's thread goes on
    for (int n = 0; n < 3; ++n) host.Type(XKB_KEY_Down); // "..", "sub", "a.kvp"
    host.Type(XKB_KEY_Return);
    Hear();
    EXPECT_TRUE(answers.empty());
    disk->isStill = false;
    EXPECT_TRUE(Heard(1));
    EXPECT_EQ(answers, std::vector<std::string>{In("a.kvp")});
}

TEST_F(X11FileListOnASlowDisk, LeavesAFolderThatDoesNotAnswerByEscape) {
    Open();
    ASSERT_TRUE(Pumped([this] {
        loop->RunPosted();
        return disk->reading == 0;
    }));
    Hear();
    disk->isStill = true;
    host.Type(XKB_KEY_Down);
    host.Type(XKB_KEY_Down);
    host.Type(XKB_KEY_Return); // sub
    ASSERT_TRUE(Pumped([this] { return disk->reading == 1; }));
    host.Type(XKB_KEY_End); // never heard
    host.Type(XKB_KEY_Escape);
    Hear();
    EXPECT_TRUE(answers.empty()) << "back in the folder";
    EXPECT_NE(list->Window(), 0u);
    disk->isStill = false;
    ASSERT_TRUE(Eventually([this] { return disk->reading == 0; }));
    Hear();
    host.Type(XKB_KEY_Down); // "a.kvp" after "sub": what the disk has said at last is dropped
    host.Type(XKB_KEY_Return);
    EXPECT_TRUE(Heard(1));
    EXPECT_EQ(answers, std::vector<std::string>{In("a.kvp")});
}

TEST_F(X11FileListOnASlowDisk, IsClosedWhileItReads) {
    disk->isStill = true;
    Open();
    list->Close();
    EXPECT_EQ(list->Window(), 0u);
    Open();
    host.Type(XKB_KEY_Escape);
    EXPECT_TRUE(Heard(1));
    EXPECT_EQ(answers, std::vector<std::string>{""});
    list.reset();
    disk->isStill = false;
    EXPECT_TRUE(Eventually([this] { return disk->reading == 0; }));
    loop->RunPosted();
    EXPECT_EQ(answers.size(), 1u);
}

TEST_F(X11FileList, LeavesTheEditorsEventsAlone) {
    Open();
    xcb_button_press_event_t press{};
    press.response_type = XCB_BUTTON_PRESS;
    press.event = host.Parent();
    EXPECT_FALSE(list->OnEvent(Generic(press)));
}
