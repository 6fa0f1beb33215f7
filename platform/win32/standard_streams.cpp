#include "platform/standard_streams.h"

#include "platform/interrupt.h"

#include <algorithm>
#include <windows.h>

namespace KAV::Platform {

namespace {

constexpr std::size_t LargestPiece = 1 << 16;
constexpr DWORD PauseMs = 10; // pipes can't be waited for together with anything else

HANDLE Native(std::intptr_t file) noexcept {
    return reinterpret_cast<HANDLE>(file);
}

/// Waits until a pipe has bytes or has ended; false after an interrupt. Everything else is always ready.
bool WaitForBytes(HANDLE file) noexcept {
    if (GetFileType(file) != FILE_TYPE_PIPE) return !Interrupted();
    for (;;) {
        if (Interrupted()) return false;
        DWORD available = 0;
        if (PeekNamedPipe(file, nullptr, 0, nullptr, &available, nullptr) == 0 || available > 0) return true;
        Sleep(PauseMs);
    }
}

} // namespace

std::size_t WriteStandard(EStandardStream stream, std::span<const char> bytes) noexcept {
    const bool isOutput = stream == EStandardStream::Output;
    const HANDLE file = GetStdHandle(isOutput ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
    std::size_t done = 0;
    while (done < bytes.size()) {
        DWORD written = 0;
        const auto piece = static_cast<DWORD>(std::min(bytes.size() - done, LargestPiece));
        if (WriteFile(file, bytes.data() + done, piece, &written, nullptr) == 0) {
            const DWORD reason = GetLastError();
            if (isOutput && (reason == ERROR_BROKEN_PIPE || reason == ERROR_NO_DATA))
                Interrupt(EInterrupt::ClosedPipe);
            break;
        }
        done += written;
    }
    return done;
}

CByteSource::CByteSource() noexcept
    : _file(reinterpret_cast<std::intptr_t>(GetStdHandle(STD_INPUT_HANDLE))) {}

CByteSource::CByteSource(const std::filesystem::path& pipe) noexcept
    : _file(reinterpret_cast<std::intptr_t>(
          CreateFileW(pipe.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr))),
      _isOwn(true) {}

CByteSource::~CByteSource() {
    if (_isOwn && Native(_file) != INVALID_HANDLE_VALUE) CloseHandle(Native(_file));
}

std::ptrdiff_t CByteSource::Read(std::span<char> bytes) const noexcept {
    const HANDLE file = Native(_file);
    if (file == INVALID_HANDLE_VALUE || file == nullptr || !WaitForBytes(file)) return -1;
    DWORD count = 0;
    const auto most = static_cast<DWORD>(std::min(bytes.size(), LargestPiece));
    if (ReadFile(file, bytes.data(), most, &count, nullptr) != 0)
        return Interrupted() ? -1 : static_cast<std::ptrdiff_t>(count);
    return GetLastError() == ERROR_BROKEN_PIPE ? 0 : -1; // its writer has ended
}

} // namespace KAV::Platform
