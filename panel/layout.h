#pragma once

#include "panel/rect.h"
#include "panel/sprites.h"

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

/// The panel of the editor as constant data: what is where, shared by the editor and the program that draws
/// the pictures. All texts are ASCII.
namespace KAV::Panel {

/// The panel at its base size, in panel pixels. The lowest band extends one row below it.
inline constexpr int PanelWidth = 754;
inline constexpr int PanelHeight = 553;

/// The class of a row's widget, by its name without the C.
enum class EClass : std::uint8_t {
    Widget,
    Meter,
    Knob,
    Button,
    AutoRelease,
    Release,
    ToolbarTop,
    Routing,
    ChannelBtn,
    FxBtn,
    FxBtnCopy,
    RoutingDropDownBtn,
    RoutingEdit,
    PatchLoad,
    PatchSave,
    Patch,
    Undo,
    Redo,
    PatchABCopy,
    PatchABInplace,
    Oversampling,
    PreviousPatch,
    NextPatch,
    PreviousOversampling,
    NextOversampling,
    Settings,
    BtnAbout,
    NewVersionLED,
    MacroKnob,
    MacroBtn,
    GR,
    Hint,
    Light,
};

/// One widget of the panel. Sizes are in panel pixels, values are 0..1, colours are 0xAARRGGBB.
struct SPanelRow {
    int id = -1;            ///< a parameter of the current group; below 0 a meter, a lamp, or nothing
    std::string_view name;  ///< may repeat
    std::string_view title; ///< what the hint calls it, where the name isn't for the user; empty: the name
    EClass widget = EClass::Widget;
    SRect rect;
    const SSprite* sprite = nullptr; ///< null: the widget draws no picture

    std::string_view text;  ///< initial text
    double textSize = 10.0; ///< as labels take it: a fraction of the widget's width, or below 0 of its height
    std::uint32_t textColour = 0xFFFFFFFF;
    std::string_view list; ///< the named positions of a value, "||" between them

    double value = 0.0;   ///< initially, and what a knob returns to
    double minimum = 0.0; ///< what a text shows for the value 0
    double maximum = 1.0; ///< and for 1
    std::string_view unit;
    double hintAt = 0.0; ///< position of the hint
    int margin = 0;      ///< of the nine slices, in picture pixels on each side; 0: drawn whole
    int inset = 0;       ///< of the text from each side, in pixels of the window
    int riseMs = 0;      ///< time in which a shown value rises to a new one
    int fallMs = 0;
    int fadeMs = 0;      ///< time in which the widget appears and vanishes
    int radioGroup = -1; ///< only one button of such a group is on
    bool visible = true; ///< initially
};

/// The row that only says how large the knobs on the panels of a macro are.
inline constexpr std::string_view MacroPattern = "Macro 1/1";
/// What is part of the names of knobs that follow no macro.
inline constexpr std::array<std::string_view, 3> WithoutMacros{
    "Main Input Gain", "Main Output Gain", "Macro"};

/// Every widget in the order of construction, which is the order of drawing. Hit tests run backwards.
std::span<const SPanelRow> Rows() noexcept;

/// What the root owns in addition: the hint over the panel, and the light.
const SPanelRow& HintRow() noexcept;
const SPanelRow& LightRow() noexcept;

/// The first row of this name. Throws std::out_of_range if there is none.
const SPanelRow& RowOf(std::string_view name);

/// Row `place`, from 0, of those with the class `widget`. Throws std::out_of_range if there is none.
const SPanelRow& RowOf(EClass widget, int place = 0);

} // namespace KAV::Panel
