#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>

/// The program's standard streams and pipes, byte by byte. An interrupt (platform/interrupt.h) ends every
/// wait.
namespace KAV::Platform {

enum class EStandardStream { Output, Errors };

/// Returns how many bytes were written: fewer if the disk is full, the reader is gone, or an interrupt came
/// and the reader takes nothing for half a second. A reader of standard output that is gone is itself an
/// interrupt.
std::size_t WriteStandard(EStandardStream stream, std::span<const char> bytes) noexcept;

/// What can only be read from its beginning to its end: standard input, a pipe.
class CByteSource final {
public:
    /// Standard input.
    CByteSource() noexcept;
    /// A pipe. Doesn't wait for its writer.
    explicit CByteSource(const std::filesystem::path& pipe) noexcept;
    ~CByteSource();
    CByteSource(const CByteSource&) = delete;
    CByteSource& operator=(const CByteSource&) = delete;

    /// Waits for bytes; returns how many there were, 0 at the end. -1 when an interrupt ended the wait, or if
    /// it can't be read.
    std::ptrdiff_t Read(std::span<char> bytes) const noexcept;

private:
    std::intptr_t _file;
    bool _isOwn = false; ///< closed in the end
};

} // namespace KAV::Platform
