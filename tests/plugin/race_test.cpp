// Everything that may happen to one instance at once, each kind on a thread of its own. Under ThreadSanitizer
// it shows that every crossing is an atomic word or has a lock; everywhere, that no thread sees half of a
// change.

#include "device/parameter_table.h"
#include "device_gui/channel_button.h"
#include "device_gui/fx_button.h"
#include "device_gui/patch_display.h"
#include "device_gui/routing_display.h"
#include "device_gui/routing_edit.h"
#include "gui/value_widget.h"
#include "patch/patch_text.h"
#include "tests/support/hand_clock.h"
#include "tests/support/own_renderers.h"
#include "tests/support/own_settings.h"
#include "tests/support/state_fixture.h"
#include "tests/support/threaded_editor.h"
#include "tests/support/together.h"

#include <array>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <mutex>
#include <set>

using namespace KAV;
using namespace KAV::Tests;

namespace {

/// At least this often each thread comes round. The audio thread does so more often: it has the others for
/// listeners only.
constexpr int Rounds = 20;
constexpr int Blocks = 100;

constexpr int Variants = 10;                    // of each kind of name
constexpr std::int32_t OversamplingIndex = 100; // left alone: it costs up to eight times the audio
constexpr std::size_t AllParameters = 109;
constexpr std::size_t AllGroups = 4;

/// How long the threads meet: as long as ThreadSanitizer needs for the seldom ways through the code.
std::chrono::seconds Length() {
    return std::chrono::seconds(std::getenv("KAV_LONG") != nullptr ? 60 : KAV_RACE_SECONDS);
}

std::string Numbered(char kind, int n) {
    return kind + std::to_string(n % Variants);
}

/// Of a patch: p from chunks, n from the host, a to c the user's files.
bool IsPatchName(const std::string& name) {
    if (name.size() == 1) return name[0] >= 'a' && name[0] <= 'c';
    return name.size() == 2 && (name[0] == 'p' || name[0] == 'n') && std::isdigit(name[1]) != 0;
}

/// Its number also says how many entries it has, so that a mixture of two is seen.
std::string RoutingOf(int n) {
    std::string map = "0,-1";
    for (int entry = 1; entry <= n % Variants % 3; ++entry) map += "|*|" + std::to_string(entry) + ",-1";
    return "<kav_input_routing>\r\n\t<name>" + Numbered('r', n) + "</name>\r\n\t<map>" + map +
           "</map>\r\n\t<ch_names>x</ch_names>\r\n</kav_input_routing>";
}

bool IsRouting(std::string_view document) {
    const auto name = RoutingValue(document, "<name");
    const auto entries = RoutingEntryCount(document);
    if (name == "Not found") return entries == 2; // of the list, without a file
    return name.size() == 2 && name[0] == 'r' && std::isdigit(name[1]) != 0 &&
           entries == static_cast<std::size_t>((name[1] - '0') % 3 + 1);
}

std::string Repeated(const std::string& name, int count) {
    std::string list = name;
    for (int n = 1; n < count; ++n) list += "|*|" + name;
    return list;
}

std::string ChunkOf(int n) {
    const auto name = Numbered('p', n);
    std::string text = std::string(Patch::Opening) + "\r\n<patch_name>" + name +
                       "</patch_name>\r\n<fx_names>" + Repeated(name, 4) +
                       "</fx_names>\r\n<macro_group_names>" + Repeated(name, 5) +
                       "</macro_group_names>\r\n<multi_fx>true</multi_fx>\r\n" +
                       "<macro group=\"0\">33;1||24;0</macro>\r\n<gui_width>" + std::to_string(600 + n % 10) +
                       "</gui_width>\r\n<param tag=\"33\" >0." + std::to_string(n % 10) +
                       "</param>\r\n<param tag=\"132\" >0.5</param>\r\n";
    for (int group = 0; group < 4; ++group) text += Patch::RoutingBlock(RoutingOf(n + group), group);
    return text;
}

/// Whether all names of a list are one and the same.
bool IsUniform(std::string_view list) {
    std::set<std::string_view> names;
    Utils::CPieces pieces(list, Patch::ListSeparator);
    while (pieces.Next()) names.insert(pieces.Piece());
    return names.size() == 1;
}

/// A chunk is the whole state as it was at one moment; that of a preset has neither group names nor routings.
void ExpectWhole(const std::string& chunk, bool isPreset) {
    ASSERT_TRUE(chunk.starts_with(Patch::Opening));
    ASSERT_EQ(chunk.find('\0'), chunk.size() - 1);
    const std::string_view text(chunk.data(), chunk.size() - 1);
    EXPECT_TRUE(IsPatchName(std::string(Patch::ExtractTag(text, "<patch_name", ">", "<"))));
    EXPECT_TRUE(isPreset || IsUniform(Patch::ExtractTag(text, "<fx_names", ">", "</")));
    EXPECT_TRUE(IsUniform(Patch::ExtractTag(text, "<macro_group_names", ">", "</")));
    std::size_t parameters = 0;
    Patch::CPieces lines(text, Patch::LineEnd);
    while (lines.Next()) {
        const auto line = Patch::ReadParamLine(lines.Piece());
        if (!line) continue;
        ++parameters;
        EXPECT_TRUE(std::isfinite(line->value));
    }
    EXPECT_EQ(parameters, AllParameters);
    std::size_t routings = 0;
    Patch::CRoutingBlocks blocks(text);
    while (blocks.Next()) {
        ++routings;
        EXPECT_TRUE(IsRouting(blocks.Document())) << blocks.Document();
    }
    EXPECT_EQ(routings, isPreset ? 0 : AllGroups);
}

/// A host in which every kind of call has a thread of its own.
class Race : public State {
protected:
    CTogether threads;

