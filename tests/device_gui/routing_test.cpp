#include "device/value_flags.h"
#include "device_gui/channel_button.h"
#include "device_gui/fx_button.h"
#include "device_gui/routing_display.h"
#include "routing/routing_record.h"
#include "tests/support/state_fixture.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

class Routings : public State {
protected:
    std::u16string Shown() { return Widget<CRouting>().Text(); }
    void Choose(std::u16string_view name) {
        auto& display = Widget<CRouting>();
        const auto& items = display.Items();
        display.SetItem(
            static_cast<std::int32_t>(std::find(items.begin(), items.end(), name) - items.begin()), true);
    }
};

std::string Document(const std::string& name, const std::string& map, const std::string& labels) {
    return "<kav_input_routing>\r\n\t<name>" + name + "</name>\r\n\t<map>" + map + "</map>\r\n\t<ch_names>" +
           labels + "</ch_names>\r\n</kav_input_routing>";
}

const std::string Surround = "0,-1|*|1,-1|*|2,-1|*|3,-1|*|4,-1|*|5,-1";

} // namespace

TEST_F(Routings, AFreshInstanceShowsItsOwnOfTwoEntries) {
    for (int g = 0; g < 4; ++g) EXPECT_EQ(Gui().GetRouting(g), PlainDefaultRouting());
    EXPECT_EQ(Gui().GetRouting(-1), PlainDefaultRouting());
    EXPECT_EQ(Shown(), u"Not found");
    EXPECT_EQ(Widget<CRouting>().Items(), std::vector<std::u16string>{u"Not found"});
    for (std::size_t n = 0; n < 16; ++n) EXPECT_EQ(Widget<CChannelBtn>(n).IsVisible(), n < 2) << n;
    EXPECT_EQ(Widget<CChannelBtn>(0).Text(), u"L");
    EXPECT_EQ(Widget<CChannelBtn>(1).Text(), u"R");
    EXPECT_EQ(Widget<CChannelBtn>(2).Text(), u"");
}

TEST_F(Routings, LabelsAndEntriesFollowTheCurrentGroup) {
    Gui().SetRouting(Document("5.1", Surround, "L|*|R|*|C"), 1);
    EXPECT_EQ(Shown(), u"Not found");
    Device().SetCurrentGroup(1);
    Device().State().ApplyRouting();
    EXPECT_EQ(Shown(), u"5.1");
    EXPECT_EQ(Widget<CChannelBtn>(2).Text(), u"C");
    EXPECT_EQ(Widget<CChannelBtn>(3).Text(), u"");
    EXPECT_TRUE(Widget<CChannelBtn>(5).IsVisible());
    EXPECT_FALSE(Widget<CChannelBtn>(6).IsVisible());
}

TEST_F(Routings, ChannelsThatARoutingDoesNotHaveLeaveTheCurrentGroup) {
    for (int n = 1; n <= 16; ++n) {
        Device().SetParam(n, 1.0f, 0);
        Device().SetParam(n + 100, 1.0f, 0);
    }
    host.calls.clear();
    Gui().SetRouting(Document("two", "5,-1|*|6,-1", ""), -1);
    for (int n = 1; n <= 16; ++n) {
        EXPECT_EQ(Device().GetParam(n, 0), n <= 2 ? 1.0f : 0.0f) << n;
        EXPECT_EQ(Device().GetParam(n + 100, 0), 1.0f) << n;
    }
    EXPECT_EQ(host.Count(VST::audioMasterAutomate), 14u);
}

TEST_F(Routings, AnEmptyTextAndAGroupThatIsNotThereDoNothing) {
    Gui().SetRouting("", 0);
    Gui().SetRouting("<map>1,-1</map>", 4);
    for (int g = 0; g < 4; ++g) EXPECT_EQ(Gui().GetRouting(g), PlainDefaultRouting());
}

TEST_F(Routings, BlocksOfAPatchGoToTheirGroups) {
    Read("<kav_input_routing>\r\n\t<fx>2</fx>\r\n\t<map>7,-1</map>\r\n</kav_input_routing>\r\n"
         "<kav_input_routing><map>8,-1</map></kav_input_routing>"
         "<kav_input_routing><fx>9</fx><map>9,-1</map></kav_input_routing>"
         "<kav_input_routing><fx>-1</fx><map>9,-1</map></kav_input_routing>"
         "<kav_input_routing><fx>1</fx><map>6,-1</map>");
    EXPECT_EQ(Gui().GetRouting(2), "<kav_input_routing>\r\n\t\t<map>7,-1</map>\r\n</kav_input_routing>");
    for (const int g : {0, 1, 3}) EXPECT_EQ(Gui().GetRouting(g), PlainDefaultRouting());
}

