#pragma once

#include "device_gui/plugin_widget.h"
#include "device_gui/setting_choices.h"
#include "gui/window.h"

#include <cstdint>
#include <string_view>

namespace KAV {

/// The menu of the settings, which the button on top of it opens. It draws nothing. Its marks are those of
/// the moment of its opening. What it changes is heard or seen at once and is no parameter: the host isn't
/// notified, and there is no step of history. Threads: the window's.
class CSettings final : public CPluginValueDisplay {
public:
    explicit CSettings(CXXXGUI& a_piPlugin);

    void ShowMenu() override;
    /// Chosen by its number in the menu, also while it is greyed. Any other number does nothing.
    void SelectItem(std::int32_t a_nItem) override;

    /// The menu on a processor that has these features (Utils::CpuFeature).
    GUI::Menu MenuFor(std::uint64_t a_nFeatures) const;

private:
    GUI::SMenuItem Entry(std::int32_t a_nItem, std::u16string_view a_sText) const;
    GUI::Menu ChoicesOf(ESetting a_nSetting) const;
    GUI::Menu AutoGainMenu() const;
    GUI::Menu SimdMenu(std::uint64_t a_nFeatures) const;
    GUI::Menu RenderingMenu() const;
};

/// Opens the menu of the settings.
class CBtnAbout final : public CPluginButtonMom {
public:
    explicit CBtnAbout(CXXXGUI& a_piPlugin);

    void OnClick() override;
};

} // namespace KAV
