// A host that answers what it is told with a call from another thread, and waits for that call, as one does
// whose own lock is held. A lock of ours that is still held then never comes free: the test doesn't end.

#include "device_gui/fx_button.h"
#include "device_gui/patch_display.h"
#include "device_gui/routing_display.h"
#include "gui/value_display.h"
#include "tests/support/hand_clock.h"
#include "tests/support/state_fixture.h"

#include <thread>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class HostLock : public State {
protected:
    CHandClock clock;

    void Idle(std::uint32_t afterMs) {
        clock.Advance(afterMs);
        effect->Dispatch(VST::effEditIdle);
    }
    /// Runs an operation and counts what the host was told and could answer with a call of its own.
    template<typename TOperation>
    int Answered(TOperation operation) {
        int answered = 0;
        host.answer = [&](VST::AEffect*, std::int32_t, std::int32_t, void*, float) -> std::intptr_t {
            if (answered < 3) { // of up to a hundred alike
                std::thread([&] { answered += CallsBack() ? 1 : 0; }).join();
            }
            return 0;
        };
        operation();
        host.answer = nullptr;
        return answered;
    }
    bool CallsBack() {
        void* data = nullptr;
        return effect->Dispatch(VST::effGetChunk, 0, 0, &data) > 0;
    }
    void WritePatch(const std::string& name) {
        WriteText(documents.Patch(name),
            "<patch_format>textual</patch_format>\r\n<plugin_id>1936683628</plugin_id>\r\n<patch_name></"
            "patch_name>\r\n<param tag=\"33\" >0.25</param>\r\n");
    }
    void WriteRouting(const std::string& name, const std::string& map) {
        WriteText(documents.Routing(name),
            "<kav_input_routing>\r\n\t<name></name>\r\n\t<map>" + map + "</map>\r\n</kav_input_routing>");
    }
};

/// Boxes during which another thread asks for the state, and is waited for.
class CBoxesThatWait final : public Utils::IDialogs {
public:
    explicit CBoxesThatWait(std::function<bool()> ask) : _ask(std::move(ask)) { Utils::UseDialogs(this); }
    ~CBoxesThatWait() { Utils::UseDialogs(nullptr); }

    void OpenFile(const Utils::SFileQuestion&, Utils::PathAnswer receive) noexcept override {
        Wait();
        receive({});
    }
    void SaveFile(const Utils::SFileQuestion&, Utils::PathAnswer receive) noexcept override {
        Wait();
        receive({});
    }
    void ShowError(std::u16string_view, std::u16string_view) noexcept override { Wait(); }
    bool ErrorsWait() const noexcept override { return false; }

    int answered = 0;

private:
    void Wait() noexcept {
        std::thread([this] { answered += _ask() ? 1 : 0; }).join();
    }

    std::function<bool()> _ask;
};

} // namespace

TEST_F(HostLock, IsNotHeldWhileAStepOfHistoryIsReported) {
    Gui().EnableHistory(true);
    Widget<GUI::CValueDisplay>(2).Step(1); // oversampling
    Idle(100);
    Read("<param tag=\"33\" >0.25</param>");
    EXPECT_EQ(Answered([this] { Gui().Undo(); }), 3) << "a patch";
    EXPECT_EQ(Answered([this] { Gui().Undo(); }), 1) << "a widget";
    EXPECT_EQ(Answered([this] { Gui().Redo(); }), 1);
    EXPECT_EQ(Answered([this] { Gui().Redo(); }), 3);
}

TEST_F(HostLock, IsNotHeldWhileAnUndoneGroupIsReported) {
    Gui().EnableHistory(true);
    Gui().SetRouting("<map>0,-1|*|1,-1|*|2,-1</map>", 2);
    Device().SetParam(202, 1.0f, 0);
    Widget<CFxBtn>(2).SetValue(1.0f, true);
    EXPECT_GE(Answered([this] { Gui().Undo(); }), 2); // the two buttons
}

TEST_F(HostLock, IsNotHeldWhileAnEditIsReported) {
    EXPECT_EQ(Answered([this] { Widget<GUI::CValueDisplay>(2).Step(1); }), 2) << "begin, value";
    EXPECT_EQ(Answered([this] { Idle(100); }), 1) << "end";
    EXPECT_GE(Answered([this] { Widget<CFxBtn>(1).SetValue(1.0f, true); }), 2);
}

