// Patches as files of a user.

#include "device_gui/fx_button.h"
#include "device_gui/macro_button.h"
#include "device_gui/patch_display.h"
#include "tests/support/state_fixture.h"
#include "utils/path.h"
#include "utils/session_log.h"

#include <algorithm>

#include <climits>
#include <cstring>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class PatchStore : public State {
protected:
    CPatch& Display() { return Widget<CPatch>(); }
    /// A patch of a user's with one parameter.
    void Write(const std::string& file, const std::string& value, const std::string& name = "inside",
        const std::string& more = {}) {
        WriteText(documents.Patch(file),
            "<patch_format>textual</patch_format>\r\n<plugin_id>1936683628</plugin_id>\r\n<patch_name>" +
                name + "</patch_name>\r\n<param tag=\"33\" >" + value + "</param>\r\n" + more);
    }
    /// A patch in the older form.
    void WriteFxp(const std::string& file, const char* id, float value) {
        std::string content(60 + 148, '\0');
        std::memcpy(content.data() + 16, id, 4);
        content[59] = '\x94';
        content[60] = 1;
        content[60 + 140] = 33;
        std::memcpy(content.data() + 60 + 144, &value, 4);
        WriteText(documents.Patch(file), content);
    }
    /// A patch of another plug-in's.
    void WriteForeign(const std::string& file) {
        WriteText(documents.Patch(file),
            "<patch_format>textual</patch_format>\r\n<plugin_id>1</plugin_id>\r\n"
            "<param tag=\"33\" >0.1</param>");
    }
    /// How often the session log says so of "a.kvp".
    static std::size_t Logged() {
        const auto log = ReadText(Utils::ToSystemPath(Utils::LogPath()));
        const std::string line = "\r\nError=Patch \"a.kvp\" was created for another plug-in.\r\n";
        std::size_t count = 0;
        for (auto at = log.find(line); at != std::string::npos; at = log.find(line, at + 1)) ++count;
        return count;
    }
    float Threshold(int group = 0) { return Device().GetParam(33 + 100 * group, 0); }
    void Choose(std::u16string_view name) {
        const auto& items = Display().Items();
        Gui().SelectPatch(
            static_cast<std::int32_t>(std::find(items.begin(), items.end(), name) - items.begin()), false);
    }
    std::u16string Path(const std::string& file) { return Utils::FromSystemPath(documents.Patch(file)); }
};

} // namespace

TEST_F(PatchStore, AnEmptyFolderGivesDefaultAndItsFixedText) {
    EXPECT_EQ(Display().Items(), std::vector<std::u16string>{u"Default"});
    EXPECT_EQ(Device().State().PatchName(), u"No KVP patches found!");
    EXPECT_EQ(Device().State().CurrentPatch(), 0);
    EXPECT_FALSE(std::filesystem::exists(documents.Patch(""))); // reading makes no folder
}

TEST_F(PatchStore, NamesAreSortedByCodeUnits) {
    for (const char* file :
        {"able.kvp", "Zed.kvp", "- Full Reset -.kvp", "1.KVP", "\xC3\xA4.kvp", "x.txt", "y.fxp"})
        Write(file, "0.5");
    Renew();
    EXPECT_EQ(Display().Items(),
        (std::vector<std::u16string>{u"- Full Reset -", u"1", u"Zed", u"able", u"\u00E4"}));
}

TEST_F(PatchStore, ANewInstanceTakesTheFirstPatchForAllGroupsAndItsSettings) {
    Write("- Full Reset -.kvp", "0.25", "x",
        "<gui_width>900</gui_width>\r\n<simd>1</simd>\r\n<groups_parallel>1</"
        "groups_parallel>\r\n<agc_rms>600</agc_rms>");
    Write("a.kvp", "0.5");
    Renew();
    for (int g = 0; g < 4; ++g) EXPECT_EQ(Threshold(g), 0.25f) << g;
    EXPECT_EQ(Device().GetCurrentGroup(), 0);
    EXPECT_EQ(Device().State().PatchName(), u"- Full Reset -");
    EXPECT_EQ(Gui().Width(), 900);
    EXPECT_TRUE(Device().Simd());
    EXPECT_TRUE(Device().GroupsParallel());
    EXPECT_EQ(Device().AutoGain().rmsTime, 600.0);
}

