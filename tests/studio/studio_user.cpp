#include "tests/studio/studio_user.h"

#include <array>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Tests {

void CStudioUser::Edit(const SDesk& desk) {
    struct SGesture {
        const char* name;
        int weight;
        void (CStudioUser::*make)();
    };
    static constexpr std::array gestures{SGesture{"drags", 8, &CStudioUser::Drag},
        SGesture{"wheel", 4, &CStudioUser::Turn}, SGesture{"clicks", 5, &CStudioUser::Click},
        SGesture{"double clicks", 2, &CStudioUser::ClickTwice},
        SGesture{"Shift clicks", 2, &CStudioUser::ClickWithShift},
        SGesture{"typed values", 2, &CStudioUser::TypeValue},
        SGesture{"undo and redo", 4, &CStudioUser::GoBack}, SGesture{"menus", 2, &CStudioUser::Choose},
        SGesture{"patches", 3, &CStudioUser::ChoosePatch},
        SGesture{"routings", 3, &CStudioUser::ChooseRouting},
        SGesture{"sides A and B", 2, &CStudioUser::SwitchSides}, SGesture{"sizes", 2, &CStudioUser::DragSize},
        SGesture{"renderers", KAV_STUDIO_OPENGL, &CStudioUser::SwitchRenderer}};
    static_assert(gestures.size() == 13);
    int sum = 0;
    for (const auto& gesture : gestures) sum += gesture.weight;
    int chosen = Below(sum);
    for (const auto& gesture : gestures) {
        chosen -= gesture.weight;
        if (chosen >= 0) continue;
        Sit(desk, gesture.name);
        (this->*gesture.make)();
        break;
    }
    _settle();
    EndMenus();
}

void CStudioUser::Look(const SDesk& desk) {
    Sit(desk, "looks");
    for (int n = Below(12); n > 0; --n) MoveTo(Below(Panel::PanelWidth), Below(Panel::PanelHeight));
    const int entries = Below(8);
    if (Below(3) > 0 || !CanReach(Panel::RowOf("ToolAbout"))) return;
    MoveTo("ToolAbout");
    _windows.Click(1);
    _settle();
    for (int n = 0; n < entries; ++n) Type(XKB_KEY_Down);
    EndMenus();
}

/// Each key closes one of the menus that are open in a row.
void CStudioUser::EndMenus() {
    constexpr int most = 3;
    for (int n = 0; n < most; ++n) {
        Type(XKB_KEY_Escape);
        _settle();
    }
}

/// At another editor, which comes to the front as large as it is.
void CStudioUser::Sit(const SDesk& desk, const std::string& what) {
    constexpr std::size_t enough = 12;
    ++done[what];
    latest.push_back(what + " at " + std::to_string(desk.x) + ", " + std::to_string(desk.y) + ":");
    if (latest.size() > enough) latest.pop_front();
    _desk = desk;
    _windows.Raise(desk.window);
    const auto editors = _windows.Children(desk.window);
    if (editors.empty()) return;
    const auto size = _windows.Place(editors.front());
    _windows.Resize(desk.window, size.width, size.height);
    _scale = static_cast<double>(size.width) / Panel::PanelWidth;
}

/// Whether the host's window doesn't end before.
bool CStudioUser::CanReach(const Panel::SPanelRow& row) {
    const auto whole = _windows.Place(_windows.Parent());
    return _desk.x + row.rect.Right() * _scale < whole.width &&
           _desk.y + row.rect.Bottom() * _scale < whole.height;
}

void CStudioUser::MoveTo(double x, double y) {
    latest.back() += " " + std::to_string(static_cast<int>(x)) + "," + std::to_string(static_cast<int>(y));
    _windows.MoveTo(
        _desk.x + static_cast<std::int32_t>(x * _scale), _desk.y + static_cast<std::int32_t>(y * _scale));
}

