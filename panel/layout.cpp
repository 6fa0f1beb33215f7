#include "panel/layout.h"

#include <array>
#include <cstddef>
#include <string>

namespace KAV::Panel {

namespace {

/// Room for a name with a number at its end.
struct SNumberedName {
    std::array<char, 20> letters{};
    std::size_t size = 0;

    constexpr std::string_view View() const { return {letters.data(), size}; }
};

/// `stem` followed by 1, 2 and so on.
template<std::size_t Count>
constexpr std::array<SNumberedName, Count> Numbered(std::string_view stem) {
    std::array<SNumberedName, Count> names{};
    for (std::size_t i = 0; i < Count; ++i) {
        auto& name = names[i];
        const auto append = [&name](char letter) { name.letters[name.size++] = letter; };
        for (const char letter : stem) append(letter);
        if (i + 1 >= 10) append(static_cast<char>('0' + (i + 1) / 10));
        append(static_cast<char>('0' + (i + 1) % 10));
    }
    return names;
}

constexpr auto InputMeterNames = Numbered<16>("Input Meter ");
constexpr auto OutputMeterNames = Numbered<16>("Output Meter ");
constexpr auto ChannelMeterNames = Numbered<16>("ToolMeterCh");
constexpr auto ChannelNames = Numbered<16>("ToolCh");
constexpr auto GroupMeterNames = Numbered<4>("ToolMeterFx");
constexpr auto GroupNames = Numbered<4>("ToolBtnFx");
constexpr auto GroupTexts = Numbered<4>("");
constexpr auto ChannelTitles = Numbered<16>("Channel ");
constexpr auto ChannelMeterTitles = Numbered<16>("Level of channel ");
constexpr auto GroupTitles = Numbered<4>("Group ");
constexpr auto GroupMeterTitles = Numbered<4>("Level of group ");
constexpr auto MacroNames = Numbered<5>("Macro ");

constexpr std::array<double, 8> ChannelColumns{123, 177, 231, 285, 340, 396, 450, 504};
constexpr std::array<double, 5> MacroKnobColumns{179, 267, 354, 441, 529};
constexpr std::array<double, 5> MacroButtonColumns{160, 248, 336, 424, 512};

constexpr int SlowMs = 250; // what moves, and what fades
constexpr int BreathMs = 1000;
constexpr int GroupRadio = 1;
constexpr std::uint32_t BrightText = 0xFFC0C0C0;
constexpr std::uint32_t DimText = 0x64C0C0C0;
constexpr double DisplayText = -0.35;

constexpr const SSprite* Picture(std::string_view stem) {
    return stem.empty() ? nullptr : &SpriteOf(stem);
}

/// The rows so far. At the end there must be exactly as many as `Rows` holds.
template<std::size_t Count>
struct STable {
    std::array<SPanelRow, Count> rows{};
    std::size_t count = 0;