TEST_F(PatchStore, AUsersChoiceLeavesTheSettingsAlone) {
    Write("a.kvp", "0.5");
    Write("b.kvp", "0.25", "x", "<gui_width>900</gui_width>\r\n<simd>1</simd>\r\n<agc_rms>600</agc_rms>");
    Renew();
    Choose(u"b");
    EXPECT_EQ(Threshold(), 0.25f);
    EXPECT_EQ(Gui().Width(), 754);
    EXPECT_FALSE(Device().Simd());
    EXPECT_EQ(Device().AutoGain().rmsTime, 2000.0);
}

TEST_F(PatchStore, TheNextPatchLeavesTheSettingsAlone) {
    Write("a.kvp", "0.5");
    Write("b.kvp", "0.25", "x", "<gui_width>900</gui_width>\r\n<groups_parallel>1</groups_parallel>");
    Renew();
    Display().Step(1);
    EXPECT_EQ(Threshold(), 0.25f);
    EXPECT_EQ(Threshold(1), 0.5f) << "and the groups that aren't shown";
    EXPECT_EQ(Gui().Width(), 754);
    EXPECT_FALSE(Device().GroupsParallel());
}

TEST_F(PatchStore, AnFxpOfTheSameNameWins) {
    Write("A.kvp", "0.5");
    WriteFxp("A.fxp", "sorl", 0.125f);
    Renew();
    EXPECT_EQ(Display().Items(), std::vector<std::u16string>{u"A"});
    EXPECT_EQ(Threshold(), 0.125f);
    EXPECT_EQ(Device().State().PatchName(), u"A");
}

TEST_F(PatchStore, TheFilesNameOverrulesTheNameInside) {
    Write("A.kvp", "0.5", "Quite another");
    Renew();
    EXPECT_EQ(Device().State().PatchName(), u"A");
    std::filesystem::rename(documents.Patch("A.kvp"), documents.Patch("B.kvp"));
    EXPECT_TRUE(Device().State().OpenPatch(Path("B.kvp")));
    EXPECT_EQ(Device().State().PatchName(), u"B");
    EXPECT_EQ(Display().Items(), std::vector<std::u16string>{u"A"}); // the list isn't looked up again
}

TEST_F(PatchStore, APatchOfAnotherPlugInIsRefusedWithAMessage) {
    Write("a.kvp", "0.5");
    WriteForeign("b.kvp");
    WriteFxp("c.fxp", "abcd", 0.1f);
    Renew();
    const auto before = Chunk(false);
    Choose(u"b");
    EXPECT_FALSE(Device().State().OpenPatch(Path("c.fxp")));
    EXPECT_EQ(dialogs.errors,
        (std::vector<std::u16string>{u"KAV Sorrel Limiter: Patch \"b.kvp\" was created for another plug-in.",
            u"KAV Sorrel Limiter: Patch \"c.fxp\" was created for another plug-in."}));
    EXPECT_EQ(Chunk(false), before);
    EXPECT_EQ(Device().State().CurrentPatch(), 0);
}

TEST_F(PatchStore, AForeignFirstPatchIsToldOfOncePerInstance) {
    WriteForeign("a.kvp");
    Renew(); // which reads the patch once for each group
    const std::u16string told = u"KAV Sorrel Limiter: Patch \"a.kvp\" was created for another plug-in.";
    EXPECT_EQ(dialogs.errors, std::vector<std::u16string>{told});
    Gui().CreateGUIWindow();
    EXPECT_EQ(dialogs.errors.size(), 1u);
    Renew();
    EXPECT_EQ(dialogs.errors, (std::vector<std::u16string>{told, told}));
}

