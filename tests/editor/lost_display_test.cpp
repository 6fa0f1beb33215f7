// The display stops or dies, or the host destroys its window, whatever the user is doing just then and
// whichever renderer draws. Sound, the host's calls and the process must go on.

#include "platform/settings_store.h"
#include "tests/editor/editor_fixture.h"
#include "tests/editor/stopped_server.h"
#include "tests/support/dialog_script.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <tuple>

namespace KAV::Tests {

namespace {

using namespace VST;
using Clock = std::chrono::steady_clock;

enum class EDrawn : std::uint32_t { BySoftware, ByOpenGL }; // as it is stored
enum class EDoing { Nothing, Dragging, ChoosingFromAMenu, Typing, ChoosingAFile, InADialog };

/// A host's audio thread, one block after another.
class CSound final {
public:
    explicit CSound(AEffect& effect) : _effect(effect), _thread([this] { Run(); }) {}
    ~CSound() {
        _ends = true;
        _thread.join();
    }
    CSound(const CSound&) = delete;
    CSound& operator=(const CSound&) = delete;

    int Blocks() const noexcept { return _blocks; }

private:
    void Run() {
        constexpr std::int32_t frames = 128;
        std::array<float, frames> left{};
        std::array<float, frames> right{};
        std::array<float*, 2> channels{left.data(), right.data()};
        while (!_ends) {
            left.fill(0.5f);
            right.fill(-0.5f);
            _effect.processReplacing(&_effect, channels.data(), channels.data(), frames);
            ++_blocks;
            std::this_thread::sleep_for(std::chrono::microseconds(2667));
        }
    }

    AEffect& _effect;
    std::atomic<bool> _ends = false;
    std::atomic<int> _blocks = 0;
    std::thread _thread; // last
};

class LostDisplay : public CEditorFixture, public testing::WithParamInterface<std::tuple<EDrawn, EDoing>> {
protected:
    CDialogScripts scripts; // after the display, whose server is one of the user's programs
    std::optional<CEditorHost> host;
    xcb_window_t parent = 0; ///< where the fixture has one, too, that stays
    xcb_window_t editor = 0;

    static constexpr auto Root = Platform::ESettingsRoot::CurrentUser;
    static constexpr const char* Key = "Software/Kavelin/KAV Sorrel Limiter";

    static EDoing Doing() { return std::get<EDoing>(GetParam()); }

    void SetUp() override {
        const auto drawn = std::get<EDrawn>(GetParam());
        Platform::WriteSetting(Root, Key, "GFX", &drawn, sizeof(drawn));
        scripts.Put("zenity", "exec /bin/sleep 1000");
        setenv("KAV_FILE_DIALOG", Doing() == EDoing::InADialog ? "zenity" : "list", 1);
        parent = MakeParent();
        host.emplace(library);
        OpenEditor();
        ASSERT_EQ(StoredDrawn(), drawn) << "it can't, and another one draws";
        Begin();
    }
    void TearDown() override {
        host.reset();
        unsetenv("KAV_FILE_DIALOG");
    }

