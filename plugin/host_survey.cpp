#include "plugin/host_survey.h"

#include <algorithm>
#include <array>

namespace KAV {

std::string FormatVendorVersion(std::intptr_t version) {
    const std::string digits = std::to_string(std::max<std::intptr_t>(version, 0) % 10000);
    std::string text;
    for (const char digit : digits) {
        if (!text.empty()) text += '.';
        text += digit;
    }
    return text;
}

std::span<const char* const> HostCanDoTexts() noexcept {
    static constexpr std::array texts{"sendVstEvents", "sendVstMidiEvent", "sendVstTimeInfo",
        "receiveVstEvents", "receiveVstMidiEvent", "reportConnectionChanges", "acceptIOChanges", "sizeWindow",
        "offline", "openFileSelector", "closeFileSelector", "startStopProcess", "shellCategory",
        "sendVstMidiEventFlagIsRealtime"};
    return texts;
}

} // namespace KAV
