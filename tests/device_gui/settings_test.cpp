// The menu of the settings, entry by entry.

#include "device_gui/settings.h"

#include "device_gui/patch_display.h"
#include "tests/device_gui/open_panel.h"
#include "tests/support/own_settings.h"
#include "utils/cpu_features.h"

#include <map>
#include <set>

using namespace KAV;
using namespace KAV::Tests;

namespace {

constexpr std::int32_t Id = -3;
constexpr std::uint32_t FirstCommand = 600; // of that id

/// A menu as text: "  * 50 60 FPS" is the ticked item 50 of a sub-menu.
void Print(const GUI::Menu& menu, const std::string& indent, Lines& lines) {
    for (const auto& item : menu) {
        if (item.bSeparator) {
            lines.push_back(indent + "---");
            continue;
        }
        const auto text = Utils::ToUtf8(item.sText);
        if (!item.vsSub.empty()) {
            lines.push_back(indent + text + " >");
            Print(item.vsSub, indent + "  ", lines);
            continue;
        }
        lines.push_back(indent + (item.bChecked ? "* " : "") + std::to_string(item.nCommand - FirstCommand) +
                        " " + text + (item.bEnabled ? "" : " (grey)") + (item.bBold ? " (bold)" : ""));
    }
}

Lines Printed(const GUI::Menu& menu) {
    Lines lines;
    Print(menu, "", lines);
    return lines;
}

/// The numbers of all items, or of the ticked ones.
std::set<std::int32_t> Items(const GUI::Menu& menu, bool tickedOnly) {
    std::set<std::int32_t> items;
    for (const auto& item : menu) {
        items.merge(Items(item.vsSub, tickedOnly));
        if (item.nCommand != 0 && (item.bChecked || !tickedOnly))
            items.insert(static_cast<std::int32_t>(item.nCommand - FirstCommand));
    }
    return items;
}

class SettingsMenu : public OpenPanel {
protected:
    COwnSettings settings;

    /// The menu that the button opens.
    GUI::Menu Opened() {
        const auto before = window.menus.size();
        Click(Named(u"ToolAbout"));
        EXPECT_EQ(window.menus.size(), before + 1);
        return window.menus.back();
    }
    void Choose(std::int32_t item) { Command(Id, item); }
    /// Which of the items `first` to `last` are ticked.
    std::set<std::int32_t> Ticks(std::int32_t first, std::int32_t last) {
        auto ticks = Items(Opened(), true);
        std::erase_if(ticks, [&](std::int32_t item) { return item < first || item > last; });
        return ticks;
    }
    DSP::AutoGainSettings& AutoGain() { return Device().AutoGain(); }
    /// Chooses each item in turn: `value` has to become what `expected` says, and that item alone ticked.
    template<typename TValue, typename TExpected>
    void TryEach(std::int32_t first, std::int32_t last, TValue value, TExpected expected) {
        for (std::int32_t item = last; item >= first; --item) {
            Choose(item);
            EXPECT_EQ(static_cast<double>(value()), static_cast<double>(expected(item))) << item;
            EXPECT_EQ(Ticks(first, last), std::set<std::int32_t>{item});
        }
    }
    GUI::SMenuItem SimdEntry(std::uint64_t features) {
        for (const auto& item : Widget<CSettings>().MenuFor(features)) {
            if (item.sText == u"SIMD") return item.vsSub.back();
        }
        return {};
    }
};

} // namespace

