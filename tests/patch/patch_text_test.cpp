#include "patch/patch_text.h"

#include "patch/patch_flags.h"

#include <array>
#include <gtest/gtest.h>
#include <string>

using namespace KAV;
using namespace KAV::Patch;

TEST(PatchHead, HasItsLinesInOrder) {
    EXPECT_EQ(Head("1.0.1.0", "My <Patch>"),
        "<patch_format>textual</patch_format>\r\n<patch_version>1</patch_version>\r\n<app_title>KAV Sorrel "
        "Limiter</app_title>\r\n<app_version>1.0.1.0</app_version>\r\n<plugin_id>1936683628</plugin_id>\r\n"
        "<patch_name>My <Patch></patch_name>\r\n");
}

TEST(JoinNames, PutsTheSeparatorOnlyAfterText) {
    EXPECT_EQ(JoinNames(std::array<std::string, 3>{"a", "b", "c"}), "a|*|b|*|c");
    EXPECT_EQ(JoinNames(std::array<std::string, 3>{"", "", "c"}), "c");
    EXPECT_EQ(JoinNames(std::array<std::string, 3>{"a", "", ""}), "a|*||*|");
    EXPECT_EQ(JoinNames(std::array<std::string, 2>{"", ""}), "");
}

TEST(ParamLine, IsWrittenWithABlankBeforeTheBracketAndSixDecimals) {
    std::string text;
    AddParamLine(text, 32, "Input Gain (1)", 0.5f);
    EXPECT_EQ(text, "<param tag=\"32\" namew=\"Input Gain (1)\" >0.500000</param>\r\n");
}

TEST(ParamLine, IsReadBack) {
    const auto line = ReadParamLine("  <param tag=\"132\" namew=\"Input Gain (2)\" >0.25</param>");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->tag, 132);
    EXPECT_EQ(line->value, 0.25f);
    EXPECT_EQ(line->name, "Input Gain (2)");
}

TEST(ParamLine, NeedsANumberOfZeroOrAboveAndAValue) {
    for (const char* const line : {"", "<app_title>x</app_title>", "<param tag=\"-1\" >0.5</param>",
             "<param tag=\"\" >0.5</param>", "<param >0.5</param>", "<param tag=\"1\" ></param>",
             "<param tag=\"1\" >0.5", "<parameter tag=\"1\" >0.5</parameter>", "<param tag=1>0.5</param>"}) {
        EXPECT_FALSE(ReadParamLine(line)) << line;
    }
}

TEST(ParamLine, AValueThatIsNoNumberIsZero) {
    EXPECT_EQ(ReadParamLine("<param tag=\"1\" >loud</param>")->value, 0.0f);
    EXPECT_EQ(ReadParamLine("<param tag=\"1\" >1e99</param>")->value, 0.0f);
    EXPECT_EQ(ReadParamLine("<param tag=\"x\" >1</param>")->tag, 0);
}

TEST(ParamLine, TakesAnotherNumber) {
    EXPECT_EQ(WithTag("<param tag=\"32\" namew=\"In 32\" >0.5</param>", 132),
        "<param tag=\"132\" namew=\"In 32\" >0.5</param>");
    EXPECT_EQ(WithTag("<param tag=\"\" >", 5), "<param tag=\"5\" >");
    EXPECT_EQ(WithTag("no number", 5), "no number");
}

TEST(MacroLine, ListsAssignmentsInOrder) {
    std::string text;
    AddMacroLine(text, 0, std::array<SMacroTarget, 2>{{{33, 0.75f}, {132, 0.2f}}});
    AddMacroLine(text, 1, {});
    EXPECT_EQ(text, "<macro group=\"0\">33;0.750||132;0.200</macro>\r\n<macro group=\"1\"></macro>\r\n");
    EXPECT_EQ(MacroTargets(text, 0), "33;0.750||132;0.200");
    EXPECT_EQ(MacroTargets(text, 1), "");
    EXPECT_EQ(MacroTargets(text, 2), "");
}

