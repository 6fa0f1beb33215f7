#pragma once

namespace KAV::Platform {

/// A descriptor that becomes readable with the first interrupt and stays so, for those who wait in poll(); -1
/// before WatchInterrupt().
int InterruptEvent() noexcept;

} // namespace KAV::Platform