TEST_F(PatchStore, ABoxThatWaitsIsShownByTheFirstWindowAndLoggedAtOnce) {
    WriteForeign("a.kvp");
    dialogs.errorsWait = true;
    const auto logged = Logged();
    Renew();
    EXPECT_EQ(dialogs.errors.size(), 0u) << "the host would wait";
    EXPECT_EQ(Logged(), logged + 1);
    Gui().CreateGUIWindow();
    EXPECT_EQ(dialogs.errors,
        std::vector<std::u16string>{u"KAV Sorrel Limiter: Patch \"a.kvp\" was created for another plug-in."});
    Gui().DestroyGUIWindow();
    Gui().CreateGUIWindow();
    EXPECT_EQ(dialogs.errors.size(), 1u);
    EXPECT_FALSE(Device().State().OpenPatch(Path("a.kvp"))); // what the user asks for is answered at once
    EXPECT_EQ(dialogs.errors.size(), 2u);
    EXPECT_EQ(Logged(), logged + 1);
}

TEST_F(PatchStore, AnFxpTooShortForItsHeadIsRefusedTheSameWay) {
    WriteText(documents.Patch("short.fxp"), std::string(59, 's'));
    EXPECT_FALSE(Device().State().OpenPatch(Path("short.fxp")));
    EXPECT_EQ(dialogs.errors.size(), 1u);
}

TEST_F(PatchStore, AnFxpThatHoldsATextChangesNothingAndSaysNothing) {
    std::string content(60, '\0');
    std::memcpy(content.data() + 16, "sorl", 4);
    const auto chunk = Chunk(true);
    content[58] = static_cast<char>(chunk.size() >> 8);
    content[59] = static_cast<char>(chunk.size());
    WriteText(documents.Patch("text.fxp"), content + chunk);
    EXPECT_FALSE(Device().State().OpenPatch(Path("text.fxp")));
    EXPECT_TRUE(dialogs.errors.empty());
    EXPECT_EQ(Chunk(false), SPlainPatch().Text(191));
}

TEST_F(PatchStore, AFileThatCannotBeReadChangesNothing) {
    Write("a.kvp", "0.5");
    Write("b.kvp", "0.25");
    WriteText(documents.Patch("c.kvp"), "");
    Renew();
    std::filesystem::remove(documents.Patch("b.kvp"));
    const auto before = Chunk(false);
    Choose(u"b");
    Choose(u"c");
    EXPECT_EQ(Chunk(false), before);
    EXPECT_EQ(Device().State().CurrentPatch(), 0);
    EXPECT_TRUE(dialogs.errors.empty());
}

TEST_F(PatchStore, PlacesOutsideTheListDoNothing) {
    const auto before = Chunk(false);
    for (const std::int32_t index : {-1, 1, INT_MAX, INT_MIN}) Gui().SelectPatch(index, true);
    EXPECT_EQ(Chunk(false), before);
    EXPECT_EQ(Device().State().CurrentPatch(), 0);
}

TEST_F(PatchStore, ThePresentPatchIsNotLoadedAgainUnlessForced) {
    Write("a.kvp", "0.5");
    Renew();
    Device().SetParam(33, 0.125f, 0);
    Gui().SelectPatch(0, false);
    EXPECT_EQ(Threshold(), 0.125f);
    Gui().SelectPatch(0, true);
    EXPECT_EQ(Threshold(), 0.5f);
}

TEST_F(PatchStore, NextAndPreviousEndAtTheEnds) {
    for (const char* file : {"a.kvp", "b.kvp", "c.kvp"})
        Write(file, file[0] == 'a' ? "0.1" : file[0] == 'b' ? "0.2" : "0.3");
    Renew();
    Display().Step(-1);
    EXPECT_EQ(Threshold(), 0.1f);
    Display().Step(1);
    EXPECT_EQ(Device().State().PatchName(), u"b");
    EXPECT_EQ(Threshold(), 0.2f);
    Display().Step(1);
    EXPECT_EQ(Threshold(), 0.3f);
    Device().SetParam(33, 0.9f, 0);
    Display().Step(1);
    EXPECT_EQ(Threshold(), 0.9f);
    EXPECT_EQ(Device().State().PatchName(), u"c");
    EXPECT_EQ(Device().State().CurrentPatch(), 2);
}

TEST_F(PatchStore, TwoFilesOfOneNameAreSelectedByTheirPlace) {
    Write("a.kvp", "0.5");
    Write("a.KVP", "0.25");
    Renew();
    if (Display().ItemCount() < 2) GTEST_SKIP() << "this system's names know no case";
    Gui().SelectPatch(1, false);
    EXPECT_EQ(Device().State().CurrentPatch(), 1);
    EXPECT_EQ(Threshold(), 0.5f); // a path has but one ending
}

