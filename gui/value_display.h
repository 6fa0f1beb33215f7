#pragma once

#include "gui/label.h"
#include "gui/pointer.h"
#include "gui/value_widget.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace KAV::GUI {

/// A label that shows one entry of its list, which a menu and the wheel change. Its text may be another one
/// as well, and then the entry is the last that was shown.
class CValueDisplay : public CLabel, public CValueWidget, public ICaptured {
public:
    CValueDisplay(CGUI& a_piGUI, const SWidgetInfo& a_sInfo);

    // Operations of its own; their order is fixed. Texts are entries without their marks.
    virtual bool IsItemEnabled(std::int32_t a_nItem, const std::u16string& a_sText);
    virtual bool IsItemChecked(std::int32_t a_nItem, const std::u16string& a_sText);
    virtual bool IsItemShown(std::int32_t a_nItem, const std::u16string& a_sText);
    virtual void ShowMenu();
    /// Chosen from the menu. An entry that isn't there any more does nothing.
    virtual void SelectItem(std::int32_t a_nItem);
    virtual void BeforeSelect(); ///< hooks around a change by the user
    virtual void AfterSelect();

    // CWidget
    float GetDrawValue() const override { return sPress.fValue; }
    void SetFromHost(float a_fNormal) override;
    void Tick(std::uint32_t a_nMs) override;
    void OnMouseDown(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override;
    void OnMouseUp(std::int32_t x, std::int32_t y, std::uint32_t a_nFlags) override;
    void OnMouseWheel(float a_fNotches, std::uint32_t a_nFlags) override; ///< up is towards the first entry
    void SoakTest() override;
    // CLabel
    /// Shows the text, and makes the first entry of that name, if there is one, the present one. No one is
    /// notified. Nothing happens if the text is already shown.
    void SetText(std::u16string_view a_sText) override;
    // CValueWidget
    bool SetValue(float a_fNormal, bool a_bHistory) override;
    void SetItems(std::vector<std::u16string> a_vsItems) override; ///< the text follows
    bool HasHistory() const noexcept override { return nId >= 0; }
    // ICaptured
    void OnCaptureLost() override; ///< no menu

    /// Makes the entry the present one. The text follows if it was another entry. No notification.
    void ShowItem(std::int32_t a_nItem);
    /// Shows a list, its entry and a text as they are kept elsewhere. No notification.
    void Copy(
        const std::vector<std::u16string>& a_vsItems, std::int32_t a_nItem, std::u16string_view a_sText);
    /// The next entry (1) or the previous one (-1) that can be chosen, as an edit that the host is notified
    /// of. At either end nothing happens.
    void Step(int a_nDirection);

    SAnimValue sPress; ///< 0..1, moves as fast as the value

private:
    static constexpr std::int32_t NoItem = -1;

    std::int32_t ItemOf(std::u16string_view a_sText) const;
    /// The nearest entry in that direction that can be chosen, or NoItem.
    std::int32_t NextItem(std::int32_t a_nDirection);
    /// Shows the present entry; `a_nBefore`: the one that was shown.
    void ShowItemText(std::int32_t a_nBefore);

    bool _bPressed = false;
};

} // namespace KAV::GUI
