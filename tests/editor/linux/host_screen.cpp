#include "tests/editor/host_screen.h"

#include "tests/support/x_test_host.h"

#include <cstdlib>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace KAV::Tests {

namespace {

CXTestHost::SOptions OptionsOf(CHostScreen::ESpace space) {
    if (space == CHostScreen::ESpace::Usual) return {.width = 800, .height = 600};
    return {.screen = "1920x1400x24", .width = 1600, .height = 1200};
}

int ButtonOf(CHostScreen::EButton button) {
    return button == CHostScreen::EButton::Left ? 1 : 3;
}

/// Characters have the numbers of their keys' symbols.
std::uint32_t SymbolOf(int key) {
    switch (key) {
    case CHostScreen::Return:
        return XKB_KEY_Return;
    case CHostScreen::Escape:
        return XKB_KEY_Escape;
    case CHostScreen::Down:
        return XKB_KEY_Down;
    case CHostScreen::Right:
        return XKB_KEY_Right;
    case CHostScreen::Home:
        return XKB_KEY_Home;
    case CHostScreen::End:
        return XKB_KEY_End;
    case CHostScreen::Shift:
        return XKB_KEY_Shift_L;
    case CHostScreen::Control:
        return XKB_KEY_Control_L;
    default:
        return static_cast<std::uint32_t>(key);
    }
}

} // namespace

struct CHostScreen::SParts {
    explicit SParts(ESpace space) : windows(OptionsOf(space)) {}

    CXTestHost windows;

    /// A menu or the editor's own list of files, which are windows of their own; 0: there is none.
    xcb_window_t PopUp() {
        for (const auto window : windows.Children(windows.Root())) {
            if (window != windows.Top() && windows.IsViewable(window)) return window;
        }
        return 0;
    }
};

CHostScreen::CHostScreen(ESpace space) : _parts(std::make_unique<SParts>(space)) {
    setenv("KAV_FILE_DIALOG", "list", 1); // no desktop answers here
}

CHostScreen::~CHostScreen() {
    unsetenv("KAV_FILE_DIALOG");
}

std::uintptr_t CHostScreen::Begin(CEditorHost&) {
    return _parts->windows.Parent();
}

bool CHostScreen::HasEditor() {
    return _parts->windows.Editor() != 0;
}

CHostScreen::SSize CHostScreen::EditorSize() {
    const auto place = _parts->windows.Place(_parts->windows.Editor());
    return {place.width, place.height};
}

std::vector<std::uint32_t> CHostScreen::Pixels(
    std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    return _parts->windows.Pixels(_parts->windows.Editor(), x, y, width, height);
}

bool CHostScreen::SeesHardware() {
    return true;
}

void CHostScreen::MoveTo(std::int32_t x, std::int32_t y) {
    _parts->windows.MoveTo(x, y);
}

void CHostScreen::Press(EButton button) {
    _parts->windows.Press(ButtonOf(button));
}

void CHostScreen::Release(EButton button) {
    _parts->windows.Release(ButtonOf(button));
}

void CHostScreen::Turn(int notches) {
    constexpr int away = 4;
    constexpr int towards = 5;
    for (int n = 0; n < std::abs(notches); ++n) _parts->windows.Click(notches > 0 ? away : towards);
}

void CHostScreen::Key(int key, bool isDown) {
    _parts->windows.Key(SymbolOf(key), isDown);
}

bool CHostScreen::IsMenuUp() {
    return _parts->PopUp() != 0;
}

bool CHostScreen::AsksForFile() {
    const auto list = _parts->PopUp();
    return list != 0 && _parts->windows.Focused() == list;
}

/// In the list of files that exist, a letter leads to the next name that begins with it.
void CHostScreen::EnterFile(std::string_view name, bool isNew) {
    for (const char letter : isNew ? name : name.substr(0, 1)) {
        Key(letter, true);
        Key(letter, false);
    }
}

bool CHostScreen::HasQuestion() {
    return _parts->PopUp() != 0;
}

} // namespace KAV::Tests
