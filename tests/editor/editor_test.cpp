// The editor of the delivered library, as a host and its user see it.

#include "tests/editor/editor_fixture.h"

#include "tests/support/process_memory.h"

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Tests {

namespace {

using namespace VST;
using Editor = CEditorFixture;

constexpr std::int32_t Width = Panel::PanelWidth;
constexpr std::int32_t Height = Panel::PanelHeight;

std::string LoadedLibraries() {
    std::ifstream maps("/proc/self/maps");
    std::string all;
    for (std::string line; std::getline(maps, line);) all += line + '\n';
    return all;
}

/// The value of a parameter in a state, as it stands there; empty if it isn't there.
std::string ValueIn(const std::string& chunk, int tag) {
    const auto name = "<param tag=\"" + std::to_string(tag) + "\"";
    const auto element = chunk.find(name);
    if (element == std::string::npos) return {};
    const auto begin = chunk.find('>', element) + 1;
    return chunk.substr(begin, chunk.find('<', begin) - begin);
}

/// The kinds of the calls that belong to an edit, in order: 'b', 'v', 'e'.
std::string EditCalls(const CEditorHost& host) {
    std::string kinds;
    for (const auto& call : host.Calls()) {
        if (call.opcode == audioMasterBeginEdit) kinds += 'b';
        if (call.opcode == audioMasterEndEdit) kinds += 'e';
        if (call.opcode == audioMasterAutomate && !kinds.ends_with('v')) kinds += 'v';
    }
    return kinds;
}

constexpr int MainInputGainTag = 23;
constexpr int OversamplingTag = 30;

} // namespace

// Opening and closing

TEST_F(Editor, HasItsSizeBeforeItIsOpened) {
    CEditorHost host(library);
    EXPECT_NE(host.Effect()->flags & effFlagsHasEditor, 0);
    const auto rect = host.Rect();
    EXPECT_EQ(rect.right - rect.left, Width);
    EXPECT_EQ(rect.bottom - rect.top, Height);
}

TEST_F(Editor, ShowsThePanelInTheHostsWindow) {
    CEditorHost host(library);
    const auto editor = OpenEditor(host);
    const auto place = windows.Place(editor);
    EXPECT_EQ(place.x, 0);
    EXPECT_EQ(place.y, 0);
    EXPECT_EQ(place.width, Width);
    EXPECT_EQ(place.height, Height);
    host.Close();
    EXPECT_TRUE(Until([&] { return windows.Editor() == 0; }));
}

TEST_F(Editor, LoadsWhatItNeedsWhenItOpensAndNotBefore) {
    CEditorHost host(library);
    host.Rect();
    for (const char* const name : {"libpixman", "libfreetype", "libxkbcommon", "libxcb-shm", "libxcb-cursor"})
        EXPECT_EQ(LoadedLibraries().find(name), std::string::npos) << name;
    OpenEditor(host);
    for (const char* const name : {"libpixman", "libfreetype", "libxkbcommon", "libxcb-shm"})
        EXPECT_NE(LoadedLibraries().find(name), std::string::npos) << name;
}

TEST_F(Editor, OpensAtTheDensityOfTheDisplay) {
    const std::string resources = "Xft.dpi:\t120\n";
    xcb_change_property(windows.Connection(), XCB_PROP_MODE_REPLACE, windows.Root(),
        XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(resources.size()),
        resources.data());
    windows.Sync();
    CEditorHost host(library);
    const auto rect = host.Rect();
    EXPECT_EQ(rect.right, 943); // 754 x 120 / 96, rounded
    EXPECT_EQ(host.Rect().right, 943);
}

TEST_F(Editor, OpensNoWiderThanTheMonitor) {
    const std::string resources = "Xft.dpi:\t192\n";
    xcb_change_property(windows.Connection(), XCB_PROP_MODE_REPLACE, windows.Root(),
        XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(resources.size()),
        resources.data());
    windows.Sync();
    CEditorHost host(library);
    EXPECT_EQ(host.Rect().right, 1280);
}

TEST_F(Editor, StaysTheSameWhenItIsOpenedAgainInItsParent) {
    CEditorHost host(library);
    const auto editor = OpenEditor(host);
    EXPECT_TRUE(host.Open(windows.Parent()));
    EXPECT_EQ(windows.Editor(), editor);
}

TEST_F(Editor, MovesToAnotherParentByANewWindow) {
    CEditorHost host(library);
    OpenEditor(host);
    const auto other = windows.MakeWindow(windows.Top(), 0, 0, 800, 600);
    windows.Show(other, true);
    EXPECT_TRUE(host.Open(other));
    EXPECT_EQ(windows.Editor(), 0u);
    ASSERT_EQ(windows.Children(other).size(), 1u);
    EXPECT_TRUE(ShowsAPicture(windows.Children(other)[0]));
}

TEST_F(Editor, OpensInAParentThatAnswersOnlyAfterwards) {
    CXTestHost slow({.redirects = true, .width = 800, .height = 600});
    CEditorHost host(library);
    EXPECT_TRUE(host.Open(slow.Parent())); // waiting for the map would be for ever
    EXPECT_TRUE(Until([&] {
        slow.Answer();
        return slow.Editor() != 0 && slow.IsViewable(slow.Editor());
    }));
    host.Close();
}

TEST_F(Editor, TakesTheDepthOfA32BitParentAndIsOpaque) {
    CXTestHost deep({.depth = 32, .width = 800, .height = 600});
    CEditorHost host(library);
    ASSERT_TRUE(host.Open(deep.Parent()));
    ASSERT_NE(deep.Editor(), 0u);
    EXPECT_EQ(deep.Place(deep.Editor()).depth, 32);
    EXPECT_TRUE(Until([&] { return deep.Pixel(deep.Editor(), 200, 300) >> 24 == 0xFFu; }));
    host.Close();
}

TEST_F(Editor, OpensInTwoWindowsAtOnce) {
    CEditorHost first(library);
    CEditorHost second(library);
    const auto one = OpenEditor(first);
    const auto other = windows.MakeWindow(windows.Root(), 0, 0, 800, 600, true);
    windows.Show(other, true);
    ASSERT_TRUE(second.Open(other));
    ASSERT_EQ(windows.Children(other).size(), 1u);
    const auto two = windows.Children(other)[0];
    EXPECT_TRUE(ShowsAPicture(two));
    first.Close();
    EXPECT_TRUE(Until([&] { return !windows.Exists(one); }));
    EXPECT_TRUE(ShowsAPicture(two));
}

// What the user does

TEST_F(Editor, ReportsADragInTheHostsIdleCalls) {
    for (const int rate : {15, 25, 60}) {
        CEditorHost host(library, rate);
        OpenEditor(host);
        Drag(MiddleOf("Main Input Gain"), 0, -40);
        windows.Release(1);
        EXPECT_TRUE(Until([&] { return host.Count(audioMasterEndEdit) == 1; })) << rate;
        EXPECT_EQ(EditCalls(host), "bve") << rate;
        for (const auto& call : host.Calls()) {
            if (call.opcode == audioMasterBeginEdit || call.opcode == audioMasterAutomate ||
                call.opcode == audioMasterEndEdit) {
                EXPECT_EQ(call.thread, host.Thread());
            }
        }
        host.Close();
    }
}

TEST_F(Editor, ReportsAnEditFromItsOwnThreadToAHostThatNeverCallsIdle) {
    CEditorHost host(library, 0);
    OpenEditor(host);
    Drag(MiddleOf("Main Input Gain"), 0, -40);
    windows.Release(1);
    EXPECT_TRUE(Until([&] { return host.Count(audioMasterEndEdit) == 1; }));
    EXPECT_EQ(EditCalls(host), "bve");
    EXPECT_NE(host.Calls(audioMasterEndEdit)[0].thread, host.Thread());
    // The first idle call ends that.
    host.Dispatch(effEditIdle);
    Drag(MiddleOf("Main Output Gain"), 0, -40);
    windows.Release(1);
    const auto before = ValueIn(host.Chunk(), 29);
    EXPECT_TRUE(Until([&] { return ValueIn(host.Chunk(), 29) != "0.5"; })) << before;
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(host.Count(audioMasterBeginEdit), 1u);
    host.Dispatch(effEditIdle);
    EXPECT_EQ(host.Count(audioMasterBeginEdit), 2u);
}

TEST_F(Editor, WorksWhenIdleComesOnAnotherThread) {
    CEditorHost host(library);
    host.IdleElsewhere(true);
    OpenEditor(host);
    Drag(MiddleOf("Main Input Gain"), 0, -40);
    windows.Release(1);
    EXPECT_TRUE(Until([&] { return host.Count(audioMasterEndEdit) == 1; }));
    host.Close();
}

TEST_F(Editor, TurnsAKnobByTheWheel) {
    CEditorHost host(library);
    OpenEditor(host);
    const auto before = ValueIn(host.Chunk(), MainInputGainTag);
    MoveTo(MiddleOf("Main Input Gain"));
    windows.Click(4);
    EXPECT_TRUE(Until([&] { return host.Count(audioMasterEndEdit) == 1; }));
    EXPECT_NE(ValueIn(host.Chunk(), MainInputGainTag), before);
}

TEST_F(Editor, TakesATypedValue) {
    CEditorHost host(library);
    OpenEditor(host);
    MoveTo(MiddleOf("Main Input Gain"));
    windows.Click(3);
    for (const int key : {XKB_KEY_1, XKB_KEY_2, XKB_KEY_Return})
        windows.Type(static_cast<std::uint32_t>(key));
    EXPECT_TRUE(Until([&] { return ValueIn(host.Chunk(), MainInputGainTag).starts_with("0.75"); }))
        << ValueIn(host.Chunk(), MainInputGainTag); // 12 dB of -24 to 24
}

TEST_F(Editor, ChoosesFromAMenuByMouse) {
    CEditorHost host(library);
    OpenEditor(host);
    MoveTo(MiddleOf("Oversampling"));
    windows.Click(1);
    const auto menu = windows.Place(AwaitPopUp()[0]);
    const auto parent = windows.Place(windows.Top());
    // The third of four entries of the same height, one below the other.
    windows.MoveTo(menu.x - parent.x - 20 + menu.width / 2, menu.y - parent.y - 30 + menu.height * 5 / 8);
    windows.Click(1);
    EXPECT_TRUE(Until([&] { return ValueIn(host.Chunk(), OversamplingTag).starts_with("2"); }))
        << ValueIn(host.Chunk(), OversamplingTag);
    EXPECT_TRUE(Until([&] { return PopUps().empty(); }));
}

TEST_F(Editor, ChoosesFromAMenuByKeyboard) {
    CEditorHost host(library);
    OpenEditor(host);
    MoveTo(MiddleOf("Oversampling"));
    windows.Click(1);
    AwaitPopUp();
    for (const int key : {XKB_KEY_End, XKB_KEY_Return}) windows.Type(static_cast<std::uint32_t>(key));
    EXPECT_TRUE(Until([&] { return ValueIn(host.Chunk(), OversamplingTag).starts_with("3"); }))
        << ValueIn(host.Chunk(), OversamplingTag);
    EXPECT_TRUE(Until([&] { return PopUps().empty(); }));
}

TEST_F(Editor, IsResizedByItsRightEdge) {
    CEditorHost host(library);
    const auto editor = OpenEditor(host);
    Drag({Width - 3, 300}, -100, 0);
    windows.Release(1);
    EXPECT_TRUE(Until([&] { return windows.Place(editor).width == Width - 100; }));
    EXPECT_TRUE(Until([&] { return host.Count(audioMasterSizeWindow) > 0; }));
    EXPECT_TRUE(Until([&] { return host.Calls(audioMasterSizeWindow).back().index == Width - 100; }));
    EXPECT_EQ(host.Calls(audioMasterSizeWindow).back().thread, host.Thread());
    EXPECT_EQ(host.Rect().right, Width - 100);
    host.Close();
    // The next instance begins with it.
    CEditorHost next(library);
    EXPECT_EQ(next.Rect().right, Width - 100);
}

TEST_F(Editor, ResizesTheParentItselfWhenTheHostRefuses) {
    CEditorHost host(library);
    host.AcceptSizes(false);
    OpenEditor(host);
    Drag({Width - 3, 300}, -100, 0);
    windows.Release(1);
    EXPECT_TRUE(Until([&] { return windows.Place(windows.Parent()).width == Width - 100; }));
}

TEST_F(Editor, ShowsWhatTheHostSets) {
    CEditorHost host(library);
    const auto editor = OpenEditor(host);
    const auto picture = [&] { return PictureOf(editor, "Threshold"); };
    const auto before = picture();
    host.Effect()->setParameter(host.Effect(), host.IndexOf("Threshold"), 0.1f);
    EXPECT_TRUE(Until([&] { return picture() != before; }));
}

TEST_F(Editor, ShowsWhatChangedWhileItWasHidden) {
    CEditorHost host(library);
    const auto editor = OpenEditor(host);
    const auto index = host.IndexOf("Threshold");
    const auto picture = [&] { return PictureOf(editor, "Threshold"); };
    const auto high = picture();
    host.Effect()->setParameter(host.Effect(), index, 0.1f);
    const auto low = [&] {
        EXPECT_TRUE(Until([&] { return picture() != high; }));
        auto last = picture();
        // The fader glides for a quarter of a second.
        EXPECT_TRUE(Until([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(600));
            return std::exchange(last, picture()) == last;
        }));
        return last;
    }();
    host.Effect()->setParameter(host.Effect(), index, 1.0f);
    EXPECT_TRUE(Until([&] { return picture() == high; }));
    windows.Show(windows.Top(), false);
    host.Effect()->setParameter(host.Effect(), index, 0.1f);
    const int idles = host.Idles();
    EXPECT_TRUE(Until([&] { return host.Idles() > idles + 10; }));
    windows.Show(windows.Top(), true);
    EXPECT_TRUE(Until([&] { return windows.IsViewable(editor); }));
    EXPECT_TRUE(Until([&] { return picture() == low; }));
}

