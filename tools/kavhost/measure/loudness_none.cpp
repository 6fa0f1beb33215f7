#include "tools/kavhost/measure/loudness.h"

namespace KAV::Host {

struct CLoudness::SNative {};

CLoudness::CLoudness(int, int, TenthSink) {}

CLoudness::~CLoudness() = default;

void CLoudness::Add(std::span<const float>) {}

std::optional<double> CLoudness::TruePeak() const {
    return std::nullopt;
}

std::optional<double> CLoudness::IntegratedLufs() const {
    return std::nullopt;
}

} // namespace KAV::Host