TEST_F(SettingsMenu, HasItsEntriesInTheirOrderWithTheTicksOfANewInstance) {
    const auto menu = Widget<CSettings>().MenuFor(Utils::CpuFma | Utils::CpuSse2 | Utils::CpuAvx);
    EXPECT_EQ(Printed(menu),
        (Lines{"AGC Settings >", "  RMS Time >", "    0 0.6s", "    1 1s", "    * 2 2s", "    3 3s",
            "    4 4s", "    5 5s", "    6 10s", "  Filter Type >", "    40 Flat", "    * 41 K-Weighted",
            "  Suspend Comparison >", "    42 Never Suspend", "    * 43 If input signal is below -60dB",
            "    44 If input signal is below -30dB", "  Auto >", "    Auto-mode Tolerance >", "      29 0dB",
            "      * 30 1dB", "      31 2dB", "      32 3dB", "      33 4dB", "      34 5dB", "      35 6dB",
            "      36 7dB", "      37 8dB", "      38 9dB", "      39 10dB",
            "    Maximum Positive Gain Adjustment >", "      7 0dB", "      8 +2dB", "      9 +4dB",
            "      10 +6dB", "      11 +8dB", "      * 12 +10dB", "      13 +12dB", "      14 +14dB",
            "      15 +16dB", "      16 +18dB", "      17 +20dB", "    Maximum Negative Gain Adjustment >",
            "      18 -1dB", "      19 -2dB", "      20 -4dB", "      21 -6dB", "      22 -8dB",
            "      23 -10dB", "      24 -12dB", "      25 -14dB", "      26 -16dB", "      27 -18dB",
            "      * 28 -20dB", "SIMD >", "  * 52 Off", "  53 FMA/SSE2/AVX (experimental)", "GUI Rendering >",
            "  * 47 Direct3D9", "  46 OpenGL", "  48 Direct2D", "  45 CPU", "  ---", "  49 30 FPS",
            "  * 50 60 FPS", "  51 100 FPS", "Effect Groups connection >", "  * 54 Serial", "  55 Parallel",
            "61 Save as Default (for new instances)", "---", "56 User Manual...", "58 About..."}));
}

TEST_F(SettingsMenu, OpensAtTheClickOfTheLeftButton) {
    const auto& button = Named(u"ToolAbout");
    const auto [x, y] = MiddleOf(button);
    robot.Move(x, y);
    robot.Press(x, y);
    EXPECT_TRUE(window.menus.empty()) << "before the button is let go";
    robot.Release(x, y);
    ASSERT_EQ(window.menus.size(), 1u);
    EXPECT_EQ(window.menus[0], Widget<CSettings>().MenuFor(Utils::DetectFeatures()));
    Click(button, GUI::MouseRight);
    Wheel(button, 1.0f);
    Wheel(button, -1.0f);
    EXPECT_EQ(window.menus.size(), 1u);
    for (const auto modifier : {GUI::MouseShift, GUI::MouseControl, GUI::MouseDouble})
        Click(button, GUI::MouseLeft | modifier);
    EXPECT_EQ(window.menus.size(), 4u);
    EXPECT_EQ(Told(), Lines{});
}

TEST_F(SettingsMenu, OpensAtEveryWidthOfTheEditor) {
    for (const std::int32_t width : {500, 754, 1508}) {
        Device().State().ResizeToWidth(width);
        robot.Advance(100);
        Opened();
        EXPECT_EQ(window.width, width);
    }
}

TEST_F(SettingsMenu, SetsWhatTheAutomaticGainMeasures) {
    const std::array<double, 7> times{600, 1000, 2000, 3000, 4000, 5000, 10000};
    TryEach(
        0, 6, [this] { return double{AutoGain().rmsTime}; },
        [&](int item) { return times.at(static_cast<std::size_t>(item)); });
    TryEach(
        40, 41, [this] { return int{AutoGain().filter}; }, [](int item) { return item - 40; });
    TryEach(
        42, 44, [this] { return double{AutoGain().suspendLevel}; },
        [](int item) { return item == 42   ? 0
                              : item == 43 ? -60
                                           : -30; });
}