// Ends of every kind

TEST_F(Editor, AnswersCallsOutOfOrder) {
    CEditorHost host(library);
    EXPECT_EQ(host.Dispatch(effEditIdle), 0);
    EXPECT_EQ(host.Dispatch(effEditClose), 0);
    EXPECT_FALSE(host.Open(0)); // no parent
    EXPECT_EQ(windows.Editor(), 0u);
    OpenEditor(host);
    host.Close();
    EXPECT_EQ(host.Dispatch(effEditClose), 0);
    EXPECT_EQ(host.Dispatch(effEditIdle), 0);
    EXPECT_EQ(windows.Editor(), 0u);
    OpenEditor(host);
}

TEST_F(Editor, EndsADragWhenItIsHidden) {
    CEditorHost host(library);
    OpenEditor(host);
    Drag(MiddleOf("Main Input Gain"), 0, -40);
    EXPECT_TRUE(Until([&] { return host.Count(audioMasterAutomate) > 0; }));
    windows.Show(windows.Top(), false);
    EXPECT_TRUE(Until([&] { return host.Count(audioMasterEndEdit) == 1; }));
    EXPECT_EQ(EditCalls(host), "bve");
    windows.Release(1);
}

TEST_F(Editor, ClosesWhileItWaitsForTheClipboard) {
    const xcb_atom_t clipboard = windows.Atom("CLIPBOARD");
    // The test owns the clipboard and never answers a request for its contents.
    xcb_set_selection_owner(windows.Connection(), windows.Top(), clipboard, XCB_CURRENT_TIME);
    windows.Sync();
    CEditorHost host(library);
    OpenEditor(host);
    const auto before = ValueIn(host.Chunk(), MainInputGainTag);
    const auto edits = EditCalls(host);
    MoveTo(MiddleOf("Main Input Gain"));
    windows.Click(3);
    windows.Key(XKB_KEY_Control_L, true);
    windows.Type(XKB_KEY_v);
    windows.Key(XKB_KEY_Control_L, false);
    EXPECT_TRUE(Until([&] { return windows.Count(XCB_SELECTION_REQUEST) > 0; }));
    host.Close();
    EXPECT_EQ(EditCalls(host), edits);
    EXPECT_EQ(ValueIn(host.Chunk(), MainInputGainTag), before);
    EXPECT_EQ(windows.Editor(), 0u);
    OpenEditor(host);
}

