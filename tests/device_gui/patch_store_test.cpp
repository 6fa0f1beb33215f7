// Patches as files of a user.

#include "device_gui/patch_display.h"
#include "tests/support/state_fixture.h"

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
    EXPECT_EQ(Gui().PatchName(), u"No KVP patches found!");
    EXPECT_EQ(Gui().CurrentPatch(), 0);
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
    EXPECT_EQ(Gui().PatchName(), u"- Full Reset -");
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

TEST_F(PatchStore, AnFxpOfTheSameNameWins) {
    Write("A.kvp", "0.5");
    WriteFxp("A.fxp", "sorl", 0.125f);
    Renew();
    EXPECT_EQ(Display().Items(), std::vector<std::u16string>{u"A"});
    EXPECT_EQ(Threshold(), 0.125f);
    EXPECT_EQ(Gui().PatchName(), u"A");
}

TEST_F(PatchStore, TheFilesNameOverrulesTheNameInside) {
    Write("A.kvp", "0.5", "Quite another");
    Renew();
    EXPECT_EQ(Gui().PatchName(), u"A");
    std::filesystem::rename(documents.Patch("A.kvp"), documents.Patch("B.kvp"));
    EXPECT_TRUE(Gui().OpenPatch(Path("B.kvp")));
    EXPECT_EQ(Gui().PatchName(), u"B");
    EXPECT_EQ(Display().Items(), std::vector<std::u16string>{u"A"}); // the list isn't looked up again
}

TEST_F(PatchStore, APatchOfAnotherPlugInIsRefusedWithAMessage) {
    Write("a.kvp", "0.5");
    WriteText(documents.Patch("b.kvp"),
        "<patch_format>textual</patch_format>\r\n<plugin_id>1</plugin_id>\r\n<param tag=\"33\" >0.1</param>");
    WriteFxp("c.fxp", "abcd", 0.1f);
    Renew();
    const auto before = Chunk(false);
    Choose(u"b");
    EXPECT_FALSE(Gui().OpenPatch(Path("c.fxp")));
    EXPECT_EQ(dialogs.errors,
        (std::vector<std::u16string>{u"KAV Sorrel Limiter: Patch \"b.kvp\" was created for another plug-in.",
            u"KAV Sorrel Limiter: Patch \"c.fxp\" was created for another plug-in."}));
    EXPECT_EQ(Chunk(false), before);
    EXPECT_EQ(Gui().CurrentPatch(), 0);
}

TEST_F(PatchStore, AnFxpTooShortForItsHeadIsRefusedTheSameWay) {
    WriteText(documents.Patch("short.fxp"), std::string(59, 's'));
    EXPECT_FALSE(Gui().OpenPatch(Path("short.fxp")));
    EXPECT_EQ(dialogs.errors.size(), 1u);
}

TEST_F(PatchStore, AnFxpThatHoldsATextChangesNothingAndSaysNothing) {
    std::string content(60, '\0');
    std::memcpy(content.data() + 16, "sorl", 4);
    const auto chunk = Chunk(true);
    content[58] = static_cast<char>(chunk.size() >> 8);
    content[59] = static_cast<char>(chunk.size());
    WriteText(documents.Patch("text.fxp"), content + chunk);
    EXPECT_FALSE(Gui().OpenPatch(Path("text.fxp")));
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
    EXPECT_EQ(Gui().CurrentPatch(), 0);
    EXPECT_TRUE(dialogs.errors.empty());
}

TEST_F(PatchStore, PlacesOutsideTheListDoNothing) {
    const auto before = Chunk(false);
    for (const std::int32_t index : {-1, 1, INT_MAX, INT_MIN}) Gui().SelectPatch(index, true);
    EXPECT_EQ(Chunk(false), before);
    EXPECT_EQ(Gui().CurrentPatch(), 0);
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
    EXPECT_EQ(Gui().PatchName(), u"b");
    EXPECT_EQ(Threshold(), 0.2f);
    Display().Step(1);
    EXPECT_EQ(Threshold(), 0.3f);
    Device().SetParam(33, 0.9f, 0);
    Display().Step(1);
    EXPECT_EQ(Threshold(), 0.9f);
    EXPECT_EQ(Gui().PatchName(), u"c");
    EXPECT_EQ(Gui().CurrentPatch(), 2);
}

