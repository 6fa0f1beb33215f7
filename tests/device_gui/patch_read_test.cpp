// What a reader takes from a text, whoever has written it.

#include "device/value_flags.h"
#include "device_gui/fx_button.h"
#include "device_gui/macro_button.h"
#include "device_gui/patch_display.h"
#include "patch/patch_formats.h"
#include "tests/support/state_fixture.h"

#include <thread>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class PatchReader : public State {
protected:
    float Value(std::int32_t tag) { return Device().GetParam(tag, BaseValue); }
};

const std::string Absolute = "<multi_fx>true</multi_fx>\r\n";

std::string Param(std::int32_t tag, const std::string& value) {
    return "<param tag=\"" + std::to_string(tag) + "\" >" + value + "</param>\r\n";
}

} // namespace

TEST_F(PatchReader, TagsAreRelativeToTheCurrentGroupWithoutMultiFx) {
    Device().SetCurrentGroup(2);
    EXPECT_TRUE(Read(Param(33, "0.25")));
    EXPECT_EQ(Value(233), 0.25f);
    EXPECT_EQ(Value(33), 1.0f);
}

TEST_F(PatchReader, TagsAreAbsoluteWithMultiFx) {
    Device().SetCurrentGroup(2);
    EXPECT_TRUE(Read(Absolute + Param(33, "0.25")));
    EXPECT_EQ(Value(33), 0.25f);
    EXPECT_EQ(Value(233), 1.0f);
}

TEST_F(PatchReader, AnyValueOfMultiFxCounts) {
    Device().SetCurrentGroup(2);
    Read("<multi_fx>false</multi_fx>\r\n" + Param(33, "0.25"));
    EXPECT_EQ(Value(33), 0.25f);
    Read("<multi_fx></multi_fx>\r\n" + Param(33, "0.5"));
    EXPECT_EQ(Value(233), 0.5f);
}

TEST_F(PatchReader, APatchWithoutMacroLinesClearsAllMacros) {
    Device().AssignMacro(0, 33, 0.75f);
    Device().AssignMacro(4, 337, 0.25f);
    Read("");
    for (const auto& macro : Device().tags) {
        for (const auto& tag : macro) EXPECT_EQ(tag, CMacro::NoTag);
    }
}

TEST_F(PatchReader, APatchWithoutANameEmptiesTheName) {
    ASSERT_EQ(Device().State().PatchName(), u"No KVP patches found!");
    Read("");
    EXPECT_EQ(Device().State().PatchName(), u"");
    EXPECT_EQ(Device().State().CurrentPatch(), 0);
}

TEST_F(PatchReader, AMacroLineGivesItsTargetsInOrder) {
    Read("<macro group=\"1\">33;0.500||132;0.2||0;1||x;||337</macro>");
    EXPECT_EQ(Device().tags[1][0], 33);
    EXPECT_EQ(Device().sensitivities[1][0], 0.5f); // a target that isn't held takes a slot at any sensitivity
    EXPECT_EQ(Device().tags[1][1], 132);
    EXPECT_EQ(Device().sensitivities[1][1], 0.2f);
    EXPECT_EQ(Device().tags[1][2], 0); // what is no number is 0, and there it is held already
    EXPECT_EQ(Device().sensitivities[1][2], 0.0f);
    EXPECT_EQ(Device().tags[1][3], 337);
    EXPECT_EQ(Device().sensitivities[1][3], 0.0f);
    EXPECT_EQ(Device().tags[0][0], CMacro::NoTag);
}

TEST_F(PatchReader, MacrosAreReadBeforeTheParametersThatTheyMove) {
    Read(Absolute + Param(24, "0.75") + Param(33, "0.25") + "<macro group=\"0\">33;0.750</macro>");
    EXPECT_EQ(Value(33), 0.25f);
    EXPECT_EQ(Device().GetParam(33, 0), 0.25f + 0.25f);
}

TEST_F(PatchReader, ANegativeTagIsSkipped) {
    host.calls.clear();
    Read(Param(-1, "0.25") + Param(-33, "0.25"));
    for (const auto& [tag, name] : SPlainPatch::Parameters()) EXPECT_NE(Value(tag), 0.25f) << name;
    EXPECT_EQ(host.Count(VST::audioMasterAutomate), 0u);
}

