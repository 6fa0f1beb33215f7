// An editor that a user works with, while memory runs out at one allocation after another. What was under way
// may be lost; the host, its calls and the editor itself must go on, and the next attempt must succeed.

#include "panel/layout.h"
#include "tests/support/dialog_script.h"
#include "tests/support/failing_allocations.h"
#include "tests/support/own_settings.h"
#include "tests/support/state_fixture.h"
#include "tests/support/watched_system.h"
#include "tests/support/x_test_host.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Tests {

namespace {

class EditorMemory : public testing::Test {
protected:
    CXTestHost windows{CXTestHost::SOptions{.width = 1000, .height = 750}};
    CDialogScripts scripts; // after the display, whose server is one of the user's programs
    CUserDocuments documents;
    COwnSettings settings;
    CRecordingHost host;
    CPresentLoop loop;
    std::atomic<int> begun = 0; ///< edits
    std::atomic<int> ended = 0;
    std::unique_ptr<CHostedEffect> effect;

    void SetUp() override {
        CFailingNew::StandAside(true); // the user's thread, except in calls of the host
        scripts.Put("zenity", "exit 0");
        setenv("KAV_FILE_DIALOG", "list", 1);
        std::filesystem::create_directories(documents.Patch(""));
        host.record = false;
        host.answer = [this](VST::AEffect*, std::int32_t opcode, std::int32_t, void*, float) {
            if (opcode == VST::audioMasterBeginEdit) ++begun;
            if (opcode == VST::audioMasterEndEdit) ++ended;
            return std::intptr_t{0};
        };
        effect = std::make_unique<CHostedEffect>(
            host.Callback(), Utils::SMakerService{}, std::make_unique<CWatchedSystem>(loop));
        effect->Dispatch(VST::effMainsChanged, 0, 1);
    }
    void TearDown() override {
        effect.reset();
        unsetenv("KAV_FILE_DIALOG");
        CFailingNew::StandAside(false);
    }

    CXXXGUI& Gui() { return effect->Device().GUI(); }

    // The host, whose thread takes part while it calls

    std::intptr_t Call(std::int32_t opcode, std::intptr_t value = 0, void* pointer = nullptr) {
        CFailingNew::StandAside(false);
        const auto result = effect->Dispatch(opcode, 0, value, pointer);
        CFailingNew::StandAside(true);
        return result;
    }
    bool Open() {
        return Call(VST::effEditOpen, 0,
                   reinterpret_cast<void*>(static_cast<std::uintptr_t>(windows.Parent()))) == 1;
    }
    void Close() { Call(VST::effEditClose); }
    std::string Chunk() {
        void* data = nullptr;
        const auto size = Call(VST::effGetChunk, 0, &data);
        return size > 0 ? std::string(static_cast<const char*>(data), static_cast<std::size_t>(size))
                        : std::string();
    }
    bool SetChunk(std::string chunk) {
        return Call(VST::effSetChunk, static_cast<std::intptr_t>(chunk.size()), chunk.data()) == 1;
    }

    // The user

    /// Waits until the window's thread has dealt with what has been sent to it.
    void AwaitRounds(int rounds = 3) {
        const int before = loop.rounds;
        EXPECT_TRUE(Eventually([&] { return !loop.IsThere() || loop.rounds >= before + rounds; }));
    }
    void MoveTo(std::string_view name) {
        const auto& rect = Panel::RowOf(name).rect;
        windows.MoveTo(static_cast<std::int32_t>(rect.CentreX()), static_cast<std::int32_t>(rect.CentreY()));
    }
    void Click(std::string_view name, int button = 1) {
        MoveTo(name);
        windows.Click(button);
        AwaitRounds();
    }
    void Type(std::initializer_list<std::uint32_t> keys) {
        for (const auto key : keys) {
            windows.Type(key);
            AwaitRounds();
        }
    }
    void Drag(std::string_view name) {
        MoveTo(name);
        windows.Press(1);
        const auto& rect = Panel::RowOf(name).rect;
        for (std::int32_t dy = 8; dy <= 32; dy += 8)
            windows.MoveTo(
                static_cast<std::int32_t>(rect.CentreX()), static_cast<std::int32_t>(rect.CentreY()) - dy);
        windows.Release(1);
        AwaitRounds();
    }
    /// Whatever is still open or held.
    void GiveUp() {
        windows.Release(1);
        Type({XKB_KEY_Escape, XKB_KEY_Escape});
        windows.MoveTo(1, 1);
        AwaitRounds();
    }
    bool HasPopUp() {
        const auto all = windows.Children(windows.Root());
        return std::any_of(all.begin(), all.end(),
            [this](auto window) { return window != windows.Top() && windows.IsViewable(window); });
    }
    bool ShowsAPicture() {
        auto pixels = windows.Pixels(windows.Editor(), 0, 0, 300, 200);
        std::sort(pixels.begin(), pixels.end());
        return std::unique(pixels.begin(), pixels.end()) - pixels.begin() > 20;
    }

