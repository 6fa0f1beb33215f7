#pragma once

#include <atomic>
#include <cstdint>

namespace KAV::Host {

/// What the user wants to hear: words that the user's thread, the one that reads the file, and that of the
/// audio share. A request to play from another place has a number besides the place, so that two for the same
/// place differ.
struct SPlayControls {
    static constexpr int PlaceBits = 48; ///< at any rate enough for a file of decades
    static constexpr std::uint64_t PlaceMask = (std::uint64_t{1} << PlaceBits) - 1;

    /// `frames` are those of the file, as its header says.
    explicit SPlayControls(std::uint64_t frames) noexcept : length(frames) {}

    std::atomic<std::uint64_t> request{0}; ///< its number, then the place as a frame of the file
    std::atomic<bool> plays{false};        ///< the audio's thread ends it at the end of the file
    std::atomic<bool> loops{false};
    std::atomic<std::uint64_t> length; ///< of the file in frames; exact once its end was read

    static std::uint64_t PlaceOf(std::uint64_t wanted) noexcept { return wanted & PlaceMask; }

    static std::uint64_t NumberOf(std::uint64_t wanted) noexcept { return wanted >> PlaceBits; }
    /// Another place with the number of a request.
    static std::uint64_t Joined(std::uint64_t wanted, std::uint64_t place) noexcept {
        return (wanted & ~PlaceMask) | (place & PlaceMask);
    }

    /// Whether a request was made after another one. The numbers begin again some day.
    static bool IsLater(std::uint64_t wanted, std::uint64_t other) noexcept {
        return static_cast<std::int16_t>(NumberOf(wanted) - NumberOf(other)) > 0;
    }

    /// On the user's thread alone.
    void Seek(std::uint64_t frame) noexcept {
        const auto number = NumberOf(request.load(std::memory_order_relaxed)) + 1;
        request.store(number << PlaceBits | (frame & PlaceMask), std::memory_order_release);
    }
};

static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

} // namespace KAV::Host
