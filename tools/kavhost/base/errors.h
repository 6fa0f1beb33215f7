#pragma once

#include <stdexcept>
#include <string>
#include <utility>

/// Why kavhost gives up. Each text is one line that stands alone behind "kavhost: ".
namespace KAV::Host {

/// What was asked for makes no sense: a bad option, an unknown parameter, a value out of range.
class CUsageError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What was asked for makes sense and did not work: a missing file, a library that is no effect, a full disk.
class CFailure final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Runs `operation`, which knows no file name; its failure gets `name` in front.
template<typename OPERATION>
decltype(auto) Naming(const std::string& name, OPERATION&& operation) {
    try {
        return std::forward<OPERATION>(operation)();
    } catch (const CFailure& failure) {
        throw CFailure(name + ": " + failure.what());
    }
}

/// The user asked to end.
class CInterruption final : public std::runtime_error {
public:
    CInterruption() : std::runtime_error("interrupted") {}
};

/// What the process returns to its caller.
enum class EExitCode {
    Done = 0,
    Failure = 1,
    Usage = 2,
    Interrupted = 130, ///< as a shell reports a program that Ctrl-C ended
};

} // namespace KAV::Host
