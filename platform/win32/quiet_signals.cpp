#include "platform/quiet_signals.h"

namespace KAV::Platform {

CQuietSignals::CQuietSignals() noexcept = default;
CQuietSignals::~CQuietSignals() = default;

} // namespace KAV::Platform