TEST_F(SettingsMenu, SetsWhatTheAutomaticGainMayDo) {
    TryEach(
        29, 39, [this] { return double{AutoGain().tolerance}; }, [](int item) { return item - 29; });
    TryEach(
        7, 17, [this] { return double{AutoGain().maximumGain}; }, [](int item) { return 2 * (item - 7); });
    TryEach(
        18, 28, [this] { return double{AutoGain().maximumCut}; },
        [](int item) { return item == 18 ? 1 : 2 * (item - 18); });
}

TEST_F(SettingsMenu, SetsTheInstructionsAndHowGroupsAreConnected) {
    TryEach(
        52, 53, [this] { return bool{Device().Simd()}; }, [](int item) { return item == 53; });
    TryEach(
        54, 55, [this] { return bool{Device().GroupsParallel()}; }, [](int item) { return item == 55; });
}

TEST_F(SettingsMenu, SetsOnlyWhatTheEntrySays) {
    const auto before = Chunk(false);
    const std::map<std::int32_t, std::string> elements{{0, "agc_rms"}, {40, "agc_filter"},
        {42, "agc_suspend"}, {29, "agc_tolerance"}, {7, "agc_gain_max"}, {18, "agc_gain_min"}, {53, "simd"},
        {55, "groups_parallel"}};
    for (const auto& [item, name] : elements) {
        const std::string element = name; // what the function below can hold
        Reopen();
        ASSERT_EQ(Chunk(false), before);
        Choose(item);
        const auto after = Chunk(false);
        EXPECT_NE(after, before) << element;
        ASSERT_NE(after.find("<" + element), std::string::npos) << element;
        const auto without = [&element](std::string text) {
            const auto begin = text.find("<" + element);
            return text.erase(begin, text.find("</" + element, begin) - begin);
        };
        EXPECT_EQ(without(after), without(before)) << element;
    }
}

TEST_F(SettingsMenu, TicksTheChoiceThatAPatchOrAProjectHasBrought) {
    SetChunk(
        "<patch_format>textual</patch_format>\r\n<agc_rms>5000</agc_rms>\r\n<agc_gain_min>2</agc_gain_min>"
        "\r\n<agc_filter>0</agc_filter>\r\n<groups_parallel>1</groups_parallel>\r\n",
        false);
    EXPECT_EQ(Ticks(0, 6), std::set<std::int32_t>{5});
    EXPECT_EQ(Ticks(18, 28), std::set<std::int32_t>{19}) << "-2dB";
    EXPECT_EQ(Ticks(40, 41), std::set<std::int32_t>{40});
    EXPECT_EQ(Ticks(54, 55), std::set<std::int32_t>{55});
    AutoGain().maximumCut = 1.0;
    EXPECT_EQ(Ticks(18, 28), std::set<std::int32_t>{18}) << "-1dB";
    AutoGain().filter = 7;
    EXPECT_EQ(Ticks(40, 41), std::set<std::int32_t>{41}) << "any other filter is weighted";
}

TEST_F(SettingsMenu, TicksNothingForAValueThatItDoesNotOffer) {
    AutoGain().rmsTime = 601.0;
    AutoGain().suspendLevel = -30.5;
    AutoGain().tolerance = 0.5;
    AutoGain().maximumGain = 3.0;
    AutoGain().maximumCut = 3.0;
    EXPECT_EQ(Ticks(0, 39), std::set<std::int32_t>{});
    EXPECT_EQ(Ticks(42, 44), std::set<std::int32_t>{});
}

// The instructions of the processor

