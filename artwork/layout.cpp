#include "artwork/layout.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>
#include <vector>

namespace KAV::Artwork {

namespace {

constexpr std::array AllSprites{
    SSprite{"buttonar", "BUTTONAR((2))##SZ-1X-1PXSB0.PNG", 198, 152, 2, 1, 99, 38},
    SSprite{"buttonin", "BUTTONIN((2))##SZ-1X-1PXSB0.PNG", 198, 152, 2, 1, 99, 38},
    SSprite{"dialogbtn", "DIALOGBTN##SZ-1X-1PXSB0.PNG", 226, 90, 1, 1, 113, 45},
    SSprite{"fader", "FADER((63X20))##SZ-1X-1PXSB0.PNG", 2440, 2696, 63, 20, 61, 337},
    SSprite{"gui_front_root_panel_1500px", "GUI_FRONT_ROOT_PANEL_1500PX##SZ-1X-1PXSB0.PNG", 1500, 722, 1, 1,
        754, 363, true},
    SSprite{"hint", "HINT##SZ-1X-1PXSB0.PNG", 25, 25, 1, 1, 12.5, 12.5},
    SSprite{"hq", "HQ((2))##SZ-1X-1PXSB0.PNG", 60, 120, 2, 1, 20, 20},
    SSprite{"knob02", "KNOB02((63X8))##SZ-1X-1PXSB0.PNG", 1440, 1440, 63, 8, 60, 60},
    SSprite{"knob03", "KNOB03((63X8))##SZ-1X-1PXSB0.PNG", 1056, 1056, 63, 8, 50, 50},
    SSprite{"knob04", "KNOB04((63X8))##SZ-1X-1PXSB0.PNG", 312, 312, 63, 8, 12, 12},
    SSprite{"lamp_2", "LAMP_2((2))##SZ-1X-1PXSB0.PNG", 36, 72, 2, 1, 15, 15},
    SSprite{"logo", "LOGO##SZ-1X-1PXSB0.PNG", 150, 99, 1, 1, 113, 75},
    SSprite{"meterled", "METERLED((63X47))##SZ-1X-1PXSB0.PNG", 1222, 1240, 63, 47, 13, 310},
    SSprite{"resizearrow", "RESIZEARROW##SZ-1X-1PXSB0.PNG", 100, 100, 1, 1, 12, 12},
    SSprite{"switchgpu2", "SWITCHGPU2((3X3))##SZ-1X-1PXSB0.PNG", 300, 100, 3, 3, 60, 60},
    SSprite{"switchsimd", "SWITCHSIMD((2X2))##SZ-1X-1PXSB0.PNG", 200, 57, 2, 2, 60, 34},
    SSprite{"toolbar_down3", "TOOLBAR_DOWN3##SZ-1X-1PXSB0.PNG", 1508, 214, 1, 1, 754, 107, true},
    SSprite{"toolbar_up", "TOOLBAR_UP##SZ-1X-1PXSB0.PNG", 1508, 168, 1, 1, 754, 84, true},
    SSprite{"toolbtna", "TOOLBTNA((4))##SZ-1X-1PXSB0.PNG", 81, 264, 4, 1, 27, 22},
    SSprite{"toolbtnabcopy", "TOOLBTNABCOPY((2))##SZ-1X-1PXSB0.PNG", 81, 132, 2, 1, 27, 22},
    SSprite{"toolbtnabout", "TOOLBTNABOUT((2))##SZ-1X-1PXSB0.PNG", 45, 90, 2, 1, 19, 19},
    SSprite{"toolbtncopy", "TOOLBTNCOPY((2))##SZ-1X-1PXSB0.PNG", 144, 288, 2, 1, 48, 48},
    SSprite{"toolbtndown", "TOOLBTNDOWN((2))##SZ-1X-1PXSB0.PNG", 66, 132, 2, 1, 20, 20},
    SSprite{"toolbtnedit", "TOOLBTNEDIT((2))##SZ-1X-1PXSB0.PNG", 100, 102, 2, 1, 45, 23},
    SSprite{"toolbtnload", "TOOLBTNLOAD((2))##SZ-1X-1PXSB0.PNG", 132, 132, 2, 1, 44, 22},
    SSprite{"toolbtnmacro", "TOOLBTNMACRO((2))##SZ-1X-1PXSB0.PNG", 252, 180, 2, 1, 84, 30},
    SSprite{"toolbtnnext", "TOOLBTNNEXT((2))##SZ-1X-1PXSB0.PNG", 60, 120, 2, 1, 16, 16},
    SSprite{"toolbtnprev", "TOOLBTNPREV((2))##SZ-1X-1PXSB0.PNG", 60, 120, 2, 1, 16, 16},
    SSprite{"toolbtnredo", "TOOLBTNREDO((3))##SZ-1X-1PXSB0.PNG", 132, 198, 3, 1, 44, 22},
    SSprite{"toolbtnrtg", "TOOLBTNRTG((2))##SZ-1X-1PXSB0.PNG", 150, 180, 2, 1, 50, 30},
    SSprite{"toolbtnsave", "TOOLBTNSAVE((2))##SZ-1X-1PXSB0.PNG", 132, 132, 2, 1, 44, 22},
    SSprite{"toolbtnundo", "TOOLBTNUNDO((3))##SZ-1X-1PXSB0.PNG", 132, 198, 3, 1, 44, 22},
    SSprite{"tooldisplay", "TOOLDISPLAY##SZ-1X-1PXSB0.PNG", 780, 84, 1, 1, 195, 21},
    SSprite{"toolmeterchnl", "TOOLMETERCHNL((16))##SZ-1X-1PXSB0.PNG", 150, 480, 16, 1, 50, 10},
    SSprite{"tooloversampling", "TOOLOVERSAMPLING##SZ-1X-1PXSB0.PNG", 508, 84, 1, 1, 96, 21},
};

constexpr std::array<double, 8> ChannelColumns{123, 177, 231, 285, 340, 396, 450, 504};

/// Eight meters side by side, then eight more: the places of one side's sixteen.
void AddMeters(std::vector<SPlace>& places, std::string_view name, double left, double right, int firstId) {
    for (int n = 0; n < 16; ++n) {
        const double x = n < 8 ? left + 12 * n : right + 12 * (n - 8);
        places.push_back({name, "meterled", {x, 123, 13, 310}, EKind::Meter, firstId - n});
    }
}

void AddTopBar(std::vector<SPlace>& places) {
    places.push_back({"ToolbarRtg", "toolbar_up", {0, 0, 754, 84}});
    for (int n = 0; n < 16; ++n) {
        const SRect rect{ChannelColumns[static_cast<std::size_t>(n % 8)], n < 8 ? 45.0 : 76.0, 50, 10};
        places.push_back({"ToolMeterCh", "toolmeterchnl", rect, EKind::Meter, -4 - n});
    }
    for (int n = 0; n < 16; ++n) {
        const SRect rect{ChannelColumns[static_cast<std::size_t>(n % 8)], n < 8 ? 20.0 : 51.0, 50, 30};
        places.push_back({"ToolCh", "toolbtnrtg", rect, EKind::Switch, n + 1});
    }
    for (int n = 0; n < 4; ++n) {
        const SRect rect{n % 2 == 0 ? 590.0 : 644.0, n < 2 ? 45.0 : 76.0, 50, 10};
        places.push_back({"ToolMeterFx", "toolmeterchnl", rect, EKind::Meter, -20 - n});
    }
    for (int n = 0; n < 4; ++n) {
        const SRect rect{n % 2 == 0 ? 590.0 : 644.0, n < 2 ? 20.0 : 51.0, 50, 30};
        places.push_back({"ToolBtnFx", "toolbtnrtg", rect, EKind::Switch, 17 + n});
    }
    places.push_back({"ToolBtnFxCopy", "toolbtncopy", {702, 2, 48, 48}, EKind::Switch});
    places.push_back({"ToolBtnDown", "toolbtndown", {64, 23, 20, 20}, EKind::Momentary});
    places.push_back({"ToolBtnRoutingEdit", "toolbtnedit", {53, 53, 45, 23}, EKind::Switch});
}

void AddMacros(std::vector<SPlace>& places) {
    constexpr std::array<double, 5> knobs{179, 267, 354, 441, 529};
    constexpr std::array<double, 5> buttons{160, 248, 336, 424, 512};
    for (std::size_t n = 0; n < knobs.size(); ++n) {
        places.push_back(
            {"MacroKnob", "knob03", {knobs[n], 482, 50, 50}, EKind::Value, 24 + static_cast<int>(n)});
        places.push_back({"MacroButton", "toolbtnmacro", {buttons[n], 449, 84, 30}, EKind::Switch});
    }
}

void AddToolbar(std::vector<SPlace>& places) {
    const auto add = [&places](const SPlace& place) { places.push_back(place); };
    add({"Toolbar", "toolbar_down3", {0, 447, 754, 107}});
    add({"ToolBtnLoad", "toolbtnload", {363, 531, 44, 22}, EKind::Momentary});
    add({"ToolBtnSave", "toolbtnsave", {407, 531, 44, 22}, EKind::Momentary});
    add({"ToolPatch", "tooldisplay", {164, 532, 195, 21}});
    add({"ToolBtnUndo", "toolbtnundo", {23, 531, 44, 22}, EKind::Momentary});
    add({"ToolBtnRedo", "toolbtnredo", {67, 531, 44, 22}, EKind::Momentary});
    add({"ToolBtnABCopy", "toolbtnabcopy", {133, 531, 27, 22}, EKind::Momentary});
    add({"Oversampling", "tooloversampling", {601, 532, 96, 21}});
    add({"ToolBtnPrev", "toolbtnprev", {171, 534, 16, 16}, EKind::Momentary});
    add({"ToolBtnNext", "toolbtnnext", {336, 534, 16, 16}, EKind::Momentary});
    add({"ToolBtnPrevOS", "toolbtnprev", {606, 534, 16, 16}, EKind::Momentary});
    add({"ToolBtnNextOS", "toolbtnnext", {675, 534, 16, 16}, EKind::Momentary});
    add({"ToolBtnA", "toolbtna", {111, 531, 27, 22}, EKind::Momentary});
    add({"Size", "resizearrow", {741, 540, 12, 12}});
    add({"High Quality", "hq", {656, 533, 20, 20}, EKind::Switch, 31});
    add({"Main Output Gain", "knob02", {674, 474, 60, 60}, EKind::Value, 29});
    add({"Main Input Gain", "knob02", {18, 474, 60, 60}, EKind::Value, 23});
    add({"ToolAbout", "toolbtnabout", {705, 533, 19, 19}, EKind::Momentary});
    add({"UpdateLed", "lamp_2", {699, 531, 15, 15}, EKind::Switch, -56});
    AddMacros(places);
}

std::vector<SPlace> BuildPlaces() {
    std::vector<SPlace> places;
    places.push_back({"Bkgnd", "gui_front_root_panel_1500px", {0, 84, 754, 363}});
    AddMeters(places, "Input Meter", 8, 156, -24);
    places.push_back({"Input Gain", "fader", {110, 118, 61, 337}, EKind::Value, 32});
    places.push_back({"Threshold", "fader", {272, 118, 61, 337}, EKind::Value, 33});
    places.push_back({"Auto Release", "buttonar", {328, 406, 99, 38}, EKind::Switch, 35});
    places.push_back({"Limiter", "buttonin", {328, 114, 99, 38}, EKind::Switch, 34});
    places.push_back({"Release", "fader", {442, 118, 61, 337}, EKind::Value, 36});
    AddMeters(places, "Output Meter", 502, 650, -40);
    places.push_back({"Output Ceiling", "fader", {604, 118, 61, 337}, EKind::Value, 37});
    AddTopBar(places);
    AddToolbar(places);
    return places;
}

} // namespace

std::span<const SSprite> Sprites() {
    return AllSprites;
}

const SSprite& SpriteOf(std::string_view name) {
    const auto found = std::find_if(
        AllSprites.begin(), AllSprites.end(), [name](const SSprite& sprite) { return sprite.name == name; });
    if (found == AllSprites.end()) throw std::out_of_range("no picture " + std::string(name));
    return *found;
}

std::span<const SPlace> Places() {
    static const std::vector<SPlace> places = BuildPlaces();
    return places;
}

const SPlace& PlaceOf(std::string_view name) {
    const auto places = Places();
    const auto found = std::find_if(
        places.begin(), places.end(), [name](const SPlace& place) { return place.name == name; });
    if (found == places.end()) throw std::out_of_range("no place " + std::string(name));
    return *found;
}

} // namespace KAV::Artwork
