#pragma once

#include "device_gui/oversampling.h"
#include "device_gui/patch_display.h"
#include "device_gui/plugin_widget.h"
#include "device_gui/row_info.h"

#include <type_traits>

namespace KAV {

/// Loads a patch from a file of the user's choice (1), or saves one (0). The user is asked at the click.
template<int Load>
class CPatchLoadSave final : public CPluginButtonMom {
public:
    explicit CPatchLoadSave(CXXXGUI& a_piPlugin)
        : CPluginButtonMom(a_piPlugin,
              InfoOf(Panel::RowOf(Load != 0 ? Panel::EClass::PatchLoad : Panel::EClass::PatchSave))) {}

    /// The instance may end in it.
    void OnClick() override {
        if constexpr (Load != 0) {
            Plugin().State().OpenPatch({});
        } else {
            Plugin().State().SavePatch({}, 0);
        }
    }
};

/// Steps to the previous (1) or next (0) entry of the oversampling factors (1) or the patches (0) that can be
/// chosen. At either end of the list it does nothing.
template<int Previous, int Oversampling>
class CPrevNext final : public CPluginButtonMom {
public:
    explicit CPrevNext(CXXXGUI& a_piPlugin) : CPluginButtonMom(a_piPlugin, InfoOf(Panel::RowOf(Row()))) {}

    /// The instance may end in it.
    void OnClick() override {
        using Display = std::conditional_t<Oversampling != 0, COversampling, CPatch>;
        if (auto* const display = Root().template Find<Display>()) display->Step(Previous != 0 ? -1 : 1);
    }

private:
    static constexpr Panel::EClass Row() noexcept {
        using Panel::EClass;
        if (Oversampling != 0) return Previous != 0 ? EClass::PreviousOversampling : EClass::NextOversampling;
        return Previous != 0 ? EClass::PreviousPatch : EClass::NextPatch;
    }
};

} // namespace KAV
