// Creation and destruction of an instance, and the order of its virtual operations.

#include "device/value_flags.h"
#include "device_gui/fx_button.h"
#include "device_gui/macro_button.h"
#include "device_gui/patch_display.h"
#include "tests/support/state_fixture.h"
#include "utils/session_log.h"
#include "utils/text.h"

#include <cstring>

using namespace KAV;
using namespace KAV::Tests;

namespace {

using LifeCycle = State;

/// The index of a virtual operation. In this compiler's ABI a pointer to one holds its offset from the start
/// of the table, plus one.
template<typename TMember>
std::size_t SlotOf(TMember member) {
    std::array<std::uintptr_t, 2> words{};
    static_assert(sizeof(member) == sizeof(words));
    std::memcpy(words.data(), &member, sizeof(words));
    return (words[0] - 1) / sizeof(void*);
}

std::vector<std::string> LogLines() {
    const auto text = ReadText(Utils::ToSystemPath(Utils::LogPath()));
    std::vector<std::string> keys;
    for (const auto line : Utils::Split(text, "\r\n")) keys.emplace_back(line.substr(0, line.find('=')));
    return keys;
}

} // namespace

TEST_F(LifeCycle, OperationsHaveTheirSlots) {
    const std::vector<std::size_t> slots{SlotOf(&CXXXDSP::Process), SlotOf(&CXXXDSP::ProcessSecond),
        SlotOf(&CXXXDSP::GetParamName), SlotOf(&CXXXDSP::GetChunk), SlotOf(&CXXXDSP::SetChunk),
        SlotOf(&CXXXDSP::SetProgramName), SlotOf(&CXXXDSP::GetParamLabel), SlotOf(&CXXXDSP::SetBlockSize),
        SlotOf(&CXXXDSP::SetSampleRate),
        // the destructor is here, with two entries
        SlotOf(&CXXXDSP::GetGroupCount), SlotOf(&CXXXDSP::GetCurrentGroup), SlotOf(&CXXXDSP::GetMaxChannels),
        SlotOf(&CXXXDSP::GetTagName), SlotOf(&CXXXDSP::GetParam), SlotOf(&CXXXDSP::SetParam),
        SlotOf(&CXXXDSP::GetRouting), SlotOf(&CXXXDSP::SetRouting), SlotOf(&CXXXDSP::Spare1),
        SlotOf(&CXXXDSP::Spare2), SlotOf(&CXXXDSP::Spare3), SlotOf(&CXXXDSP::Spare4),
        SlotOf(&CXXXDSP::Spare5), SlotOf(&CXXXDSP::Spare6), SlotOf(&CXXXDSP::GetHostParameter),
        SlotOf(&CXXXDSP::SetProgram), SlotOf(&CXXXDSP::SetHostBypass), SlotOf(&CXXXDSP::GetHostBypass),
        SlotOf(&CXXXDSP::GetParamDisplay), SlotOf(&CXXXDSP::BeginEdit),
        SlotOf(&CXXXDSP::SetParameterAutomated), SlotOf(&CXXXDSP::EndEdit), SlotOf(&CXXXDSP::OnValueChanged),
        SlotOf(&CXXXDSP::GetLatency), SlotOf(&CVSTDSPv2::GetInputProperties),
        SlotOf(&CVSTDSPv2::GetOutputProperties), SlotOf(&CVSTDSPv2::GetProgramName),
        SlotOf(&CVSTDSPv2::GetProgramNameIndexed), SlotOf(&CVSTDSPv2::GetProgram),
        SlotOf(&CVSTDSPv2::SetProgramPlain), SlotOf(&CVSTDSPv2::GetEffectName),
        SlotOf(&CVSTDSPv2::GetVendorString), SlotOf(&CVSTDSPv2::GetProductString),
        SlotOf(&CVSTDSPv2::GetPlugCategory)};
    std::size_t expected = 0;
    for (std::size_t i = 0; i < slots.size(); ++i, ++expected) {
        if (i == 9) expected += 2;
        EXPECT_EQ(slots[i], expected) << i;
    }
}

TEST_F(LifeCycle, StoreOfPatchesHasItsSlots) {
    EXPECT_EQ(SlotOf(&CPatchSaveLoad::ApplyPatchData), 0u);
    EXPECT_EQ(SlotOf(&CPatchSaveLoad::ReadPatch), 1u);
    EXPECT_EQ(SlotOf(&CPatchSaveLoad::WritePatch), 2u);
    EXPECT_EQ(SlotOf(&CPatchSaveLoad::SelectPatch), 3u);
}

