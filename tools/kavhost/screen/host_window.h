#pragma once

#include "tools/kavhost/screen/picture.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace KAV::Host {

/// What the user does to a host's window. Keys that an editor doesn't need are handed on to it.
struct SWindowEvent {
    enum class EKind {
        Close,   ///< the user wants it closed
        Key,     ///< a key goes down
        Press,   ///< the left button, in the strip
        Drag,    ///< the pointer moves while it is held
        Release, ///< it is let go
        Redraw,  ///< the strip must be drawn anew, its size may be another one
    };
    EKind kind = EKind::Redraw;
    std::uint32_t symbol = 0; ///< of the key, as X11 numbers them; letters are small
    std::int32_t x = 0;       ///< in the strip
    std::int32_t y = 0;
};

/// A host's window on an X11 display: an editor, and below it a strip of the host's own. The user's window
/// manager may make it larger than both; the editor then stands in the middle.
/// Threads: the one that made it.
class CHostWindow final {
public:
    struct SSize {
        std::int32_t width = 0;
        std::int32_t height = 0;
    };

    /// Connects to the display of that name, as in DISPLAY. The sizes are those of the editor and the strip,
    /// whose height may be 0. Throws CFailure if the display can't be reached.
    CHostWindow(
        const std::string& display, const std::string& title, const SSize& editor, std::int32_t stripHeight);
    ~CHostWindow();
    CHostWindow(const CHostWindow&) = delete;
    CHostWindow& operator=(const CHostWindow&) = delete;

    /// The window that an editor is opened in.
    std::uintptr_t EditorParent() const noexcept;
    void Show();
    void Resize(const SSize& editor, std::int32_t stripHeight);
    /// So that it lights nothing up; for displays without other users.
    void MovePointerAway();

    /// Waits until something may have happened, at most that long.
    void Wait(int milliseconds);
    /// The next thing that has happened. Throws CFailure when the display has gone.
    std::optional<SWindowEvent> Next();

    SSize Strip() const noexcept;            ///< its size now
    void DrawStrip(const SPicture& picture); ///< of its size

    /// What the display shows where the editor is; nothing while it doesn't show all of it.
    std::optional<SPicture> EditorPicture();

private:
    struct SNative;
    std::unique_ptr<SNative> _native;
};

} // namespace KAV::Host