TEST_F(PatchReader, UnknownTagsDoNothing) {
    host.calls.clear();
    Read(Absolute + Param(38, "0.25") + Param(338, "0.25") + Param(0, "0.25") + Param(2147483647, "0.25"));
    EXPECT_EQ(host.Count(VST::audioMasterAutomate), 0u);
    EXPECT_EQ(Chunk(true), [] {
        SPlainPatch plain;
        plain.name = "";
        return plain.Text(0);
    }());
}

TEST_F(PatchReader, AFifthGroupNameHasNoGroup) {
    Read("<fx_names>a|*|b|*|c|*|d|*|e</fx_names>");
    const std::array<std::u16string_view, 4> names{u"a", u"b", u"c", u"d"};
    for (std::size_t g = 0; g < 4; ++g) EXPECT_EQ(Widget<CFxBtn>(g).Text(), names[g]);
}

TEST_F(PatchReader, FewerNamesThanWidgetsLeaveTheOthers) {
    Read("<fx_names>a|*|</fx_names><macro_group_names>Push</macro_group_names>");
    EXPECT_EQ(Widget<CFxBtn>(0).Text(), u"a");
    EXPECT_EQ(Widget<CFxBtn>(1).Text(), u"");
    EXPECT_EQ(Widget<CFxBtn>(2).Text(), u"3");
    EXPECT_EQ(Widget<CMacroBtn>(0).Text(), u"Push");
    EXPECT_EQ(Widget<CMacroBtn>(1).Text(), u"Macro 2");
    Read("<macro_group_names>1|*|2|*|3|*|4|*|5|*|6</macro_group_names>");
    EXPECT_EQ(Widget<CMacroBtn>(4).Text(), u"5");
}

TEST_F(PatchReader, ReadsNamesAndMacrosAndBypassWhateverTheFlags) {
    Read("<patch_name>N</patch_name><fx_names>F</fx_names><host_bypass>7</host_bypass>");
    EXPECT_EQ(Device().State().PatchName(), u"N");
    EXPECT_EQ(Widget<CFxBtn>(0).Text(), u"F");
    EXPECT_TRUE(Device().GetHostBypass());
    Read("<host_bypass></host_bypass>");
    EXPECT_TRUE(Device().GetHostBypass());
    Read("<host_bypass>no</host_bypass>");
    EXPECT_FALSE(Device().GetHostBypass());
}

TEST_F(PatchReader, TakesSettingsUnderTheirFlagsAlone) {
    const std::string settings =
        "<gui_width>1000</gui_width><simd>1</simd><groups_parallel>1</groups_parallel>"
        "<agc_filter>0</agc_filter><agc_suspend>-30.5</agc_suspend><agc_rms>600</agc_rms>"
        "<agc_tolerance>2</agc_tolerance><agc_gain_max>3</agc_gain_max>"
        "<agc_gain_min>4</agc_gain_min>";
    Read(settings, 255 & ~(GuiWidth | Simd | GroupsParallel | AgcSettings));
    SPlainPatch plain;
    plain.name = "";
    EXPECT_EQ(Chunk(false), plain.Text(191));
    Read(settings, GuiWidth);
    plain.width = 1000;
    EXPECT_EQ(Chunk(false), plain.Text(191));
    EXPECT_EQ(Gui().Height(), 733); // 1000 / 1.363472, truncated
    Read(settings, Simd);
    plain.simd = 1;
    EXPECT_EQ(Chunk(false), plain.Text(191));
    Read(settings, GroupsParallel);
    plain.parallel = 1;
    EXPECT_EQ(Chunk(false), plain.Text(191));
    Read(settings, AgcSettings);
    plain.filter = 0;
    plain.suspend = -30.5;
    plain.rms = 600;
    plain.tolerance = 2;
    plain.gainMax = 3;
    plain.gainMin = 4;
    EXPECT_EQ(Chunk(false), plain.Text(191));
}

