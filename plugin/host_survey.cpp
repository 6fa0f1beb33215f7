#include "plugin/host_survey.h"

#include "utils/path.h"
#include "utils/session_log.h"
#include "utils/text.h"

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

void LogHostSurvey(const SHostSurvey& survey) noexcept {
    try {
        using Utils::LogLine, Utils::ToUtf16;
        const auto vendor = ToUtf16(survey.vendor);
        const auto product = ToUtf16(survey.product);
        if (!vendor.empty() || !product.empty()) {
            const auto* const blank = vendor.empty() ? u"" : u" ";
            LogLine(u"AudioHost=" + vendor + blank + product + u" v" + ToUtf16(survey.version));
        }
        LogLine(u"AudioHostCanDo=" + ToUtf16(survey.canDo));
        LogLine(u"PluginPath=" + Utils::GetFolder(Utils::GetModulePath()));
        LogLine(u"PluginFormat=VST 2.4");
    } catch (...) { // failing to log is never an error
        return;
    }
}

std::span<const char* const> HostCanDoTexts() noexcept {
    static constexpr std::array texts{"sendVstEvents", "sendVstMidiEvent", "sendVstTimeInfo",
        "receiveVstEvents", "receiveVstMidiEvent", "reportConnectionChanges", "acceptIOChanges", "sizeWindow",
        "offline", "openFileSelector", "closeFileSelector", "startStopProcess", "shellCategory",
        "sendVstMidiEventFlagIsRealtime"};
    return texts;
}

} // namespace KAV
