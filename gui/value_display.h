#pragma once

#include "gui/label.h"
#include "gui/value_widget.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace KAV::GUI {

/// A label that shows one entry of its list. Its text may be another one as well, and then the entry is the
/// last that was shown.
class CValueDisplay : public CLabel, public CValueWidget {
public:
    CValueDisplay(CGUI& a_piGUI, const SWidgetInfo& a_sInfo);

    bool SetValue(float a_fNormal, bool a_bHistory) override;
    void SetItems(std::vector<std::u16string> a_vsItems) override; ///< the text follows
    void SetFromHost(float a_fNormal) override;
    bool HasHistory() const noexcept override { return Id() >= 0; }
    /// Shows the text, and makes the first entry of that name, if there is one, the present one. No one is
    /// notified. Nothing happens if the text is already shown.
    void SetText(std::u16string_view a_sText) override;
    virtual bool IsItemEnabled(std::int32_t a_nItem);

    /// Makes the entry the present one. The text follows if it was another entry; nobody is told.
    void ShowItem(std::int32_t a_nItem);
    /// Shows a list, its entry and a text as they are kept elsewhere; nobody is told.
    void Copy(
        const std::vector<std::u16string>& a_vsItems, std::int32_t a_nItem, std::u16string_view a_sText);
    /// The next entry (1) or the one before (-1) that is enabled, as an edit that the host is told of. At
    /// either end nothing happens.
    void Step(int a_nDirection);

private:
    bool _bFromHost = false; // the value being set comes from the device
};

} // namespace KAV::GUI
