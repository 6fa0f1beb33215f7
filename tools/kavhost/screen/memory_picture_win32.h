#pragma once

#include "platform/winapi/windows_header.h"

#include <cstdint>

namespace KAV::Host {

/// A 32-bit bitmap in memory, and a context that draws into it.
class CMemoryPicture final {
public:
    CMemoryPicture(std::int32_t width, std::int32_t height) noexcept;
    ~CMemoryPicture();
    CMemoryPicture(const CMemoryPicture&) = delete;
    CMemoryPicture& operator=(const CMemoryPicture&) = delete;

    HDC Context() const noexcept { return _context; }
    /// The pixels, row by row from the top, of which the upper 8 bits mean nothing; null if memory is short.
    const std::uint32_t* Pixels() const noexcept { return _pixels; }

    /// How the system calls a picture of that form.
    static BITMAPINFO InfoOf(std::int32_t width, std::int32_t height) noexcept;

private:
    HDC _context;
    HBITMAP _bitmap = nullptr;
    HGDIOBJ _before = nullptr;
    const std::uint32_t* _pixels = nullptr;
};

} // namespace KAV::Host
