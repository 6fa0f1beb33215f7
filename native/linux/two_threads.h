#pragma once

#include <cstddef>
#include <functional>

namespace KAV::Native {

/// Calls `work` once for each number below `count`, in rising order, on this thread and on one more, and
/// returns when all is done. If the system can't create another thread, this one does it all. What `work`
/// throws ends that call of it only.
void OnTwoThreads(std::size_t count, const std::function<void(std::size_t)>& work) noexcept;

} // namespace KAV::Native
