#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>

namespace KAV::Host {

/// Loudness after ITU-R BS.1770 and EBU R 128, if this build has the library for it.
class CLoudness final {
public:
    /// Receives the loudness of each tenth of a second, ungated; minus infinity for silence.
    using TenthSink = std::function<void(double lufs)>;

    /// `weights` has one for each channel: 0, 1, SideWeight, or 2 for a single channel that counts as two.
    /// Without the library `onTenth` is never called.
    CLoudness(std::span<const double> weights, int rateHz, TenthSink onTenth = {});
    CLoudness(CLoudness&&) noexcept;
    ~CLoudness();

    /// Whole frames of finite samples.
    void Add(std::span<const float> interleaved);

    /// Minus infinity where everything is below the gate. Nothing without the library, as with all of these.
    std::optional<double> IntegratedLufs() const;

    /// The same of several programmes as one, gated over all of them together.
    static std::optional<double> IntegratedLufs(std::span<const CLoudness* const> programmes);

    /// Loudness range after EBU Tech 3342, in LU. Nothing for less than three seconds.
    std::optional<double> RangeLu() const;

    /// The loudest 0.4 and the loudest 3 seconds, looked for in steps of a tenth; minus infinity for silence.
    /// Nothing for less sound than that.
    std::optional<double> HighestMomentaryLufs() const;
    std::optional<double> HighestShortTermLufs() const;

private:
    struct SNative;
    std::unique_ptr<SNative> _native;
};

} // namespace KAV::Host
