// The editor of an instance in a window with a thread of its own, from the host's calls to the widgets and
// back.

#include "device_gui/vst_gui_v2.h"
#include "gui/knob.h"
#include "gui/settings.h"
#include "panel/layout.h"
#include "tests/support/added_log.h"
#include "tests/support/hand_clock.h"
#include "tests/support/own_renderers.h"
#include "tests/support/own_settings.h"
#include "tests/support/state_fixture.h"
#include "tests/support/threaded_editor.h"
#include "tests/support/toolkit_robot.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <set>
#include <tuple>

using namespace KAV;
using namespace KAV::Tests;
using namespace KAV::VST;

namespace {

using Calls = std::vector<std::string>;

class Editor : public State {
protected:
    static constexpr std::int32_t Threshold = 33; // its host index is 4 in the first group

    COwnSettings settings;
    COwnRenderers renderers;
    std::shared_ptr<CDesk> desk = std::make_shared<CDesk>();
    CToolkitRobot robot{desk->window}; // with a clock that stands still
    char parents[2] = {};              // only their addresses count

    void SetUp() override {
        Make();
        host.record = false; // it hears on several threads
        host.answer = [this](AEffect*, std::int32_t opcode, std::int32_t index, void*, float option) {
            return Hear(opcode, index, option);
        };
    }
    void TearDown() override {
        effect.reset();
        host.answer = nullptr;
    }

    void Make() {
        effect.reset();
        effect = std::make_unique<CHostedEffect>(
            host.Callback(), Utils::SMakerService{}, std::make_unique<CThreadedSystem>(desk));
    }
    bool Open(int parent = 0) { return effect->Dispatch(effEditOpen, 0, 0, &parents[parent]) == 1; }
    void OpenAndSettle() {
        ASSERT_TRUE(Open());
        desk->Settle();
    }
    void Close() { effect->Dispatch(effEditClose); }
    void Idle() { effect->Dispatch(effEditIdle); }
    /// Without a tick.
    static void Advance(std::uint32_t ms) { Utils::WaitMs(ms); }
    std::pair<int, int> Rectangle() {
        ERect* rect = nullptr;
        EXPECT_EQ(effect->Dispatch(effEditGetRect, 0, 0, &rect), 1);
        EXPECT_EQ(rect->left, 0);
        EXPECT_EQ(rect->top, 0);
        return {rect->right, rect->bottom};
    }
    bool IsOpen() { return dynamic_cast<CVSTGUIv2&>(Gui()).isOpen(); }
    std::size_t Count(std::string_view begin) {
        const auto calls = desk->Calls();
        return static_cast<std::size_t>(std::count_if(calls.begin(), calls.end(),
            [begin](const std::string& call) { return call.starts_with(begin); }));
    }
    std::size_t LineOf(std::string_view line) const {
        const auto& lines = desk->window.lines;
        return static_cast<std::size_t>(std::find(lines.begin(), lines.end(), line) - lines.begin());
    }
    /// An edit by the user's hand, on the window's thread.
    void Edit(float normal, std::int32_t id = Threshold) {
        desk->Run([&] {
            Gui().BeginEdit(id);
            Gui().SetParameter(id, normal);
            Gui().EndEdit(id);
        });
    }
    /// What the host has heard of edits, sizes and latencies since this was asked last.
    Calls Heard() {
        const std::lock_guard lock(_mutex);
        return std::exchange(_heard, {});
    }
    /// Whether all of it came on this thread.
    bool IsHeardHere() {
        const std::lock_guard lock(_mutex);
        const auto threads = std::exchange(_threads, {});
        return std::all_of(threads.begin(), threads.end(),
            [](const auto& thread) { return thread == std::this_thread::get_id(); });
    }
    GUI::CWidget& Named(std::u16string_view name) {
        for (auto* const widget : Gui().AllWidgets()) {
            if (widget->Name() == name) return *widget;
        }
        throw std::out_of_range(Utils::ToUtf8(name));
    }
    /// A patch of another plug-in, which is refused with a box.
    void WriteForeign() {
        WriteText(
            documents.Patch("a.kvp"), "<patch_format>textual</patch_format>\r\n<plugin_id>1</plugin_id>\r\n");
    }
    std::u16string Foreign() { return Utils::ToUtf16(documents.Patch("a.kvp").string()); }
    float Chosen() { return Device().GetParam(Threshold, 0); }

