#pragma once

#include <cstddef>
#include <set>

namespace KAV::Tests {

/// The numbers of this process's threads. Linux only.
std::set<int> Threads();

/// Those that have been started since `before` and still run, once there are exactly `count` of them: waited
/// for, a minute at most.
std::set<int> AwaitNewThreads(const std::set<int>& before, std::size_t count);

/// Whether a thread of this process has every signal blocked that can be blocked.
bool BlocksAllSignals(int thread);

} // namespace KAV::Tests