TEST_F(PatchStore, SavingAsksProposesAndRenewsTheList) {
    Write("a.kvp", "0.5");
    Renew();
    Write("other.kvp", "0.5");
    Device().SetParam(33, 0.125f, 0);
    dialogs.answer = Path("New one");
    EXPECT_TRUE(Device().State().SavePatch({}, 0));
    ASSERT_EQ(dialogs.questions.size(), 1u);
    EXPECT_EQ(dialogs.questions[0].filter, u"KAV Preset File||*.kvp");
    EXPECT_EQ(dialogs.questions[0].name, u"USER_a");
    EXPECT_EQ(dialogs.questions[0].folder, PatchFolder());
    EXPECT_EQ(Display().Items(), (std::vector<std::u16string>{u"New one", u"a", u"other"}));
    EXPECT_EQ(Device().State().PatchName(), u"New one");
    EXPECT_EQ(Device().State().CurrentPatch(), 0);
    SPlainPatch plain;
    plain.name = "a"; // the name that was shown when the state was written
    for (int g = 0; g < 4; ++g) plain.values[33 + 100 * g] = g == 0 ? 0.125 : 0.5;
    EXPECT_EQ(ReadText(documents.Patch("New one.kvp")), plain.Text(0) + '\0');
}

TEST_F(PatchStore, SavingMakesTheFolder) {
    EXPECT_TRUE(Device().State().SavePatch(Path("first.kvp"), 0));
    EXPECT_EQ(Display().Items(), std::vector<std::u16string>{u"first"});
}

TEST_F(PatchStore, ACancelledQuestionEndsIt) {
    EXPECT_FALSE(Device().State().SavePatch({}, 0));
    EXPECT_FALSE(Device().State().OpenPatch({}));
    ASSERT_EQ(dialogs.questions.size(), 2u);
    EXPECT_EQ(dialogs.questions[1].filter,
        u"Preset File||*.fxp;*.kvp|||VST Preset File||*.fxp|||KAV Preset File||*.kvp");
    EXPECT_FALSE(std::filesystem::exists(documents.Patch("")));
}

TEST_F(PatchStore, SaveAsDefaultReplacesTheFirstPatchWithoutAQuestion) {
    Write("- Full Reset -.kvp", "0.25");
    Renew();
    Device().SetParam(33, 0.75f, 0);
    Device().Simd() = true;
    EXPECT_TRUE(Device().State().SaveAsDefault());
    EXPECT_TRUE(dialogs.questions.empty());
    Renew();
    EXPECT_EQ(Threshold(0), 0.75f);
    EXPECT_EQ(Threshold(1), 0.25f); // it speaks of all groups
    EXPECT_TRUE(Device().Simd());
}

TEST_F(PatchStore, TheDefaultHoldsParametersMacrosAndSettingsAndNothingElse) {
    Device().State().SetPatchName(u"As it was called");
    Device().SetParam(137, 0.25f, 0);
    Device().AssignMacro(3, 133, 0.75f);
    Device().SetHostBypass(true);
    Gui().SetRouting("<kav_input_routing>\r\n\t<map>5,-1</map>\r\n</kav_input_routing>", 2);
    Widget<CFxBtn>(1).SetText(u"Drums");
    Widget<CMacroBtn>(0).SetText(u"Push");
    Gui().ResizeTo(900, 660);
    Device().Simd() = true;
    Device().GroupsParallel() = true;
    auto& settings = Device().AutoGain();
    settings.filter = 0;
    settings.suspendLevel = -30.5;
    settings.rmsTime = 600.0;
    settings.tolerance = 2.0;
    settings.maximumGain = 3.0;
    settings.maximumCut = 4.0;
    EXPECT_TRUE(Device().State().SaveAsDefault());
    SPlainPatch plain;
    plain.name = "As it was called";
    plain.values[137] = 0.25;
    plain.macros[3] = {{133, 0.75}};
    plain.hostBypass = 1;
    plain.macroNames[0] = "Push";
    plain.width = 900;
    plain.simd = 1;
    plain.parallel = 1;
    plain.filter = 0;
    plain.suspend = -30.5;
    plain.rms = 600;
    plain.tolerance = 2;
    plain.gainMax = 3;
    plain.gainMin = 4;
    const auto file = ReadText(documents.Patch("- Full Reset -.kvp"));
    EXPECT_EQ(file, plain.Text(188) + '\0');
    for (const char* const element : {"<fx_names", "<kav_input_routing", "<fx>"})
        EXPECT_EQ(file.find(element), std::string::npos) << element;
    EXPECT_EQ(Device().State().PatchName(), u"- Full Reset -");
    EXPECT_EQ(Device().State().CurrentPatch(), 0);

    Renew(); // a new instance has all of that, and neither the routing nor the groups' names
    plain.name = "- Full Reset -";
    EXPECT_EQ(Chunk(false), plain.Text(191));
}