    constexpr SPanelRow& Add(
        EClass widget, int id, std::string_view name, const SRect& rect, std::string_view picture) {
        auto& row = rows[count++];
        row.id = id;
        row.name = name;
        row.widget = widget;
        row.rect = rect;
        row.sprite = Picture(picture);
        return row;
    }
    /// A fader or knob: it moves to its value gradually.
    constexpr SPanelRow& AddValue(EClass widget, int id, std::string_view name, const SRect& rect,
        std::string_view picture, const SPanelRow& scale) {
        auto& row = Add(widget, id, name, rect, picture);
        row.minimum = scale.minimum;
        row.maximum = scale.maximum;
        row.value = scale.value;
        row.unit = scale.unit;
        row.hintAt = -0.1;
        row.riseMs = row.fallMs = SlowMs;
        return row;
    }
    /// A button that stays as set.
    constexpr SPanelRow& AddSwitch(EClass widget, int id, std::string_view name, const SRect& rect,
        std::string_view picture, bool on = false) {
        auto& row = Add(widget, id, name, rect, picture);
        row.value = on ? 1.0 : 0.0;
        row.riseMs = row.fallMs = SlowMs;
        return row;
    }
    /// A button that is on while it is held. It lights at once and fades afterwards.
    constexpr SPanelRow& AddKey(EClass widget, std::string_view name, std::string_view title,
        const SRect& rect, std::string_view picture) {
        auto& row = Add(widget, -1, name, rect, picture);
        row.title = title;
        row.fallMs = SlowMs;
        return row;
    }
};

constexpr SPanelRow Scale(double minimum, double maximum, double value, std::string_view unit) {
    SPanelRow row;
    row.minimum = minimum;
    row.maximum = maximum;
    row.value = value;
    row.unit = unit;
    return row;
}

/// The meters of one side: two sets of eight, each set side by side. Their ids count down.
template<typename TTable>
constexpr void AddMeters(
    TTable& table, const std::array<SNumberedName, 16>& names, double left, double right, int firstId) {
    for (int n = 0; n < 16; ++n) {
        const double x = n < 8 ? left + 12 * n : right + 12 * (n - 8);
        table.Add(EClass::Meter, firstId - n, names[static_cast<std::size_t>(n)].View(), {x, 123, 13, 310},
            "meterled");
    }
}

template<typename TTable>
constexpr void AddBody(TTable& table) {
    const auto fader = [&table](
                           EClass widget, int id, std::string_view name, double x, const SPanelRow& scale) {
        table.AddValue(widget, id, name, {x, 118, 61, 337}, "fader", scale);
    };
    table.Add(EClass::Widget, -1, "Bkgnd", {0, 84, 754, 363}, "gui_front_root_panel_1500px").title =
        "Background";
    AddMeters(table, InputMeterNames, 8, 156, -24);
    fader(EClass::Knob, 32, "Input Gain", 110, Scale(-20, 0, 1.0, "dB"));
    fader(EClass::Knob, 33, "Threshold", 272, Scale(-30, 0, 1.0, "dB"));
    table.AddSwitch(EClass::AutoRelease, 35, "Auto Release", {328, 406, 99, 38}, "buttonar");
    table.AddSwitch(EClass::Button, 34, "Limiter", {328, 114, 99, 38}, "buttonin", true);
    fader(EClass::Release, 36, "Release", 442, Scale(0.01, 1000, 0.4, "ms"));
    AddMeters(table, OutputMeterNames, 502, 650, -40);
    fader(EClass::Knob, 37, "Output Ceiling", 604, Scale(-30, 0, 1.0, "dB"));
}

template<typename TTable>
constexpr void AddChannels(TTable& table) {
    const auto cell = [](std::size_t n, double upper, double lower, double height) {
        return SRect{ChannelColumns[n % 8], n < 8 ? upper : lower, 50, height};
    };
    for (std::size_t n = 0; n < 16; ++n) {
        auto& meter = table.Add(EClass::Meter, -4 - static_cast<int>(n), ChannelMeterNames[n].View(),
            cell(n, 45, 76, 10), "toolmeterchnl");
        meter.title = ChannelMeterTitles[n].View();
        meter.fadeMs = SlowMs;
    }
    for (std::size_t n = 0; n < 16; ++n) {
        const bool isStereo = n < 2; // as a new instance starts
        auto& button = table.AddSwitch(EClass::ChannelBtn, static_cast<int>(n) + 1, ChannelNames[n].View(),
            cell(n, 20, 51, 30), "toolbtnrtg", isStereo);
        button.title = ChannelTitles[n].View();
        if (isStereo) button.text = n == 0 ? "L" : "R";
        button.textSize = n % 8 < 4 ? 0.13 : 0.12;
        button.textColour = isStereo ? BrightText : DimText;
    }
}

template<typename TTable>
constexpr void AddGroups(TTable& table) {
    const auto cell = [](std::size_t n, double upper, double lower, double height) {
        return SRect{n % 2 == 0 ? 590.0 : 644.0, n < 2 ? upper : lower, 50, height};
    };
    for (std::size_t n = 0; n < 4; ++n)
        table
            .Add(EClass::Meter, -20 - static_cast<int>(n), GroupMeterNames[n].View(), cell(n, 45, 76, 10),
                "toolmeterchnl")
            .title = GroupMeterTitles[n].View();
    for (std::size_t n = 0; n < 4; ++n) {
        auto& button = table.AddSwitch(EClass::FxBtn, 17 + static_cast<int>(n), GroupNames[n].View(),
            cell(n, 20, 51, 30), "toolbtnrtg", n == 0);
        button.title = GroupTitles[n].View();
        button.text = GroupTexts[n].View();
        button.textSize = 0.13;
        button.textColour = n == 0 ? BrightText : DimText;
        button.radioGroup = GroupRadio;
    }
}

template<typename TTable>
constexpr void AddTopBar(TTable& table) {
    table.Add(EClass::ToolbarTop, -1, "ToolbarRtg", {0, 0, 754, 84}, "toolbar_up").title =
        "Channels and groups";
    auto& routing = table.Add(EClass::Routing, -2, "ToolInputRouting", {14, 23, 58, 21}, "");
    routing.title = "Routing";
    routing.text = "Text"; // until a routing is applied
    routing.textSize = DisplayText;
    AddChannels(table);
    AddGroups(table);
    table.AddSwitch(EClass::FxBtnCopy, -1, "ToolBtnFxCopy", {702, 2, 48, 48}, "toolbtncopy").title =
        "Copy this group to another one";
    table
        .AddKey(
            EClass::RoutingDropDownBtn, "ToolBtnDown", "Choose a routing", {64, 23, 20, 20}, "toolbtndown")
        .value = 1.0;
    // These only hold the values of the current group; its button shows them.
    auto& solo = table.AddSwitch(EClass::Button, 21, "ToolFxSolo", {581, 97, 10, 10}, "");
    solo.title = "Solo of this group";
    solo.visible = false;
    auto& mute = table.AddSwitch(EClass::Button, 22, "ToolFxMute", {604, 97, 10, 10}, "");
    mute.title = "Mute of this group";
    mute.visible = false;
    auto& edit =
        table.AddSwitch(EClass::RoutingEdit, -1, "ToolBtnRoutingEdit", {53, 53, 45, 23}, "toolbtnedit");
    edit.title = "Edit the routing";
    edit.textSize = 0.15;
    edit.textColour = 0xFFC8C8C8;
}

template<typename TTable>
constexpr void AddMacros(TTable& table) {
    for (std::size_t n = 0; n < MacroNames.size(); ++n) {
        table.AddValue(EClass::MacroKnob, 24 + static_cast<int>(n), MacroNames[n].View(),
            {MacroKnobColumns[n], 482, 50, 50}, "knob03", Scale(-100, 100, 0.5, "%"));
        auto& button = table.AddSwitch(
            EClass::MacroBtn, -1, MacroNames[n].View(), {MacroButtonColumns[n], 449, 84, 30}, "toolbtnmacro");
        button.text = MacroNames[n].View();
        button.textSize = 0.08;
    }
    // Only a pattern for the knobs on the panel of an open macro.
    auto& pattern =
        table.AddValue(EClass::Knob, -1, MacroPattern, {134, 477, 12, 12}, "knob04", Scale(0, 100, 0.5, "%"));
    pattern.hintAt = -0.4;
    pattern.visible = false;
}

template<typename TTable>
constexpr void AddPatches(TTable& table) {
    table.AddKey(EClass::PatchLoad, "ToolBtnLoad", "Load a patch", {363, 531, 44, 22}, "toolbtnload");
    table.AddKey(EClass::PatchSave, "ToolBtnSave", "Save the patch", {407, 531, 44, 22}, "toolbtnsave");
    auto& patch = table.Add(EClass::Patch, -1, "ToolPatch", {164, 532, 195, 21}, "tooldisplay");
    patch.title = "Patch";
    patch.text = "Text"; // until a patch is loaded
    patch.textSize = DisplayText;
    table.AddKey(EClass::Undo, "ToolBtnUndo", "Undo", {23, 531, 44, 22}, "toolbtnundo");
    table.AddKey(EClass::Redo, "ToolBtnRedo", "Redo", {67, 531, 44, 22}, "toolbtnredo");
    table.AddKey(
        EClass::PatchABCopy, "ToolBtnABCopy", "Copy to the other side", {133, 531, 27, 22}, "toolbtnabcopy");
}

template<typename TTable>
constexpr void AddToolbar(TTable& table) {
    table.Add(EClass::Widget, -1, "Toolbar", {0, 447, 754, 107}, "toolbar_down3").title =
        "Macros and patches";
    AddPatches(table);
    auto& oversampling =
        table.Add(EClass::Oversampling, 30, "Oversampling", {601, 532, 96, 21}, "tooloversampling");
    oversampling.text = "OS x1";
    oversampling.list = "OS x1||OS x2||OS x4||OS x8";
    oversampling.textSize = DisplayText;
    table.AddKey(EClass::PreviousPatch, "ToolBtnPrev", "Previous patch", {171, 534, 16, 16}, "toolbtnprev");
    table.AddKey(EClass::NextPatch, "ToolBtnNext", "Next patch", {336, 534, 16, 16}, "toolbtnnext");
    table.AddKey(EClass::PreviousOversampling, "ToolBtnPrevOS", "Less oversampling", {606, 534, 16, 16},
        "toolbtnprev");
    table.AddKey(
        EClass::NextOversampling, "ToolBtnNextOS", "More oversampling", {675, 534, 16, 16}, "toolbtnnext");
    table.AddKey(EClass::PatchABInplace, "ToolBtnA", "A/B", {111, 531, 27, 22}, "toolbtna");
    auto& size = table.Add(EClass::Widget, -1, "Size", {741, 540, 12, 12}, "resizearrow");
    size.title = "Size of the editor";
    size.fadeMs = SlowMs;
    // Hosts and patches know the parameter by this spelling.
    table.AddSwitch(EClass::Button, 31, "Hiqh Quality", {656, 533, 20, 20}, "hq");
    const auto mainGain = Scale(-24, 24, 0.5, "dB");
    table.AddValue(EClass::Knob, 29, "Main Output Gain", {674, 474, 60, 60}, "knob02", mainGain).hintAt =
        -0.3;
    table.AddValue(EClass::Knob, 23, "Main Input Gain", {18, 474, 60, 60}, "knob02", mainGain).hintAt = -0.3;
    // Both are in the same place: the visible button, and the settings that hold its menu.
    table.Add(EClass::Settings, -3, "Settings", {705, 533, 19, 19}, "").title = "Settings";
    table.AddKey(EClass::BtnAbout, "ToolAbout", "Settings", {705, 533, 19, 19}, "toolbtnabout");
    auto& lamp = table.Add(EClass::NewVersionLED, -56, "UpdateLed", {699, 531, 15, 15}, "lamp_2");
    lamp.title = "New version";
    lamp.hintAt = -0.4;
    lamp.riseMs = lamp.fallMs = BreathMs;
    lamp.visible = false;
    AddMacros(table);
}

constexpr std::size_t RowCount = 118;

constexpr STable<RowCount> BuildTable() {
    STable<RowCount> table;
    AddBody(table);
    AddTopBar(table);
    AddToolbar(table);
    table.Add(EClass::GR, -57, "Gain Reduction", {332, 161, 91, 206}, "");
    return table;
}

constexpr STable<RowCount> Table = BuildTable();
static_assert(Table.count == RowCount, "each row is filled");

constexpr SPanelRow BuildHint() {
    SPanelRow row;
    row.name = "Hint";
    row.widget = EClass::Hint;
    row.rect = {663, 484, 74.258, 41.76};
    row.sprite = Picture("hint");
    row.margin = 12; // of 25: the corners stay as they are, and the pixel between them is stretched
    row.inset = 8;   // at any width of the editor the text makes the hint as high as its two corners
    row.textSize = 0.013;
    row.fadeMs = SlowMs;
    return row;
}

constexpr SPanelRow BuildLight() {
    SPanelRow row;
    row.name = "Light";
    row.widget = EClass::Light;
    row.rect = {0, 0, 32, 32};
    return row;
}

constexpr SPanelRow Hint = BuildHint();
constexpr SPanelRow Light = BuildLight();

} // namespace

std::span<const SPanelRow> Rows() noexcept {
    return Table.rows;
}

const SPanelRow& HintRow() noexcept {
    return Hint;
}

const SPanelRow& LightRow() noexcept {
    return Light;
}

const SPanelRow& RowOf(std::string_view name) {
    for (const auto& row : Table.rows) {
        if (row.name == name) return row;
    }
    throw std::out_of_range("no widget " + std::string(name));
}

const SPanelRow& RowOf(EClass widget, int place) {
    int left = place;
    for (const auto& row : Table.rows) {
        if (row.widget == widget && left-- == 0) return row;
    }
    throw std::out_of_range("no such widget");
}

} // namespace KAV::Panel