TEST_F(HostLock, IsNotHeldWhileAPatchIsReported) {
    for (const char* const name : {"a.kvp", "b.kvp"}) WritePatch(name);
    Renew();
    EXPECT_GE(Answered([this] { Gui().SelectPatch(1, true); }), 1);
    EXPECT_GE(Answered([this] { Widget<CPatch>().Step(-1); }), 1);
    EXPECT_GE(
        Answered([this] { Device().State().OpenPatch(Utils::FromSystemPath(documents.Patch("b.kvp"))); }), 1);
    Device().State().SwitchAB(0);
    EXPECT_EQ(Answered([this] { Device().State().SwitchAB(1); }), 3);
    EXPECT_EQ(Answered([this] { Device().State().CopyGroup(0, 1); }), 3);
    EXPECT_EQ(Answered([this] { SetChunk(Device().State().PatchText(0), true); }), 3);
}

TEST_F(HostLock, IsNotHeldWhileTheChannelsOfARoutingAreReported) {
    WriteRouting("a.kvt", "0,-1");
    WriteRouting("b.kvt", "0,-1|*|1,-1");
    Renew();
    EXPECT_EQ(Answered([this] { Device().State().SelectRouting(1, true); }), 3);
    EXPECT_EQ(Answered([this] { Gui().SetRouting("<map>0,-1</map>", -1); }), 3);
    EXPECT_EQ(Answered([this] { Device().State().ApplyRouting(); }), 3);
    EXPECT_EQ(Answered([this] { Widget<CRouting>().Step(-1); }), 3);
    EXPECT_EQ(Answered([this] { Gui().SaveRouting(Utils::FromSystemPath(documents.Routing("c.kvt"))); }), 3);
}

TEST_F(HostLock, IsNotHeldWhileALatencyIsReported) {
    Gui().OnFrame(16);
    EXPECT_EQ(Answered([this] { Idle(0); }), 1);
}

TEST_F(HostLock, IsNotHeldWhileASizeIsReported) {
    Gui().CreateGUIWindow();
    Gui().ResizeTo(900, 660);
    EXPECT_EQ(Answered([this] { Idle(0); }), 1);
}

TEST_F(HostLock, IsNotHeldWhileTheEditorCloses) {
    Gui().OnFrame(16);
    Widget<GUI::CValueDisplay>(2).Step(1);
    EXPECT_EQ(Answered([this] { effect->Dispatch(VST::effEditClose); }), 2) << "latency, end";
}

TEST_F(HostLock, IsNotHeldWhileABoxIsShown) {
    WritePatch("a.kvp");
    for (const char* const name : {"b.kvp", "c.fxp"}) {
        WriteText(documents.Patch(name),
            "<patch_format>textual</patch_format>\r\n<plugin_id>1</plugin_id>\r\n" + std::string(60, ' '));
    }
    Renew();
    CBoxesThatWait boxes([this] { return CallsBack(); });
    Device().State().SavePatch({}, 0);
    Device().State().OpenPatch({});
    Gui().SaveRouting({});
    EXPECT_EQ(boxes.answered, 3) << "questions";
    Gui().SelectPatch(1, false);
    Widget<CPatch>().Step(1);
    Device().State().OpenPatch(Utils::FromSystemPath(documents.Patch("c.fxp")));
    EXPECT_EQ(boxes.answered, 6) << "errors";
}

TEST_F(HostLock, IsNotHeldWhenAnAnswerArrives) {
    WritePatch("a.kvp");
    WriteRouting("a.kvt", "0,-1");
    Renew();
    dialogs.answersLater = true;
    Device().State().OpenPatch({});
    EXPECT_TRUE(CallsBack()) << "the question is open";
    EXPECT_GE(Answered([this] { dialogs.AnswerNext(Utils::FromSystemPath(documents.Patch("a.kvp"))); }), 1);
    Gui().SaveRouting({});
    EXPECT_EQ(Answered([this] { dialogs.AnswerNext(Utils::FromSystemPath(documents.Routing("b.kvt"))); }), 3);
}

TEST_F(HostLock, TheHostHearsOfAStepOfHistoryWhenItIsDone) {
    Gui().EnableHistory(true);
    Widget<GUI::CValueDisplay>(2).Step(1);
    Idle(100); // the end of that edit
    bool couldRedo = false;
    bool couldUndo = false;
    host.answer = [&](VST::AEffect*, std::int32_t, std::int32_t, void*, float) -> std::intptr_t {
        couldRedo = Gui().CanRedo();
        couldUndo = Gui().CanUndo();
        return 0;
    };
    Gui().Undo();
    EXPECT_TRUE(couldRedo);
    EXPECT_FALSE(couldUndo);
    Gui().Redo();
    EXPECT_FALSE(couldRedo);
    EXPECT_TRUE(couldUndo);
    host.answer = nullptr;
}