TEST_F(PatchStore, AnOpenedFileBringsNoSettings) {
    Write("b.kvp", "0.25", "x",
        "<gui_width>900</gui_width>\r\n<simd>1</simd>\r\n<groups_parallel>1</groups_parallel>\r\n"
        "<agc_filter>0</agc_filter>\r\n<agc_suspend>-30</agc_suspend>\r\n<agc_rms>600</agc_rms>\r\n"
        "<agc_tolerance>2</agc_tolerance>\r\n<agc_gain_max>3</agc_gain_max>\r\n"
        "<agc_gain_min>4</agc_gain_min>\r\n");
    EXPECT_TRUE(Device().State().OpenPatch(Path("b.kvp")));
    SPlainPatch plain;
    plain.name = "b";
    plain.values[33] = 0.25;
    EXPECT_EQ(Chunk(false), plain.Text(191));
}

TEST_F(PatchStore, AnOpenedFileBringsTheNamesAndRoutingsThatItHolds) {
    Write("b.kvp", "0.25", "x",
        "<fx_names>Drums</fx_names>\r\n<kav_input_routing>\r\n\t<fx>2</fx>\r\n<map>5,-1</"
        "map></kav_input_routing>\r\n");
    EXPECT_TRUE(Device().State().OpenPatch(Path("b.kvp")));
    EXPECT_EQ(Widget<CFxBtn>(0).Text(), u"Drums");
    EXPECT_EQ(Gui().GetRouting(2), "<kav_input_routing>\r\n\t<map>5,-1</map></kav_input_routing>");
}

TEST_F(PatchStore, AFileThatTheUserSavedLeavesRoutingsNamesAndSettingsAsTheyAre) {
    EXPECT_TRUE(Device().State().SavePatch(Path("mine.kvp"), 0));
    SPlainPatch plain;
    plain.routings[2] = "<kav_input_routing>\r\n\t<map>5,-1</map>\r\n</kav_input_routing>";
    Gui().SetRouting(plain.routings[2], 2);
    plain.groupNames[1] = "Drums";
    Widget<CFxBtn>(1).SetText(u"Drums");
    plain.width = 900;
    Gui().ResizeTo(900, 660);
    plain.simd = plain.parallel = 1;
    Device().Simd() = true;
    Device().GroupsParallel() = true;
    plain.filter = 0;
    Device().AutoGain().filter = 0;
    EXPECT_TRUE(Device().State().OpenPatch(Path("mine.kvp")));
    plain.name = "mine";
    EXPECT_EQ(Chunk(false), plain.Text(191));
}

TEST_F(PatchStore, OpeningTakesTwoExtensionsOnly) {
    Write("a.txt", "0.5");
    Write("b.KVP", "0.25");
    EXPECT_FALSE(Device().State().OpenPatch(Path("a.txt")));
    dialogs.answer = Path("b.KVP");
    EXPECT_TRUE(Device().State().OpenPatch({}));
    EXPECT_EQ(Threshold(), 0.25f);
    EXPECT_FALSE(Device().State().OpenPatch(Path("missing.kvp")));
}

