#include "tools/kavhost/screen/users_display.h"

#include "platform/winapi/windows_header.h"

namespace KAV::Host {

/// Nothing is started here for a picture.
class CVirtualDisplay {};

std::string UsersDisplay() {
    return {};
}

void PrepareUsersDisplay() {
    SetProcessDPIAware(); // otherwise the system would stretch the editor's pixels on a dense screen
}

// A picture is to be the same on every machine, so here the process doesn't ask for the screen's density.
CPictureDisplay::CPictureDisplay() = default;
CPictureDisplay::~CPictureDisplay() = default;

EPlace CPictureDisplay::Place() const noexcept {
    return EPlace::OutOfView;
}

} // namespace KAV::Host
