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

/// The user interrupted the program.
class CInterruption final : public std::runtime_error {
public:
    CInterruption() : std::runtime_error("interrupted") {}
};

/// The exit codes of the process.
enum class EExitCode {
    Done = 0,
    Failure = 1,
    Usage = 2,
    Interrupted = 130, ///< as a shell reports a program that Ctrl-C ended
};

} // namespace KAV::Host