TEST_F(PatchStore, WithoutAFolderForDocumentsNothingIsFoundOrWritten) {
    Utils::UseDocumentsFolder(u"");
    Renew();
    EXPECT_EQ(Display().Items(), std::vector<std::u16string>{u"Default"});
    EXPECT_EQ(Device().State().PatchName(), u"Default"); // none was loaded
    EXPECT_EQ(Device().State().CurrentPatch(), -1);
    EXPECT_FALSE(Device().State().SaveAsDefault());
    EXPECT_EQ(Gui().GetRouting(0), PlainDefaultRouting());
    EXPECT_EQ(RoutingNames(), std::vector<std::u16string>{u"Not found"});
    EXPECT_EQ(ReadRoutingFile(u"any"), "");
}

TEST_F(PatchStore, TheHostNamesThePresentPatchAndReadsTheList) {
    for (const char* file : {"a.kvp", "b.kvp", "A patch with a name of more than 24 bytes.kvp"})
        Write(file, "0.5");
    Renew();
    EXPECT_EQ(effect->Text(VST::effGetProgramName, 0, 24), "A patch with a name of ");
    EXPECT_EQ(effect->Text(VST::effGetProgramNameIndexed, 1, 24), "a");
    EXPECT_EQ(effect->Text(VST::effGetProgramNameIndexed, 3, 24), "");
    std::string name = "b";
    effect->Dispatch(VST::effSetProgramName, 0, 0, name.data());
    EXPECT_EQ(effect->Text(VST::effGetProgramName, 0, 24), "b");
    EXPECT_EQ(Device().State().CurrentPatch(), 2);
    name = "none of the list";
    effect->Dispatch(VST::effSetProgramName, 0, 0, name.data());
    EXPECT_EQ(Device().State().CurrentPatch(), 2);
    effect->Dispatch(VST::effSetProgramName, 0, 0, nullptr);
    EXPECT_EQ(effect->Text(VST::effGetProgramName, 0, 24), "none of the list");
}

TEST_F(PatchStore, AnEmptyFileNamedDefaultGivesTheFixedText) {
    WriteText(documents.Patch("Default.kvp"), "");
    WriteText(documents.Patch("default.txt"), "");
    Renew();
    EXPECT_EQ(Display().Items(), std::vector<std::u16string>{u"Default"});
    EXPECT_EQ(Device().State().PatchName(), u"No KVP patches found!");
}

TEST_F(PatchStore, TheListHasNoNameBelow0) {
    EXPECT_EQ(Device().State().PatchNameAt(-1), u"");
    EXPECT_EQ(Device().State().PatchNameAt(0), u"Default");
    EXPECT_EQ(Device().State().PatchNameAt(1), u"");
}

TEST_F(PatchStore, AFileSavedElsewhereGivesThePatchItsNameAndIsNotInTheList) {
    Write("a.kvp", "0.5");
    Renew();
    const auto elsewhere = ScratchFolder() / "elsewhere.kvp";
    EXPECT_TRUE(Device().State().SavePatch(Utils::FromSystemPath(elsewhere), 0));
    EXPECT_TRUE(std::filesystem::exists(elsewhere));
    EXPECT_EQ(Device().State().PatchName(), u"elsewhere");
    EXPECT_EQ(Display().Items(), std::vector<std::u16string>{u"a"});
    EXPECT_EQ(Device().State().CurrentPatch(), 0);
    EXPECT_TRUE(Device().State().OpenPatch(Utils::FromSystemPath(elsewhere)));
}

TEST_F(PatchStore, ANameWithADotIsNoExtension) {
    for (const char* const name : {"5.1 mix", "6.0.kvp", "7.1.KVP"})
        EXPECT_TRUE(Device().State().SavePatch(Path(name), 0));
    EXPECT_EQ(Display().Items(), (std::vector<std::u16string>{u"5.1 mix", u"6.0", u"7.1"}));
    EXPECT_EQ(Device().State().PatchName(), u"7.1");
    EXPECT_EQ(Device().State().CurrentPatch(), 2);
}

TEST_F(PatchStore, OpeningAsksInTheFolderOfPatchesAndProposesNoName) {
    Device().State().OpenPatch({});
    ASSERT_EQ(dialogs.questions.size(), 1u);
    EXPECT_EQ(dialogs.questions[0].folder, PatchFolder());
    EXPECT_EQ(dialogs.questions[0].name, u"");
}