    std::atomic<bool> resizes = true;                     ///< the host, when it is asked
    std::function<void(const std::string&)> whileHearing; ///< what the host does in each call

private:
    std::intptr_t Hear(std::int32_t opcode, std::int32_t index, float option) {
        std::string call;
        switch (opcode) {
        case audioMasterBeginEdit:
            call = "begin " + std::to_string(index);
            break;
        case audioMasterAutomate:
            call = "value " + std::to_string(index) + " " + std::to_string(option).substr(0, 4);
            break;
        case audioMasterEndEdit:
            call = "end " + std::to_string(index);
            break;
        case audioMasterSizeWindow:
            call = "size " + std::to_string(index);
            break;
        case audioMasterIOChanged:
            call = "latency";
            break;
        default:
            return 0;
        }
        {
            const std::lock_guard lock(_mutex);
            _heard.push_back(call);
            _threads.push_back(std::this_thread::get_id());
        }
        if (whileHearing) whileHearing(call);
        return opcode == audioMasterSizeWindow && resizes ? 1 : 0;
    }

    std::mutex _mutex;
    Calls _heard;
    std::vector<std::thread::id> _threads;
};

} // namespace

// What a host learns before

TEST_F(Editor, IsAnnouncedWhereTheSystemHasWindows) {
    EXPECT_EQ(effect->Record().flags & effFlagsHasEditor, effFlagsHasEditor);
    desk->available = false;
    Make();
    EXPECT_EQ(effect->Record().flags & effFlagsHasEditor, 0);
    EXPECT_FALSE(Open());
    EXPECT_EQ(Count("Open"), 0u);
}

TEST_F(Editor, AsksTheSystemNothingBeforeTheHostWantsAnEditor) {
    Chunk(false);
    Idle();
    Close();
    EXPECT_EQ(desk->Calls(), Calls{});
}

TEST_F(Editor, HasARectangleBeforeItIsOpened) {
    EXPECT_EQ(Rectangle(), (std::pair{754, 553}));
    EXPECT_EQ(desk->Calls(), Calls{"FirstWidth 754"}) << "no library, no window";
}

TEST_F(Editor, BeginsAsWideAsTheDisplaysDensityWants) {
    desk->firstWidth = 1508;
    EXPECT_EQ(Gui().Width(), 754);
    EXPECT_EQ(Rectangle(), (std::pair{1508, 1106}));
    OpenAndSettle();
    EXPECT_EQ(Count("FirstWidth"), 1u);
    EXPECT_EQ(Count("Open 1508x1106"), 1u);
    EXPECT_EQ(desk->window.Count("Create 1508x1106 60"), 1u);
}

TEST_F(Editor, FindsItsFirstSizeWhenItIsOpenedWithoutTheQuestionForIt) {
    desk->firstWidth = 1131;
    OpenAndSettle();
    EXPECT_EQ(Count("Open 1131x829"), 1u);
    EXPECT_EQ(Rectangle(), (std::pair{1131, 829}));
}

TEST_F(Editor, BeginsWithTheWidthOfThePatchOrTheUser) {
    desk->firstWidth = 1508;
    SetChunk("<patch_format>textual</patch_format>\r\n<gui_width>600</gui_width>\r\n", false);
    EXPECT_EQ(Rectangle(), (std::pair{600, 440}));
    GUI::StoreNumber(u"Width", 1000);
    Make();
    EXPECT_EQ(Rectangle(), (std::pair{1000, 733}));
    OpenAndSettle();
    EXPECT_EQ(Count("FirstWidth"), 0u);
}

// Opening

TEST_F(Editor, OpensAWindowOnAThreadOfItsOwnAndShowsItWithAllPictures) {
    OpenAndSettle();
    EXPECT_EQ(desk->Calls(), (Calls{"FirstWidth 754", "BeginPictures", "Open 754x553"}));
    EXPECT_NE(desk->painter, std::this_thread::get_id());
    EXPECT_LT(LineOf("Create 754x553 60"), LineOf("Prepare"));
    EXPECT_LT(LineOf("Prepare"), LineOf("Show"));
    EXPECT_LT(LineOf("Show"), desk->window.lines.size());
    EXPECT_EQ(desk->window.parent, &parents[0]);
    EXPECT_TRUE(desk->window.shown);
    EXPECT_TRUE(Gui().IsHistoryEnabled());
    EXPECT_TRUE(renderers.Live().IsReady());
    EXPECT_TRUE(IsOpen());
}

