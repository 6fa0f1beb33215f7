#include "tools/kavhost/setup/state_text.h"

#include "utils/marked_text.h"

#include <gtest/gtest.h>
#include <string>

using namespace KAV;
using namespace KAV::Host;

namespace {

const std::string Head = "<patch_format>textual</patch_format>\r\n<patch_name>Loud</patch_name>\r\n";

std::string Toggle(int tag, const std::string& value) {
    return "<param tag=\"" + std::to_string(tag) + "\" namew=\"Toggle " + std::to_string(tag) + "\" >" +
           value + "</param>\r\n";
}

/// Toggles 1 to `count`, the first `on` of them on.
std::string Toggles(int count, int on) {
    std::string text;
    for (int tag = 1; tag <= count; ++tag) text += Toggle(tag, tag <= on ? "1.000000" : "0.000000");
    return text;
}

std::string Block(const std::string& group, const std::string& map) {
    return "<kav_input_routing>\r\n\t<fx>" + group + "</fx>\r\n\t<map>" + map +
           "</map>\r\n</kav_input_routing>\r\n";
}

std::string Document(const std::string& map) {
    return "<kav_input_routing>\r\n\t<map>" + map + "</map>\r\n</kav_input_routing>";
}

CStateText State(const std::string& bytes) {
    auto state = CStateText::Read(bytes);
    EXPECT_TRUE(state.has_value());
    return state ? *state : *CStateText::Read(Head);
}

const std::string Entries17 = "0,-1|*|1,-1|*|2,-1|*|3,-1|*|4,-1|*|5,-1|*|6,-1|*|7,-1|*|8,-1|*|9,-1|*|10,-1|*|"
                              "11,-1|*|12,-1|*|13,-1|*|14,-1|*|15,-1|*|16,-1";

} // namespace

TEST(StateText, IsRecognisedByItsOpening) {
    EXPECT_FALSE(CStateText::Read(""));
    EXPECT_FALSE(CStateText::Read(" " + Head));
    EXPECT_FALSE(CStateText::Read(Head.substr(0, 35)));
    EXPECT_TRUE(CStateText::Read(Head.substr(0, 36)));
    EXPECT_FALSE(CStateText::Read(std::string("\x01\0\0\0", 4)));
}

TEST(StateText, RoutesTheFirstGroupAndSwitchesItsToggles) {
    auto state =
        State(Head + Toggles(16, 2) + Toggle(101, "1.000000") + Block("1", "7,-1") + Block("0", "0,-1"));
    ASSERT_TRUE(state.SetRouting(0, *ReadRouting(Document("0,1|*|2,3|*|4,-1"))));
    EXPECT_EQ(state.Bytes(), Head + Toggles(16, 3) + Toggle(101, "1.000000") + Block("1", "7,-1") +
                                 Block("0", "0,1|*|2,3|*|4,-1"));
}

TEST(StateText, SwitchesTogglesOffThatTheRoutingHasNoEntryFor) {
    auto state = State(Head + Toggles(16, 16) + Block("0", "0,-1"));
    ASSERT_TRUE(state.SetRouting(0, *ReadRouting(Document("5,-1"))));
    EXPECT_EQ(state.Bytes(), Head + Toggles(16, 1) + Block("0", "5,-1"));
}

TEST(StateText, SwitchesSixteenTogglesAtMost) {
    const auto routing = *ReadRouting(Document(Entries17));
    EXPECT_EQ(routing.entries, 17u);
    auto state = State(Head + Toggles(17, 0) + Block("0", "0,-1"));
    ASSERT_TRUE(state.SetRouting(0, routing));
    EXPECT_EQ(state.Bytes(), Head + Toggles(16, 16) + Toggle(17, "0.000000") + Block("0", Entries17));
}

TEST(StateText, StaysAsItIsWhenItHasNoPlaceForARouting) {
    const auto routing = *ReadRouting(Document("0,-1|*|1,-1|*|2,-1"));
    for (const auto& bytes : {
             Head, Head + Toggles(16, 2),                                       // no routing
             Head + Toggles(16, 2) + Block("1", "0,-1"),                        // of another group
             Head + Toggles(2, 2) + Block("0", "0,-1"),                         // too few toggles
             Head + Toggles(16, 2) + "<kav_input_routing>\r\n\t<fx>0</fx>\r\n", // one without an end
         }) {
        auto state = State(bytes);
        EXPECT_FALSE(state.SetRouting(0, routing)) << bytes;
        EXPECT_EQ(state.Bytes(), bytes);
    }
}

TEST(StateText, KeepsWhatFollowsItsZero) {
    const std::string rest = std::string(1, '\0') + Toggle(1, "0.000000") + "<simd>0</simd>\xFF";
    auto state = State(Head + Toggles(16, 2) + Block("0", "0,-1") + "<simd>0</simd>\r\n" + rest);
    ASSERT_TRUE(state.SetRouting(0, *ReadRouting(Document("0,-1"))));
    ASSERT_TRUE(state.SetSimd(true));
    EXPECT_EQ(state.Bytes(), Head + Toggles(16, 1) + Block("0", "0,-1") + "<simd>1</simd>\r\n" + rest);
    auto beyond = State(Head + rest);
    EXPECT_FALSE(beyond.SetSimd(true));
}

TEST(StateText, PassesOverLinesThatAreNoToggle) {
    const std::string others = Toggle(0, "0.5") + Toggle(-1, "0.5") + "<param tag=\"x\" >0.5</param>\r\n" +
                               "<param tag=\"3\">0.5\r\n" + "<param tag=\"3\" ></param>\r\n" +
                               "tag=\"3\" >0.5</param>\r\n" + "\xC3\x28\r\n" + "<param tag=\"3";
    auto state = State(Head + Toggles(1, 0) + Block("0", "0,-1") + others);
    ASSERT_TRUE(state.SetRouting(0, *ReadRouting(Document("4,-1"))));
    EXPECT_EQ(state.Bytes(), Head + Toggles(1, 1) + Block("0", "4,-1") + others);
}