TEST_F(Routings, APatchWithoutAnyKeepsThem) {
    Gui().SetRouting(Document("mine", "3,-1", "X"), 0);
    const auto before = Gui().GetRouting(0);
    const auto text = Device().State().PatchText(0);
    EXPECT_EQ(text.find("<kav_input_routing>"), std::string::npos);
    EXPECT_TRUE(Gui().ReadPatch(text, 191));
    EXPECT_EQ(Gui().GetRouting(0), before);
}

TEST_F(Routings, TheUsersComeInOrderWithNotFoundBehindThem) {
    for (const char* name : {"b.kvt", "A.kvt", "a2.kvt", "B2.KVT", "c.kvp", "none"})
        WriteText(documents.Routing(name), Document("inside", "0,1", "M"));
    Renew();
    EXPECT_EQ(
        Widget<CRouting>().Items(), (std::vector<std::u16string>{u"A", u"B2", u"a2", u"b", u"Not found"}));
    EXPECT_EQ(Shown(), u"A"); // the first of the list, under the name of its file
    for (int g = 0; g < 4; ++g) EXPECT_EQ(Gui().GetRouting(g), Document("A", "0,1", "M")) << g;
}

TEST_F(Routings, SelectingOneGivesItToTheCurrentGroup) {
    WriteText(documents.Routing("Stereo.kvt"), Document("Stereo", "0,1", "LR"));
    Renew();
    Choose(u"Not found");
    EXPECT_EQ(Gui().GetRouting(0), PlainDefaultRouting());
    EXPECT_EQ(Gui().GetRouting(1), Document("Stereo", "0,1", "LR"));
    Device().State().SelectRouting(1, true);
    for (int g = 0; g < 4; ++g) EXPECT_EQ(Gui().GetRouting(g), PlainDefaultRouting());
}

TEST_F(Routings, OneThatIsNotThereOrCannotBeReadDoesNothing) {
    WriteText(documents.Routing("Gone.kvt"), Document("Gone", "0,1", ""));
    WriteText(documents.Routing("Empty.kvt"), "");
    Renew();
    std::filesystem::remove(documents.Routing("Gone.kvt"));
    const auto before = Chunk(false);
    for (const std::int32_t index : {0, 1, -1, 3, 1000}) Device().State().SelectRouting(index, true);
    EXPECT_EQ(Chunk(false), before);
    Choose(u"Not found");
    EXPECT_EQ(Gui().GetRouting(0), PlainDefaultRouting());
}

TEST_F(Routings, AFileNamedNotFoundIsReadLikeAnyOther) {
    WriteText(documents.Routing("Not found.kvt"), Document("x", "4,-1", "E"));
    EXPECT_EQ(ReadRoutingFile(u"Not found"), Document("Not found", "4,-1", "E"));
}

TEST_F(Routings, OneForMoreChannelsThanTheHostGivesIsPassedOver) {
    WriteText(documents.Routing("5.1.kvt"), Document("5.1", Surround, ""));
    WriteText(documents.Routing("Mono.kvt"), Document("Mono", "0,-1", ""));
    Renew();
    auto& display = Widget<CRouting>();
    EXPECT_FALSE(display.IsItemEnabled(0, {}));
    EXPECT_TRUE(display.IsItemEnabled(1, {}));
    EXPECT_TRUE(display.IsItemEnabled(2, {}));
    EXPECT_FALSE(display.IsItemEnabled(-1, {}));
    EXPECT_FALSE(display.IsItemEnabled(3, {}));
    display.Step(1);
    EXPECT_EQ(Shown(), u"Mono");
    display.Step(-1); // to the one that doesn't fit: nothing happens
    EXPECT_EQ(Shown(), u"Mono");
    ASSERT_TRUE(effect->SetChannels(6, 6));
    EXPECT_TRUE(display.IsItemEnabled(0, {}));
    display.Step(-1);
    EXPECT_EQ(Shown(), u"5.1");
}

