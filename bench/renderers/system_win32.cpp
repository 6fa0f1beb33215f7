#include "bench/renderers/system.h"
#include "platform/winapi/windows_header.h"

namespace KAV::Bench {

std::vector<SCase> Cases() {
    return {{"software", GFX::SoftwareRenderer(), true}, {"OpenGL", GFX::OpenGLRenderer(), true},
        {"Direct3D", GFX::Direct3DRenderer(), true}, {"Direct2D", GFX::Direct2DRenderer(), true}};
}

/// Not by clock(), which here is that of the wall.
double ProcessTime() {
    FILETIME created, ended, kernel, user;
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
    const auto seconds = [](const FILETIME& time) {
        return 1e-7 * (4294967296.0 * time.dwHighDateTime + time.dwLowDateTime);
    };
    return seconds(kernel) + seconds(user);
}

} // namespace KAV::Bench
