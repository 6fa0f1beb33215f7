#pragma once

#include <cstddef>
#include <set>

namespace KAV::Tests {

/// The numbers of this process's threads. Linux only.
std::set<int> Threads();

/// The threads that have been started since `before` and are still running. Waits, at most a minute, until
/// there are exactly `count` of them.
std::set<int> AwaitNewThreads(const std::set<int>& before, std::size_t count);

/// Whether a thread of this process has blocked every signal that can be blocked.
bool BlocksAllSignals(int thread);

} // namespace KAV::Tests
