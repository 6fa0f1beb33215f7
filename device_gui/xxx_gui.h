#pragma once

#include "device/device_controls.h"
#include "device/xxx_dsp.h"
#include "device_gui/maker_pages.h"
#include "device_gui/version_check.h"
#include "gui/gui.h"
#include "patch/patch_save_load.h"
#include "state/device_state.h"
#include "utils/maker_service.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace KAV {

class CAboutView;

/// The editor's half of an instance, with or without a window: the exchange between widgets, device and
/// state. The device owns every value, the state what patches keep besides; widgets hold copies of both.
///
/// Threads: the window's. Without a window the widgets belong to the thread that has the turn, and show at
/// its end what it has changed; with one they do so in the next frame.
class CXXXGUI : public GUI::CGUI, public CPatchSaveLoad, private Utils::ITurnEnd, private IPatchWitness {
public:
    /// A newer version is known.
    static constexpr std::uint32_t NewVersionMessage = 1028;

    /// All live as long as this object; the device isn't called before the widgets are complete, nor by the
    /// destructor. With a server in `a_psService` the version check begins here.
    CXXXGUI(CXXXDSP& a_piDSP, IDeviceControls& a_piControls, CDeviceState& a_piState,
        const Utils::SMakerService& a_psService, const GUI::SSurroundings& a_sSurroundings = {});
    /// Waits for the version check without limit.
    ~CXXXGUI() override;

    // CGUI
    void CreateGUIWindow() override;
    void DestroyGUIWindow() override;
    /// Ends the edit of a routing without a result, unless the widget belongs to that.
    void OnFocus(GUI::CWidget* a_piWidget) override;
    bool OnUserMessage(std::uint32_t a_nMessage) override;
    /// Left Control and Z undo, with Y redo, unless a view lies over the panel; either ends the edit of a
    /// routing. F1 opens the user guide.
    void OnKeyDown(std::uint32_t a_nKey) override;
    void OnFrame(std::uint32_t a_nElapsedMs) override;
    void SetParameter(std::int32_t a_nId, float a_fNormal) override;
    void BeginEdit(std::int32_t a_nId) override;
    void EndEdit(std::int32_t a_nId) override;

    virtual void OnLatencyChanged(std::int32_t a_nSamples);
    /// Asks the host for room of another size, in pixels, at its next idle call.
    virtual void RequestHostResize(std::int32_t a_nWidth, std::int32_t a_nHeight);
    virtual std::string GetRouting(int a_nGroup);                    ///< as CDeviceState
    virtual void SetRouting(std::string_view a_sText, int a_nGroup); ///< as CDeviceState
    /// As CDeviceState, but no larger than the renderer can draw. The host is asked for the room.
    virtual void ResizeTo(std::int32_t a_nWidth, std::int32_t a_nHeight);

    // CPatchSaveLoad
    bool ApplyPatchData(const void* a_pData, std::size_t a_nSize, std::uint32_t a_nFlags) override;
    bool ReadPatch(std::string_view a_sText, std::uint32_t a_nFlags) override;
    std::size_t WritePatch(const char** a_psData, std::uint32_t a_nFlags) override;
    void SelectPatch(std::int32_t a_nIndex, bool a_bForce) override;

    /// Writes the routing that the channel buttons show, those that are on, and takes it. An empty path asks
    /// the user.
    void SaveRouting(std::u16string_view a_sPath);

    /// The editor is about to show another group. What the user has in hand belongs to the one that it shows
    /// so far, and ends.
    void BeforeGroupChange();

    /// The view over the panel that says what this is. The user closes it, or the window's end. Nothing
    /// happens while it is open, or without a window.
    void OpenAbout();
    bool IsAboutOpen() const noexcept;

    /// Shows the state now instead of in the next frame.
    void ShowPanel();

    CXXXDSP& Device() const noexcept { return _piDSP; }
    IDeviceControls& Controls() const noexcept { return _piControls; }
    CDeviceState& State() const noexcept { return _piState; }
    const CVersionCheck& Version() const noexcept { return _iVersion; }
    const CMakerPages& Maker() const noexcept { return _iMaker; }

protected:
    /// From now on the widgets, which are complete, show the state.
    void ShowAtTurnEnds(const Utils::CTurn& a_piTurn) noexcept;
    /// While held, the widgets are left alone at the ends of turns: a window is about to open, or is closing.
    void HoldWidgets(bool a_bHold);

private:
    void OnTurnEnd(Utils::CTurn& a_piTurn) override;
    void BeforePatch(Utils::CTurn& a_piTurn) override;
    /// Brings the state to the widgets. False when they show it already.
    bool CopyPanel(const Utils::CTurn& a_piTurn);
    void EndRoutingEdit();
    /// Lets undo and redo show whether there is a step.
    void ShowHistory();
    void ShowLamp();
    void StepAbout();
    void OpenUserGuide() const;

    CXXXDSP& _piDSP;
    IDeviceControls& _piControls;
    CDeviceState& _piState;
    std::int32_t _nLastLatency = 0; // samples, as the host hears it
    bool _bWindow = false;          // within a turn
    bool _bHeld = false;            // within a turn
    std::uint32_t _nShown = 0;      // the generation that the widgets show; as the widgets
    bool _bRoutingEdit = false;     // what it says about that
    std::int32_t _nPanelWidth = 0;  // and about the size, in pixels
    std::int32_t _nPanelHeight = 0;
    std::uint32_t _nShownSteps = 0; // the changes of the history that the widgets show
    CVersionCheck _iVersion;        // its thread ends before anything above goes
    CMakerPages _iMaker;
    std::unique_ptr<CAboutView> _piAbout; // while it is open, and after that until the next frame
};

} // namespace KAV
