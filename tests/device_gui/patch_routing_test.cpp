// The routing blocks of a patch: which of them a reader takes, and for which group.

#include "device/value_flags.h"
#include "device_gui/channel_button.h"
#include "device_gui/routing_display.h"
#include "tests/support/state_fixture.h"

using namespace KAV;
using namespace KAV::Tests;

namespace {

class PatchRoutings : public State {
protected:
    using Four = std::array<std::string, 4>;

    Four All() {
        return {Gui().GetRouting(0), Gui().GetRouting(1), Gui().GetRouting(2), Gui().GetRouting(3)};
    }
};

const std::string Default = PlainDefaultRouting();

/// A block as a writer makes it: `group` is the text of its element, with its end of the line.
std::string Block(const std::string& group, const std::string& map) {
    return "<kav_input_routing>\r\n\t" + group + "\t<map>" + map + "</map>\r\n</kav_input_routing>\r\n";
}

std::string OfGroup(const std::string& number) {
    return "<fx>" + number + "</fx>\r\n";
}

/// What a reader keeps of such a block: the element goes, the tab in front of it stays.
std::string Kept(const std::string& map) {
    return "<kav_input_routing>\r\n\t\t<map>" + map + "</map>\r\n</kav_input_routing>";
}

} // namespace

TEST_F(PatchRoutings, GoToTheirGroupsInAnyOrder) {
    Read(Block(OfGroup("3"), "3,-1") + Block(OfGroup("1"), "1,-1") + Block(OfGroup("0"), "0,-1") +
         Block(OfGroup("2"), "2,-1"));
    EXPECT_EQ(All(), (Four{Kept("0,-1"), Kept("1,-1"), Kept("2,-1"), Kept("3,-1")}));
}

TEST_F(PatchRoutings, AGroupWithoutABlockKeepsItsOwn) {
    Read(Block(OfGroup("2"), "2,-1"));
    EXPECT_EQ(All(), (Four{Default, Default, Kept("2,-1"), Default}));
}

TEST_F(PatchRoutings, OfTwoForOneGroupTheSecondStays) {
    Read(Block(OfGroup("2"), "1,-1") + Block(OfGroup("2"), "2,-1"));
    EXPECT_EQ(All(), (Four{Default, Default, Kept("2,-1"), Default}));
}

TEST_F(PatchRoutings, AreTakenWhateverTheFlags) {
    Read(Block(OfGroup("0"), "5,-1"), 255 & ~KAV::Routing);
    EXPECT_EQ(Gui().GetRouting(0), Kept("5,-1"));
    Read(Block(OfGroup("0"), "6,-1"), KAV::Routing);
    EXPECT_EQ(Gui().GetRouting(0), Kept("6,-1"));
}

TEST_F(PatchRoutings, MayStandAnywhereInTheText) {
    Read("x" + Block(OfGroup("1"), "1,-1") + "<param tag=\"33\" >0.25</param>\r\n" +
         Block(OfGroup("2"), "2,-1") + "y");
    EXPECT_EQ(All(), (Four{Default, Kept("1,-1"), Kept("2,-1"), Default}));
    EXPECT_EQ(Device().GetParam(33, 0), 0.25f);
}

TEST_F(PatchRoutings, OneWithoutAGroupIsPassedOverAndTheNextIsTaken) {
    Read(Block("", "7,-1") + Block("<fx></fx>\r\n", "7,-1") + Block(OfGroup("1"), "1,-1"));
    EXPECT_EQ(All(), (Four{Default, Kept("1,-1"), Default, Default}));
}

TEST_F(PatchRoutings, OneOfAGroupThatIsNotThereIsPassedOver) {
    for (const char* const number : {"4", "-1", "100", "2147483647", "-2147483648"}) {
        Read(Block(OfGroup(number), "7,-1"));
        EXPECT_EQ(All(), (Four{Default, Default, Default, Default})) << number;
    }
    Read(Block(OfGroup("4"), "7,-1") + Block(OfGroup("3"), "3,-1"));
    EXPECT_EQ(Gui().GetRouting(3), Kept("3,-1"));
}

