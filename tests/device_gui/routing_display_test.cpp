#include "device_gui/routing_display.h"

#include "tests/device_gui/routing_panel.h"

#include <fstream>
#include <system_error>

using namespace KAV;
using namespace KAV::Tests;

namespace {

class RoutingDisplay : public RoutingPanel {
protected:
    /// The user's routings, and an instance that has found them and a host of so many channels.
    void OpenWith(std::initializer_list<std::pair<const char*, int>> routings, std::int32_t channels = 2) {
        for (const auto& [name, entries] : routings) WriteRouting(name, entries);
        Reopen();
        ASSERT_TRUE(effect->SetChannels(channels, channels));
    }
    void OpenWith(int count) {
        for (int n = 0; n < count; ++n) WriteRouting("r" + std::to_string(10000 + n), 2);
        Reopen();
    }
    const GUI::Menu& OpenMenu() {
        Click(Display());
        return window.menus.back();
    }
    void Pick(std::u16string_view name) {
        OpenMenu();
        ASSERT_TRUE(robot.Choose(name)) << Utils::ToUtf8(name);
        robot.Tick();
    }
    /// The names of the groups' routings.
    Names Groups() {
        Names names;
        for (int group = 0; group < 4; ++group)
            names.push_back(Utils::ToUtf16(RoutingValue(Gui().GetRouting(group), "<name")));
        return names;
    }
    static Names TextsOf(const GUI::Menu& menu) {
        Names texts;
        for (const auto& item : menu) texts.push_back(item.sText);
        return texts;
    }
};

} // namespace

TEST_F(RoutingDisplay, ListsTheUsersRoutingsAndNotFoundAtTheEnd) {
    OpenWith({{"b", 2}, {"A", 1}, {"a2", 2}});
    const auto& menu = OpenMenu();
    EXPECT_EQ(TextsOf(menu), (Names{u"A", u"a2", u"b", u"Not found"}));
    EXPECT_EQ(Display().Text(), u"A") << "a new instance has the first";
    for (std::size_t n = 0; n < menu.size(); ++n) {
        EXPECT_EQ(menu[n].nCommand, 400 + n);
        EXPECT_EQ(menu[n].bChecked, n == 0) << n;
        EXPECT_TRUE(menu[n].bEnabled) << n;
    }
}

TEST_F(RoutingDisplay, WithoutAnyOffersNotFoundAlone) {
    EXPECT_EQ(TextsOf(OpenMenu()), Names{u"Not found"});
    EXPECT_TRUE(robot.Choose(u"Not found"));
    Wheel(Display(), 1.0f);
    Wheel(Display(), -1.0f);
    EXPECT_EQ(Display().Text(), u"Not found");
    EXPECT_EQ(Told(), Lines{});
}

TEST_F(RoutingDisplay, APickIsForTheCurrentGroup) {
    OpenWith({{"a", 2}, {"b", 2}, {"c", 1}});
    Click(Named(u"ToolBtnFx2"));
    robot.Tick();
    Pick(u"b");
    EXPECT_EQ(Groups(), (Names{u"a", u"b", u"a", u"a"}));
    EXPECT_EQ(Display().Text(), u"b");
    EXPECT_EQ(Display().Item(), 1);
    Click(Named(u"ToolBtnFx1"));
    robot.Tick();
    EXPECT_EQ(Display().Text(), u"a");
    EXPECT_EQ(Display().Item(), 0);
    Pick(u"Not found");
    EXPECT_EQ(Groups(), (Names{u"Not found", u"b", u"a", u"a"}));
}

TEST_F(RoutingDisplay, APickOfThreeEntriesOrMoreIsForAllGroups) {
    OpenWith({{"a", 2}, {"three", 3}, {"six", 6}}, 6);
    Click(Named(u"ToolBtnFx4"));
    robot.Tick();
    Pick(u"three");
    EXPECT_EQ(Groups(), Names(4, u"three"));
    Pick(u"a");
    EXPECT_EQ(Groups(), (Names{u"three", u"three", u"three", u"a"}));
    Wheel(Display(), -1.0f);
    robot.Tick();
    EXPECT_EQ(Groups(), Names(4, u"six")) << "the wheel picks, too";
}

TEST_F(RoutingDisplay, ARoutingForMoreChannelsThanTheHostGivesIsGrey) {
    OpenWith({{"01", 1}, {"02", 2}, {"06", 6}, {"16", 16}, {"17", 17}});
    const auto enabled = [this](std::int32_t channels) {
        EXPECT_TRUE(effect->SetChannels(channels, channels)) << channels;
        std::string texts;
        for (const auto& item : OpenMenu()) texts += item.bEnabled ? Utils::ToUtf8(item.sText) + " " : "";
        return texts;
    };
    EXPECT_EQ(enabled(2), "01 02 Not found ");
    EXPECT_FALSE(robot.Choose(u"06"));
    EXPECT_EQ(enabled(6), "01 02 06 Not found ");
    EXPECT_EQ(enabled(16), "01 02 06 16 Not found ");
    EXPECT_EQ(enabled(1), "01 ") << "the default routing has two entries";
}

TEST_F(RoutingDisplay, TheWheelPassesOverWhatDoesNotFit) {
    OpenWith({{"a", 2}, {"b", 6}, {"c", 2}});
    Wheel(Display(), -1.0f);
    EXPECT_EQ(Display().Text(), u"c");
    Wheel(Display(), 1.0f);
    EXPECT_EQ(Display().Text(), u"a");
    Wheel(Display(), 1.0f);
    EXPECT_EQ(Display().Text(), u"a") << "the first";
}

