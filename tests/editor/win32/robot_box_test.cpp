// What is the system's own while the user answers: the window below, and boxes with a loop of their own.

#include "tests/editor/robot.h"

#include "platform/winapi/windows_header.h"

namespace KAV::Tests {

TEST_F(Robot, CannotPressTheHostsWindowWhileAQuestionIsUp) {
    const HWND host = FindWindowW(L"Host", L"host");
    EXPECT_TRUE(IsWindowEnabled(host));
    Click("ToolBtnLoad");
    EXPECT_TRUE(Until([this] { return screen.AsksForFile(); }));
    EXPECT_FALSE(IsWindowEnabled(host));
    Type({EKey::Escape});
    EXPECT_TRUE(Until([&] { return IsWindowEnabled(host) != FALSE; }));
}

TEST_F(Robot, ReadsWhyAPatchOfAnotherProductIsNotLoaded) {
    WriteText(Documents() / "Kavelin" / "KAV Sorrel Limiter" / "other.kvp", "<plugin_id>1</plugin_id>");
    const auto before = effect->Chunk();
    Click("ToolBtnLoad");
    EXPECT_TRUE(Until([this] { return screen.AsksForFile(); }));
    screen.EnterFile("other.kvp", false);
    Type({EKey::Return});
    HWND box = nullptr;
    const auto hasBox = [&box] {
        box = FindWindowW(L"#32770", L"KAV Sorrel Limiter");
        return box != nullptr;
    };
    ASSERT_TRUE(Until(hasBox));
    WaitForIdles(12); // the host goes on
    EXPECT_TRUE(hasBox());
    EXPECT_EQ(effect->Chunk(), before);
    // On a busy display, Wine hears late that the host's window had the keys, and gives them back to it.
    const auto pressesIt = [this, &box] { return screen.AsksForFile() || (SetForegroundWindow(box), false); };
    EXPECT_TRUE(Until(pressesIt)) << "the box doesn't take keys";
    Type({EKey::Return});
    EXPECT_TRUE(Until([&] { return !hasBox(); }));
    Click("Limiter");
    EXPECT_TRUE(HasValue(34, 0.0)) << "the editor takes input again";
}

} // namespace KAV::Tests
