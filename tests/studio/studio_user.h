#pragma once

#include "panel/layout.h"
#include "tests/support/x_test_host.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <random>
#include <string>

namespace KAV::Tests {

/// A user with mouse and keyboard at one of several open editors. What it does follows from the random
/// numbers alone. Threads: one.
class CStudioUser final {
public:
    /// Where an editor is shown: a window in the host's parent window.
    struct SDesk {
        xcb_window_t window = 0;
        std::int32_t x = 0;
        std::int32_t y = 0;
    };

    /// `settle` returns when all editors have taken in what the user has done.
    CStudioUser(CXTestHost& windows, std::mt19937& random, std::function<void()> settle)
        : _windows(windows), _random(random), _settle(std::move(settle)) {}

    /// Anything that a user does. Afterwards no button is down, no menu open, and all is settled.
    void Edit(const SDesk& desk);
    /// Something that changes no value: it may be done while sound runs.
    void Look(const SDesk& desk);

    std::map<std::string, std::size_t> done; ///< how often
    /// The last gestures, for a failure: what, at which desk, where the pointer has been.
    std::deque<std::string> latest;

private:
    int Below(int end) { return static_cast<int>(_random() % static_cast<unsigned>(end)); }
    void Sit(const SDesk& desk, const std::string& what);
    bool CanReach(const Panel::SPanelRow& row);
    void MoveTo(double x, double y);
    void MoveTo(const Panel::SPanelRow& row);
    void MoveTo(std::string_view name) { MoveTo(Panel::RowOf(name)); }
    void MoveToAny();
    void EndMenus();
    void Type(std::uint32_t key) { _windows.Type(key); }

    void Drag();
    void DragSize();
    void Turn();
    void Click();
    void ClickTwice();
    void ClickWithShift();
    void TypeValue();
    void GoBack();
    void Choose();
    void ChoosePatch();
    void ChooseRouting();
    void SwitchSides();
    void SwitchRenderer();
    void ChooseEntry();

    CXTestHost& _windows;
    std::mt19937& _random;
    std::function<void()> _settle;
    SDesk _desk;
    double _scale = 1.0; ///< pixels of the panel's
};

} // namespace KAV::Tests
