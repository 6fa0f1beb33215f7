#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>

namespace KAV::Host {

/// True peak and loudness after ITU-R BS.1770 and EBU R 128, if this build has the library for it.
class CLoudness final {
public:
    /// Receives the loudness of each tenth of a second, ungated; minus infinity for silence.
    using TenthSink = std::function<void(double lufs)>;

    /// Without the library `onTenth` is never called.
    CLoudness(int channels, int rateHz, TenthSink onTenth = {});
    ~CLoudness();

    void Add(std::span<const float> interleaved);

    std::optional<double> TruePeak() const; ///< linear; nothing without the library
    std::optional<double>
    IntegratedLufs() const; ///< minus infinity below the gate; nothing without the library

private:
    struct SNative;
    std::unique_ptr<SNative> _native;
};

} // namespace KAV::Host
