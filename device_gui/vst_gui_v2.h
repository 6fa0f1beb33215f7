#pragma once

#include "device_gui/editor_system.h"
#include "device_gui/xxx_gui.h"
#include "vst/aeff_editor.h"

#include <cstdint>
#include <thread>

namespace KAV {

/// The editor as a VST 2.4 host knows it. Where the window has a thread of its own, the host hears of edits,
/// sizes and latencies in its idle calls and when the editor closes. A host that makes no idle call in the
/// first second of an opening gets the edits, and nothing else, from the window's thread, until its first
/// idle call.
///
/// Threads: those of AEffEditor are the host's; everything else as CXXXGUI. open() and close() come one at a
/// time. A host may close the editor, or end the instance, inside any call that it gets.
class CVSTGUIv2 : public AEffEditor, public CXXXGUI, private Native::IEditor, private IHostWindow {
public:
    /// Of an opening: as long may a host take to its first idle call.
    static constexpr std::uint32_t SilenceMs = 1000;

    /// The first three are parts of the instance that owns this object. `a_piSystem` lives longer.
    CVSTGUIv2(CXXXDSP& a_piDSP, IDeviceControls& a_piControls, CDeviceState& a_piState,
        const Utils::SMakerService& a_psService, IEditorSystem& a_piSystem);

    // AEffEditor
    bool hasWindow() const noexcept override { return _piSystem.IsAvailable(); }
    /// The first size is found here, or in open(): at the display's density, unless there is a size.
    bool getRect(VST::ERect** a_psRect) override;
    /// Also of an open editor: in the same parent it is shown, in another one opened anew, and so is one
    /// whose window was taken away.
    bool open(void* a_pParent) override;
    void close() override;
    bool isOpen() const noexcept override { return _pParent != nullptr; }
    /// Takes no turn and waits for nothing.
    void idle() override;

    // CXXXGUI
    bool OnUserMessage(std::uint32_t a_nMessage) override;
    void OnLatencyChanged(std::int32_t a_nSamples) override;
    void RequestHostResize(std::int32_t a_nWidth, std::int32_t a_nHeight) override;

private:
    // Native::IEditor
    void OnOpened() noexcept override;
    void OnMessage() noexcept override;
    void OnRound() noexcept override;
    void OnClosing() noexcept override;
    // IHostWindow
    void ResizeParent(std::int32_t a_nWidth, std::int32_t a_nHeight) noexcept override;

    bool OpenWindow(void* a_pParent);
    void Leave();
    void FindFirstSize();
    void PreparePictures();

    IEditorSystem& _piSystem;
    VST::ERect _sRect{};
    void* _pParent = nullptr; // of the host's; null: the editor is closed
    // As they were when the editor was opened; the window's thread reads them
    std::thread::id _nHostThread;
    std::uint32_t _nOpenedMs = 0;
    bool _bOwnThread = false; // the window's thread isn't the host's
};

} // namespace KAV