TEST_F(PatchReader, SettingsThatAreNoNumbersStayOrAreOff) {
    Device().Simd() = true;
    Read("<simd>on</simd><agc_rms>slow</agc_rms><agc_gain_max>1e99</agc_gain_max><gui_width>wide</gui_width>",
        255);
    EXPECT_FALSE(Device().Simd());
    EXPECT_EQ(Device().AutoGain().rmsTime, 2000.0);
    EXPECT_EQ(Device().AutoGain().maximumGain, 10.0);
    EXPECT_EQ(Gui().Width(), 754);
}

TEST_F(PatchReader, AWidthIsHeldToTheLeastAndTheLargestThatHostsCanBeTold) {
    Read("<gui_width>100</gui_width>", GuiWidth);
    EXPECT_EQ(Gui().Width(), 500);
    EXPECT_EQ(Gui().Height(), 73); // of the width that was asked for
    Read("<gui_width>2147483647</gui_width>", GuiWidth);
    EXPECT_EQ(Gui().Width(), 32767);
    EXPECT_EQ(Gui().Height(), 32767);
    Read("<gui_width>-700</gui_width>", GuiWidth);
    EXPECT_EQ(Gui().Width(), 32767);
}

TEST_F(PatchReader, ValuesThatAreNoNumbersAreZeroAndAllAreStoredAsTheyAre) {
    Read(Param(33, "loud") + Param(32, "1.5") + Param(30, "2") + Param(36, "-0.5"));
    EXPECT_EQ(Value(33), 0.0f);
    EXPECT_EQ(Value(32), 1.5f);
    EXPECT_EQ(Device().GetParam(32, 0), 1.0f);
    EXPECT_EQ(Value(30), 2.0f);
    EXPECT_EQ(Value(36), -0.5f);
    EXPECT_EQ(Device().GetParam(36, 0), 0.0f);
}

TEST_F(PatchReader, TellsTheHostOfEveryValueInOrder) {
    host.calls.clear();
    Read(Absolute + Param(33, "0.25") + Param(30, "3") + Param(999, "1") + Param(33, "0.5"));
    std::vector<std::pair<std::int32_t, float>> told;
    for (const auto& call : host.calls) {
        if (call.opcode == VST::audioMasterAutomate) told.emplace_back(call.index, call.option);
    }
    EXPECT_EQ(told, (std::vector<std::pair<std::int32_t, float>>{{4, 0.25f}, {100, 1.0f}, {4, 0.5f}}));
}

TEST_F(PatchReader, HoldsNoLockWhileTheHostIsTold) {
    // A host that answers with a call from another thread, and waits for it, as one does whose own lock is
    // held.
    int answered = 0;
    host.answer = [&](VST::AEffect*, std::int32_t opcode, std::int32_t, void*, float) -> std::intptr_t {
        if (opcode != VST::audioMasterAutomate) return 0;
        std::thread([&] {
            void* data = nullptr;
            answered += effect->Dispatch(VST::effGetChunk, 0, 0, &data) > 0 ? 1 : 0;
        }).join();
        return 0;
    };
    Read(Absolute + Param(33, "0.25"));
    Device().SetCurrentGroup(0);
    Gui().SetParameter(33, 0.75f);
    host.answer = nullptr;
    EXPECT_EQ(answered, 2);
}

TEST_F(PatchReader, AnEmptyTextIsNone) {
    host.calls.clear();
    EXPECT_FALSE(Gui().ReadPatch("", 191));
    EXPECT_FALSE(Gui().ApplyPatchData(nullptr, 100, 191));
    EXPECT_FALSE(Gui().ApplyPatchData("x", 0, 191));
    EXPECT_TRUE(host.calls.empty());
    EXPECT_EQ(Chunk(false), SPlainPatch().Text(191));
}

TEST_F(PatchReader, ATextEndsAtItsFirstZeroOrWithItsData) {
    const std::string opening = "<patch_format>textual</patch_format>\r\n";
    std::string data = opening + Param(33, "0.25") + '\0' + Param(32, "0.25");
    EXPECT_TRUE(Gui().ApplyPatchData(data.data(), data.size(), 0));
    EXPECT_EQ(Value(33), 0.25f);
    EXPECT_EQ(Value(32), 1.0f);
    data = opening + Param(33, "0.5");
    data.resize(data.size() - 2); // the line's end; nothing behind the last mark
    EXPECT_TRUE(Gui().ApplyPatchData(std::vector<char>(data.begin(), data.end()).data(), data.size(), 0));
    EXPECT_EQ(Value(33), 0.5f);
}

