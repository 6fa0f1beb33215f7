#pragma once

#include <string>
#include <sys/types.h>

namespace KAV::Host {

/// A display without a screen, for programs that need one where there is none: Xvfb, started for the life of
/// the object. It ends with this process, however that ends.
class CVirtualDisplay final {
public:
    /// `width` and `height` are those of its screen. Throws CFailure if there is no Xvfb, or it doesn't
    /// start.
    CVirtualDisplay(int width, int height);
    ~CVirtualDisplay();
    CVirtualDisplay(const CVirtualDisplay&) = delete;
    CVirtualDisplay& operator=(const CVirtualDisplay&) = delete;

    const std::string& Name() const noexcept { return _name; } ///< as in DISPLAY

private:
    pid_t _server = -1;
    std::string _name;
};

} // namespace KAV::Host