void CStudioUser::MoveTo(const Panel::SPanelRow& row) {
    MoveTo(row.rect.CentreX(), row.rect.CentreY());
}

void CStudioUser::MoveToAny() {
    const auto rows = Panel::Rows();
    MoveTo(rows[static_cast<std::size_t>(Below(static_cast<int>(rows.size())))]);
}

// Gestures

void CStudioUser::Drag() {
    const auto rows = Panel::Rows();
    const auto& rect = rows[static_cast<std::size_t>(Below(static_cast<int>(rows.size())))].rect;
    const double x = rect.CentreX();
    const double y = rect.CentreY();
    const int dx = Below(21) - 10;
    const int dy = Below(41) - 20;
    MoveTo(x, y);
    _windows.Press(1);
    for (int n = 1; n <= 5; ++n) MoveTo(x + n * dx, y + n * dy);
    _windows.Release(1);
}

void CStudioUser::DragSize() {
    const auto& rect = Panel::RowOf("Size").rect;
    const int by = Below(61) - 40; // rather smaller, so that the editors don't cover each other for long
    MoveTo(rect.CentreX(), rect.CentreY());
    _windows.Press(1);
    for (int n = 1; n <= 3; ++n) MoveTo(rect.CentreX() + n * by, rect.CentreY() + n * by);
    _windows.Release(1);
}

void CStudioUser::Turn() {
    const int button = Below(2) == 0 ? 4 : 5;
    MoveToAny();
    for (int n = 1 + Below(3); n > 0; --n) _windows.Click(button);
}

void CStudioUser::Click() {
    MoveToAny();
    _windows.Click(1);
}

void CStudioUser::ClickTwice() {
    MoveToAny();
    _windows.Click(1);
    _windows.Click(1);
}

void CStudioUser::ClickWithShift() {
    MoveToAny();
    _windows.Key(XKB_KEY_Shift_L, true);
    _windows.Click(1);
    _windows.Key(XKB_KEY_Shift_L, false);
}

void CStudioUser::TypeValue() {
    MoveToAny();
    _windows.Click(3);
    _settle();
    Type(XKB_KEY_minus);
    Type(static_cast<std::uint32_t>(XKB_KEY_1 + Below(9)));
    Type(XKB_KEY_Return);
}

void CStudioUser::GoBack() {
    MoveTo(377, 440); // between the widgets
    _windows.Key(XKB_KEY_Control_L, true);
    for (int n = 1 + Below(4); n > 0; --n) Type(Below(3) == 0 ? XKB_KEY_y : XKB_KEY_z);
    _windows.Key(XKB_KEY_Control_L, false);
}

/// In a menu that may have opened.
void CStudioUser::ChooseEntry() {
    _windows.Click(1);
    _settle();
    for (int n = Below(12); n > 0; --n) Type(Below(6) == 0 ? XKB_KEY_Right : XKB_KEY_Down);
    Type(XKB_KEY_Return);
}

void CStudioUser::Choose() {
    MoveToAny();
    ChooseEntry();
}

void CStudioUser::ChoosePatch() {
    MoveTo("ToolPatch");
    ChooseEntry();
}

void CStudioUser::ChooseRouting() {
    MoveTo("ToolInputRouting");
    ChooseEntry();
}

void CStudioUser::SwitchSides() {
    MoveTo(Below(3) == 0 ? "ToolBtnABCopy" : "ToolBtnA");
    _windows.Click(1);
}

/// The upper switch of the view that the last entry of the settings opens.
void CStudioUser::SwitchRenderer() {
    MoveTo("ToolAbout");
    _windows.Click(1);
    _settle();
    Type(XKB_KEY_End);
    Type(XKB_KEY_Return);
    _settle();
    MoveTo(715, 45);
    _windows.Click(Below(2) == 0 ? 4 : 5);
    _settle();
    MoveTo(377, 300); // anywhere else closes the view
    _windows.Click(1);
}

} // namespace KAV::Tests