    void SetUp() override {
        for (const char* const name : {"a.kvp", "b.kvp", "c.kvp"}) {
            WriteText(documents.Patch(name), "<patch_format>textual</patch_format>\r\n<plugin_id>1936683628"
                                             "</plugin_id>\r\n<patch_name></patch_name>\r\n"
                                             "<param tag=\"33\" >0.25</param>\r\n");
        }
        for (const int n : {7, 8}) WriteText(documents.Routing(Numbered('r', n) + ".kvt"), RoutingOf(n));
        Renew();
        host.record = false;
        host.answer = [this](VST::AEffect*, std::int32_t opcode, std::int32_t index, void*, float) {
            Hear(opcode, index);
            return std::intptr_t{0};
        };
        SetChunk(ChunkOf(0));
    }
    void TearDown() override { host.answer = nullptr; }

    void SetChunk(std::string text) {
        const auto size = static_cast<std::intptr_t>(text.size());
        EXPECT_EQ(effect->Dispatch(VST::effSetChunk, 0, size, text.data()), 1);
    }

    // What one thread of the host does in one round

    void PlaySound(int) {
        const std::lock_guard audio(_audio);
        std::vector<std::vector<float>> sound(_channels, std::vector<float>(_frames));
        for (auto& channel : sound) {
            for (auto& x : channel) x = 1.5f * std::sin(static_cast<float>(_phase++ % 1000) * 0.2f);
        }
        effect->Process(sound);
        for (const auto& channel : sound) {
            for (const float x : channel) ASSERT_TRUE(std::isfinite(x));
        }
    }

    /// As a host does it: the audio thread waits outside.
    void Configure(int round) {
        const std::lock_guard audio(_audio);
        effect->Dispatch(VST::effMainsChanged, 0, 0);
        effect->Dispatch(VST::effSetSampleRate, 0, 0, nullptr, round % 2 == 0 ? 48000.0f : 88200.0f);
        _frames = std::size_t{64} << round % 3;
        effect->Dispatch(VST::effSetBlockSize, 0, static_cast<std::intptr_t>(_frames));
        if (round % 4 == 0) {
            _channels = round % 8 == 0 ? 2 : 6;
            const auto channels = static_cast<std::int32_t>(_channels);
            EXPECT_TRUE(effect->SetChannels(channels, channels));
        }
        effect->Dispatch(VST::effMainsChanged, 0, 1);
    }

    /// Only one thread asks, because the bytes are the host's until the next request.
    void GetChunks(int round) {
        void* data = nullptr;
        const bool isPreset = round % 2 == 1;
        const auto size = effect->Dispatch(VST::effGetChunk, isPreset ? 1 : 0, 0, &data);
        ASSERT_GT(size, 0);
        std::string chunk(static_cast<const char*>(data), static_cast<std::size_t>(size));
        ExpectWhole(chunk, isPreset);
        if (round % 4 == 0) SetChunk(std::move(chunk));
    }

