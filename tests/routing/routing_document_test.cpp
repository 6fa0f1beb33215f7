#include "routing/routing_document.h"
#include "routing/routing_record.h"
#include "utils/marked_text.h"

#include <array>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KAV;

namespace {

std::vector<std::string> Pieces(std::string_view text) {
    std::vector<std::string> pieces;
    for (Utils::CPieces list(text, RoutingSeparator); list.Next();) pieces.emplace_back(list.Piece());
    return pieces;
}

} // namespace

TEST(RoutingValue, StandsBetweenTheEndOfTheTagAndTheNextOne) {
    constexpr std::string_view Text = "<name>A > B</name>\r\n\t<map x>1,2<ch_names></ch_names>";
    EXPECT_EQ(RoutingValue(Text, "<name"), "A > B");
    EXPECT_EQ(RoutingValue(Text, "<map"), "1,2");
    EXPECT_EQ(RoutingValue(Text, "<ch_names"), "");
    EXPECT_EQ(RoutingValue(Text, "<type"), "");
    EXPECT_EQ(RoutingValue("", "<map"), "");
}

TEST(RoutingList, HasEmptyPiecesButAnEmptyTextHasNone) {
    EXPECT_EQ(Pieces(""), std::vector<std::string>{});
    EXPECT_EQ(Pieces("L|*|R"), (std::vector<std::string>{"L", "R"}));
    EXPECT_EQ(Pieces("|*||*|a|*"), (std::vector<std::string>{"", "", "a|*"}));
}

TEST(WriteRoutingDocument, HoldsAnEntryOfOneChannelForEachButtonThatIsOn) {
    const std::array<SRoutingButton, 4> buttons{{{"L", true}, {"R", false}, {"C", true}, {"LFE", true}}};
    EXPECT_EQ(WriteRoutingDocument("My.Room.kvt", buttons),
        "<kav_input_routing>\r\n\t<kvt_version>1.0</kvt_version>\r\n\t<name>My.Room</name>\r\n"
        "\t<map>0,-1|*|2,-1|*|3,-1</map>\r\n\t<ch_names>L|*|C|*|LFE</ch_names>\r\n</kav_input_routing>");
}

TEST(WriteRoutingDocument, ComesBackFromTheRecordThatTakesIt) {
    std::array<SRoutingButton, 16> buttons{};
    for (std::size_t k = 0; k < buttons.size(); ++k) buttons[k] = {"x", k % 3 != 1};
    SRoutingRecord record;
    record.Set(WriteRoutingDocument("name", buttons));
    int entry = 0;
    for (int k = 0; k < 16; ++k) {
        if (k % 3 == 1) continue;
        EXPECT_EQ(std::int32_t{record.map[static_cast<std::size_t>(entry++)].first}, k);
    }
    EXPECT_EQ(std::int32_t{record.map[static_cast<std::size_t>(entry)].first}, -1);
    EXPECT_EQ(ERoutingType{record.type}, ERoutingType::None);
    EXPECT_EQ(Pieces(RoutingValue(record.text, "<ch_names")).size(), static_cast<std::size_t>(entry));
}

TEST(WriteRoutingDocument, WithoutButtonsOrExtensionHasEmptyListsAndTheWholeName) {
    const auto text = WriteRoutingDocument("plain", {});
    EXPECT_EQ(RoutingValue(text, "<name"), "plain");
    EXPECT_EQ(RoutingValue(text, "<map"), "");
    EXPECT_EQ(RoutingValue(text, "<ch_names"), "");
}

TEST(LegacyRoutingName, CountsFromMonoToSixteen) {
    EXPECT_EQ(LegacyRoutingName(0), "Mono");
    EXPECT_EQ(LegacyRoutingName(3), "Mid/Side");
    EXPECT_EQ(LegacyRoutingName(11), "5.1");
    EXPECT_EQ(LegacyRoutingName(43), "16 Multi (Pair)");
    EXPECT_EQ(LegacyRoutingName(-1), "");
    EXPECT_EQ(LegacyRoutingName(44), "");
}

TEST(LegacyRoutingName, AllHaveThePlacesThatOldPatchesCountOn) {
    constexpr std::string_view Names =
        "Mono||Dual Mono||Stereo||Mid/Side||LRS||LCR||LRCS||Quad||Pentagonal||5.0||Hexagonal||5.1||6.0||6.0 "
        "(Music)||"
        "5.0.2||6.1||6.1 (Music)||7.0||7.0 (SDDS)||5.1.2||8 Multi||Octagonal||7.1||7.1 (SDDS)||8 "
        "Cube||5.0.4||7.0.2||"
        "8.1 (Music)||5.0.5||5.1.4||7.1.2||10.0 (Auro)||5.1.5||7.0.4||10.1 "
        "(Auro)||5.1.6||7.0.5||7.1.4||7.1.5||9.0.4||"
        "9.1.4||9.0.6||9.1.6||16 Multi (Pair)";
    std::ptrdiff_t place = 0;
    for (Utils::CPieces names(Names, "||"); names.Next(); ++place)
        EXPECT_EQ(LegacyRoutingName(place), names.Piece()) << place;
    EXPECT_EQ(place, 44);
}
