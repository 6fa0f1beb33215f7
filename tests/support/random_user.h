#pragma once

#include "gui/gui.h"
#include "tests/support/chance.h"
#include "tests/support/recording_window.h"
#include "tests/support/toolkit_robot.h"

#include <cstdint>
#include <string_view>

namespace KAV::Tests {

/// A person at an editor who does anything, in any order, as chance has it.
class CRandomUser final {
public:
    CRandomUser(CChance& chance, CToolkitRobot& robot, CRecordingWindow& window, GUI::CGUI& root)
        : _chance(chance), _robot(robot), _window(window), _root(root) {}

    void UseTheMouse() {
        const auto at = AnyPlace();
        switch (_chance.Below(6)) {
        case 0:
        case 1:
            return _robot.Move(at.x, at.y, AnyModifiers());
        case 2:
            return _robot.Press(at.x, at.y, AnyButton() | AnyModifiers());
        case 3:
            return _robot.Release(at.x, at.y, AnyButton() | AnyModifiers());
        case 4:
            return _robot.Wheel(static_cast<float>(_chance.Between(-2, 2)), AnyModifiers());
        default:
            return _robot.Drag(at, AnyPlace(), _chance.Between(1, 5), AnyButton());
        }
    }
    void UseTheKeyboard() {
        _window.shift = _chance.OneIn(3);
        _window.leftControl = _chance.OneIn(3);
        const auto step = _chance.OneIn(2) ? GUI::KeyZ : GUI::KeyY;
        _robot.Key(_chance.OneIn(2) ? step : _chance.Below(256));
        if (!_window.textBox) return;
        constexpr std::u16string_view Characters = u"0123456789.-kx\b";
        for (auto count = _chance.Below(6); count > 0; --count)
            _robot.Type(Characters.substr(_chance.Below(15), 1));
        if (_chance.OneIn(2)) _robot.Enter();
    }
    /// Chooses anything from the menu, if one is open.
    void UseTheMenu() {
        if (!_window.menuOpen || _window.client == nullptr) return;
        _window.menuOpen = false;
        if (const auto command = AnyCommand(_window.menus.back()); command != 0)
            _window.client->OnCommand(command);
    }
    void Wait() { _robot.Advance(1 + _chance.Below(40)); }

    GUI::CWidget& AnyWidget() { return *_chance.OneOf(_root.AllWidgets()); }

private:
    std::uint32_t AnyModifiers() {
        return (_chance.OneIn(4) ? std::uint32_t{GUI::MouseShift} : 0u) |
               (_chance.OneIn(4) ? std::uint32_t{GUI::MouseControl} : 0u);
    }
    std::uint32_t AnyButton() { return _chance.OneIn(3) ? GUI::MouseRight : GUI::MouseLeft; }
    /// Somewhere in the window or around it; more often than chance would have it, on a widget.
    SPixel AnyPlace() {
        if (_chance.OneIn(2)) return {_chance.Between(-20, 780), _chance.Between(-20, 580)};
        const auto rect = AnyWidget().PixelRect();
        return {rect.nL + rect.nW / 2, rect.nT + rect.nH / 2};
    }
    /// Any command of the menu, its sub-menus included; 0 if it has none.
    std::uint32_t AnyCommand(const GUI::Menu& menu) {
        if (menu.empty()) return 0;
        const auto& item = _chance.OneOf(menu);
        return item.vsSub.empty() ? item.nCommand : AnyCommand(item.vsSub);
    }

    CChance& _chance;
    CToolkitRobot& _robot;
    CRecordingWindow& _window;
    GUI::CGUI& _root;
};

} // namespace KAV::Tests