TEST_F(Editor, PreparesEachPictureThatIsSeenOnceAndInItsSize) {
    SetChunk("<patch_format>textual</patch_format>\r\n<gui_width>1508</gui_width>\r\n", false);
    OpenAndSettle();
    const auto count = [this](std::string_view stem, std::int32_t width, std::int32_t height) {
        const auto name = Utils::ToUtf16(Panel::SpriteOf(stem).image);
        return std::count_if(desk->wishes.begin(), desk->wishes.end(), [&](const auto& wish) {
            return wish.name == name && wish.width == width && wish.height == height;
        });
    };
    EXPECT_EQ(count("fader", 122, 674), 1);
    EXPECT_EQ(count("meterled", 26, 620), 1);
    EXPECT_EQ(count("gui_front_root_panel_1500px", 1508, 726), 1);
    EXPECT_EQ(count("lamp_2", 30, 30), 0) << "hidden";
    std::set<std::tuple<std::string_view, double, double>> seen;
    for (const auto& row : Panel::Rows()) {
        if (row.sprite != nullptr && row.visible) seen.emplace(row.sprite->image, row.rect.w, row.rect.h);
    }
    EXPECT_EQ(desk->wishes.size(), seen.size());
}

TEST_F(Editor, NeedsAParent) {
    EXPECT_EQ(effect->Dispatch(effEditOpen, 0, 0, nullptr), 0);
    EXPECT_FALSE(dynamic_cast<CVSTGUIv2&>(Gui()).open(nullptr));
    EXPECT_EQ(Count("Open"), 0u);
}

TEST_F(Editor, NamesALibraryThatIsMissing) {
    desk->missing = u"libexample.so.1";
    const CAddedLog log;
    EXPECT_FALSE(Open());
    EXPECT_NE(log.Text().find("Error=The editor needs libexample.so.1"), std::string::npos) << log.Text();
    EXPECT_EQ(Count("Open"), 0u);
    EXPECT_FALSE(IsOpen());
    desk->missing.clear();
    OpenAndSettle();
    EXPECT_TRUE(desk->window.shown);
}

TEST_F(Editor, StaysClosedWithoutAWindowAndMayBeOpenedLater) {
    desk->opens = false;
    EXPECT_FALSE(Open());
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(Count("EndPictures"), 1u);
    Read("<fx_names>a</fx_names>");
    EXPECT_EQ(dynamic_cast<GUI::CLabel&>(Named(u"ToolBtnFx1")).Text(), u"a") << "the widgets are free again";
    desk->opens = true;
    OpenAndSettle();
    EXPECT_TRUE(desk->window.shown);
}

TEST_F(Editor, ThatIsOpenIsShownInTheSameParent) {
    OpenAndSettle();
    desk->Run([this] { Gui().Show(false); });
    EXPECT_TRUE(Open());
    desk->Tick();
    EXPECT_TRUE(desk->window.shown);
    EXPECT_EQ(Count("Open"), 1u);
    EXPECT_EQ(Count("Close"), 0u);
    EXPECT_EQ(desk->window.Count("Create"), 1u);
}

TEST_F(Editor, ThatIsOpenIsOpenedAnewInAnotherParent) {
    OpenAndSettle();
    EXPECT_TRUE(Open(1));
    desk->Settle();
    EXPECT_EQ(desk->Calls(), (Calls{"FirstWidth 754", "BeginPictures", "Open 754x553", "Close", "EndPictures",
                                 "BeginPictures", "Open 754x553"}));
    EXPECT_EQ(desk->window.parent, &parents[1]);
    EXPECT_EQ(desk->window.Count("Reparent"), 0u) << "known hosts crash with that";
    EXPECT_EQ(desk->window.Count("Destroy"), 1u);
}

TEST_F(Editor, WhoseWindowWasTakenAwayStaysOpenAndOpensAfresh) {
    OpenAndSettle();
    desk->Run([this] {
        desk->window.client->OnGone();
        desk->window.client = nullptr;
    });
    EXPECT_TRUE(IsOpen());
    EXPECT_EQ(Rectangle(), (std::pair{754, 553}));
    EXPECT_TRUE(Open());
    desk->Settle();
    EXPECT_EQ(Count("Open"), 2u);
    EXPECT_TRUE(desk->window.shown);
    EXPECT_TRUE(Open());
    desk->Settle();
    EXPECT_EQ(Count("Open"), 2u) << "this one is there";
}