TEST_F(LifeCycle, ThreeLinesOfTheHostComeBeforeTheSessionAndTheSessionsEndComesLast) {
    effect.reset();
    auto keys = LogLines();
    // The first session of this process is that of the fixture's own instance.
    const std::vector<std::string> expected{"DateTime", "AudioHostCanDo", "PluginPath", "PluginFormat",
        "SessionStart", "Application", "Version", "OS", "NetBiosName", "Computer", "SIMD", "RAM", "Display",
        "SessionEnd", "~CGUI()"};
    keys.resize(expected.size());
    EXPECT_EQ(keys, expected);
}

TEST_F(LifeCycle, EveryValueOfTheFirstPatchIsSentToTheHostForEachGroupFromTheLastOn) {
    WriteText(documents.Patch("a.kvp"), "<patch_format>textual</patch_format>\r\n<plugin_id>1936683628</"
                                        "plugin_id>\r\n<patch_name>a</patch_name>\r\n"
                                        "<param tag=\"33\" >0.25</param>\r\n<param tag=\"30\" >1</param>");
    host.calls.clear();
    Renew();
    std::vector<std::int32_t> told;
    for (const auto& call : host.calls) {
        if (call.opcode == VST::audioMasterAutomate && (call.index < 24 || call.index == 100))
            told.push_back(call.index);
    }
    EXPECT_EQ(told, (std::vector<std::int32_t>{7, 100, 6, 100, 5, 100, 4, 100}));
    EXPECT_EQ(Device().GetCurrentGroup(), 0);
    EXPECT_EQ(Device().GetProgram(), 0);
}

TEST_F(LifeCycle, TheSurveyComesBeforeAnythingElse) {
    host.calls.clear();
    Renew();
    ASSERT_GE(host.calls.size(), 4u);
    EXPECT_EQ(host.calls[0].opcode, VST::audioMasterGetVendorString);
    EXPECT_EQ(host.calls[1].opcode, VST::audioMasterGetProductString);
    EXPECT_EQ(host.calls[2].opcode, VST::audioMasterGetVendorVersion);
    EXPECT_EQ(host.calls[3].opcode, VST::audioMasterCanDo);
}

TEST_F(LifeCycle, TheEditorsHalfIsThereWithoutAWindowAndNotAnnounced) {
    EXPECT_EQ(effect->Record().flags & VST::effFlagsHasEditor, 0);
    EXPECT_EQ(Gui().FindAll<CPatch>().size(), 1u);
    EXPECT_EQ(Gui().FindAll<CFxBtn>().size(), 4u);
    EXPECT_EQ(Gui().FindAll<CMacroBtn>().size(), 5u);
    for (int g = 0; g < 4; ++g) EXPECT_EQ(Widget<CFxBtn>(static_cast<std::size_t>(g)).Group(), g);
}

TEST_F(LifeCycle, OpeningAndClosingTheEditorTouchesNoParameter) {
    const auto before = Chunk(false);
    void* rectangle = nullptr;
    effect->Dispatch(VST::effEditGetRect, 0, 0, &rectangle);
    effect->Dispatch(VST::effEditOpen, 0, 0, &rectangle);
    effect->Dispatch(VST::effEditClose);
    EXPECT_EQ(Chunk(false), before);
}

TEST_F(LifeCycle, AProgramOutsideTheListEndsAsTheFirst) {
    WriteText(documents.Patch("a.kvp"), "<patch_format>textual</patch_format>\r\n<plugin_id>1936683628</"
                                        "plugin_id>\r\n<param tag=\"33\" >0.25</param>");
    Renew();
    Device().SetParam(33, 0.5f, 0);
    for (const std::int32_t index : {0, 1, -1, 1000}) Device().SetProgram(index, false);
    EXPECT_EQ(Device().GetParam(33, 0), 0.5f);
    Device().SetProgramPlain(7);
    EXPECT_EQ(Device().GetParam(33, 0), 0.5f);
    Device().SetProgram(7, true);
    EXPECT_EQ(Device().GetParam(33, 0), 0.25f);
}

TEST_F(LifeCycle, ProgramCallsWorkWithoutADocumentsFolder) {
    Utils::UseDocumentsFolder(u"");
    Renew();
    EXPECT_EQ(effect->Dispatch(VST::effGetProgram), 0);
    EXPECT_EQ(effect->Text(VST::effGetProgramName, 0, 24), "Default");
    EXPECT_EQ(effect->Text(VST::effGetProgramNameIndexed, 0, 24), "Default");
    EXPECT_EQ(effect->Text(VST::effGetProgramNameIndexed, 1, 24), "");
    const auto before = Chunk(false);
    for (const std::int32_t program : {0, 1, -1, 1000}) {
        const auto present = effect->Dispatch(VST::effGetProgram);
        effect->Dispatch(VST::effSetProgram, 0, program);
        EXPECT_EQ(effect->Dispatch(VST::effGetProgram), present);
        Device().SetProgramPlain(program);
        EXPECT_EQ(effect->Dispatch(VST::effGetProgram), program < 0 ? -1 : 0);
        Device().SetProgram(program, true);
        EXPECT_EQ(effect->Dispatch(VST::effGetProgram), program < 0 ? -1 : 0);
    }
    EXPECT_EQ(Chunk(false), before) << "programs change nothing";
    char name[] = "mine";
    effect->Dispatch(VST::effSetProgramName, 0, 0, name);
    EXPECT_EQ(effect->Text(VST::effGetProgramName, 0, 24), "mine");
    EXPECT_NE(Chunk(true).find("<patch_name>mine<"), std::string::npos);
    EXPECT_FALSE(Device().State().SaveAsDefault()) << "there is no folder to save it in";
    EXPECT_FALSE(std::filesystem::exists("Kavelin"));
    EXPECT_TRUE(dialogs.errors.empty());
    Device().SetProgram(0, false);
    EXPECT_EQ(effect->Dispatch(VST::effGetProgram), 0);
}

