#include "device/xxx_dsp.h"

#include "utils/text.h"

namespace KAV {

namespace {

bool IsHostIndex(std::int32_t index) noexcept {
    return index >= 0 && static_cast<std::size_t>(index) < HostParamTable().size();
}

} // namespace

void CXXXDSP::ProcessSecond(float**, float**, int, int) noexcept {}

void CXXXDSP::GetParamName(std::int32_t hostIndex, std::span<char> text) {
    if (IsHostIndex(hostIndex)) {
        GetTagName(HostParamTable()[static_cast<std::size_t>(hostIndex)], text);
    } else {
        Utils::CopyText("", text);
    }
}

bool CXXXDSP::IsEdited(std::int32_t hostIndex) const noexcept {
    return (hostIndex == NoHostIndex || IsHostIndex(hostIndex)) &&
           editing[static_cast<std::size_t>(hostIndex - NoHostIndex)];
}

float CXXXDSP::GetHostParameter(std::int32_t hostIndex) {
    if (!IsHostIndex(hostIndex)) return 0.0f;
    return GetParam(HostParamTable()[static_cast<std::size_t>(hostIndex)], Normalized | BaseValue);
}

} // namespace KAV