// While it is open

TEST_F(Editor, LeavesTheWidgetsToTheWindowsThread) {
    OpenAndSettle();
    const auto text = [this] {
        std::u16string shown;
        desk->Run([&] { shown = dynamic_cast<GUI::CLabel&>(Named(u"ToolBtnFx1")).Text(); });
        return shown;
    };
    Read("<fx_names>a</fx_names>");
    EXPECT_EQ(text(), u"1");
    desk->Tick();
    EXPECT_EQ(text(), u"a");
    Close();
    Read("<fx_names>b</fx_names>");
    EXPECT_EQ(dynamic_cast<GUI::CLabel&>(Named(u"ToolBtnFx1")).Text(), u"b");
}

TEST_F(Editor, LeavesTheWidgetsAloneBeforeItsThreadBegins) {
    std::u16string shown;
    desk->whileOpening = [&] {
        Read("<fx_names>a</fx_names>");
        shown = dynamic_cast<GUI::CLabel&>(Named(u"ToolBtnFx1")).Text();
    };
    OpenAndSettle();
    EXPECT_EQ(shown, u"1");
    EXPECT_EQ(dynamic_cast<GUI::CLabel&>(Named(u"ToolBtnFx1")).Text(), u"a") << "it begins with that";
}

TEST_F(Editor, DrawsThePanelAndMovesItsMeters) {
    OpenAndSettle();
    EXPECT_GT(renderers.Calls().size(), 1u);
    for (int n = 0; n < 40; ++n) {
        Advance(16);
        desk->Tick();
    }
    renderers.Calls().clear();
    desk->Tick();
    EXPECT_EQ(renderers.Calls(), Calls{}) << "nothing moves";
    std::vector<std::vector<float>> sound(2, std::vector<float>(512, 0.5f));
    effect->Dispatch(effSetBlockSize, 0, 512);
    effect->Process(sound);
    desk->Tick();
    desk->Tick();
    EXPECT_EQ(std::count(renderers.Calls().begin(), renderers.Calls().end(), "Present"), 1);
}

TEST_F(Editor, SetsWhatTheUserDragsAndPresses) {
    OpenAndSettle();
    desk->Run([this] { robot.Drag({302, 200}, {302, 300}); }); // the threshold's fader
    EXPECT_LT(Chosen(), 1.0f);
    EXPECT_GT(Chosen(), 0.0f);
    EXPECT_EQ(Device().GetParam(34, 0), 1.0f);
    desk->Run([this] { robot.Click(377, 133); }); // the limiter's button
    EXPECT_EQ(Device().GetParam(34, 0), 0.0f);
    desk->Run([this] { robot.Click(669, 65); }); // the button of group 4
    EXPECT_EQ(Device().GetCurrentGroup(), 3);
}

TEST_F(Editor, UndoesAndRedoesWithLeftControl) {
    OpenAndSettle();
    desk->Run([this] { robot.Drag({302, 200}, {302, 300}); });
    const float dragged = Chosen();
    const auto press = [this](std::uint32_t key, bool control) {
        desk->Run([&] {
            desk->window.leftControl = control;
            robot.Key(key);
        });
        desk->Tick();
        return Chosen();
    };
    EXPECT_EQ(press(GUI::KeyZ, false), dragged);
    EXPECT_EQ(press(GUI::KeyY, true), dragged) << "nothing to redo";
    EXPECT_EQ(press(GUI::KeyZ, true), 1.0f);
    EXPECT_EQ(press(GUI::KeyZ, true), 1.0f) << "nothing more to undo";
    EXPECT_EQ(press(GUI::KeyY, false), 1.0f);
    EXPECT_EQ(press(GUI::KeyY, true), dragged);
    EXPECT_EQ(press(GUI::KeyF1 + 1, true), dragged);
    desk->Run([this] { Gui().EnableHistory(false); });
    EXPECT_EQ(press(GUI::KeyZ, true), dragged);
}