TEST_F(PatchReader, APartlyBrokenTextGivesWhatCanBeFound) {
    Read(Param(33, "0.25") + "<param tag=\"32\" >0.5\r\n<patch_name>cut");
    EXPECT_EQ(Value(33), 0.25f);
    EXPECT_EQ(Value(32), 1.0f);
    EXPECT_EQ(Device().State().PatchName(), u"");
}

TEST_F(PatchReader, ANewerPatchsUnknownElementsAreSkipped) {
    Read("<patch_version>99</patch_version>\r\n<app_version>9.9</app_version>\r\n<patch_info>x</"
         "patch_info>\r\n"
         "<plugin_id>1</plugin_id>\r\n<colour>red</colour>\r\n" +
         Param(33, "0.25"));
    EXPECT_EQ(Value(33), 0.25f);
}

TEST_F(PatchReader, ABinaryPatchSetsTheCurrentGroup) {
    Device().SetCurrentGroup(1);
    std::string data(148, '\0');
    data[0] = 1;
    data[4] = 'N';
    data[140] = 33;
    data[146] = '\x80'; // 0.25 is 0x3E800000
    data[147] = '\x3E';
    EXPECT_TRUE(Gui().ApplyPatchData(data.data(), data.size(), 0));
    EXPECT_EQ(Value(133), 0.25f);
    EXPECT_EQ(Value(33), 1.0f);
    EXPECT_EQ(Device().State().PatchName(), u"N");
}

TEST_F(PatchReader, ABinaryPatchWithoutPairsSetsItsNameAndARecord) {
    Gui().EnableHistory(true);
    std::string data(147, '\0');
    data[0] = 1;
    data[4] = 'N';
    data[140] = 33;
    host.calls.clear();
    EXPECT_TRUE(Gui().ApplyPatchData(data.data(), data.size(), 0));
    EXPECT_EQ(host.Count(VST::audioMasterAutomate), 0u);
    EXPECT_EQ(Device().State().PatchName(), u"N");
    EXPECT_EQ(Gui().Records(), 1u);
}

TEST_F(PatchReader, RefusesWhatIsNeitherForm) {
    for (const std::string& data : {std::string("\2\0\0\0", 4), std::string("\1\0\0", 3), std::string("x"),
             std::string("<patch_format>textual</patch_format>"),
             std::string("<?xml version=\"1.0\"?>") + std::string(200, ' ')}) {
        EXPECT_FALSE(Gui().ApplyPatchData(data.data(), data.size(), 191)) << data;
    }
    EXPECT_EQ(Chunk(false), SPlainPatch().Text(191));
}

TEST_F(PatchReader, NamesWithAnElementsMarksAreCutThere) {
    Device().State().SetPatchName(u"a<b");
    SetChunk(Chunk(false), false);
    EXPECT_EQ(Device().State().PatchName(), u"a");
}

TEST_F(PatchReader, IllFormedNamesAreEmpty) {
    Read("<patch_name>\xC3</patch_name><fx_names>\xFF|*|b</fx_names>");
    EXPECT_EQ(Device().State().PatchName(), u"");
    EXPECT_EQ(Widget<CFxBtn>(0).Text(), u"");
    EXPECT_EQ(Widget<CFxBtn>(1).Text(), u"b");
}

// A group's name ends with the mark of an element's end, a patch's name with the mark of a beginning.
TEST_F(PatchReader, NamesOfGroupsAndMacrosMayHoldABracket) {
    Read("<fx_names>a<b|*|c>d</fx_names><macro_group_names>x<y|*|1</2</macro_group_names>");
    EXPECT_EQ(Widget<CFxBtn>(0).Text(), u"a<b");
    EXPECT_EQ(Widget<CFxBtn>(1).Text(), u"c>d");
    EXPECT_EQ(Widget<CMacroBtn>(0).Text(), u"x<y");
    EXPECT_EQ(Widget<CMacroBtn>(1).Text(), u"1");
}

