#include "gfx/call_log.h"

#include "utils/clock.h"
#include "utils/number.h"
#include "utils/session_log.h"

#include <algorithm>

namespace KAV::GFX {

void CCallLog::Failed(std::u16string_view a_sCall, std::int32_t a_nError) noexcept {
    constexpr std::uint32_t nSilenceMs = 1000;
    try {
        std::u16string sText = u"Error=";
        sText.append(a_sCall).append(u":").append(Utils::FormatInt(a_nError));
        const std::uint32_t nNow = Utils::TickMs();
        std::erase_if(
            _vsRecent, [nNow](const SLine& a_sLine) { return nNow - a_sLine.nWrittenMs >= nSilenceMs; });
        const bool bWritten = std::any_of(_vsRecent.begin(), _vsRecent.end(),
            [&sText](const SLine& a_sLine) { return a_sLine.sText == sText; });
        if (bWritten) return;
        _vsRecent.push_back({sText, nNow});
        Utils::LogLine(sText);
    } catch (...) { // no memory to report it
        return;
    }
}

} // namespace KAV::GFX
