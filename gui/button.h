#pragma once

#include "gfx/texture.h"
#include "gui/led.h"

#include <cstdint>
#include <string>

namespace KAV::GUI {

/// A button that is on (1) or off (0) and changes at the press. Of the buttons of a radio group one is on.
class CButton : public CLED {
public:
    class IOnClick {
    public:
        virtual void OnClick(CButton* a_piButton) = 0; ///< may end the button

    protected:
        IOnClick() = default;
        ~IOnClick() = default;
    };

    CButton(CGUI& a_piGUI, const SWidgetInfo& a_sInfo);
    ~CButton() override;

    // Operations of its own; their order is fixed
    /// The frame for a state (EState as a number), 0..1 from the first to the last: the one of state 0 is
    /// drawn while the button is off, that of state 2 while it is on.
    virtual float StateValue(std::int32_t a_nState) const;
    /// A click: the left button was pressed on this widget and is up again, wherever the pointer is.
    virtual void OnClick();

    // CWidget
    void DrawShadow() override;
    void DrawImage() override;
    void ReleaseTextures() override;
    const std::u16string& GetText(bool a_bValueOnly) override;
    void SetFromHost(float a_fNormal) override;
    void Draw(std::uint32_t a_nMs) override;
    void OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override;
    void OnMouseUp(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override;
    void SoakTest() override;
    // CValueWidget
    bool SetValue(float a_fNormal, bool a_bHistory) override;
    CValueWidget& HistoryTarget() override; ///< the one of its radio group that is on
    bool HasHistory() const noexcept override { return nId >= 0; }

    std::u16string sOverlay;           ///< a picture over the button
    std::int32_t nOverlayX, nOverlayY; ///< pixels from the middle
    std::uint32_t nOverlayColor, nOverlayColorHover, nOverlayColorActive, nOverlayColorInactive;
    std::int32_t nRadioGroup;      ///< -1: none
    IOnClick* piOnClick = nullptr; ///< hears of clicks while the button is interactive; lives as long
    GFX::STexture sOverlayTexture;
    float fTextFor; ///< the value that the text was made for

protected:
    /// Remembers a press of the left button. False for any other press.
    bool TakePress(std::uint32_t a_nFlags) noexcept;
    /// Makes the text for the present value, if there isn't one yet. `a_sWithoutList`: of a button without a
    /// list.
    void MakeText(std::u16string_view a_sWithoutList);

private:
    CButton& OnInGroup();
    SFade FadeOf(const GFX::STexture& a_rsTexture) const;
    void DrawOverlay();
    bool HasOverlay();
    SPixelRect OverlayRect() const noexcept;

    bool _bPressed = false;
};

} // namespace KAV::GUI
