#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/screen/users_display.h"
#include "tools/kavhost/screen/virtual_display.h"

#include <cstdlib>

namespace KAV::Host {

namespace {

constexpr int VirtualSide = 4096; ///< of a display without a screen: more than an editor needs

}

std::string UsersDisplay() {
    const char* const name = std::getenv("DISPLAY");
    return name != nullptr ? name : "";
}

void PrepareUsersDisplay() {
    if (UsersDisplay().empty()) throw CFailure("there is no display: DISPLAY is not set");
}

CPictureDisplay::CPictureDisplay() {
    if (!UsersDisplay().empty()) return;
    _virtual = std::make_unique<CVirtualDisplay>(VirtualSide, VirtualSide);
    // The effect looks for it there. NOLINTNEXTLINE(concurrency-mt-unsafe): there is no other thread yet
    setenv("DISPLAY", _virtual->Name().c_str(), 1);
}

CPictureDisplay::~CPictureDisplay() = default;

EPlace CPictureDisplay::Place() const noexcept {
    return _virtual ? EPlace::OutOfView : EPlace::InView;
}

} // namespace KAV::Host