    void SetChunksAndNames(int round) {
        SetChunk(ChunkOf(round));
        std::string name = Numbered('n', round);
        effect->Dispatch(VST::effSetProgramName, 0, 0, name.data());
    }

    void AskForNames(int round) {
        EXPECT_TRUE(IsPatchName(effect->Text(VST::effGetProgramName, 0, 24)));
        EXPECT_TRUE(IsPatchName(effect->Text(VST::effGetProgramNameIndexed, round % 3, 24)));
        const auto program = effect->Dispatch(VST::effGetProgram);
        EXPECT_TRUE(program == 0 || program == -1) << program;
        VST::ERect* size = nullptr;
        effect->Dispatch(VST::effEditGetRect, 0, 0, &size);
    }

    void SetRoutings(int round) {
        auto& state = Device().State();
        Gui().SetRouting(RoutingOf(round), round % 5 - 1);
        for (int group = -1; group < 4; ++group) EXPECT_TRUE(IsRouting(Gui().GetRouting(group)));
        state.SelectRouting(round % 2, round % 7 == 0);
        const auto name = state.RoutingName();
        EXPECT_TRUE((name.size() == 2 && name[0] == u'r') || name == u"Not found");
        if (round % 10 != 0) return;
        std::array<bool, SPanelState::Channels> on{};
        on[0] = on[1] = on[2] = true; // as many as r8 has
        state.SaveRouting(Utils::FromSystemPath(documents.Routing("r8.kvt")), on);
    }

    void Automate(int round) {
        const auto index = (round * 37) % static_cast<int>(AllParameters);
        if (index != OversamplingIndex) effect->Set(index, static_cast<float>(round % 11) / 10.0f);
        for (std::int32_t n = 0; n < static_cast<std::int32_t>(AllParameters); ++n) {
            const float value = effect->Get(n);
            // Under a macro, which adds at most 1, a knob's value is reached from a base outside 0..1.
            EXPECT_TRUE(value >= -1.0f && value <= 2.0f) << n << ": " << value;
        }
        effect->Display(index);
        Device().IsEdited(index);
    }

    /// What the user does apart from the widgets, and the calls of the host's own thread for that.
    void UseTheEditor(int round) {
        auto& state = Device().State();
        state.SwitchAB(static_cast<std::uint8_t>(round % 2));
        if (round % 3 == 0) state.CopyAB();
        state.BeginRoutingEdit();
        state.NameChannel(static_cast<std::size_t>(round) % SPanelState::Channels, u"mine");
        if (round % 2 == 0) state.CancelRoutingEdit(); // otherwise another thread ends it
        {
            const std::lock_guard hand(_hand);
            state.SelectGroup(round % 4, round % 5 == 0);
        }
        effect->Dispatch(VST::effEditIdle);
        if (round % 4 == 0) effect->Dispatch(VST::effEditClose);
        if (round % 10 == 0) {
            EXPECT_TRUE(state.SavePatch(Utils::FromSystemPath(documents.Patch("c.kvp")), 0));
        }
        Gui().PostUserMessage(CXXXGUI::NewVersionMessage);
    }

    /// A window, for a while. While there is none, the widgets belong to the other threads' turns.
    void ShowAWindow(int round) {
        Gui().CreateGUIWindow();
        Gui().EnableHistory(round % 4 == 0); // it has no end: not always
        for (int frame = 0; frame < 5; ++frame) {
            if (frame == 1) EditARouting(round);
            Gui().OnFrame(16);
            const auto groups = Gui().FindAll<CFxBtn>();
            for (const auto* const button : groups) EXPECT_EQ(button->Text(), groups[0]->Text());
            TurnAWidget(round * 5 + frame);
            if (frame > 1) Gui().Undo();
            if (frame == 4) Gui().Redo();
        }
        Widget<CFxBtnCopy>().SetValue(round % 3 == 0 ? 1.0f : 0.0f, false);
        Widget<CFxBtn>(static_cast<std::size_t>(round) % 4).SetValue(1.0f, true);
        Widget<CPatch>().Step(round % 2 == 0 ? 1 : -1);
        Widget<CRouting>().Step(round % 2 == 0 ? -1 : 1);
        Gui().EnableHistory(false);
        Gui().DestroyGUIWindow();
    }