TEST_F(Editor, EndsADragWhenItIsClosed) {
    CEditorHost host(library);
    OpenEditor(host);
    Drag(MiddleOf("Main Input Gain"), 0, -40);
    EXPECT_TRUE(Until([&] { return host.Count(audioMasterAutomate) > 0; }));
    host.Close();
    EXPECT_EQ(EditCalls(host), "bve");
    EXPECT_EQ(host.Calls(audioMasterEndEdit)[0].thread, host.Thread());
    windows.Release(1);
}

TEST_F(Editor, ClosesAMenuWithItself) {
    CEditorHost host(library);
    OpenEditor(host);
    MoveTo(MiddleOf("Oversampling"));
    windows.Click(1);
    AwaitPopUp();
    host.Close();
    EXPECT_TRUE(Until([&] { return PopUps().empty(); }));
    EXPECT_TRUE(host.Open(windows.Parent()));
    EXPECT_TRUE(ShowsAPicture(windows.Editor()));
}

TEST_F(Editor, DropsWhatWasBeingTypedWhenItIsClosed) {
    CEditorHost host(library);
    OpenEditor(host);
    const auto before = ValueIn(host.Chunk(), MainInputGainTag);
    MoveTo(MiddleOf("Main Input Gain"));
    windows.Click(3);
    windows.Type(XKB_KEY_9);
    host.Close();
    EXPECT_EQ(ValueIn(host.Chunk(), MainInputGainTag), before);
    EXPECT_TRUE(host.Open(windows.Parent()));
}

