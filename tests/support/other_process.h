#pragma once

#include <functional>

namespace KAV::Tests {

/// Runs `work` in a copy of this process and gives what it returned; -1 when a signal ended it. Linux only,
/// and before the test has started threads.
int InAnotherProcess(const std::function<int()>& work);

/// The same as a user without rights and without a home, whoever runs the tests. 99 when that could not be.
int AsNobody(const std::function<int()>& work);

} // namespace KAV::Tests
