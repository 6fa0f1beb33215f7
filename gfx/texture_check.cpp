#include "gfx/texture_check.h"

#include "utils/session_log.h"

#include <algorithm>

namespace KAV::GFX {

void CheckTexture(std::u16string_view a_sName, std::int32_t a_nW, std::int32_t a_nH, const GPU& a_piGPU) {
    const std::int32_t nMaxW = a_piGPU.MaxTextureW();
    const std::int32_t nMaxH = a_piGPU.MaxTextureH();
    if ((nMaxW != 0 && a_nW >= nMaxW) || (nMaxH != 0 && a_nH >= nMaxH))
        Utils::LogTextureTooLarge(a_sName, a_nW, nMaxW, a_nH, nMaxH);

    const std::int32_t nMaxAspect = a_piGPU.MaxAspect();
    const auto [nShorter, nLonger] = std::minmax(a_nW, a_nH);
    if (nMaxAspect == 0 || nShorter <= 0) return;
    const std::int32_t nAspect = nLonger / nShorter;
    if (nAspect > nMaxAspect) Utils::LogTextureAspect(a_sName, a_nW, a_nH, nAspect, nMaxAspect);
}

} // namespace KAV::GFX