    /// One operation with each of its allocations failing, all in the long run; otherwise ever fewer of the
    /// later ones. `works`: a try in which none fails has its effect, and afterwards all is as before.
    void Sweep(const std::function<void()>& act, const std::function<bool()>& works) {
        const bool isLong = std::getenv("KAV_LONG") != nullptr;
        std::size_t tried = 0;
        std::size_t nth = 1;
        for (bool fails = true; fails; nth += isLong ? 1 : 1 + nth / 3, ++tried) {
            SCOPED_TRACE(nth);
            {
                const CFailingNew failing(nth);
                act();
                fails = CFailingNew::HasFailed();
            }
            GiveUp();
            ASSERT_TRUE(Chunk().starts_with("<patch_format>textual</patch_format>"));
            ASSERT_TRUE(Eventually([this] {
                Call(VST::effEditIdle);
                return begun == ended;
            })) << "an edit is still open";
            ASSERT_TRUE(works());
            GiveUp();
        }
        std::printf("%zu of about %zu allocations failed\n", tried - 1, nth - 1);
        EXPECT_GT(tried, 1u);
    }
    void OpenAndSweep(const std::function<void()>& act, const std::function<bool()>& works) {
        ASSERT_TRUE(Open());
        ASSERT_TRUE(Eventually([this] { return ShowsAPicture(); }));
        Sweep(act, works);
        Close();
    }
};

} // namespace

TEST_F(EditorMemory, RunsOutInOpeningAndClosing) {
    const auto openAndClose = [this] {
        if (!Open()) return;
        AwaitRounds();
        Close();
    };
    Sweep(openAndClose, [this] {
        EXPECT_TRUE(Open());
        const bool shows = Eventually([this] { return ShowsAPicture(); });
        Close();
        return shows;
    });
}

TEST_F(EditorMemory, RunsOutInADrag) {
    OpenAndSweep([this] { Drag("Main Input Gain"); },
        [this] {
            const int before = begun;
            Drag("Main Output Gain");
            return Eventually([&] {
                Call(VST::effEditIdle);
                return begun > before && begun == ended;
            });
        });
}

TEST_F(EditorMemory, RunsOutUnderAHint) {
    const auto hover = [this] {
        MoveTo("Main Input Gain");
        AwaitRounds(40); // until it is shown
        windows.MoveTo(1, 1);
        AwaitRounds();
    };
    OpenAndSweep(hover, [this] { return ShowsAPicture(); });
}

TEST_F(EditorMemory, RunsOutInAMenu) {
    OpenAndSweep(
        [this] {
            Click("Oversampling");
            Type({XKB_KEY_Down, XKB_KEY_Down, XKB_KEY_Return});
        },
        [this] {
            Click("Oversampling");
            const bool isUp = Eventually([this] { return HasPopUp(); });
            Type({XKB_KEY_Escape});
            return isUp && Eventually([this] { return !HasPopUp(); });
        });
}

TEST_F(EditorMemory, RunsOutInATextBox) {
    OpenAndSweep(
        [this] {
            Click("Main Input Gain", 3);
            Type({XKB_KEY_minus, XKB_KEY_3, XKB_KEY_Return});
        },
        [this] {
            const auto before = Chunk();
            Click("Main Input Gain", 3);
            Type({XKB_KEY_minus, XKB_KEY_9, XKB_KEY_Return});
            const bool isTyped = Eventually([&] { return Chunk() != before; });
            SetChunk(before);
            AwaitRounds();
            return isTyped;
        });
}

TEST_F(EditorMemory, RunsOutInTheListOfFiles) {
    OpenAndSweep(
        [this] {
            Click("ToolBtnSave");
            AwaitRounds(10);
            Type({XKB_KEY_a, XKB_KEY_Escape});
        },
        [this] {
            AwaitRounds(10);
            GiveUp();
            Click("ToolBtnSave");
            const bool isUp = Eventually([this] { return HasPopUp(); });
            AwaitRounds(10);
            Type({XKB_KEY_Escape});
            return isUp && Eventually([this] { return !HasPopUp(); });
        });
}

TEST_F(EditorMemory, RunsOutInTheHostsCallsAndWhatTheyShow) {
    const auto chunk = Chunk();
    const auto width = std::string("<gui_width>754<");
    auto wide = chunk;
    const auto place = wide.find(width);
    ASSERT_NE(place, std::string::npos);
    wide.replace(place, width.size(), "<gui_width>900<");
    OpenAndSweep(
        [&] {
            SetChunk(wide);
            AwaitRounds();
            Chunk();
            VST::ERect* rect = nullptr;
            Call(VST::effEditGetRect, 0, &rect);
            Call(VST::effEditIdle);
        },
        [&] {
            EXPECT_TRUE(SetChunk(wide));
            const auto has = [this](std::int32_t pixels) {
                return Eventually([&] { return windows.Place(windows.Editor()).width == pixels; });
            };
            const bool isWide = has(900);
            EXPECT_TRUE(SetChunk(chunk));
            return isWide && has(754);
        });
}

TEST_F(EditorMemory, RunsOutWhileTheRendererIsMadeAnew) {
    const auto makeAnew = [this] {
        loop.Run([this] {
            Gui().Frame().Guard([this] {
                Gui().Screen().Release();
                Gui().Screen().Create();
            });
        });
        AwaitRounds();
    };
    OpenAndSweep(makeAnew, [&] {
        makeAnew();
        return Eventually([this] { return ShowsAPicture(); });
    });
}

TEST_F(EditorMemory, RunsOutInTheAboutView) {
    OpenAndSweep(
        [this] {
            Click("ToolAbout");
            Type({XKB_KEY_End, XKB_KEY_Return});
            AwaitRounds(6);
            windows.MoveTo(300, 300);
            windows.Click(1);
            AwaitRounds(6);
        },
        [this] { return ShowsAPicture(); });
}

} // namespace KAV::Tests