    /// The next frames may find that another thread has ended it.
    void EditARouting(int round) {
        auto& button = Widget<CRoutingEdit>();
        auto& channel = Widget<CChannelBtn>(static_cast<std::size_t>(round) % SPanelState::Channels);
        button.SetValue(0.0f, false);
        button.OnMouseDown(0, 0, GUI::MouseLeft);
        button.OnMouseUp(0, 0, GUI::MouseLeft);
        channel.SetText(u"mine");
        {
            const std::lock_guard hand(_hand); // it may be an edit of the group's channel, after all
            channel.OnMouseDown(0, 0, GUI::MouseLeft | GUI::MouseShift);
        }
        if (round % 3 == 0) Gui().OnFocus(&channel);
        if (round % 3 == 1) Gui().OnFocus(nullptr);
    }

    std::atomic<int> together = 0; ///< edits that the host heard while it heard another

    void TurnAWidget(int step) {
        const auto& widgets = Gui().AllWidgets();
        auto* const widget = widgets[static_cast<std::size_t>(step) % widgets.size()];
        auto* const value = dynamic_cast<GUI::CValueWidget*>(widget);
        const auto id = widget->Id();
        if (value == nullptr || id == HostParamTable()[OversamplingIndex]) return;
        const std::lock_guard hand(_hand);
        Gui().BeginEdit(id);
        value->SetValue(static_cast<float>(step % 9) / 8.0f, true);
        Gui().EndEdit(id);
    }

private:
    /// No lock: one thread at a time tells the host of edits, and each has seen what the one before has done.
    void Hear(std::int32_t opcode, std::int32_t index) {
        if (opcode != VST::audioMasterAutomate && opcode != VST::audioMasterBeginEdit &&
            opcode != VST::audioMasterEndEdit)
            return;
        if (_inside++ > 0) ++together;
        auto& open = _open.at(static_cast<std::size_t>(index));
        open += opcode == VST::audioMasterBeginEdit ? 1 : opcode == VST::audioMasterEndEdit ? -1 : 0;
        EXPECT_TRUE(open == 0 || open == 1) << index;
        --_inside;
    }

    std::mutex _audio; // the host's: blocks and changes of what they are
    // Under that lock
    std::size_t _channels = 2;
    std::size_t _frames = 64;
    int _phase = 0;

    std::mutex _hand; // the user's: it changes the group or holds a widget, which means the group's parameter

    std::atomic<int> _inside = 0;
    std::array<int, AllParameters> _open{}; // edits that have begun
};

/// The same with a window that has a thread of its own and ticks all the time.
class RaceWithWindow : public Race {
protected:
    COwnRenderers renderers;
    COwnSettings settings;
    std::shared_ptr<CDesk> desk = std::make_shared<CDesk>();

    void SetUp() override {
        Race::SetUp();
        desk->ticks = true;
        effect = std::make_unique<CHostedEffect>(
            host.Callback(), Utils::SMakerService{}, std::make_unique<CThreadedSystem>(desk));
        SetChunk(ChunkOf(0));
    }
    void TearDown() override {
        effect.reset();
        Race::TearDown();
    }

    /// The host opens, the user works, the host closes, now and then in the middle of a drag.
    void WorkInAWindow(int round) {
        char& parent = _parents.at(static_cast<std::size_t>(round) % _parents.size());
        ASSERT_EQ(effect->Dispatch(VST::effEditOpen, 0, 0, &parent), 1);
        for (int step = 0; step < 5; ++step) {
            desk->Run([&] { Work(round * 5 + step); });
            VST::ERect* size = nullptr;
            effect->Dispatch(VST::effEditGetRect, 0, 0, &size);
        }
        if (round % 3 == 0) {
            EXPECT_EQ(effect->Dispatch(VST::effEditOpen, 0, 0, &parent), 1);
        }
        if (round % 4 != 3) effect->Dispatch(VST::effEditClose); // otherwise it is opened anew, elsewhere
    }

    void Idle(int) { effect->Dispatch(VST::effEditIdle); }

