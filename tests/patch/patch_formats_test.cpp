#include "patch/patch_formats.h"

#include "patch/patch_text.h"

#include <array>
#include <bit>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KAV::Patch;
using namespace std::string_literals;

namespace {

using Bytes = std::vector<char>;

Bytes FromText(const std::string& text) {
    return {text.begin(), text.end()};
}

void AddLittleEndian(Bytes& bytes, std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<char>(value >> shift));
}

void AddBigEndian(Bytes& bytes, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<char>(value >> shift));
}

Bytes Binary(const std::u16string& name, const std::vector<std::pair<std::int32_t, float>>& pairs) {
    Bytes bytes;
    AddLittleEndian(bytes, 1);
    for (const char16_t unit : name) {
        bytes.push_back(static_cast<char>(unit));
        bytes.push_back(static_cast<char>(unit >> 8));
    }
    bytes.resize(140);
    for (const auto& [tag, value] : pairs) {
        AddLittleEndian(bytes, static_cast<std::uint32_t>(tag));
        AddLittleEndian(bytes, std::bit_cast<std::uint32_t>(value));
    }
    return bytes;
}

Bytes Fxp(const Bytes& chunk, std::uint32_t id = 0x736F726C) {
    Bytes file(16);
    AddBigEndian(file, id);
    file.resize(56);
    AddBigEndian(file, static_cast<std::uint32_t>(chunk.size()));
    file.insert(file.end(), chunk.begin(), chunk.end());
    return file;
}

std::string BinaryHead(const std::string& name) {
    return Head("1.0.1.0", name) + "<patch_info>FXP-converted</patch_info>\r\n";
}

/// The group parameters 32..37 of each group, and nothing else.
bool IsParameter(std::int32_t tag) {
    return tag >= 0 && tag < 400 && tag % 100 >= 32 && tag % 100 <= 37;
}

} // namespace

TEST(PatchKinds, AreRecognisedByTheirFirstBytes) {
    EXPECT_TRUE(IsText(FromText(std::string(Opening) + "\r\n")));
    EXPECT_FALSE(IsText(FromText(std::string(Opening)))); // nothing follows
    EXPECT_FALSE(IsText(FromText(" " + std::string(Opening))));
    EXPECT_TRUE(IsBinary(FromText("\1\0\0\0"s)));
    EXPECT_FALSE(IsBinary(FromText("\1\0\0"s)));
    EXPECT_FALSE(IsBinary(FromText("\0\0\0\1"s)));
    EXPECT_FALSE(IsText({}));
    EXPECT_FALSE(IsBinary({}));
}

TEST(PatchKinds, ATextEndsWithItsFirstZeroOrItsData) {
    EXPECT_EQ(TextOf(FromText("ab\0cd"s)), "ab");
    EXPECT_EQ(TextOf(FromText("abcd")), "abcd");
}

TEST(BinaryPatch, BecomesAText) {
    EXPECT_EQ(TextFromBinary(Binary(u"Gr\xF6\xDF"
                                    u"er",
                  {{33, 0.75f}, {-1, 1.0f / 3.0f}})),
        BinaryHead("Gr\xC3\xB6\xC3\x9F"
                   "er") +
            "<param tag=\"33\" >0.750</param>\r\n<param tag=\"-1\" >0.333</param>\r\n");
}

TEST(BinaryPatch, HasNoPairsBelow148Bytes) {
    auto bytes = Binary(u"x", {{33, 0.5f}});
    bytes.pop_back();
    EXPECT_EQ(TextFromBinary(bytes), BinaryHead("x"));
    bytes.resize(4);
    EXPECT_EQ(TextFromBinary(bytes), BinaryHead(""));
    bytes.resize(7);
    bytes[4] = 'y';
    EXPECT_EQ(TextFromBinary(bytes), BinaryHead("y"));
}

TEST(BinaryPatch, ANameWithoutAZeroEndsWithItsField) {
    EXPECT_EQ(TextFromBinary(Binary(std::u16string(68, u'n'), {{1, 1.0f}})),
        BinaryHead(std::string(68, 'n')) + "<param tag=\"1\" >1.000</param>\r\n");
}

TEST(FxpFile, GivesItsFirstParameterUnderTheFilesName) {
    const auto patch = PatchFromFxp(Fxp(Binary(u"inside", {{33, 0.5f}, {34, 0.25f}})), u"File");
    EXPECT_EQ(patch.size(), 148u);
    EXPECT_EQ(TextFromBinary(patch), BinaryHead("File") + "<param tag=\"33\" >0.500</param>\r\n");
}

TEST(FxpFile, OfAnotherPlugInOrTooShortGivesNothing) {
    EXPECT_TRUE(PatchFromFxp(Fxp(Binary(u"x", {}), 0x736F726D), u"File").empty());
    auto file = Fxp(Binary(u"x", {{33, 0.5f}}));
    file.resize(59);
    EXPECT_TRUE(PatchFromFxp(file, u"File").empty());
    EXPECT_TRUE(PatchFromFxp({}, u"File").empty());
}

TEST(FxpFile, NeverReadsOrNamesBeyondWhatItHolds) {
    const auto whole = Fxp(Binary(u"inside", {{33, 0.5f}}));
    for (std::size_t size = 60; size <= whole.size(); ++size) {
        const Bytes cut(whole.begin(),
            whole.begin() + static_cast<std::ptrdiff_t>(size)); // a length that is greater than the rest
        EXPECT_EQ(PatchFromFxp(cut, std::u16string(200, u'n')).size(), size - 60);
    }
    auto huge = whole;
    for (std::size_t i = 56; i < 60; ++i) huge[i] = '\xFF';
    EXPECT_EQ(PatchFromFxp(huge, u"x").size(), 148u);
}