#if !defined(_WIN32)
TEST_F(Editor, OpensTheUserGuideWithF1) {
    const auto folder = ScratchFolder() / "viewer";
    const auto said = folder / "said";
    WriteText(folder / "xdg-open", "#!/bin/sh\necho \"$1\" >'" + said.string() + ".new'\nmv '" +
                                       said.string() + ".new' '" + said.string() + "'\n");
    std::filesystem::permissions(folder / "xdg-open", std::filesystem::perms::owner_all);
    const std::string before = std::getenv("PATH");
    setenv("PATH", (folder.string() + ":" + before).c_str(), 1);
    const auto guide = documents.Patch("Tessel User Guide.pdf");
    WriteText(guide, "guide");
    OpenAndSettle();
    desk->Run([this] { robot.Key(GUI::KeyF1); });
    for (int n = 0; n < 1000 && !std::filesystem::exists(said); ++n)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    setenv("PATH", before.c_str(), 1);
    EXPECT_EQ(ReadText(said), guide.string() + "\n");
}
#endif

// Its size

TEST_F(Editor, IsDraggedToAnotherSizeAtItsRightEdge) {
    OpenAndSettle();
    Idle(); // the latency
    Heard();
    const auto move = [this](std::int32_t x) {
        desk->Run([&, x] { robot.Move(x, 100); });
        return std::pair{desk->window.width, desk->window.height};
    };
    desk->Run([this] { robot.Press(750, 100); });
    EXPECT_EQ(move(846), (std::pair{850, 623}));
    EXPECT_EQ(move(946), (std::pair{950, 696}));
    EXPECT_EQ(move(100), (std::pair{500, 366})) << "the smallest";
    EXPECT_EQ(move(846), (std::pair{850, 623}));
    EXPECT_EQ(Heard(), Calls{});
    EXPECT_EQ(GUI::StoredNumber(u"Width"), std::nullopt) << "while the button is down";
    desk->Run([this] { robot.Release(846, 100); });
    EXPECT_EQ(GUI::StoredNumber(u"Width"), 850u);
    EXPECT_EQ(move(746), (std::pair{850, 623})) << "the drag is over";
    Idle();
    EXPECT_EQ(Heard(), Calls{"size 850"});
    EXPECT_EQ(Rectangle(), (std::pair{850, 623}));
    Close();
    Make();
    EXPECT_EQ(Rectangle(), (std::pair{850, 623})) << "of the next editor, too";
}

TEST_F(Editor, IsNotDraggedElsewhere) {
    OpenAndSettle();
    desk->Run([this] { robot.Drag({738, 100}, {838, 100}); });
    EXPECT_EQ(desk->window.width, 754);
    desk->Run([this] { robot.Drag({750, 100}, {838, 100}, 10, GUI::MouseRight); });
    EXPECT_EQ(desk->window.width, 754);
}

TEST_F(Editor, IsNoLargerThanItsRendererCanDraw) {
    OpenAndSettle();
    const auto resized = [this](std::int32_t mostWidth, std::int32_t mostHeight) {
        desk->Run([&] {
            Gui().ResizeTo(754, 553);
            renderers.Live().maxWidth = mostWidth;
            renderers.Live().maxHeight = mostHeight;
            Gui().ResizeTo(1508, 1106);
        });
        return std::pair{desk->window.width, desk->window.height};
    };
    EXPECT_EQ(resized(1024, 1024), (std::pair{1024, 553})) << "the height of the size before";
    EXPECT_EQ(resized(4096, 512), (std::pair{698, 512}));
    EXPECT_EQ(resized(0, 512), (std::pair{1508, 1106})) << "no limit";
    EXPECT_EQ(resized(512, 0), (std::pair{1508, 1106}));
    EXPECT_EQ(resized(1508, 1106), (std::pair{1508, 1106}));
}

TEST_F(Editor, GivesTheHostsWindowTheSizeThatTheHostRefuses) {
    OpenAndSettle();
    desk->Run([this] { Gui().ResizeTo(850, 623); });
    Idle();
    EXPECT_TRUE(desk->ParentSizes().empty()) << "the host has done so";
    resizes = false;
    desk->Run([this] { Gui().ResizeTo(950, 696); });
    EXPECT_TRUE(desk->ParentSizes().empty()) << "the host has not been asked yet";
    Idle();
    EXPECT_EQ(desk->ParentSizes(), (std::vector<std::pair<std::int32_t, std::int32_t>>{{950, 696}}));
    desk->Run([this] { Gui().ResizeTo(850, 623); });
    Close();
    Idle();
    EXPECT_EQ(desk->ParentSizes().size(), 1u);
}

