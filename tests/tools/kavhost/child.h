#pragma once

#include "tests/tools/kavhost/support.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace KAV::Tests {

/// kavhost as a separate process, with its standard streams in files.
class CChild final {
public:
    struct SOptions {
        std::filesystem::path program = KAVHOST_PROGRAM;
        unsigned long mostFileBytes =
            0; ///< the system refuses more in one file, as a full disk would; 0: any
        std::filesystem::path standardInput{};  ///< otherwise the test's own
        std::filesystem::path standardOutput{}; ///< otherwise a file of the child's own; may be a pipe
        bool errorsToTerminal = false;
        bool outputToTerminal = false; ///< to that of the errors, which has to be wanted, too
    };

    explicit CChild(std::vector<std::string> arguments) : CChild(std::move(arguments), SOptions{}) {}
    CChild(std::vector<std::string> arguments, const SOptions& options);

    void Signal(int number) const;

    /// What the child has printed so far, if it prints to its own file.
    std::string OutputSoFar() const;

    /// Call once. For a child that a signal ended, the code is 128 plus the signal's number.
    SRun Wait();

private:
    std::string TerminalOutput() const;

    std::filesystem::path _out;
    std::filesystem::path _errors;
    int _terminal = -1; ///< the controlling side
    pid_t _process = -1;
};

/// What a terminal shows in the end: a carriage return goes back to the line's beginning, and what follows
/// overwrites it.
std::string OnScreen(const std::string& text);

} // namespace KAV::Tests
