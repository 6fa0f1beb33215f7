#pragma once

#include <stdexcept>
#include <string>
#include <utility>

/// Why kavhost gives up. Each text is one line, to be printed after "kavhost: ".
namespace KAV::Host {

/// The request makes no sense: a bad option, an unknown parameter, a value out of range.
class CUsageError final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The request makes sense but failed: a missing file, a library that is not an effect, a full disk.
class CFailure final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Runs `operation`, which knows no file name, and prefixes its failure with `name`.
template<typename OPERATION>
decltype(auto) Naming(const std::string& name, OPERATION&& operation) {
    try {
        return std::forward<OPERATION>(operation)();
    } catch (const CFailure& failure) {
        throw CFailure(name + ": " + failure.what());
    }
}

/// The user interrupted the program, or the system asked it to end.
class CInterruption final : public std::runtime_error {
public:
    CInterruption() : std::runtime_error("interrupted") {}
    /// `detail` says what was done by then.
    explicit CInterruption(const std::string& detail) : std::runtime_error("interrupted: " + detail) {}
};

/// There is nothing to do: the result exists, and the user wants it to stay as it is.
class CSkipped final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The exit codes of the process.
enum class EExitCode {
    Done = 0,
    Failure = 1,
    Usage = 2,
    HungUp = 129, ///< these four as a shell reports a program that the signal ended
    Interrupted = 130,
    ClosedPipe = 141,
    Terminated = 143,
};

} // namespace KAV::Host
