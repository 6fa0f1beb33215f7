#include "tools/kavhost/play/time_text.h"

#include <algorithm>
#include <cstdint>

namespace KAV::Host {

namespace {

std::string TwoDigits(std::int64_t number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

} // namespace

std::string TimeText(double seconds) {
    constexpr double most = 1e9;
    const auto whole = static_cast<std::int64_t>(std::clamp(seconds, 0.0, most));
    const auto hours = whole / 3600;
    const auto minutes = whole / 60 % 60;
    const auto start = hours > 0 ? std::to_string(hours) + ":" + TwoDigits(minutes) : std::to_string(minutes);
    return start + ":" + TwoDigits(whole % 60);
}

} // namespace KAV::Host
