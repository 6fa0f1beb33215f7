#pragma once

#include <filesystem>

namespace KAV::Host {

/// While it lives, programs of this process find no settings of the user, so that an effect
/// neither follows nor changes the real ones: a picture is the same on every machine. The user's other
/// folders stay what they are. Create it before any other thread.
class CScratchSettings final {
public:
    CScratchSettings();
    ~CScratchSettings();
    CScratchSettings(const CScratchSettings&) = delete;
    CScratchSettings& operator=(const CScratchSettings&) = delete;

private:
    std::filesystem::path _name; ///< of the folder, or of the key in the registry
};

} // namespace KAV::Host