TEST_F(LifeCycle, SoloAndMuteAreTheParametersThemselves) {
    Device().Solo(2) = true;
    Device().Mute(1) = true;
    EXPECT_EQ(Device().GetParam(221, 0), 1.0f);
    EXPECT_EQ(Device().GetParam(122, 0), 1.0f);
}

TEST_F(LifeCycle, AChunkOfAnyOriginIsTrusted) {
    EXPECT_TRUE(SetChunk("<patch_format>textual</patch_format>\r\n<app_title>Other</app_title>\r\n"
                         "<plugin_id>1</plugin_id>\r\n<param tag=\"33\" >0.25</param>",
        true));
    EXPECT_EQ(Device().GetParam(33, 0), 0.25f);
    EXPECT_TRUE(dialogs.errors.empty());
}

TEST_F(LifeCycle, AChunkMayBeSetFromTheVeryBytesThatWereHandedOut) {
    Device().SetParam(33, 0.25f, 0);
    for (const std::int32_t isPreset : {0, 1}) {
        void* data = nullptr;
        const auto size = effect->Dispatch(VST::effGetChunk, isPreset, 0, &data);
        std::string copy(static_cast<const char*>(data), static_cast<std::size_t>(size));
        Device().SetParam(33, 0.75f, 0);
        EXPECT_EQ(effect->Dispatch(VST::effSetChunk, isPreset, size, data), 1);
        EXPECT_EQ(Device().GetParam(33, 0), 0.25f);
        EXPECT_EQ(std::string(static_cast<const char*>(data), copy.size()), copy)
            << "the bytes stay unchanged";
        const auto state = Chunk(isPreset != 0);
        CHostedEffect other(host.Callback());
        EXPECT_EQ(other.Dispatch(VST::effSetChunk, isPreset, size, copy.data()), 1);
        void* again = nullptr;
        EXPECT_EQ(other.Dispatch(VST::effGetChunk, isPreset, 0, &again),
            static_cast<std::intptr_t>(state.size() + 1));
        EXPECT_STREQ(static_cast<const char*>(again), state.c_str()) << "the same state as from a copy";
    }
}

TEST_F(LifeCycle, BankAndPresetChunksDiffer) {
    EXPECT_NE(Chunk(false).find("<gui_width>"), std::string::npos);
    EXPECT_EQ(Chunk(true).find("<gui_width>"), std::string::npos);
}

TEST_F(LifeCycle, ABankBringsNamesAndSettingsAndAPresetDoesNot) {
    Widget<CFxBtn>(1).SetText(u"Drums");
    Device().Simd() = true;
    Gui().ResizeTo(800, 600);
    const auto bank = Chunk(false);
    Renew();
    ASSERT_TRUE(SetChunk(bank, true));
    EXPECT_FALSE(Device().Simd());
    EXPECT_EQ(Gui().Width(), 754);
    Renew();
    ASSERT_TRUE(SetChunk(bank, false));
    EXPECT_EQ(Widget<CFxBtn>(1).Text(), u"Drums");
    EXPECT_TRUE(Device().Simd());
    EXPECT_EQ(Gui().Width(), 800);
}

TEST_F(LifeCycle, AChunkSavedByOneInstanceRestoresAnother) {
    for (std::int32_t index = 0; index < 109; ++index)
        effect->Set(index, static_cast<float>(index % 7) / 6.0f);
    Device().State().ApplyRouting();
    const auto bank = Chunk(false);
    Renew();
    ASSERT_NE(Chunk(false), bank);
    ASSERT_TRUE(SetChunk(bank, false));
    EXPECT_EQ(Chunk(true), [&] {
        const auto group = bank.find("<fx_names>");
        const auto end = bank.find("<param");
        auto preset = bank.substr(0, group) + bank.substr(end);
        const auto routing = preset.find("<kav_input_routing>");
        return preset.substr(0, routing) + preset.substr(preset.find("<macro_group_names>"));
    }());
}
