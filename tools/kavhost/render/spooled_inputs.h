#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>

namespace KAV::Host {

/// Inputs that can be read only once, from the beginning to the end: standard input, written "-", and named
/// pipes. Each is stored in a temporary file when it is first asked for. The files end with the object.
/// Threads: any; different inputs are read at the same time.
class CSpooledInputs final {
public:
    CSpooledInputs();
    ~CSpooledInputs();
    CSpooledInputs(const CSpooledInputs&) = delete;
    CSpooledInputs& operator=(const CSpooledInputs&) = delete;

    /// The file with the input's content; empty for any other input, which is such a file itself. Waits until
    /// the input has ended. Throws CFailure, and CInterruption if the user interrupts that.
    std::filesystem::path SourceOf(const std::filesystem::path& input);

private:
    class CSpool;

    std::mutex _mutex;
    std::map<std::filesystem::path, std::unique_ptr<CSpool>> _spools;
};

} // namespace KAV::Host
