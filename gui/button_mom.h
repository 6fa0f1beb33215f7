#pragma once

#include "gui/button.h"
#include "gui/pointer.h"

#include <cstdint>
#include <string>

namespace KAV::GUI {

/// A button that looks pressed only while it is. Each press goes to the next item of its list, after the last
/// to the first.
class CButtonMom : public CButton, public ICaptured {
public:
    using CButton::CButton;

    // CWidget
    float GetDrawValue() const override { return sPress.fValue; }
    const std::u16string& GetText(bool a_bValueOnly) override;
    void Tick(std::uint32_t a_nMs) override;
    void OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override;
    void OnMouseUp(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override;
    // ICaptured
    void OnCaptureLost() override; ///< no click

    SAnimValue sPress; ///< 0..1, moves as fast as the value
};

} // namespace KAV::GUI
