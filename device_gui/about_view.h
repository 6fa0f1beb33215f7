#pragma once

#include "device_gui/about_switches.h"
#include "device_gui/backdrop.h"
#include "device_gui/logo.h"
#include "gui/button_mom.h"
#include "gui/label.h"

namespace KAV {

/// The view over the panel that says which product and version this is, with the vendor's mark, the help page
/// and two switches. It is there from its construction until its "OK". Threads: the window's.
class CAboutView final : private GUI::CButton::IOnClick {
public:
    explicit CAboutView(CXXXGUI& a_piPlugin);
    CAboutView(const CAboutView&) = delete;
    CAboutView& operator=(const CAboutView&) = delete;
    ~CAboutView() = default;

    /// Nothing of it is seen or pressed any more. It must not end yet: one of its buttons may be calling.
    void Close();
    bool IsClosed() const noexcept { return !_iBackground.IsVisible(); }
    /// The step of a tick: the switches show what is in use.
    void Step() noexcept;

private:
    void OnClick(GUI::CButton* a_piButton) override;

    CXXXGUI& _piPlugin;
    CBackdrop _iBackground; // first, so that it lies below the others
    GUI::CLabel _iText;
    GUI::CButtonMom _iOk;
    GUI::CButtonMom _iHelp;
    CLogo _iLogo;
    CSwitchGPU _iRenderer;
    CSwitchSIMD _iSimd;
};

} // namespace KAV