TEST(MacroLine, AnAssignmentWithoutSensitivityHasNone) {
    EXPECT_EQ(ReadMacroTarget("33;0.75").tag, 33);
    EXPECT_EQ(ReadMacroTarget("33;0.75").sensitivity, 0.75f);
    EXPECT_EQ(ReadMacroTarget("33").sensitivity, 0.0f);
    EXPECT_EQ(ReadMacroTarget("33;").sensitivity, 0.0f);
    EXPECT_EQ(ReadMacroTarget("").tag, 0);
}

TEST(RoutingBlocks, CarryTheNumberOfTheirGroup) {
    const std::string document = "<kav_input_routing>\r\n\t<name>LCR</name>\r\n</kav_input_routing>";
    const auto block = RoutingBlock(document, 2);
    EXPECT_EQ(block, "<kav_input_routing>\r\n\t<fx>2</fx>\r\n\t<name>LCR</name>\r\n</kav_input_routing>\r\n");
    const auto text = "before" + block + "between" + RoutingBlock(document, 0) + "behind";
    CRoutingBlocks blocks(text);
    ASSERT_TRUE(blocks.Next());
    EXPECT_EQ(blocks.Group(), "2");
    // A tab remains: the line is cut from its bracket on.
    EXPECT_EQ(blocks.Document(), "<kav_input_routing>\r\n\t\t<name>LCR</name>\r\n</kav_input_routing>");
    ASSERT_TRUE(blocks.Next());
    EXPECT_EQ(blocks.Group(), "0");
    EXPECT_FALSE(blocks.Next());
}

TEST(RoutingBlocks, EndWhereOneIsNotWhole) {
    const std::string text = "<kav_input_routing>no number</kav_input_routing><kav_input_routing><fx>1</fx>";
    CRoutingBlocks blocks(text);
    ASSERT_TRUE(blocks.Next());
    EXPECT_EQ(blocks.Group(), "");
    EXPECT_FALSE(blocks.Next());
}

TEST(RoutingBlocks, EveryOpeningOfADocumentCarriesTheNumber) {
    EXPECT_EQ(RoutingBlock("<kav_input_routing>a<kav_input_routing>b</kav_input_routing>", 3),
        "<kav_input_routing>\r\n\t<fx>3</fx>a<kav_input_routing>\r\n\t<fx>3</fx>b</kav_input_routing>\r\n");
    EXPECT_EQ(RoutingBlock("no opening", 3), "no opening\r\n");
    EXPECT_EQ(RoutingBlock("", 3), "\r\n");
}

TEST(RoutingBlocks, LoseOnlyTheLinesOfTheirOwnNumber) {
    const std::string text = "<kav_input_routing>\r\n\t<fx>1</fx>\r\n<fx>2</fx>\r\n<fx>1</fx>\r\n<fx>1</fx>"
                             "</kav_input_routing>";
    CRoutingBlocks blocks(text);
    ASSERT_TRUE(blocks.Next());
    EXPECT_EQ(blocks.Group(), "1");
    EXPECT_EQ(blocks.Document(), "<kav_input_routing>\r\n\t<fx>2</fx>\r\n<fx>1</fx></kav_input_routing>");
}

TEST(RoutingBlocks, TheNumberOfOneIsNotLookedForInTheNext) {
    const std::string text =
        "<kav_input_routing></kav_input_routing><kav_input_routing><fx>2</fx></kav_input_routing>";
    CRoutingBlocks blocks(text);
    ASSERT_TRUE(blocks.Next());
    EXPECT_EQ(blocks.Group(), "");
    ASSERT_TRUE(blocks.Next());
    EXPECT_EQ(blocks.Group(), "2");
}

TEST(MacroLine, IsFoundByItsNumberWhereverItStands) {
    const std::string text =
        "<macro group=\"4\">4;1</macro><macro group=\"0\" x>no</macro>\r\n<macro group=\"2\">2;1";
    EXPECT_EQ(MacroTargets(text, 4), "4;1");
    EXPECT_EQ(MacroTargets(text, 1), "");
    EXPECT_EQ(MacroTargets(text, 2), "") << "cut off";
}

TEST(ParamLine, ANameIsNotNeeded) {
    const auto line = ReadParamLine("<param tag=\"33\" >0.5</param>");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->name, "");
    EXPECT_EQ(line->rawValue, "0.5");
}