TEST_F(PatchReader, ListsOfNamesThatAreEmptyOrCutOffAreNone) {
    for (const char* const lines : {"", "<fx_names></fx_names><macro_group_names></macro_group_names>",
             "<fx_names>x|*|y", "<macro_group_names>x", "<fx_name>x</fx_name>"}) {
        Read(lines);
        for (std::size_t g = 0; g < 4; ++g)
            EXPECT_EQ(Widget<CFxBtn>(g).Text(), std::u16string(1, static_cast<char16_t>(u'1' + g))) << lines;
        for (std::size_t m = 0; m < 5; ++m)
            EXPECT_EQ(
                Widget<CMacroBtn>(m).Text(), u"Macro " + std::u16string(1, static_cast<char16_t>(u'1' + m)))
                << lines;
    }
}

TEST_F(PatchReader, OfTwoListsOfNamesTheFirstCounts) {
    Read("<fx_names>a</fx_names><fx_names>b</fx_names>");
    EXPECT_EQ(Widget<CFxBtn>(0).Text(), u"a");
}

TEST_F(PatchReader, NamesAreDividedByTheirSeparatorAlone) {
    Read("<fx_names>a||b|*c*|d|*||*|e</fx_names>");
    EXPECT_EQ(Widget<CFxBtn>(0).Text(), u"a||b|*c*|d");
    EXPECT_EQ(Widget<CFxBtn>(1).Text(), u"");
    EXPECT_EQ(Widget<CFxBtn>(2).Text(), u"e");
    EXPECT_EQ(Widget<CFxBtn>(3).Text(), u"4");
}

// No separator is written in front of the first name that isn't empty, so it moves to the front.
TEST_F(PatchReader, EmptyNamesInFrontAreLostInAChunk) {
    Widget<CFxBtn>(0).SetText(u"");
    Widget<CFxBtn>(2).SetText(u"");
    ASSERT_TRUE(SetChunk(Chunk(false), false));
    EXPECT_EQ(Widget<CFxBtn>(0).Text(), u"2");
    EXPECT_EQ(Widget<CFxBtn>(1).Text(), u"");
    EXPECT_EQ(Widget<CFxBtn>(2).Text(), u"4");
    EXPECT_EQ(Widget<CFxBtn>(3).Text(), u"4");
}

TEST_F(PatchReader, ReadingSelectsNoGroup) {
    Device().SetCurrentGroup(1);
    Read(Absolute + Param(17, "0") + Param(20, "1"));
    EXPECT_EQ(Device().GetCurrentGroup(), 1) << "the next frame does";
    Gui().OnFrame(16);
    EXPECT_EQ(Device().GetCurrentGroup(), 3);
}

TEST_F(PatchReader, ASwitchIsOnWithAnyNumberBut0) {
    const auto read = [this](const std::string& value) {
        Read("<simd>" + value + "</simd><groups_parallel>" + value + "</groups_parallel><agc_filter>" +
                 value + "</agc_filter><host_bypass>" + value + "</host_bypass>",
            255);
        const bool isOn = Device().Simd();
        EXPECT_EQ(Device().GroupsParallel(), isOn) << value;
        EXPECT_EQ(Device().AutoGain().filter != 0, isOn) << value;
        EXPECT_EQ(Device().GetHostBypass(), isOn) << value;
        return isOn;
    };
    EXPECT_TRUE(read("2"));
    EXPECT_FALSE(read("0"));
    EXPECT_TRUE(read("-1"));
    EXPECT_FALSE(read("off"));
    EXPECT_TRUE(read("256"));
}

TEST_F(PatchReader, AChunkWithoutDataIsNone) {
    std::string chunk = Chunk(false);
    EXPECT_EQ(effect->Dispatch(VST::effSetChunk, 0, 100, nullptr), 0);
    EXPECT_EQ(effect->Dispatch(VST::effSetChunk, 0, 0, chunk.data()), 0);
    chunk.replace(0, 4, "<abc");
    EXPECT_FALSE(SetChunk(chunk, false));
    EXPECT_EQ(Chunk(false), SPlainPatch().Text(191));
}
