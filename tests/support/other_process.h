#pragma once

#include <functional>

namespace KAV::Tests {

/// Runs `work` in a copy of this process and returns its result; -1 if a signal ended it. Linux only, and
/// only before the test has started threads.
int InAnotherProcess(const std::function<int()>& work);

/// The same as a user without rights and without a home, whoever runs the tests. 99 if that wasn't possible.
int AsNobody(const std::function<int()>& work);

} // namespace KAV::Tests
