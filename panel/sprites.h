#pragma once

#include <algorithm>
#include <array>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace KAV::Panel {

/// One picture: a grid of frames, filled row by row, and the size of one frame on the panel.
struct SSprite {
    std::string_view stem;  ///< the file in resources/, without its ending
    std::string_view image; ///< what a widget asks for: name, grid, and the mark of the stored size
    int width = 0;          ///< of the whole file, in its own pixels
    int height = 0;
    int frames = 1;
    int columns = 1;
    double panelWidth = 0; ///< of one frame, in panel pixels
    double panelHeight = 0;
    bool mayTouchEdges = false; ///< bands and tiles fill their frame; all others keep a transparent rim

    constexpr int Rows() const noexcept { return (frames + columns - 1) / columns; }
    constexpr int FrameWidth() const noexcept { return width / columns; }
    constexpr int FrameHeight() const noexcept { return height / Rows(); }
};

/// Every picture of the editor, by stem.
inline constexpr std::array Sprites{
    SSprite{"buttonar", "ButtonAR((2))##Sz-1x-1pxSb0.png", 198, 152, 2, 1, 99, 38},
    SSprite{"buttonin", "ButtonIn((2))##Sz-1x-1pxSb0.png", 198, 152, 2, 1, 99, 38},
    SSprite{"dialogbtn", "DialogBtn##Sz-1x-1pxSb0.png", 226, 90, 1, 1, 113, 45},
    SSprite{"fader", "Fader((63x20))##Sz-1x-1pxSb0.png", 2440, 2696, 63, 20, 61, 337},
    SSprite{"gui_front_root_panel_1500px", "GUI_front_root_Panel_1500px##Sz-1x-1pxSb0.png", 1500, 722, 1, 1,
        754, 363, true},
    SSprite{"hint", "Hint##Sz-1x-1pxSb0.png", 25, 25, 1, 1, 12.5, 12.5},
    SSprite{"hq", "HQ((2))##Sz-1x-1pxSb0.png", 60, 120, 2, 1, 20, 20},
    SSprite{"knob02", "Knob02((63x8))##Sz-1x-1pxSb0.png", 1440, 1440, 63, 8, 60, 60},
    SSprite{"knob03", "Knob03((63x8))##Sz-1x-1pxSb0.png", 1056, 1056, 63, 8, 50, 50},
    SSprite{"knob04", "Knob04((63x8))##Sz-1x-1pxSb0.png", 312, 312, 63, 8, 12, 12},
    SSprite{"lamp_2", "Lamp_2((2))##Sz-1x-1pxSb0.png", 36, 72, 2, 1, 15, 15},
    SSprite{"logo", "Logo##Sz-1x-1pxSb0.png", 150, 99, 1, 1, 113, 75},
    SSprite{"meterled", "MeterLed((63x47))##Sz-1x-1pxSb0.png", 1222, 1240, 63, 47, 13, 310},
    SSprite{"resizearrow", "ResizeArrow##Sz-1x-1pxSb0.png", 100, 100, 1, 1, 12, 12},
    SSprite{"switchgpu2", "SwitchGPU2((3x3))##Sz-1x-1pxSb0.png", 300, 100, 3, 3, 60, 60},
    SSprite{"switchsimd", "SwitchSIMD((2x2))##Sz-1x-1pxSb0.png", 200, 57, 2, 2, 60, 34},
    SSprite{"toolbar_down3", "Toolbar_Down3##Sz-1x-1pxSb0.png", 1508, 214, 1, 1, 754, 107, true},
    SSprite{"toolbar_up", "Toolbar_Up##Sz-1x-1pxSb0.png", 1508, 168, 1, 1, 754, 84, true},
    SSprite{"toolbtna", "ToolBtnA((4))##Sz-1x-1pxSb0.png", 81, 264, 4, 1, 27, 22},
    SSprite{"toolbtnabcopy", "ToolBtnABCopy((2))##Sz-1x-1pxSb0.png", 81, 132, 2, 1, 27, 22},
    SSprite{"toolbtnabout", "ToolBtnAbout((2))##Sz-1x-1pxSb0.png", 45, 90, 2, 1, 19, 19},
    SSprite{"toolbtncopy", "ToolBtnCopy((2))##Sz-1x-1pxSb0.png", 144, 288, 2, 1, 48, 48},
    SSprite{"toolbtndown", "ToolBtnDown((2))##Sz-1x-1pxSb0.png", 66, 132, 2, 1, 20, 20},
    SSprite{"toolbtnedit", "ToolBtnEdit((2))##Sz-1x-1pxSb0.png", 100, 102, 2, 1, 45, 23},
    SSprite{"toolbtnload", "ToolBtnLoad((2))##Sz-1x-1pxSb0.png", 132, 132, 2, 1, 44, 22},
    SSprite{"toolbtnmacro", "ToolBtnMacro((2))##Sz-1x-1pxSb0.png", 252, 180, 2, 1, 84, 30},
    SSprite{"toolbtnnext", "ToolBtnNext((2))##Sz-1x-1pxSb0.png", 60, 120, 2, 1, 16, 16},
    SSprite{"toolbtnprev", "ToolBtnPrev((2))##Sz-1x-1pxSb0.png", 60, 120, 2, 1, 16, 16},
    SSprite{"toolbtnredo", "ToolBtnRedo((3))##Sz-1x-1pxSb0.png", 132, 198, 3, 1, 44, 22},
    SSprite{"toolbtnrtg", "ToolBtnRtg((2))##Sz-1x-1pxSb0.png", 150, 180, 2, 1, 50, 30},
    SSprite{"toolbtnsave", "ToolBtnSave((2))##Sz-1x-1pxSb0.png", 132, 132, 2, 1, 44, 22},
    SSprite{"toolbtnundo", "ToolBtnUndo((3))##Sz-1x-1pxSb0.png", 132, 198, 3, 1, 44, 22},
    SSprite{"tooldisplay", "ToolDisplay##Sz-1x-1pxSb0.png", 780, 84, 1, 1, 195, 21},
    SSprite{"toolmeterchnl", "ToolMeterChnl((16))##Sz-1x-1pxSb0.png", 150, 480, 16, 1, 50, 10},
    SSprite{"tooloversampling", "ToolOversampling##Sz-1x-1pxSb0.png", 508, 84, 1, 1, 96, 21},
};

/// The picture of this stem. Throws std::out_of_range if there is none.
constexpr const SSprite& SpriteOf(std::string_view stem) {
    const auto* const found = std::find_if(
        Sprites.begin(), Sprites.end(), [stem](const SSprite& sprite) { return sprite.stem == stem; });
    if (found == Sprites.end()) throw std::out_of_range("no picture " + std::string(stem));
    return *found;
}

/// The name of a picture in the library: `image` in upper case. Look-ups ignore the case.
inline std::string ResourceNameOf(const SSprite& sprite) {
    std::string name(sprite.image);
    for (char& c : name) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return name;
}

} // namespace KAV::Panel
