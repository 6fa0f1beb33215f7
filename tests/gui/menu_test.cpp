#include "gui/menu.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace KAV;
using namespace KAV::GUI;

namespace {

std::vector<SListEntry> Entries(std::initializer_list<std::u16string_view> texts) {
    std::vector<SListEntry> entries;
    for (const auto text : texts) entries.push_back({text});
    return entries;
}

SMenuItem Item(std::u16string text, std::uint32_t command) {
    return {std::move(text), command, false, true, false, {}};
}
SMenuItem Line() {
    return {{}, 0, false, true, true, {}};
}
SMenuItem Sub(std::u16string text, Menu items) {
    return {std::move(text), 0, false, true, false, std::move(items)};
}

} // namespace

TEST(Menu, OfAListWithoutGroupsIsFlat) {
    EXPECT_EQ(MenuOf(Entries({u"a", u"b", u"c"}), 30),
        (Menu{Item(u"a", 33000), Item(u"b", 33001), Item(u"c", 33002)}));
    EXPECT_TRUE(MenuOf({}, 30).empty());
}

TEST(Menu, CollectsEntriesOfOneGroupAtTheFirstOfThem) {
    EXPECT_EQ(MenuOf(Entries({u"B_2", u"x", u"A_1", u"B_1_z"}), -1),
        (Menu{Sub(u"B", {Item(u"B_2", 200), Item(u"B_1_z", 203)}), Item(u"x", 201),
            Sub(u"A", {Item(u"A_1", 202)})}));
}

TEST(Menu, AnEntryNamedLikeAGroupStandsForItself) {
    EXPECT_EQ(MenuOf(Entries({u"A", u"A_1", u"A"}), 2),
        (Menu{Item(u"A", 2200), Sub(u"A", {Item(u"A_1", 2201)}), Item(u"A", 2200)}));
}

TEST(Menu, DrawsALineBelowAMarkedEntry) {
    EXPECT_EQ(MenuOf(Entries({u"a-sep-", u"b-sep--sep-", u"G_c-sep-", u"-sep-"}), 1),
        (Menu{Item(u"a", 1100), Line(), Item(u"b", 1101), Line(), Sub(u"G", {Item(u"G_c", 1102), Line()}),
            Item(u"", 1103), Line()}));
}

TEST(Menu, AMarkIsWhole) {
    EXPECT_EQ(WithoutMarks(u"-sep-a-sep--sep-b-sep"), u"ab-sep");
    EXPECT_EQ(WithoutMarks(u""), u"");
}

TEST(Menu, ShowsWhatIsCheckedAndWhatCannotBeChosen) {
    auto entries = Entries({u"a", u"b", u"c"});
    entries[0].bChecked = true;
    entries[1].bEnabled = false;
    entries[2].bShown = false;
    const auto menu = MenuOf(entries, 1);
    ASSERT_EQ(menu.size(), 2u);
    EXPECT_TRUE(menu[0].bChecked);
    EXPECT_TRUE(menu[0].bEnabled);
    EXPECT_FALSE(menu[1].bChecked);
    EXPECT_FALSE(menu[1].bEnabled);
}

TEST(Menu, OfTwoEntriesWithOneTextBothChooseTheFirst) {
    auto entries = Entries({u"a", u"b", u"a-sep-"});
    entries[0].bChecked = true;
    const auto menu = MenuOf(entries, 1);
    ASSERT_EQ(menu.size(), 4u);
    EXPECT_EQ(menu[2].nCommand, 1100u);
    EXPECT_TRUE(menu[2].bChecked);
    EXPECT_TRUE(menu[3].bSeparator);
    entries[0].bShown = false;
    EXPECT_EQ(MenuOf(entries, 1).size(), 1u);
}

TEST(Menu, HasNoGroupWithoutAnEntry) {
    auto entries = Entries({u"A_1", u"A_2-sep-", u"b"});
    entries[0].bShown = entries[1].bShown = false;
    EXPECT_EQ(MenuOf(entries, 1), Menu{Item(u"b", 1102)});
}

TEST(Menu, LeavesOutWhatHasNoCommand) {
    std::vector<std::u16string> texts;
    for (int n = 0; n < 1200; ++n) texts.push_back(u"i" + std::u16string(static_cast<std::size_t>(n), u'x'));
    std::vector<SListEntry> entries;
    for (const auto& text : texts) entries.push_back({text});
    const auto ofBound = MenuOf(entries, 7);
    ASSERT_EQ(ofBound.size(), 1100u);
    EXPECT_EQ(ofBound.back().nCommand, 7u * 1100 + 1099);
    const auto ofUnbound = MenuOf(entries, -1);
    ASSERT_EQ(ofUnbound.size(), 200u);
    EXPECT_EQ(ofUnbound.back().nCommand, 399u);
    entries[1150].sText = entries[3].sText; // chooses an entry that has a command, but has no place itself
    EXPECT_EQ(MenuOf(entries, 7).size(), 1100u);
    EXPECT_EQ(MenuOf(entries, -5).size(), 100u) << "1100 is the first command of id 1";
    EXPECT_TRUE(MenuOf(entries, -6).empty());
    EXPECT_EQ(MenuOf(entries, 0).size(), 199u) << "command 0 means that nothing was chosen";
    EXPECT_TRUE(MenuOf(entries, 60).empty());
}

TEST(MenuCommand, IsCountedById) {
    EXPECT_EQ(CommandOf({-1, 0}), 200);
    EXPECT_EQ(CommandOf({-3, 61}), 661);
    EXPECT_EQ(CommandOf({1, 0}), 1100);
    EXPECT_EQ(CommandOf({30, 3}), 33003);
    EXPECT_EQ(CommandOf({59, 635}), 65535);
    EXPECT_FALSE(CommandOf({59, 636}));
    EXPECT_FALSE(CommandOf({-1, 200}));
    EXPECT_FALSE(CommandOf({1, 1100}));
    EXPECT_FALSE(CommandOf({1, -1}));
    EXPECT_FALSE(CommandOf({0, 0})) << "nothing was chosen";
    EXPECT_FALSE(CommandOf({0, 250}));
    EXPECT_FALSE(CommandOf({-2147483647 - 1, 0}));
    EXPECT_FALSE(CommandOf({2147483647, 2147483647}));
}

TEST(MenuCommand, IsReadAsAnUnsignedWord) {
    EXPECT_EQ(ChoiceOf(33000), (SMenuChoice{30, 0})) << "above the largest signed one";
    EXPECT_EQ(ChoiceOf(65535), (SMenuChoice{59, 635}));
    EXPECT_EQ(ChoiceOf(1100), (SMenuChoice{1, 0}));
    EXPECT_EQ(ChoiceOf(1099), (SMenuChoice{-5, 99}));
    EXPECT_EQ(ChoiceOf(200), (SMenuChoice{-1, 0}));
    EXPECT_EQ(ChoiceOf(0), (SMenuChoice{0, 0}));
}

TEST(MenuCommand, ComesBackAsWhatItWasMadeFrom) {
    for (std::int32_t id = -10; id <= 70; ++id) {
        for (std::int32_t item = 0; item < 1200; ++item) {
            const auto command = CommandOf({id, item});
            if (command) {
                ASSERT_EQ(ChoiceOf(*command), (SMenuChoice{id, item}));
            }
        }
    }
}