TEST_F(RoutingDisplay, TakesChannelsThatTheRoutingLacksOutOfTheGroup) {
    OpenWith({{"a", 2}, {"b", 1}});
    ASSERT_TRUE(IsMember(2));
    Pick(u"b");
    EXPECT_TRUE(IsMember(1));
    EXPECT_FALSE(IsMember(2));
    EXPECT_EQ(VisibleChannels(), 1u);
    for (int group = 1; group < 4; ++group) EXPECT_FALSE(IsMember(2, group));
}

TEST_F(RoutingDisplay, GoesBackFromARoutingThatCannotBeLoaded) {
    OpenWith({{"a", 2}, {"b", 2}, {"c", 2}, {"d", 2}});
    Pick(u"b");
    const auto before = Chunk(false);
    std::filesystem::remove(documents.Routing("d.kvt"));
    WriteText(documents.Routing("c.kvt"), "");
    for (const auto* const name : {u"d", u"c"}) {
        Pick(name);
        EXPECT_EQ(Display().Text(), u"b") << Utils::ToUtf8(name);
        EXPECT_EQ(Display().Item(), 1) << Utils::ToUtf8(name);
        EXPECT_EQ(Display().Value(), 0.25f) << Utils::ToUtf8(name);
    }
    EXPECT_EQ(Chunk(false), before);
    EXPECT_TRUE(dialogs.errors.empty());
    Wheel(Display(), -1.0f);
    robot.Tick();
    EXPECT_EQ(Display().Text(), u"b");
    Pick(u"a");
    EXPECT_EQ(Display().Text(), u"a");
}

TEST_F(RoutingDisplay, GoesBackToANameThatIsOfNoFile) {
    OpenWith({{"a", 2}, {"b", 2}});
    Pick(u"b");
    Gui().SetRouting(Document("of a project", MapOf(2), ""), 0);
    robot.Tick();
    EXPECT_EQ(Display().Text(), u"of a project");
    EXPECT_EQ(Display().Item(), 1) << "the last that was chosen";
    std::filesystem::remove(documents.Routing("a.kvt"));
    Pick(u"a");
    EXPECT_EQ(Display().Text(), u"of a project");
    EXPECT_EQ(Display().Item(), 1);
}

TEST_F(RoutingDisplay, IsNeitherAStepOfHistoryNorAnEditForTheHost) {
    OpenWith({{"a", 2}, {"b", 2}});
    Told();
    Pick(u"b");
    EXPECT_FALSE(Gui().CanUndo());
    for (const auto& line : Told()) EXPECT_NE(line.substr(0, 5), "begin") << line;
}

TEST_F(RoutingDisplay, AMenuHasTwoHundredPlacesAndTheWheelGoesOn) {
    for (const int count : {1, 199, 200, 201}) {
        SCOPED_TRACE(count);
        OpenWith(count);
        ASSERT_EQ(Display().ItemCount(), count + 1);
        const auto menu = OpenMenu();
        EXPECT_EQ(menu.size(), static_cast<std::size_t>(std::min(count + 1, 200)));
        EXPECT_EQ(menu.back().nCommand, 400 + menu.size() - 1);
        EXPECT_EQ(menu.back().sText == u"Not found", count < 200);
        Pick(menu.back().sText);
        EXPECT_EQ(Display().Item(), static_cast<std::int32_t>(menu.size()) - 1);
        for (int n = 0; n < 3; ++n) Wheel(Display(), -1.0f);
        robot.Tick();
        EXPECT_EQ(Display().Text(), u"Not found");
        EXPECT_EQ(Groups()[0], u"Not found");
    }
}

TEST_F(RoutingDisplay, ShowsNamesOfEveryKindAsTheyAre) {
    const Names names{u"5.1 & 7.1 &amp; more", u"\U0001F3B5 emoji", u"%s %n", u"\u00C4\u00DF\u0416\u6F22",
        u"<b>&amp;", u"a|*|b", u"a||b", std::u16string(200, u'x')};
    for (const auto& name : names) {
        std::error_code error;
        std::filesystem::create_directories(documents.Routing(""), error);
        std::ofstream(documents.Routing(Utils::ToUtf8(name) + ".kvt")) << Document("inside", "0,-1", "M");
    }
    Reopen();
    EXPECT_GE(Display().ItemCount(), 5) << "not every system takes all of them";
    for (const auto& name : Names(Display().Items())) {
        if (name == Display().Text()) continue;
        Pick(name);
        EXPECT_EQ(MapOfGroup(0), name == u"Not found" ? MapOf(2) : MapOf(1));
        if (name.find(u'<') != std::u16string::npos) continue; // the name of a document ends there
        EXPECT_EQ(Display().Text(), name);
        EXPECT_EQ(Groups()[0], name) << Utils::ToUtf8(name);
    }
}

TEST_F(RoutingDisplay, OnlyTheLeftButtonOpensItsMenuAtItsRelease) {
    const auto [x, y] = MiddleOf(Display());
    robot.Click(x, y, GUI::MouseRight);
    EXPECT_TRUE(window.menus.empty());
    robot.Press(x, y);
    EXPECT_TRUE(window.menus.empty());
    robot.Release(x, y);
    EXPECT_EQ(window.menus.size(), 1u);
    EXPECT_EQ(window.Count("OpenTextBox"), 0u);
}