TEST(FxpFile, CutsANameAfter63Characters) {
    const auto patch = PatchFromFxp(Fxp(Binary(u"", {{33, 0.5f}})), std::u16string(200, u'n'));
    EXPECT_EQ(
        TextFromBinary(patch), BinaryHead(std::string(63, 'n')) + "<param tag=\"33\" >0.500</param>\r\n");
}

TEST(FxpFile, WithATextIsNeitherTextNorBinary) {
    const auto patch =
        PatchFromFxp(Fxp(FromText(Head("1.0.1.0", "A text") + std::string(200, ' '))), u"File");
    EXPECT_EQ(patch.size(), 148u);
    EXPECT_FALSE(IsText(patch));
    EXPECT_FALSE(IsBinary(patch));
}

TEST(PatchFile, IsNamedLikeItsFile) {
    const auto text =
        Head("1.0.1.0", "Inside") + "<patch_name>Inside</patch_name><patch_name>Other</patch_name>";
    EXPECT_EQ(TextFromFile(text, "B"),
        Head("1.0.1.0", "B") + "<patch_name>B</patch_name><patch_name>Other</patch_name>");
}

TEST(PatchFile, OfAnotherPlugInGivesNothing) {
    EXPECT_EQ(TextFromFile("<plugin_id>1</plugin_id>", "B"), "");
    EXPECT_EQ(TextFromFile("", "B"), "");
    EXPECT_EQ(TextFromFile("<plugin_id> 1936683628</plugin_id>", "B"), "");
}

TEST(PatchFile, WithoutANameStaysAsItIs) {
    EXPECT_EQ(TextFromFile("<plugin_id>1936683628</plugin_id>", "B"), "<plugin_id>1936683628</plugin_id>");
}

TEST(DefaultPatch, HoldsNoParameter) {
    EXPECT_EQ(DefaultText(), Head("1.0.0.0", "No KVP patches found!"));
}

TEST(CopyGroup, MovesTheParametersOfOneGroupToAnother) {
    const auto param = [](int tag, const char* name) {
        return "<param tag=\"" + std::to_string(tag) + "\" namew=\"" + name + "\" >0.5</param>\r\n";
    };
    const auto text = "head\r\n" + param(24, "Macro 1") + param(32, "Input Gain (1)") +
                      param(33, "Threshold (1)") + param(132, "Input Gain (2)") + param(1, "ToolCh 1") +
                      param(133, "ToolCh 3") + "tail";
    EXPECT_EQ(CopyGroup(text, 0, 2, IsParameter),
        "head\r\n" + param(232, "Input Gain (1)") + param(233, "Threshold (1)") + "tail\r\n");
    EXPECT_EQ(CopyGroup(text, 1, 0, IsParameter), "head\r\n" + param(32, "Input Gain (2)") + "tail\r\n");
    EXPECT_EQ(CopyGroup(text, 3, 0, IsParameter), "head\r\ntail\r\n");
}

TEST(CopyGroup, AParameterThatTheTargetLacksKeepsItsNumberInTheFirstGroup) {
    EXPECT_EQ(CopyGroup("<param tag=\"138\" >0.5</param>", 1, 2, IsParameter),
        "<param tag=\"38\" >0.5</param>\r\n");
}

TEST(CopyGroup, KeepsEveryLineThatIsNoParameter) {
    const std::string text = "<multi_fx>true</multi_fx>\r\n<host_bypass>1</host_bypass>\r\n\r\n<param>\r\n"
                             "<macro group=\"0\">33;0.750</macro>";
    EXPECT_EQ(CopyGroup(text, 0, 2, IsParameter), text + "\r\n");
    EXPECT_EQ(CopyGroup("", 0, 2, IsParameter), "");
}

TEST(CopyGroup, DropsAParameterWithoutANumberAndTheChannels) {
    for (const char* const line : {"<param >0.5</param>", "<param tag=\"\" >0.5</param>",
             "<param tag=\"232\" namew=\"ToolCh1 (3)\" >1</param>", "<param tag=\"30\" >1</param>"}) {
        EXPECT_EQ(CopyGroup(line, 2, 1, IsParameter), "") << line;
        EXPECT_EQ(CopyGroup(line, 0, 1, IsParameter), "") << line;
    }
}

TEST(PatchFile, WithAnEmptyNameIsNamedLikeItsFileToo) {
    EXPECT_EQ(TextFromFile("<plugin_id>1936683628</plugin_id><patch_name></patch_name>", "B"),
        "<plugin_id>1936683628</plugin_id><patch_name>B</patch_name>");
}

TEST(FxpFile, BelongsToThisPlugInOnlyByItsFourLetters) {
    Bytes file(60, '?'); // none of the other fields matters
    for (std::size_t i = 0; i < 4; ++i) file[16 + i] = "sorl"[i];
    EXPECT_TRUE(IsFxpOfOurs(file));
    for (std::size_t i = 0; i < 4; ++i) {
        auto other = file;
        other[16 + i] = 'x';
        EXPECT_FALSE(IsFxpOfOurs(other)) << i;
    }
    file.pop_back();
    EXPECT_FALSE(IsFxpOfOurs(file));
}
