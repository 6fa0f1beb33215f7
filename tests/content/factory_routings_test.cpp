// The routings that come with the plug-in, read by the product's own code.

#include "device/parameter_table.h"
#include "patch/patch_text.h"
#include "routing/routing_document.h"
#include "routing/routing_record.h"
#include "tests/support/state_fixture.h"
#include "utils/marked_text.h"
#include "utils/text.h"

#include <algorithm>
#include <set>

using namespace KAV;
using namespace KAV::Tests;

namespace {

const std::filesystem::path Folder = std::filesystem::path(KAV_CONTENT_DIR) / "Routings";
constexpr std::ptrdiff_t LegacyLayouts = 44;

/// Paths relative to the folder, with forward slashes.
std::vector<std::string> Files() {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Folder)) {
        if (entry.is_regular_file())
            files.push_back(entry.path().lexically_relative(Folder).generic_string());
    }
    std::ranges::sort(files);
    return files;
}

/// The layout's name according to the file's path: older layouts may have a slash in their name.
std::string NameOf(std::string file) {
    if (file.starts_with("Legacy/")) file.erase(0, 7);
    return file.substr(0, file.size() - 4);
}

std::vector<std::string> Pieces(std::string_view list) {
    std::vector<std::string> pieces;
    Utils::CPieces walk(list, RoutingSeparator);
    while (walk.Next()) pieces.emplace_back(walk.Piece());
    return pieces;
}

class FactoryRoutings : public State {
protected:
    void Install() {
        for (const auto& file : Files()) WriteText(documents.Routing(file), ReadText(Folder / file));
        Renew();
    }
};

} // namespace

TEST_F(FactoryRoutings, AreCalledLikeTheirFiles) {
    EXPECT_GE(Files().size(), static_cast<std::size_t>(LegacyLayouts) + 17);
    for (const auto& file : Files()) {
        EXPECT_TRUE(file.ends_with(".kvt")) << file;
        EXPECT_EQ(RoutingValue(ReadText(Folder / file), "<name"), NameOf(file));
    }
}

TEST_F(FactoryRoutings, AreWrittenAsTheProgramWritesThem) {
    for (const auto& file : Files()) {
        const auto text = ReadText(Folder / file);
        const std::string type(RoutingValue(text, "<type"));
        std::string expected = "<kav_input_routing>\r\n\t<kvt_version>1.0</kvt_version>\r\n\t<name>";
        expected += NameOf(file) + "</name>\r\n";
        if (!type.empty()) expected += "\t<type>" + type + "</type>\r\n";
        expected.append("\t<map>").append(RoutingValue(text, "<map")).append("</map>\r\n\t<ch_names>");
        expected.append(RoutingValue(text, "<ch_names")).append("</ch_names>\r\n</kav_input_routing>");
        EXPECT_EQ(text, expected);
        EXPECT_EQ(RoutingType(type) == ERoutingType::None, type.empty()) << file;
    }
}

TEST_F(FactoryRoutings, HaveALabelOfItsOwnForEveryEntry) {
    for (const auto& file : Files()) {
        const auto text = ReadText(Folder / file);
        const auto labels = Pieces(RoutingValue(text, "<ch_names"));
        EXPECT_EQ(labels.size(), RoutingEntryCount(text)) << file;
        EXPECT_EQ(std::set(labels.begin(), labels.end()).size(), labels.size()) << file;
        for (const auto& label : labels) EXPECT_FALSE(label.empty()) << file;
    }
}

TEST_F(FactoryRoutings, TakeTheHostsChannelsOneAfterTheOther) {
    for (const auto& file : Files()) {
        const auto text = ReadText(Folder / file);
        SRoutingRecord record;
        record.Set(text);
        std::vector<std::int32_t> channels;
        for (const auto& pair : record.map) {
            if (pair.first >= 0) channels.push_back(pair.first);
            if (pair.second >= 0) channels.push_back(pair.second);
            EXPECT_FALSE(pair.first < 0 && pair.second >= 0) << file;
        }
        ASSERT_FALSE(channels.empty()) << file;
        EXPECT_LE(channels.size(), static_cast<std::size_t>(DeviceChannels)) << file;
        EXPECT_LE(RoutingEntryCount(text), static_cast<std::size_t>(RoutingEntries)) << file;
        for (std::size_t i = 0; i < channels.size(); ++i)
            EXPECT_EQ(channels[i], static_cast<std::int32_t>(i)) << file;
    }
}

TEST_F(FactoryRoutings, DeclareMiddleAndSideOfTwoChannels) {
    std::size_t found = 0;
    for (const auto& file : Files()) {
        const auto text = ReadText(Folder / file);
        if (RoutingType(RoutingValue(text, "<type")) != ERoutingType::MidSide) continue;
        EXPECT_EQ(RoutingEntryCount(text), 2u) << file;
        ++found;
    }
    EXPECT_EQ(found, 2u); // the current one and the one of older patches
}

TEST_F(FactoryRoutings, BeginWithThatOfANewInstance) {
    const auto own = Utils::ReplaceAll(DefaultRoutingText(), "Not found", "- Default -");
    Install();
    EXPECT_EQ(RoutingNames().front(), u"- Default -");
    EXPECT_EQ(ReadText(Folder / "- Default -.kvt"), own);
    for (int group = 0; group < DeviceGroups; ++group) EXPECT_EQ(Gui().GetRouting(group), own);
}

TEST_F(FactoryRoutings, AreThereForEveryLayoutOfOlderPatches) {
    Install();
    std::set<std::string> wanted;
    CLegacyRoutings layouts;
    for (std::ptrdiff_t place = 0; place < LegacyLayouts; ++place) {
        const std::string name(LegacyRoutingName(place));
        wanted.insert("Legacy/" + name + ".kvt");
        const auto block = layouts.Block(static_cast<float>(place), 2);
        EXPECT_EQ(RoutingValue(block, "<name"), name) << place;
        EXPECT_EQ(RoutingValue(block, "<fx"), "2") << place;
    }
    EXPECT_EQ(LegacyRoutingName(LegacyLayouts), "");
    for (const auto& file : Files()) EXPECT_EQ(file.starts_with("Legacy/"), wanted.contains(file)) << file;
}

TEST_F(FactoryRoutings, AnOlderPatchFindsMiddleAndSide) {
    Install();
    ASSERT_EQ(LegacyRoutingName(3), "Mid/Side");
    Read("<multi_fx>true</multi_fx>\r\n<param tag=\"133\" namew=\"ToolInp (2)\" >3.000000</param>\r\n");
    EXPECT_EQ(RoutingType(RoutingValue(Gui().GetRouting(1), "<type")), ERoutingType::MidSide);
    EXPECT_EQ(RoutingType(RoutingValue(Gui().GetRouting(0), "<type")), ERoutingType::None);
}