TEST_F(PatchRoutings, AGroupThatIsNoNumberIsTheFirst) {
    Device().SetCurrentGroup(2);
    Read(Block(OfGroup("x"), "7,-1"));
    EXPECT_EQ(All(), (Four{Kept("7,-1"), Default, Default, Default}));
}

TEST_F(PatchRoutings, TheirNumbersAreThoseOfTheGroupsWhicheverIsShown) {
    Device().SetCurrentGroup(2);
    Read(Block(OfGroup("0"), "1,-1") + Block(OfGroup("1"), "2,-1"));
    EXPECT_EQ(All(), (Four{Kept("1,-1"), Kept("2,-1"), Default, Default}));
}

TEST_F(PatchRoutings, TheSearchEndsWithTheFirstThatIsCutOff) {
    Read(Block(OfGroup("1"), "1,-1") + "<kav_input_routing>\r\n\t<fx>2</fx>\r\n\t<map>2,-1</map>\r\n");
    EXPECT_EQ(All(), (Four{Default, Kept("1,-1"), Default, Default}));
    Read("</kav_input_routing>" + Block(OfGroup("3"), "3,-1"));
    EXPECT_EQ(Gui().GetRouting(3), Kept("3,-1")) << "an end without a beginning is none";
}

TEST_F(PatchRoutings, OneThatIsCutOffReachesToTheNextEnd) {
    Read("<kav_input_routing>\r\n\t<fx>2</fx>\r\n\t<map>2,-1</map>\r\n" + Block(OfGroup("3"), "3,-1"));
    EXPECT_EQ(Gui().GetRouting(2),
        "<kav_input_routing>\r\n\t\t<map>2,-1</map>\r\n" +
            Block(OfGroup("3"), "3,-1").substr(0, Block(OfGroup("3"), "3,-1").size() - 2));
    EXPECT_EQ(Gui().GetRouting(3), Default);
    EXPECT_EQ(Device().GetRouting(2).find("<fx>3</fx>") != std::string::npos, true);
}

TEST_F(PatchRoutings, LoseEveryLineOfTheirOwnGroupAndNoOther) {
    Read("<kav_input_routing>\r\n\t<fx>1</fx>\r\n<fx>2</fx>\r\n<fx>1</fx>\r\n\t<map>2,-1</"
         "map></kav_input_routing>");
    EXPECT_EQ(
        Gui().GetRouting(1), "<kav_input_routing>\r\n\t<fx>2</fx>\r\n\t<map>2,-1</map></kav_input_routing>");
}

TEST_F(PatchRoutings, AnElementWithoutAnEndOfTheLineStaysInTheDocument) {
    const std::string block = "<kav_input_routing><fx>1</fx><map>2,-1</map></kav_input_routing>";
    Read(block);
    EXPECT_EQ(Gui().GetRouting(1), block);
}

TEST_F(PatchRoutings, OfTheShownGroupAreShownAndThoseOfOthersAreNot) {
    const std::string named = "<fx>0</fx>\r\n\t<name>Mine</name>\r\n\t<ch_names>Hall</ch_names>\r\n";
    Read(Block("<fx>1</fx>\r\n\t<name>Theirs</name>\r\n", "0,-1|*|1,-1|*|2,-1"));
    EXPECT_EQ(Widget<CRouting>().Text(), u"Not found");
    EXPECT_FALSE(Widget<CChannelBtn>(2).IsVisible());
    Read(Block(named, "4,-1"));
    EXPECT_EQ(Widget<CRouting>().Text(), u"Mine");
    EXPECT_EQ(Widget<CChannelBtn>(0).Text(), u"Hall");
    EXPECT_EQ(Widget<CChannelBtn>(1).Text(), u"");
    EXPECT_FALSE(Widget<CChannelBtn>(1).IsVisible());
}

