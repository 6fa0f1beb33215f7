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
        std::filesystem::path standardOutput{}; ///< otherwise a file of the child's own
        bool errorsToTerminal = false;
    };

    explicit CChild(std::vector<std::string> arguments) : CChild(std::move(arguments), SOptions{}) {}
    CChild(std::vector<std::string> arguments, const SOptions& options);

    void Signal(int number) const;

    /// Call once. For a child that a signal ended, the code is 128 plus the signal's number.
    SRun Wait();

private:
    std::string TerminalOutput() const;

    std::filesystem::path _out;
    std::filesystem::path _errors;
    int _terminal = -1; ///< the controlling side
    pid_t _process = -1;
};

} // namespace KAV::Tests