    static EDrawn StoredDrawn() {
        EDrawn drawn{};
        const auto bytes = Platform::ReadSetting(Root, Key, "GFX");
        if (bytes.size == sizeof(drawn)) std::memcpy(&drawn, bytes.data.get(), sizeof(drawn));
        return drawn;
    }
    xcb_window_t MakeParent() {
        const auto place = windows.Place(windows.Parent());
        const auto made = windows.MakeWindow(windows.Top(), place.x, place.y, place.width, place.height);
        windows.Show(made, true);
        return made;
    }
    void OpenEditor() {
        ASSERT_TRUE(host->Open(parent));
        const auto children = windows.Children(parent);
        ASSERT_EQ(children.size(), 1u);
        editor = children[0];
        EXPECT_TRUE(ShowsAPicture(editor));
    }
    /// The user begins, and isn't done.
    void Begin() {
        switch (Doing()) {
        case EDoing::Nothing:
            break;
        case EDoing::Dragging:
            Drag(MiddleOf("Main Input Gain"), 0, -40);
            ASSERT_TRUE(Until([&] { return host->Count(audioMasterAutomate) > 0; }));
            break;
        case EDoing::ChoosingFromAMenu:
            MoveTo(MiddleOf("Oversampling"));
            windows.Click(1);
            AwaitPopUp();
            break;
        case EDoing::Typing:
            MoveTo(MiddleOf("Main Input Gain"));
            windows.Click(3);
            ASSERT_TRUE(Until([&] { return windows.Focused() == editor; }));
            windows.Type('9');
            break;
        case EDoing::ChoosingAFile:
        case EDoing::InADialog:
            MoveTo(MiddleOf("ToolBtnSave"));
            windows.Click(1);
            if (Doing() == EDoing::ChoosingAFile) {
                AwaitPopUp();
            } else {
                ASSERT_GT(scripts.Process("zenity"), 0);
            }
            break;
        }
    }
    /// Every edit that has begun has ended.
    bool HasNoOpenEdit() const {
        return host->Count(audioMasterBeginEdit) == host->Count(audioMasterEndEdit);
    }
    /// All that a host calls now and then.
    void CallAll() {
        ExpectSoon("idle", [&] { host->Dispatch(effEditIdle); });
        ExpectSoon("size", [&] { EXPECT_GT(host->Rect().right, 0); });
        std::string chunk;
        ExpectSoon("saving", [&] { chunk = host->Chunk(); });
        ASSERT_FALSE(chunk.empty());
        ExpectSoon("restoring", [&] {
            EXPECT_EQ(
                host->Dispatch(effSetChunk, 0, static_cast<std::intptr_t>(chunk.size()), chunk.data()), 1);
        });
        ExpectSoon("a value", [&] {
            host->Run([&] {
                auto& effect = *host->Effect();
                effect.setParameter(&effect, 0, 1.0f - effect.getParameter(&effect, 0));
            });
        });
        char text[256] = {};
        ExpectSoon("a text", [&] { host->Dispatch(effGetParamDisplay, 0, 0, text); });
        ExpectSoon("another rate", [&] { host->Dispatch(effSetSampleRate, 0, 0, nullptr, 48000.0f); });
    }
    void ExpectEditorWorks() {
        const auto begun = host->Count(audioMasterBeginEdit);
        Drag(MiddleOf("Main Output Gain"), 0, -40);
        windows.Release(1);
        EXPECT_TRUE(Until([&] { return host->Count(audioMasterBeginEdit) == begun + 1; }));
        EXPECT_TRUE(Until([&] { return HasNoOpenEdit(); }));
    }
    void ExpectOpensAgain() {
        OpenEditor();
        EXPECT_TRUE(PopUps().empty());
        ExpectEditorWorks();
    }
};

std::string NameOf(const testing::TestParamInfo<LostDisplay::ParamType>& info) {
    constexpr std::array drawn{"BySoftware", "ByOpenGL"};
    constexpr std::array doing{
        "AtRest", "InADrag", "WithAMenu", "WhileTyping", "WithAListOfFiles", "WithADialog"};
    return std::string(doing.at(static_cast<std::size_t>(std::get<EDoing>(info.param)))) +
           drawn.at(static_cast<std::size_t>(std::get<EDrawn>(info.param)));
}

} // namespace

TEST_P(LostDisplay, ThatDiesEndsTheEditorAlone) {
    const int idles = host->Idles();
    windows.KillServer();
    EXPECT_TRUE(Until([&] { return host->Idles() > idles + 10; }));
    CallAll();
    ExpectSoon("closing", [&] { host->Close(); });
    EXPECT_TRUE(HasNoOpenEdit());
    EXPECT_FALSE(host->Open(parent));
    CallAll();
}

TEST_P(LostDisplay, ThatStopsLetsTheHostCloseTheEditor) {
    {
        const CStopped stopped(windows.Server());
        CallAll(); // and so there is something to draw
        ExpectSoon("closing", [&] { host->Close(); });
        EXPECT_TRUE(HasNoOpenEdit());
    }
    EXPECT_TRUE(Until([&] { return !windows.Exists(editor) && PopUps().empty(); }));
    windows.Release(1);
    ExpectOpensAgain();
}

TEST_P(LostDisplay, OrOnlyTheHostsWindowWhichIsDestroyed) {
    windows.Destroy(parent);
    EXPECT_TRUE(Until([&] { return !windows.Exists(editor) && PopUps().empty(); }));
    EXPECT_TRUE(Until([&] { return HasNoOpenEdit(); }));
    CallAll();
    ExpectSoon("closing", [&] { host->Close(); });
    windows.Release(1);
    parent = MakeParent();
    ExpectOpensAgain();
}

namespace {

auto EachRenderer() {
#if defined(KAV_SANITIZED) // the driver would take minutes
    return testing::Values(EDrawn::BySoftware);
#else
    return testing::Values(EDrawn::BySoftware, EDrawn::ByOpenGL);
#endif
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Each, LostDisplay,
    testing::Combine(
        EachRenderer(), testing::Values(EDoing::Nothing, EDoing::Dragging, EDoing::ChoosingFromAMenu,
                            EDoing::Typing, EDoing::ChoosingAFile, EDoing::InADialog)),
    NameOf);

namespace {

using StoppedDisplay = LostDisplay;

/// How long the display stands still.
std::chrono::seconds Standstill() {
    return std::chrono::seconds(std::getenv("KAV_LONG") != nullptr ? 20 : 4);
}

} // namespace

TEST_P(StoppedDisplay, StopsNeitherSoundNorHostAndShowsTheEditorAfterwards) {
    CSound sound(*host->Effect());
    {
        const CStopped stopped(windows.Server());
        const auto end = Clock::now() + Standstill();
        while (Clock::now() < end) {
            const auto idles = host->Idles();
            const auto blocks = sound.Blocks();
            CallAll();
            EXPECT_TRUE(Until([&] { return host->Idles() > idles && sound.Blocks() > blocks + 10; }));
        }
    }
    EXPECT_EQ(windows.Children(parent), std::vector{editor});
    const auto before = PictureOf(editor, "Threshold");
    host->Effect()->setParameter(host->Effect(), host->IndexOf("Threshold"), 0.1f);
    EXPECT_TRUE(Until([&] { return PictureOf(editor, "Threshold") != before; }));
    ExpectEditorWorks();
}

INSTANTIATE_TEST_SUITE_P(
    Each, StoppedDisplay, testing::Combine(EachRenderer(), testing::Values(EDoing::Nothing)), NameOf);

} // namespace KAV::Tests