TEST_F(SettingsMenu, NamesTheInstructionsThatTheProcessorHas) {
    using namespace Utils;
    const auto all = ~std::uint64_t{0};
    struct SCase {
        std::uint64_t features;
        std::u16string_view text;
        bool enabled;
    };
    for (const auto& [features, text, enabled] : std::initializer_list<SCase>{
             {0, u"No SIMD optimizations available", false},
             {CpuAvx, u"No SIMD optimizations available", false},
             {CpuSse2, u"No SIMD optimizations available", false},
             {all & ~CpuFma, u"No SIMD optimizations available", false},
             {CpuFma, u"FMA/ (experimental)", false},
             {CpuFma | CpuAvx2 | CpuSse, u"FMA/ (experimental)", false},
             {CpuFma | CpuSse2, u"FMA/SSE2 (experimental)", true},
             {CpuFma | CpuAvx, u"FMA/AVX (experimental)", true},
             {CpuFma | CpuSse2 | CpuAvx, u"FMA/SSE2/AVX (experimental)", true},
             {all, u"FMA/SSE2/AVX (experimental)", true},
         }) {
        const auto entry = SimdEntry(features);
        EXPECT_EQ(entry.sText, text) << features;
        EXPECT_EQ(entry.bEnabled, enabled) << features;
        EXPECT_EQ(entry.nCommand, FirstCommand + 53);
    }
    Device().Simd() = true;
    EXPECT_TRUE(SimdEntry(0).bChecked) << "a project from another machine";
}

// Renderers and rates

TEST_F(SettingsMenu, ChangesTheRendererAtOnceAndForAllEditorsOfTheUser) {
    for (const auto& [item, renderer] : {std::pair{45, 0u}, {46, 1u}, {48, 3u}, {47, 2u}, {45, 0u}}) {
        renderers.Live().maxAspect = 7; // which no new one has
        Choose(item);
        EXPECT_EQ(renderers.Live().maxAspect, 0) << item;
        EXPECT_EQ(Gui().Screen().Renderer(), renderer);
        EXPECT_EQ(GUI::StoredNumber(u"GFX"), renderer);
        EXPECT_EQ(Ticks(45, 48), std::set<std::int32_t>{item});
        EXPECT_GT(Picture().size(), 100u) << "with all of its pictures";
    }
    renderers.Live().maxAspect = 7;
    Choose(45);
    EXPECT_EQ(renderers.Live().maxAspect, 7) << "the one in use stays";
    Reopen();
    EXPECT_EQ(Ticks(45, 48), std::set<std::int32_t>{45});
}

TEST_F(SettingsMenu, OffersOnlyTheRenderersOfThisSystemButTakesTheirNumbers) {
    const auto make = [](const GFX::SRendererTarget&, GFX::EReason) -> std::unique_ptr<GFX::GPU> {
        return std::make_unique<CRecordingGpu>();
    };
    const GFX::RendererTable table{{{u"Software", make, true}, {u"OpenGL", make, true},
        {u"Direct3D9", nullptr, false}, {u"Direct2D", nullptr, false}}};
    effect.reset();
    GFX::UseRenderers(&table);
    GUI::StoreNumber(u"GFX", GFX::Software);
    effect = std::make_unique<CHostedEffect>(
        host.Callback(), Utils::SMakerService{}, std::make_unique<CDrivenSystem>(window, pictures));
    Open();
    const auto rendering = [this] {
        Lines lines = Printed(Opened());
        const auto begin = std::ranges::find(lines, "GUI Rendering >");
        return Lines(begin + 1, begin + 5);
    };
    EXPECT_EQ(
        rendering(), (Lines{"  47 Direct3D9 (grey)", "  46 OpenGL", "  48 Direct2D (grey)", "  * 45 CPU"}));
    Choose(47);
    EXPECT_EQ(
        rendering(), (Lines{"  47 Direct3D9 (grey)", "  * 46 OpenGL", "  48 Direct2D (grey)", "  45 CPU"}))
        << "the one that it falls back to is in use";
    Choose(48);
    EXPECT_EQ(
        rendering(), (Lines{"  47 Direct3D9 (grey)", "  46 OpenGL", "  48 Direct2D (grey)", "  * 45 CPU"}));
    EXPECT_EQ(GUI::StoredNumber(u"GFX"), GFX::Software);
    EXPECT_TRUE(window.boxes.empty());
    effect.reset(); // before the table
}

