#pragma once

#include "tools/kavhost/screen/host_window.h"

#include <memory>
#include <string>

namespace KAV::Host {

class CVirtualDisplay;

/// The display that the user's programs use, as its name in the environment; empty if there is none, or if
/// the system has only one, which has no name.
std::string UsersDisplay();

/// For a window that the user works with. Throws CFailure if there is no display. Call it before an effect is
/// created, which may then ask for the density of the screen.
void PrepareUsersDisplay();

/// A display for pictures of windows. Create it before any other thread.
class CPictureDisplay final {
public:
    /// X11: the user's display; without one a display without a screen, for the life of the object. Throws
    /// CFailure if none can be started.
    CPictureDisplay();
    ~CPictureDisplay();
    CPictureDisplay(const CPictureDisplay&) = delete;
    CPictureDisplay& operator=(const CPictureDisplay&) = delete;

    EPlace Place() const noexcept; ///< of the windows on it

private:
    std::unique_ptr<CVirtualDisplay> _virtual; ///< null if it is the user's
};

} // namespace KAV::Host