TEST_F(Editor, OutlivesItsParent) {
    CEditorHost host(library);
    const auto editor = OpenEditor(host);
    windows.Destroy(windows.Parent());
    EXPECT_TRUE(Until([&] { return !windows.Exists(editor); }));
    const auto other = windows.MakeWindow(windows.Top(), 0, 0, 800, 600);
    windows.Show(other, true);
    EXPECT_TRUE(host.Open(other)); // afresh, though the host hasn't closed it
    ASSERT_EQ(windows.Children(other).size(), 1u);
    EXPECT_TRUE(ShowsAPicture(windows.Children(other)[0]));
    host.Close();
}

TEST_F(Editor, MayStayOpenWhenTheInstanceEnds) {
    {
        CEditorHost host(library);
        OpenEditor(host);
    }
    EXPECT_EQ(windows.Editor(), 0u);
}

TEST_F(Editor, MayBeClosedByTheHostInsideItsOwnCall) {
    CEditorHost host(library, 0);
    OpenEditor(host);
    std::atomic<bool> hasClosed{false};
    host.Inside(audioMasterAutomate, [&] {
        host.Effect()->dispatcher(host.Effect(), effEditClose, 0, 0, nullptr, 0.0f);
        hasClosed = true;
    });
    Drag(MiddleOf("Main Input Gain"), 0, -40);
    EXPECT_TRUE(Until([&] { return hasClosed.load(); }));
    EXPECT_EQ(windows.Editor(), 0u);
    windows.Release(1);
    EXPECT_TRUE(host.Open(windows.Parent()));
    EXPECT_TRUE(ShowsAPicture(windows.Editor()));
}

