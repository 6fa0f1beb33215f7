#pragma once

#include <filesystem>

namespace KAV::Host {

/// While it lives, programs of this process find an empty folder for the user's settings, so that an effect
/// neither follows nor changes the real ones: a picture is the same on every machine. The user's other
/// folders stay what they are. Create it before any other thread.
class CScratchSettings final {
public:
    CScratchSettings();
    ~CScratchSettings();
    CScratchSettings(const CScratchSettings&) = delete;
    CScratchSettings& operator=(const CScratchSettings&) = delete;

private:
    std::filesystem::path _folder;
};

} // namespace KAV::Host
