#pragma once

#include "tools/kavhost/screen/picture.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace KAV::Host {

/// The keys that a host has a use for.
enum class EHostKey { Other, Space, Left, Right, Home, L, Escape };

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
    EHostKey key = EHostKey::Other;
    std::int32_t x = 0; ///< in the strip
    std::int32_t y = 0;
};

/// Where a host's window is.
enum class EPlace {
    InView,
    OutOfView, ///< only a picture is taken of it: it disturbs no user, and no pointer lights anything up in
               ///< it
};

/// A host's window: an editor, and below it a strip of the host's own. On X11 the user's window manager may
/// make it larger than both; the editor then stands in the middle.
/// Threads: the one that made it.
class CHostWindow final {
public:
    struct SSize {
        std::int32_t width = 0;
        std::int32_t height = 0;
    };

    /// On the display of users_display.h, hidden. The sizes are those of the editor and the strip, whose
    /// height may be 0. Throws CFailure if the display can't be reached.
    CHostWindow(const std::string& title, const SSize& editor, std::int32_t stripHeight, EPlace place);
    ~CHostWindow();
    CHostWindow(const CHostWindow&) = delete;
    CHostWindow& operator=(const CHostWindow&) = delete;

    /// The window that an editor is opened in.
    std::uintptr_t EditorParent() const noexcept;
    /// Throws CFailure if it is to be out of view and the display can't show all of the editor.
    void Show();
    void Resize(const SSize& editor, std::int32_t stripHeight);

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