TEST_F(Editor, LeavesNothingBehindHoweverOftenItIsOpened) {
    const int rounds = std::getenv("KAV_LONG") != nullptr ? 1000 : 100;
    CEditorHost host(library);
    const auto open = [&] {
        ASSERT_TRUE(host.Open(windows.Parent()));
        EXPECT_TRUE(Until([&] { return windows.Editor() != 0 && windows.IsViewable(windows.Editor()); }));
        host.Close();
    };
    const auto count = [](const char* folder) {
        return std::distance(std::filesystem::directory_iterator(folder), {});
    };
    for (int round = 0; round < 10; ++round) open();
    const auto descriptors = count("/proc/self/fd");
    const auto threads = count("/proc/self/task");
    [[maybe_unused]] const auto memory = ResidentBytes();
    for (int round = 0; round < rounds; ++round) open();
    EXPECT_EQ(count("/proc/self/fd"), descriptors);
    EXPECT_EQ(count("/proc/self/task"), threads);
#if !defined(KAV_SANITIZED) // a sanitizer keeps freed memory for a while
    // A leak of ten kilobytes an opening would be a megabyte.
    EXPECT_LT(ResidentBytes(), memory + static_cast<std::size_t>(rounds) * 10 * 1024);
#endif
    EXPECT_EQ(windows.Editor(), 0u);
}

} // namespace KAV::Tests
