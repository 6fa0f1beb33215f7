#pragma once

#include "tools/kavhost/effect/host_callback.h"
#include "tools/kavhost/screen/host_window.h"

#include <atomic>
#include <cstdint>
#include <optional>

namespace KAV::Host {

class CEffect;

/// What an effect asks a host with a window, kept until the thread of the window comes to it: an effect may
/// ask on any thread of its own.
class CEditorHost : public IEffectHost {
public:
    bool ResizeEditor(std::int32_t width, std::int32_t height) noexcept override;
    void NoteIoChange() noexcept override { _ioHasChanged = true; }
    const VST::VstTimeInfo* Time() noexcept override { return nullptr; }

    /// The size that was last asked for since the last call.
    std::optional<CHostWindow::SSize> TakeSize() noexcept;
    bool TakeIoChange() noexcept { return _ioHasChanged.exchange(false); }

private:
    std::atomic<std::uint64_t> _size{0}; ///< width and height; 0: none
    std::atomic<bool> _ioHasChanged{false};
};

/// The size of an editor. Throws CFailure if the effect has none.
CHostWindow::SSize EditorSizeOf(CEffect& effect);

} // namespace KAV::Host
