#include "plugin/host_road.h"

#include "utils/clock.h"

namespace KAV {

void CHostRoad::Latency(std::int32_t samples) noexcept {
    _effect.setInitialDelay(samples);
    _effect.ioChanged();
}

std::uint32_t CHostRoad::NowMs() const noexcept {
    return Utils::TickMs();
}

} // namespace KAV
