#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace KAV {

/// What a host reports about itself. Nothing depends on the answers; they help to understand a user's report.
struct SHostSurvey {
    std::string vendor;  ///< UTF-8, as the host returned it
    std::string product; ///< UTF-8, as the host returned it
    std::string version; ///< for example "3.2.1.0"
    std::string canDo;   ///< the capabilities that the host confirms, each followed by ";"
};

/// The digits of a vendor's version separated by dots, lowest last: "3.2.1.0" for 3210. Only the four lowest
/// digits count, and leading zeros aren't shown; a negative number counts as 0.
std::string FormatVendorVersion(std::intptr_t version);

/// Writes the survey to the session log, with the folder and format of this library.
void LogHostSurvey(const SHostSurvey& survey) noexcept;

/// The capability texts that the host is asked for, in order.
std::span<const char* const> HostCanDoTexts() noexcept;

} // namespace KAV