// What the host hears

TEST_F(Editor, TellsTheHostOfEditsInItsIdleCallsAlone) {
    OpenAndSettle();
    desk->Tick();
    Idle(); // the latency
    Heard();
    IsHeardHere();
    Edit(0.25f);
    desk->Tick();
    Advance(5000);
    desk->Tick();
    EXPECT_EQ(Heard(), Calls{});
    Idle();
    EXPECT_EQ(Heard(), (Calls{"begin 4", "value 4 0.25"}));
    Advance(100);
    desk->Tick();
    EXPECT_EQ(Heard(), Calls{});
    Idle();
    EXPECT_EQ(Heard(), Calls{"end 4"});
    EXPECT_TRUE(IsHeardHere());
}

TEST_F(Editor, TellsTheHostOfLatenciesAndSizesInItsIdleCallsAlone) {
    OpenAndSettle();
    desk->Run([this] { Gui().ResizeTo(850, 623); });
    Advance(5000);
    desk->Tick();
    EXPECT_EQ(Heard(), Calls{}) << "not even a host that makes none";
    Idle();
    EXPECT_EQ(Heard(), (Calls{"size 850", "latency"}));
    EXPECT_TRUE(IsHeardHere());
}

TEST_F(Editor, TellsOfItsEditsAfterAnEditOnAThreadOfTheHosts) {
    OpenAndSettle();
    Edit(0.25f);
    EXPECT_EQ(Heard(), Calls{});
    Device().State().SetParameter(32, 0.5f);
    EXPECT_EQ(Heard(), (Calls{"begin 4", "value 4 0.25", "value 0 0.50"}));
    EXPECT_TRUE(IsHeardHere());
}

TEST_F(Editor, TellsASilentHostOfEditsAfterASecond) {
    OpenAndSettle();
    Advance(999);
    Edit(0.25f);
    EXPECT_EQ(Heard(), Calls{});
    Advance(1);
    desk->Tick();
    EXPECT_EQ(Heard(), (Calls{"begin 4", "value 4 0.25"}));
    Advance(99);
    desk->Tick();
    EXPECT_EQ(Heard(), Calls{});
    Advance(1);
    desk->Tick();
    EXPECT_EQ(Heard(), Calls{"end 4"});
    EXPECT_FALSE(IsHeardHere()) << "the window's thread is";
}

TEST_F(Editor, TellsNothingDirectlyOnceTheHostHasIdled) {
    OpenAndSettle();
    Advance(2000);
    Edit(0.25f);
    EXPECT_EQ(Heard().size(), 2u);
    Idle();
    Heard();
    Advance(100000);
    Edit(0.5f);
    EXPECT_EQ(Heard(), Calls{});
    Close();
    Heard();
    OpenAndSettle();
    Advance(2000);
    Edit(0.75f);
    EXPECT_EQ(Heard(), Calls{}) << "nor when it is opened again";
}

TEST_F(Editor, CountsTheSecondFromItsOpening) {
    Advance(5000);
    OpenAndSettle();
    Edit(0.25f);
    EXPECT_EQ(Heard(), Calls{});
    Close();
    Heard();
    Advance(5000);
    OpenAndSettle();
    Edit(0.5f);
    EXPECT_EQ(Heard(), Calls{});
}

TEST_F(Editor, AnswersAnIdleCallWhileAnotherThreadHasItsTurn) {
    OpenAndSettle();
    Edit(0.25f);
    const Utils::CTurn turn(Device().State().Turns());
    std::thread([this] { Idle(); }).join(); // would wait for this turn
    EXPECT_EQ(Heard(), (Calls{"begin 4", "value 4 0.25"}));
}

TEST_F(Editor, InAWindowOfTheHostsThreadTellsOfEditsAfterTheMessage) {
    desk->ownThread = false;
    ASSERT_TRUE(Open());
    Calls during;
    desk->Run([&] {
        Gui().BeginEdit(Threshold);
        Gui().SetParameter(Threshold, 0.25f);
        Gui().EndEdit(Threshold);
        during = Heard();
    });
    EXPECT_EQ(during, Calls{}) << "the host may end the widgets that are at work";
    EXPECT_EQ(Heard(), (Calls{"begin 4", "value 4 0.25"}));
    Advance(5000);
    EXPECT_EQ(Heard(), Calls{});
    desk->Tick();
    EXPECT_EQ(Heard(), Calls{"end 4"});
    Idle();
    EXPECT_EQ(Heard(), Calls{"latency"});
}