TEST_F(SettingsMenu, ChangesTheRateAtOnceAndForAllEditorsOfTheUser) {
    for (const auto& [item, rate] : {std::pair{49, 30u}, {51, 100u}, {50, 60u}, {49, 30u}}) {
        window.lines.clear();
        Choose(item);
        EXPECT_EQ(window.rate, rate);
        EXPECT_EQ(window.Count("SetRate"), 1u);
        EXPECT_EQ(GUI::StoredNumber(u"FPS"), rate);
        EXPECT_EQ(Ticks(49, 51), std::set<std::int32_t>{item});
    }
    Choose(49);
    EXPECT_EQ(window.Count("SetRate"), 1u) << "the present rate stays";
    Reopen();
    EXPECT_EQ(window.rate, 30u);
    EXPECT_EQ(Ticks(49, 51), std::set<std::int32_t>{49});
}

// What is no setting

TEST_F(SettingsMenu, SavesTheDefaultOfNewInstancesWithoutAQuestion) {
    WriteText(documents.Patch("- Full Reset -.kvp"), "an older one");
    Choose(53);
    Choose(2);
    Choose(55);
    Choose(0);
    effect->Set(4, 0.25f);
    Choose(61);
    EXPECT_TRUE(dialogs.questions.empty());
    EXPECT_EQ(Device().State().PatchName(), u"- Full Reset -");
    robot.Tick();
    EXPECT_EQ(Widget<CPatch>().Text(), u"- Full Reset -");
    Reopen();
    EXPECT_TRUE(Device().Simd());
    EXPECT_TRUE(Device().GroupsParallel());
    EXPECT_EQ(AutoGain().rmsTime, 600.0);
    EXPECT_EQ(effect->Get(4), 0.25f);
    const auto saved = ReadText(documents.Patch("- Full Reset -.kvp"));
    EXPECT_NE(saved.find("<gui_width>"), std::string::npos);
    EXPECT_EQ(saved.find("<fx_names"), std::string::npos);
    EXPECT_EQ(saved.find("<kav_input_routing"), std::string::npos);
}

TEST_F(SettingsMenu, SaysNothingWhenTheDefaultCannotBeWritten) {
    WriteText(documents.Patch("").parent_path(), "a file where the folder should be");
    Choose(61);
    EXPECT_TRUE(dialogs.errors.empty());
    EXPECT_TRUE(dialogs.questions.empty());
    EXPECT_TRUE(window.boxes.empty());
}

TEST_F(SettingsMenu, TellsTheHostNothingAndLeavesNoStepOfHistory) {
    for (const auto item : Items(Opened(), false)) {
        if (item != 61) Choose(item); // which loads nothing, but names the patch
    }
    EXPECT_EQ(Told(), Lines{});
    EXPECT_EQ(Gui().Records(), 0u);
}

TEST_F(SettingsMenu, TakesNoOtherNumbers) {
    const auto known = Items(Opened(), false);
    EXPECT_EQ(known.size(), 59u) << "0 to 61 but for 57 and those of versions, of which none is known";
    const auto before = Chunk(false);
    robot.Tick();
    window.lines.clear();
    for (std::int32_t item = -5; item < 1200; ++item) {
        if (known.contains(item) || item == 59 || item == 60) continue;
        Widget<CSettings>().SelectItem(item);
    }
    EXPECT_EQ(Chunk(false), before);
    EXPECT_EQ(window.Count("SetRate"), 0u);
    EXPECT_EQ(GUI::StoredNumber(u"GFX"), std::nullopt);
    EXPECT_TRUE(window.boxes.empty());
    EXPECT_FALSE(std::filesystem::exists(documents.Patch("")));
}

TEST_F(SettingsMenu, DrawsNothingItself) {
    const auto& menu = Widget<CSettings>();
    const auto& button = Named(u"ToolAbout");
    EXPECT_EQ(menu.PixelRect(), button.PixelRect());
    EXPECT_EQ(DrawsOf(button).size(), 1u) << "the button's picture";
}