    /// As UseTheEditor(), for a host that makes no idle calls and leaves the closing to another thread.
    void SwitchSides(int round) {
        auto& state = Device().State();
        state.SwitchAB(static_cast<std::uint8_t>(round % 2));
        if (round % 3 == 0) state.CopyAB();
        Gui().PostUserMessage(CXXXGUI::NewVersionMessage);
    }

    void AddThreads(bool idles) {
        threads.Add([this](int n) { PlaySound(n); }, Blocks);
        threads.Add([this](int n) { Configure(n); }, Rounds);
        threads.Add([this](int n) { GetChunks(n); }, Rounds);
        threads.Add([this](int n) { SetChunksAndNames(n); }, Rounds);
        threads.Add([this](int n) { Automate(n); }, Rounds);
        threads.Add([this](int n) { SwitchSides(n); }, Rounds);
        threads.Add([this](int n) { WorkInAWindow(n); }, Rounds);
        if (idles) threads.Add([this](int n) { Idle(n); }, Rounds);
    }

private:
    void Work(int step) {
        auto* const client = desk->window.client;
        desk->window.lines.clear();
        desk->window.menus.clear();
        desk->pictures.lines.clear();
        desk->pictures.lettered.clear();
        desk->pictures.measured.clear();
        if (client == nullptr) return;
        TurnAWidget(step);
        const std::int32_t x = step * 97 % desk->window.width;
        const std::int32_t y = step * 61 % desk->window.height;
        client->OnMove(x, y, 0);
        client->OnPress(x, y, GUI::MouseLeft, Utils::TickMs());
        client->OnMove(x + 3, y + 20, GUI::MouseLeft);
        if (step % 5 != 4) client->OnRelease(x + 3, y + 20, GUI::MouseLeft);
        if (step % 7 == 0) Gui().Undo();
    }

    std::array<char, 2> _parents{}; // only their addresses count
};

} // namespace

TEST_F(RaceWithWindow, TheWindowsThreadMeetsAllOthers) {
    AddThreads(true);
    threads.Run(Length());
    effect->Dispatch(VST::effEditClose);
    EXPECT_EQ(together, 0);
    SetChunk(ChunkOf(5));
    for (auto* const button : Gui().FindAll<CFxBtn>()) EXPECT_EQ(button->Text(), u"p5");
}

TEST_F(RaceWithWindow, TheWindowsThreadTellsASilentHost) {
    std::atomic<int> heard = 0;
    host.answer = [&heard](VST::AEffect*, std::int32_t opcode, std::int32_t, void*, float) {
        if (opcode == VST::audioMasterAutomate) ++heard;
        return std::intptr_t{0};
    };
    CHandClock clock;
    threads.Add([&clock](int) { clock.Advance(100); }, Rounds);
    AddThreads(false);
    threads.Run(Length() / 3);
    effect->Dispatch(VST::effEditClose);
    EXPECT_GT(heard, 0);
}

TEST_F(Race, EveryThreadSeesWholeStatesAndFiniteSound) {
    threads.Add([this](int n) { PlaySound(n); }, Blocks);
    threads.Add([this](int n) { Configure(n); }, Rounds);
    threads.Add([this](int n) { GetChunks(n); }, Rounds);
    threads.Add([this](int n) { SetChunksAndNames(n); }, Rounds);
    threads.Add([this](int n) { AskForNames(n); }, Rounds);
    threads.Add([this](int n) { SetRoutings(n); }, Rounds);
    threads.Add([this](int n) { Automate(n); }, Rounds);
    threads.Add([this](int n) { UseTheEditor(n); }, Rounds);
    threads.Add([this](int n) { ShowAWindow(n); }, Rounds);
    threads.Run(Length());
    EXPECT_EQ(together, 0);
    SetChunk(ChunkOf(5));
    EXPECT_EQ(effect->Text(VST::effGetProgramName, 0, 24), "p5");
    EXPECT_EQ(RoutingValue(Gui().GetRouting(2), "<name"), "r7");
    for (const auto* const button : Gui().FindAll<CChannelBtn>()) {
        EXPECT_GE(button->Id(), 1) << "no routing is edited any more";
        EXPECT_NE(button->Text(), u"mine");
    }
    for (auto* const button : Gui().FindAll<CFxBtn>()) EXPECT_EQ(button->Text(), u"p5");
}
