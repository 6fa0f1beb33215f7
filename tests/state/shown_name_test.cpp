#include "state/shown_name.h"

#include <gtest/gtest.h>

using namespace KAV;

namespace {

std::vector<std::u16string> Letters(std::initializer_list<const char16_t*> names) {
    return {names.begin(), names.end()};
}

} // namespace

TEST(ShownName, IsTheEntryThatIsChosen) {
    CShownName shown(u"none");
    EXPECT_TRUE(shown.SetNames(Letters({u"a", u"b", u"c"})));
    EXPECT_EQ(shown.Name(), u"a");
    EXPECT_TRUE(shown.Choose(2));
    EXPECT_EQ(shown.Name(), u"c");
    EXPECT_EQ(shown.Place(), 2);
    for (const std::int32_t place : {-1, 3}) {
        EXPECT_FALSE(shown.Choose(place));
        EXPECT_EQ(shown.Place(), 2);
    }
}

TEST(ShownName, OfNoEntryLeavesThePlace) {
    CShownName shown(u"");
    shown.SetNames(Letters({u"a", u"b"}));
    shown.Choose(1);
    EXPECT_TRUE(shown.Show(u"x"));
    EXPECT_EQ(shown.Name(), u"x");
    EXPECT_EQ(shown.Place(), 1);
    EXPECT_TRUE(shown.Choose(1));
    EXPECT_EQ(shown.Name(), u"b");
}

TEST(ShownName, ThatIsShownAlreadyKeepsItsPlace) {
    CShownName shown(u"");
    shown.SetNames(Letters({u"x", u"y", u"x"}));
    shown.Choose(2);
    EXPECT_FALSE(shown.Show(u"x"));
    EXPECT_EQ(shown.Place(), 2);
    EXPECT_TRUE(shown.Show(u"y"));
    EXPECT_TRUE(shown.Show(u"x"));
    EXPECT_EQ(shown.Place(), 0);
}

TEST(ShownName, KeepsItsPlaceInProportionInANewList) {
    CShownName shown(u"");
    shown.SetNames(Letters({u"a", u"b", u"c"}));
    shown.Choose(1);
    EXPECT_TRUE(shown.SetNames(Letters({u"a", u"b", u"c", u"d"})));
    EXPECT_EQ(shown.Place(), 2); // the half of 3, rounded up
    EXPECT_TRUE(shown.SetNames(Letters({u"1", u"2", u"3", u"4", u"5"})));
    EXPECT_EQ(shown.Place(), 2); // the half of 4: it is the position that lasts, not the place
    EXPECT_EQ(shown.Name(), u"3");
}

TEST(ShownName, SaysWhetherAnythingChanged) {
    CShownName shown(u"a");
    EXPECT_TRUE(shown.SetNames(Letters({u"a", u"b"})));
    EXPECT_FALSE(shown.SetNames(Letters({u"a", u"b"})));
    EXPECT_FALSE(shown.SetNames({}));
    EXPECT_FALSE(shown.Choose(0));
    EXPECT_TRUE(shown.Choose(1));
    EXPECT_FALSE(shown.Choose(1));
    EXPECT_EQ(shown.Count(), 2);
}

TEST(ShownName, FindsAnEntryWhereItStoodOrElseTheFirstOfThatName) {
    CShownName shown(u"");
    shown.SetNames(Letters({u"a", u"b", u"a"}));
    EXPECT_EQ(shown.Find(2, u"a"), 2);
    EXPECT_EQ(shown.Find(1, u"a"), 0);
    EXPECT_EQ(shown.Find(0, u"b"), 1);
    for (const std::int32_t place : {-1, 3}) EXPECT_EQ(shown.Find(place, u"a"), 0);
    EXPECT_EQ(shown.Find(1, u"c"), -1);
}