TEST_F(Editor, InAWindowOfTheHostsThreadTellsAtOnceOfWhatNoMessageHasChanged) {
    desk->ownThread = false;
    ASSERT_TRUE(Open());
    desk->Settle();
    Gui().BeginEdit(Threshold);
    Gui().SetParameter(Threshold, 0.25f);
    EXPECT_EQ(Heard(), (Calls{"begin 4", "value 4 0.25"}));
    Gui().EndEdit(Threshold);
}

TEST_F(Editor, InAWindowOfTheHostsThreadMayEndWithTheInstanceInsideACall) {
    desk->ownThread = false;
    ASSERT_TRUE(Open());
    bool ended = false;
    whileHearing = [&](const std::string& call) {
        if (!call.starts_with("value")) return;
        whileHearing = nullptr;
        effect.reset();
        ended = true;
    };
    desk->Run([&] {
        Gui().BeginEdit(Threshold);
        Gui().SetParameter(Threshold, 0.25f);
        EXPECT_FALSE(ended);
    });
    EXPECT_TRUE(ended);
}

TEST_F(Editor, InAWindowOfTheHostsThreadShowsErrorsAfterTheMessage) {
    desk->ownThread = false;
    dialogs.errorsWait = true;
    WriteForeign();
    Make(); // finds it, and holds the error
    EXPECT_EQ(dialogs.errors.size(), 0u);
    ASSERT_TRUE(Open());
    EXPECT_EQ(dialogs.errors.size(), 0u) << "the host waits for its call";
    desk->Settle();
    EXPECT_EQ(dialogs.errors.size(), 1u);
    std::size_t during = 0;
    desk->Run([&] {
        EXPECT_FALSE(Device().State().OpenPatch(Foreign()));
        during = dialogs.errors.size();
    });
    EXPECT_EQ(during, 1u) << "the host may end the widgets that are at work";
    EXPECT_EQ(dialogs.errors.size(), 2u);
    desk->Settle();
    EXPECT_EQ(dialogs.errors.size(), 2u);
    EXPECT_FALSE(Device().State().OpenPatch(Foreign()));
    EXPECT_EQ(dialogs.errors.size(), 3u) << "at once when no message is handled";
}

TEST_F(Editor, InAWindowOfTheHostsThreadMayEndWithTheInstanceInsideABox) {
    desk->ownThread = false;
    dialogs.errorsWait = true;
    WriteForeign();
    ASSERT_TRUE(Open());
    dialogs.whileOpen = [this] { effect.reset(); };
    desk->Run([&] {
        EXPECT_FALSE(Device().State().OpenPatch(Foreign()));
        EXPECT_NE(effect, nullptr);
    });
    EXPECT_EQ(effect, nullptr);
}

TEST_F(Editor, InAWindowOfTheHostsThreadShowsErrorsAtOnceAfterItHasClosedAtWork) {
    desk->ownThread = false;
    dialogs.errorsWait = true;
    ASSERT_TRUE(Open());
    Close(); // before a message has come
    WriteForeign();
    EXPECT_FALSE(Device().State().OpenPatch(Foreign()));
    EXPECT_EQ(dialogs.errors.size(), 1u);
    ASSERT_TRUE(Open());
    desk->Run([this] { Close(); });
    EXPECT_FALSE(Device().State().OpenPatch(Foreign()));
    EXPECT_EQ(dialogs.errors.size(), 2u);
}

// Closing

