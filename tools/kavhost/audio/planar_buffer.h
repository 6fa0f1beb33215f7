#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace KAV::Host {

/// Channels of the same length, one after another, as effects take them; files interleave them.
class CPlanarBuffer final {
public:
    CPlanarBuffer(std::size_t channels, std::size_t frames);
    CPlanarBuffer(CPlanarBuffer&&) noexcept = default;
    CPlanarBuffer(const CPlanarBuffer&) = delete;
    CPlanarBuffer& operator=(const CPlanarBuffer&) = delete;

    void Clear() noexcept;
    /// Frames from `first` on become those of `interleaved`.
    void TakeInterleaved(std::span<const float> interleaved, std::size_t first = 0) noexcept;
    /// Fills `interleaved` with the frames from `first` on.
    void GiveInterleaved(std::span<float> interleaved, std::size_t first = 0) const noexcept;
    void CopyFrom(const CPlanarBuffer& other) noexcept; ///< of the same size

    std::size_t Channels() const noexcept { return _channels.size(); }
    std::size_t Frames() const noexcept { return _frames; }
    std::span<float> Channel(std::size_t index) noexcept { return {_channels[index], _frames}; }
    std::span<const float> Channel(std::size_t index) const noexcept { return {_channels[index], _frames}; }
    float** Pointers() noexcept { return _channels.data(); }

private:
    std::size_t _frames;
    std::vector<float> _samples;
    std::vector<float*> _channels; ///< into the samples
};

} // namespace KAV::Host
