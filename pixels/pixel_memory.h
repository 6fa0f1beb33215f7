#pragma once

#include "platform/pages.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <vector>

namespace KAV::Pixels {

/// Where pixels lie: a large picture has pages of its own, which the system gets back as soon as the picture
/// is freed. In the heap of the host a picture of 26 MB would leave a hole that stays with the process: the
/// C library of Linux gives back only what lies at the heap's end, and asks for no pages of their own any
/// more once a block of that size has been freed. Any thread.
template<typename T>
struct CPixelMemory {
    using value_type = T; // NOLINT(readability-identifier-naming): a name of the standard library's
#ifdef KAV_SANITIZED      // watches every byte of the heap, but no pages
    static constexpr std::size_t PagesFrom = std::numeric_limits<std::size_t>::max();
#else
    static constexpr std::size_t PagesFrom = 64 * 1024; ///< bytes
#endif

    CPixelMemory() = default;
    template<typename U>
    explicit(false) CPixelMemory(const CPixelMemory<U>&) noexcept {}

    T* allocate(std::size_t count) { // NOLINT(readability-identifier-naming)
        const std::size_t bytes = count * sizeof(T);
        if (bytes < PagesFrom) return static_cast<T*>(::operator new(bytes));
        void* const pages = Platform::MapPages(bytes);
        if (pages == nullptr) throw std::bad_alloc();
        return static_cast<T*>(pages);
    }
    void deallocate(T* memory, std::size_t count) noexcept { // NOLINT(readability-identifier-naming)
        const std::size_t bytes = count * sizeof(T);
        if (bytes < PagesFrom)
            ::operator delete(memory);
        else
            Platform::UnmapPages(memory, bytes);
    }
    bool operator==(const CPixelMemory&) const = default;
};

using PixelBytes = std::vector<std::uint8_t, CPixelMemory<std::uint8_t>>;

} // namespace KAV::Pixels
