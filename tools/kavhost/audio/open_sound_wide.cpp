#include "tools/kavhost/audio/open_sound.h"

namespace KAV::Host {

SNDFILE* OpenSound(const std::filesystem::path& file, SF_INFO& info) {
    return sf_wchar_open(file.c_str(), SFM_READ, &info);
}

} // namespace KAV::Host