TEST_F(PatchStore, TwoFilesOfOneNameAreSelectedByTheirPlace) {
    Write("a.kvp", "0.5");
    Write("a.KVP", "0.25");
    Renew();
    if (Display().ItemCount() < 2) GTEST_SKIP() << "this system's names know no case";
    Gui().SelectPatch(1, false);
    EXPECT_EQ(Gui().CurrentPatch(), 1);
    EXPECT_EQ(Threshold(), 0.5f); // a path has but one ending
}

TEST_F(PatchStore, SavingAsksProposesAndRenewsTheList) {
    Write("a.kvp", "0.5");
    Renew();
    Write("other.kvp", "0.5");
    Device().SetParam(33, 0.125f, 0);
    dialogs.answer = Path("New one");
    EXPECT_TRUE(Gui().SavePatch({}, 0));
    ASSERT_EQ(dialogs.questions.size(), 1u);
    EXPECT_EQ(dialogs.questions[0].filter, u"KAV Preset File||*.kvp");
    EXPECT_EQ(dialogs.questions[0].name, u"USER_a");
    EXPECT_EQ(dialogs.questions[0].folder, PatchFolder());
    EXPECT_EQ(Display().Items(), (std::vector<std::u16string>{u"New one", u"a", u"other"}));
    EXPECT_EQ(Gui().PatchName(), u"New one");
    EXPECT_EQ(Gui().CurrentPatch(), 0);
    SPlainPatch plain;
    plain.name = "a"; // the name that was shown when the state was written
    for (int g = 0; g < 4; ++g) plain.values[33 + 100 * g] = g == 0 ? 0.125 : 0.5;
    EXPECT_EQ(ReadText(documents.Patch("New one.kvp")), plain.Text(0) + '\0');
}

TEST_F(PatchStore, SavingMakesTheFolder) {
    EXPECT_TRUE(Gui().SavePatch(Path("first.kvp"), 0));
    EXPECT_EQ(Display().Items(), std::vector<std::u16string>{u"first"});
}

TEST_F(PatchStore, ACancelledQuestionEndsIt) {
    EXPECT_FALSE(Gui().SavePatch({}, 0));
    EXPECT_FALSE(Gui().OpenPatch({}));
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
    EXPECT_TRUE(Gui().SaveAsDefault());
    EXPECT_TRUE(dialogs.questions.empty());
    Renew();
    EXPECT_EQ(Threshold(0), 0.75f);
    EXPECT_EQ(Threshold(1), 0.25f); // it speaks of all groups
    EXPECT_TRUE(Device().Simd());
}

TEST_F(PatchStore, OpeningTakesTwoExtensionsOnly) {
    Write("a.txt", "0.5");
    Write("b.KVP", "0.25");
    EXPECT_FALSE(Gui().OpenPatch(Path("a.txt")));
    dialogs.answer = Path("b.KVP");
    EXPECT_TRUE(Gui().OpenPatch({}));
    EXPECT_EQ(Threshold(), 0.25f);
    EXPECT_FALSE(Gui().OpenPatch(Path("missing.kvp")));
}

TEST_F(PatchStore, WithoutAFolderForDocumentsNothingIsFoundOrWritten) {
    Utils::UseDocumentsFolder(u"");
    Renew();
    EXPECT_EQ(Display().Items(), std::vector<std::u16string>{u"Default"});
    EXPECT_EQ(Gui().PatchName(), u"Default"); // none was loaded
    EXPECT_EQ(Gui().CurrentPatch(), -1);
    EXPECT_FALSE(Gui().SaveAsDefault());
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
    EXPECT_EQ(Gui().CurrentPatch(), 2);
    name = "none of the list";
    effect->Dispatch(VST::effSetProgramName, 0, 0, name.data());
    EXPECT_EQ(Gui().CurrentPatch(), 2);
    effect->Dispatch(VST::effSetProgramName, 0, 0, nullptr);
    EXPECT_EQ(effect->Text(VST::effGetProgramName, 0, 24), "none of the list");
}