TEST(StateText, SwitchesVectorCode) {
    auto state = State(Head + "<simd>0</simd>\r\n<agc_filter>1</agc_filter>\r\n");
    ASSERT_TRUE(state.SetSimd(true));
    EXPECT_EQ(state.Bytes(), Head + "<simd>1</simd>\r\n<agc_filter>1</agc_filter>\r\n");
    ASSERT_TRUE(state.SetSimd(false));
    EXPECT_EQ(state.Bytes(), Head + "<simd>0</simd>\r\n<agc_filter>1</agc_filter>\r\n");
    for (const char* none : {"", "<simd>", "<simd></simd>", "<simd>1"}) {
        auto without = State(Head + none);
        EXPECT_FALSE(without.SetSimd(true)) << none;
        EXPECT_EQ(without.Bytes(), Head + none);
    }
}

TEST(StateText, CutOffAnywhereIsEditedOrLeftAsItIs) {
    const std::string whole = Head + Toggles(16, 2) + Block("0", "0,-1|*|1,-1") + "<simd>0</simd>\r\n";
    const auto routing = RoutingOfChannels(6);
    const auto routed = Head + Toggles(16, 6);
    // Both edits need everything before them.
    const auto leastToRoute = whole.find("</kav_input_routing>") + 20;
    const auto leastToSwitch = whole.find("</simd>") + 2;
    for (std::size_t size = 36; size <= whole.size(); ++size) {
        auto state = State(whole.substr(0, size));
        EXPECT_EQ(state.SetRouting(0, routing), size >= leastToRoute) << size;
        EXPECT_EQ(state.SetSimd(true), size >= leastToSwitch) << size;
        const bool isRouted = size >= leastToRoute;
        EXPECT_EQ(state.Bytes().starts_with(routed), isRouted) << size;
        EXPECT_EQ(state.Bytes() == whole.substr(0, size), !isRouted) << size;
    }
}

TEST(StateText, IsEditedInTimeThatGrowsWithItsSize) {
    const auto searched = [](int lines) {
        std::string bytes = Head + Toggles(16, 2);
        for (int i = 0; i < lines; ++i) bytes += Toggle(500 + i % 9, "0.5") + Block("3", "0,-1");
        auto state = State(bytes + Block("0", "0,-1") + "<simd>0</simd>");
        const auto before = Utils::SearchedBytes();
        EXPECT_TRUE(state.SetRouting(0, RoutingOfChannels(6)));
        EXPECT_TRUE(state.SetSimd(true));
        return static_cast<double>(Utils::SearchedBytes() - before);
    };
    EXPECT_LT(searched(8000), 8.5 * searched(1000));
}

TEST(Routing, OfChannelsHasOneLabelledEntryForEach) {
    const auto routing = RoutingOfChannels(3);
    EXPECT_EQ(routing.entries, 3u);
    EXPECT_EQ(routing.document, "<kav_input_routing>\r\n\t<kvt_version>1.0</kvt_version>\r\n"
                                "\t<name>3 Channels</name>\r\n\t<map>0,-1|*|1,-1|*|2,-1</map>\r\n"
                                "\t<ch_names>1|*|2|*|3</ch_names>\r\n</kav_input_routing>");
    const auto read = ReadRouting(routing.document);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->document, routing.document);
    EXPECT_EQ(read->entries, 3u);
}

TEST(Routing, FromAFileMayHaveAnyLineEndsAndSpaceAroundIt) {
    const std::string text = "\r\n <kav_input_routing>\n\t<map>0,1|*|2,-1</map>\r\n</kav_input_routing>\n";
    const auto routing = ReadRouting(text + std::string(1, '\0'));
    ASSERT_TRUE(routing);
    EXPECT_EQ(routing->document, Document("0,1|*|2,-1"));
    EXPECT_EQ(routing->entries, 2u);
}

TEST(Routing, IsRefusedWhenCutOffAnywhere) {
    const auto whole = RoutingOfChannels(2).document;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_FALSE(ReadRouting(whole.substr(0, size))) << size;
        EXPECT_FALSE(ReadRouting(whole.substr(whole.size() - size))) << size;
    }
}

TEST(Routing, IsRefusedWithoutEntriesOrWithMarksOfAState) {
    EXPECT_FALSE(ReadRouting(Document("")));
    EXPECT_FALSE(ReadRouting("<kav_input_routing></kav_input_routing>"));
    EXPECT_FALSE(ReadRouting(Document("0,-1") + Document("0,-1")));
    EXPECT_FALSE(ReadRouting(Document("0,-1</map></kav_input_routing><map>")));
    EXPECT_FALSE(ReadRouting(Document("0,-1</map>\r\n<fx>2</fx><map>")));
    EXPECT_FALSE(ReadRouting(Document("0,-1</map>\r\n<param tag=\"30\" >3</param><map>")));
    EXPECT_FALSE(ReadRouting(Document("0,-1") + "x"));
}

TEST(StateText, ChangesTheWidthOfTheEditorAlone) {
    auto state = State(Head + "<gui_width>754</gui_width>\r\n<simd>1</simd>");
    ASSERT_TRUE(state.SetWidth(1508));
    EXPECT_EQ(state.Bytes(), Head + "<gui_width>1508</gui_width>\r\n<simd>1</simd>");
    auto without = State(Head);
    EXPECT_FALSE(without.SetWidth(1508));
    EXPECT_EQ(without.Bytes(), Head);
}