TEST_F(Routings, SavingWritesTheChannelsThatAreOnAndSelectsTheFile) {
    Gui().SetRouting(Document("four", "0,-1|*|1,-1|*|2,-1|*|3,-1", "L|*|R|*|Ls|*|Rs"), -1);
    for (const std::size_t n : {0u, 1u, 3u}) Widget<CChannelBtn>(n).SetValue(1.0f, false);
    dialogs.answer = Utils::FromSystemPath(documents.Routing("My \xC3\xA4 3"));
    Gui().SaveRouting({});
    ASSERT_EQ(dialogs.questions.size(), 1u);
    EXPECT_EQ(dialogs.questions[0].filter, u"KAV Routing File||*.kvt");
    EXPECT_EQ(dialogs.questions[0].name, u"four (User)");
    EXPECT_EQ(dialogs.questions[0].folder, RoutingFolder());
    const std::string expected =
        "<kav_input_routing>\r\n\t<kvt_version>1.0</kvt_version>\r\n\t<name>My \xC3\xA4 3</name>\r\n"
        "\t<map>0,-1|*|1,-1|*|3,-1</map>\r\n\t<ch_names>L|*|R|*|Rs</ch_names>\r\n</kav_input_routing>";
    EXPECT_EQ(ReadText(documents.Routing("My \xC3\xA4 3.kvt")), expected);
    EXPECT_EQ(Gui().GetRouting(0), expected);
    EXPECT_EQ(Shown(), u"My \u00E4 3");
}

TEST_F(Routings, ANameWithADotIsNoExtension) {
    for (const auto* const name : {"5.1 (User)", "5.1 (User).kvt", "6.0.KVT"}) {
        dialogs.answer = Utils::FromSystemPath(documents.Routing(name));
        Gui().SaveRouting({});
    }
    EXPECT_EQ(Widget<CRouting>().Items(), (std::vector<std::u16string>{u"5.1 (User)", u"6.0", u"Not found"}));
    EXPECT_EQ(Shown(), u"6.0");
}

TEST_F(Routings, ACancelledSaveWritesNothing) {
    Gui().SaveRouting({});
    EXPECT_EQ(dialogs.questions.size(), 1u);
    EXPECT_FALSE(std::filesystem::exists(documents.Routing("")));
}

TEST_F(Routings, OldPatchesNameALayoutByItsPlace) {
    WriteText(documents.Routing("Legacy/LCR.kvt"), Document("LCR", "0,-1|*|1,-1|*|2,-1", "L|*|C|*|R"));
    WriteText(documents.Routing("Legacy/Mid/Side.kvt"), Document("Mid/Side", "0,-1|*|1,-1", "M|*|S"));
    Read("<multi_fx>true</multi_fx>\r\n<param tag=\"138\" namew=\"ToolInp\" >5.000000</param>\r\n"
         "<param tag=\"238\" namew=\"ToolInp (3)\" >3.9</param>\r\n"
         "<param tag=\"338\" namew=\"ToolInp\" >44</param>\r\n<param tag=\"338\" namew=\"ToolInp\" "
         ">-1</param>\r\n"
         "<param tag=\"338\" namew=\"ToolInp\" >nan</param>\r\n<param tag=\"338\" namew=\"ToolInp\" "
         ">7</param>\r\n");
    EXPECT_EQ(Gui().GetRouting(0), PlainDefaultRouting());
    EXPECT_EQ(Gui().GetRouting(1),
        "<kav_input_routing>\r\n\t" + Document("LCR", "0,-1|*|1,-1|*|2,-1", "L|*|C|*|R").substr(21));
    EXPECT_EQ(Gui().GetRouting(2),
        "<kav_input_routing>\r\n\t" + Document("Mid/Side", "0,-1|*|1,-1", "M|*|S").substr(21));
    EXPECT_EQ(Gui().GetRouting(3), PlainDefaultRouting()); // no such place, and a file that is missing
}

TEST_F(Routings, LabelsAreUtf8AndGoToHiddenButtonsToo) {
    Gui().SetRouting(Document("\xC3\x9C", "0,-1", "\xC3\xA4|*||*|x"), 0);
    EXPECT_EQ(Shown(), u"\u00DC");
    EXPECT_EQ(Widget<CChannelBtn>(0).Text(), u"\u00E4");
    EXPECT_EQ(Widget<CChannelBtn>(1).Text(), u"");
    EXPECT_EQ(Widget<CChannelBtn>(2).Text(), u"x");
    EXPECT_FALSE(Widget<CChannelBtn>(2).IsVisible());
}

