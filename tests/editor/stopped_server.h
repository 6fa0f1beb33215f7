#pragma once

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>

namespace KAV::Tests {

/// Stops a process for its lifetime.
class CStopped final {
public:
    explicit CStopped(int process) : _process(process) { kill(_process, SIGSTOP); }
    ~CStopped() { kill(_process, SIGCONT); }
    CStopped(const CStopped&) = delete;
    CStopped& operator=(const CStopped&) = delete;

private:
    int _process;
};

/// A call of the host must return soon, whatever its display does: closing gives one that has stopped two
/// seconds, and the machine may be busy.
template<typename TCall>
void ExpectSoon(const char* what, TCall call) {
    const auto begin = std::chrono::steady_clock::now();
    call();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3)) << what;
}

} // namespace KAV::Tests