TEST_F(Editor, ClosesItsWindowThenItsPicturesAndTellsTheRest) {
    OpenAndSettle();
    desk->Tick(); // finds a latency
    desk->Run([this] {
        robot.Press(302, 200);
        robot.Move(302, 260);
    });
    EXPECT_TRUE(Device().IsEdited(4));
    EXPECT_EQ(Heard(), Calls{});
    Close();
    EXPECT_FALSE(Device().IsEdited(4)) << "the drag is over";
    const auto heard = Heard();
    ASSERT_EQ(heard.size(), 4u);
    EXPECT_EQ(heard[0], "latency");
    EXPECT_EQ(heard[1], "begin 4");
    EXPECT_TRUE(heard[2].starts_with("value 4 "));
    EXPECT_EQ(heard[3], "end 4");
    EXPECT_TRUE(IsHeardHere());
    EXPECT_EQ(
        desk->Calls(), (Calls{"FirstWidth 754", "BeginPictures", "Open 754x553", "Close", "EndPictures"}));
    EXPECT_LT(LineOf("Hide"), LineOf("Destroy"));
    EXPECT_LT(LineOf("Destroy"), desk->window.lines.size());
    EXPECT_FALSE(Gui().GPU().IsReady()) << "its renderer has ended";
    EXPECT_FALSE(Gui().IsHistoryEnabled());
    EXPECT_FALSE(IsOpen());
    Idle();
    EXPECT_EQ(Heard(), Calls{});
}

TEST_F(Editor, MayBeClosedTwiceAndOpenedAgain) {
    for (int n = 0; n < 10; ++n) {
        OpenAndSettle();
        desk->Tick();
        Close();
        Close();
    }
    EXPECT_EQ(Count("Open"), 10u);
    EXPECT_EQ(Count("Close"), 10u);
    EXPECT_EQ(desk->window.Count("Create"), 10u);
    EXPECT_EQ(desk->window.Count("Destroy"), 10u);
}

TEST_F(Editor, IsClosedFirstWhenTheInstanceEnds) {
    OpenAndSettle();
    desk->Tick(); // finds a latency
    desk->Run([this] {
        robot.Press(302, 200);
        robot.Move(302, 260);
    });
    effect.reset();
    const auto heard = Heard();
    ASSERT_EQ(heard.size(), 4u);
    EXPECT_EQ(heard[3], "end 4");
    EXPECT_TRUE(IsHeardHere());
    EXPECT_EQ(desk->Calls(),
        (Calls{"FirstWidth 754", "BeginPictures", "Open 754x553", "Close", "EndPictures", "Gone"}));
}

TEST_F(Editor, MayBeClosedInsideADirectCall) {
    OpenAndSettle();
    desk->Tick(); // finds a latency
    Advance(2000);
    whileHearing = [this](const std::string& call) {
        if (call != "begin 4") return;
        Close();
        Device().State().SetParameter(32, 0.5f); // this thread is the host's now
    };
    Edit(0.25f);
    EXPECT_EQ(Heard(), (Calls{"begin 4", "latency", "value 4 0.25", "end 4", "value 0 0.50"}));
    EXPECT_FALSE(IsOpen());
    whileHearing = nullptr;
    EXPECT_EQ(Count("Close"), 1u);
    OpenAndSettle();
    EXPECT_TRUE(desk->window.shown);
    Edit(0.5f);
    EXPECT_EQ(Heard(), Calls{}) << "a second has to pass again";
    Advance(1000);
    desk->Tick();
    EXPECT_EQ(Heard(), (Calls{"begin 4", "value 4 0.50"}));
}

TEST_F(Editor, MayBeClosedByAnotherThreadDuringADirectCall) {
    OpenAndSettle();
    desk->Tick(); // finds a latency
    Advance(2000);
    whileHearing = [this](const std::string& call) {
        if (call == "begin 4") std::thread([this] { Close(); }).join();
    };
    Edit(0.25f);
    EXPECT_EQ(Heard(), (Calls{"begin 4", "latency", "value 4 0.25", "end 4"}));
    EXPECT_FALSE(IsOpen());
}

TEST_F(Editor, MayEndWithItsInstanceInsideADirectCall) {
    OpenAndSettle();
    desk->Tick(); // finds a latency
    Advance(2000);
    whileHearing = [this](const std::string& call) {
        if (call == "begin 4") effect.reset();
    };
    Edit(0.25f);
    EXPECT_EQ(Heard(), (Calls{"begin 4", "latency", "value 4 0.25", "end 4"}));
    EXPECT_EQ(Count("Gone"), 1u);
}

TEST_F(Editor, MayBeClosedInsideAnIdleCallsQuestion) {
    OpenAndSettle();
    resizes = false;
    desk->Run([this] { Gui().ResizeTo(850, 623); });
    whileHearing = [this](const std::string& call) {
        if (call == "size 850") Close();
    };
    Idle();
    whileHearing = nullptr;
    EXPECT_TRUE(desk->ParentSizes().empty());
    EXPECT_FALSE(IsOpen());
}