TEST_F(Routings, AnEmptyDocumentLeavesTheChannelsAsTheyAre) {
    Device().SetParam(9, 1.0f, 0);
    Device().SetRouting("", 0);
    host.calls.clear();
    Device().State().ApplyRouting();
    EXPECT_EQ(Shown(), u"");
    EXPECT_EQ(Widget<CChannelBtn>(0).Text(), u"L");
    EXPECT_TRUE(Widget<CChannelBtn>(1).IsVisible());
    EXPECT_EQ(Device().GetParam(9, 0), 1.0f);
    EXPECT_TRUE(host.calls.empty());
}

TEST_F(Routings, OneOfMoreThanSixteenEntriesShowsSixteen) {
    std::string map = "0,-1";
    for (int n = 1; n < 20; ++n) map += "|*|" + std::to_string(n) + ",-1";
    for (int n = 1; n <= 16; ++n) Device().SetParam(n, 1.0f, 0);
    Gui().SetRouting(Document("twenty", map, ""), 0);
    for (std::size_t n = 0; n < 16; ++n) {
        EXPECT_TRUE(Widget<CChannelBtn>(n).IsVisible()) << n;
        EXPECT_EQ(Device().GetParam(static_cast<std::int32_t>(n) + 1, 0), 1.0f) << n;
    }
}

TEST_F(Routings, SavingChangesTheCurrentGroupAlone) {
    Widget<CFxBtn>(2).SetValue(1.0f, false);
    Gui().OnFrame(16);
    Widget<CChannelBtn>(1).SetValue(1.0f, false);
    Gui().SaveRouting(Utils::FromSystemPath(documents.Routing("Right.kvt")));
    EXPECT_TRUE(dialogs.questions.empty());
    EXPECT_NE(Gui().GetRouting(2).find("<map>1,-1</map>"), std::string::npos);
    for (const int g : {0, 1, 3}) EXPECT_EQ(Gui().GetRouting(g), PlainDefaultRouting()) << g;
    EXPECT_EQ(Widget<CRouting>().Items(), (std::vector<std::u16string>{u"Right", u"Not found"}));
}

TEST_F(Routings, ChannelsLeaveTheGroupThatIsShown) {
    Widget<CFxBtn>(2).SetValue(1.0f, false);
    for (int g = 0; g < 4; ++g) {
        for (int n = 1; n <= 16; ++n) Device().SetParam(n + 100 * g, 1.0f, 0);
    }
    Gui().SetRouting(Document("one", "0,-1", ""), -1);
    for (int g = 0; g < 4; ++g) {
        for (int n = 1; n <= 16; ++n)
            EXPECT_EQ(Device().GetParam(n + 100 * g, 0), g == 2 && n > 1 ? 0.0f : 1.0f) << n << " of " << g;
    }
}

TEST_F(Routings, TheListIsJudgedAnewWhenItChanges) {
    WriteText(documents.Routing("Quad.kvt"), Document("Quad", "0,-1|*|1,-1|*|2,-1|*|3,-1", ""));
    Renew();
    auto& display = Widget<CRouting>();
    EXPECT_FALSE(display.IsItemEnabled(0, {}));
    EXPECT_TRUE(display.IsItemEnabled(1, {}));
    for (const char* const name : {"Aa.kvt", "Zz.kvt"})
        Gui().SaveRouting(Utils::FromSystemPath(documents.Routing(name)));
    ASSERT_EQ(display.Items(), (std::vector<std::u16string>{u"Aa", u"Quad", u"Zz", u"Not found"}));
    EXPECT_TRUE(display.IsItemEnabled(0, {}));
    EXPECT_FALSE(display.IsItemEnabled(1, {}));
    EXPECT_TRUE(display.IsItemEnabled(2, {}));
    EXPECT_TRUE(display.IsItemEnabled(3, {}));
}

TEST_F(Routings, OneSavedElsewhereIsNotSelected) {
    Gui().SetRouting(Document("Mine", "0,-1", ""), 0);
    const auto before = Gui().GetRouting(0);
    const auto elsewhere = ScratchFolder() / "elsewhere.kvt";
    Gui().SaveRouting(Utils::FromSystemPath(elsewhere));
    EXPECT_TRUE(std::filesystem::exists(elsewhere));
    EXPECT_EQ(Gui().GetRouting(0), before);
    EXPECT_EQ(Shown(), u"Mine");
}