// The routing comes after the parameters: the channels that it lacks leave the group even if the patch has
// them on.
TEST_F(PatchRoutings, AreReadAfterTheChannelsOfTheirGroup) {
    Read("<multi_fx>true</multi_fx>\r\n" + Block(OfGroup("0"), "0,-1|*|1,-1|*|2,-1") +
         "<param tag=\"3\" >1</param>\r\n<param tag=\"4\" >1</param>\r\n<param tag=\"104\" >1</param>\r\n");
    EXPECT_EQ(Device().GetParam(3, 0), 1.0f);
    EXPECT_EQ(Device().GetParam(4, 0), 0.0f);
    EXPECT_EQ(Device().GetParam(104, 0), 1.0f);
}

TEST_F(PatchRoutings, OneWithoutAMapHasNoChannels) {
    Device().SetParam(1, 1.0f, 0);
    Read("<kav_input_routing><fx>0</fx><name>None</name></kav_input_routing>");
    EXPECT_EQ(Widget<CRouting>().Text(), u"None");
    for (std::size_t n = 0; n < 16; ++n) {
        EXPECT_FALSE(Widget<CChannelBtn>(n).IsVisible()) << n;
        EXPECT_EQ(Device().GetParam(static_cast<std::int32_t>(n) + 1, 0), 0.0f) << n;
    }
}

TEST_F(PatchRoutings, AWritersDocumentIsFoundAgainIfItBeginsLikeOne) {
    Device().SetRouting("<map>3,-1</map> without an opening", 1);
    const std::string twice =
        "<kav_input_routing>\r\n<kav_input_routing>\r\n<map>4,-1</map></kav_input_routing>";
    Device().SetRouting(twice, 2);
    const auto chunk = Chunk(false);
    Renew();
    ASSERT_TRUE(SetChunk(chunk, false));
    EXPECT_EQ(Gui().GetRouting(1), Default) << "which no reader can tell from other text";
    EXPECT_EQ(Gui().GetRouting(2),
        "<kav_input_routing>\r\n\t<kav_input_routing>\r\n\t<map>4,-1</map></kav_input_routing>");
    EXPECT_EQ(Gui().GetRouting(3), "<kav_input_routing>\r\n\t" + Default.substr(21));
}

TEST_F(PatchRoutings, AnOldPatchsLayoutWinsOverABlock) {
    const std::string mono = "<kav_input_routing>\r\n\t<map>0,-1</map></kav_input_routing>";
    const std::string three = "<kav_input_routing>\r\n\t<map>0,-1|*|1,-1|*|2,-1</map></kav_input_routing>";
    WriteText(documents.Routing("Legacy/Mono.kvt"), mono);
    WriteText(documents.Routing("Legacy/LCR.kvt"), three);
    Read("<param tag=\"138\" namew=\"ToolInp\" >0</param>\r\n" + Block(OfGroup("1"), "7,-1") +
         "<param tag=\"38\" namew=\"My ToolInput (1)\" >5</param>\r\n");
    EXPECT_EQ(Gui().GetRouting(1), "<kav_input_routing>\r\n\t" + mono.substr(21));
    EXPECT_EQ(Gui().GetRouting(0), "<kav_input_routing>\r\n\t" + three.substr(21));
    EXPECT_TRUE(Widget<CChannelBtn>(2).IsVisible());
}

TEST_F(PatchRoutings, AnOldPatchsLayoutIsNoParameterWhateverItsNumber) {
    host.calls.clear();
    Read("<multi_fx>true</multi_fx>\r\n<param tag=\"33\" namew=\"ToolInp\" >0.25</param>\r\n");
    EXPECT_EQ(Device().GetParam(33, 0), 1.0f);
    EXPECT_EQ(host.Count(VST::audioMasterAutomate), 0u);
}
