#include "tests/dsp/reference/auto_gain.h"

#include <algorithm>
#include <cmath>

namespace KAV::Reference {

void CAutoGain::SetRate(float rateHz) {
    if (rateHz == _rateHz) return;
    _rateHz = rateHz;
    for (SWindow* window : {&_in, &_out, &_outGain}) Restart(*window);
}

void CAutoGain::Restart(SWindow& window) const {
    const double rate = _rateHz;
    const double longest = std::trunc(std::max(10.0 * rate, 1.0));
    window.length =
        static_cast<std::size_t>(std::min(std::max(std::trunc(window.timeMs * 0.001 * rate), 1.0), longest));
    window.squares.assign(window.length, 0.0);
    window.sum = 0.0;
    window.index = 0;
    window.full = false;
}

bool CAutoGain::Push(SWindow& window, const std::vector<double>& values, double h) const {
    double p = 0.0;
    for (const double v : values) p += (h * v) * (h * v);
    p = p / static_cast<double>(values.size());
    window.sum = window.sum + p;
    const double leaving = window.squares[window.index];
    window.squares[window.index] = p;
    window.index = window.index + 1;
    const bool wraps = window.index == window.length;
    if (wraps) {
        window.index = 0;
        window.full = true;
    }
    if (window.full) {
        window.sum = window.sum - leaving;
        if (window.sum < 0.0) window.sum = 0.0;
    }
    return wraps;
}

double CAutoGain::Rms(const SWindow& window) {
    if (window.sum > 0.0) return std::sqrt(window.sum / static_cast<double>(window.length));
    return 6.30957344480193e-8;
}

double CAutoGain::Weight(std::array<SBiquad, 2>& filter, double x) const {
    const double fs = _rateHz;
    for (int stage = 0; stage < 2; ++stage) {
        const double K = std::tan((stage == 0 ? 5284.078578647624 : 119.80611514558424) / fs);
        const double Q = stage == 0 ? 0.70717523695542 : 0.50032703732504;
        const double Vh = 1.58486470113086;
        const double Vb = 1.25872093023256;
        const double d = 1 + K / Q + K * K;
        const double a1 = 2 * (K * K - 1) / d;
        const double a2 = (1 - K / Q + K * K) / d;
        const double c = 1.00499489871469;
        const double b0 = stage == 0 ? (Vh + Vb * K / Q + K * K) / d : c / d;
        const double b1 = stage == 0 ? 2 * (K * K - Vh) / d : -2 * c / d;
        const double b2 = stage == 0 ? (Vh - Vb * K / Q + K * K) / d : c / d;
        SBiquad& z = filter[static_cast<std::size_t>(stage)];
        const double w = x - a1 * z.w1 - a2 * z.w2;
        x = b0 * w + b1 * z.w1 + b2 * z.w2;
        z.w2 = z.w1;
        z.w1 = w;
    }
    return x;
}

void CAutoGain::Prepare(bool nowDisabled, bool nowAuto, const CChannels& active) {
    autoOn = nowAuto;
    const double timeMs = settings.rmsTimeMs > 0.0 ? settings.rmsTimeMs : 0.0;
    for (SWindow* window : {&_in, &_out, &_outGain}) {
        if (window->timeMs == timeMs) continue;
        window->timeMs = timeMs;
        Restart(*window);
    }
    // The coefficient is that of a smoother: single precision, computed from single-precision values.
    const float rampMs = static_cast<float>(timeMs * 5.55);
    const double ramp = static_cast<double>(rampMs);
    const double steps =
        (-ramp / 1000.0 / std::log(1.0 - static_cast<double>(0.99f))) * static_cast<double>(_rateHz);
    _c = rampMs == 0.0f ? 0.0 : static_cast<double>(static_cast<float>(std::exp(-1.0 / steps)));
    if (nowDisabled != disabled) {
        refresh = true;
        disabled = nowDisabled;
        if (disabled) {
            ratio = correctedRatio = 1.0;
            _inFilters = _outFilters = CBank{};
        }
    }
    if (!disabled) _copies = active;
}

void CAutoGain::Run(CChannels& active, const std::vector<bool>& used, float& position) {
    const double minGain = std::pow(10.0, -settings.maximumCutDb / 20.0);
    const double maxGain = std::pow(10.0, settings.maximumGainDb / 20.0);
    const double suspend = settings.suspendDb == 0.0 ? 0.0 : std::pow(10.0, settings.suspendDb / 20.0);
    const double high = std::pow(10.0, settings.toleranceDb / 20.0);
    const double low = 1 / high;
    double current = std::pow(10.0, (48.0 * static_cast<double>(position) - 24.0) / 20.0);
    if (!autoOn) gain = current;
    const bool anyUsed = std::find(used.begin(), used.end(), true) != used.end();
    for (std::size_t i = 0; i < active[0].size(); ++i) {
        ratio = Rms(_in) / Rms(_out);
        correctedRatio = Rms(_in) / Rms(_outGain);
        if (autoOn && (adjusting || correctedRatio < low || correctedRatio > high)) {
            ++adjusted;
            if (ratio != gain) gain = (1 - _c) * ratio + _c * gain;
            clampedDown += gain < minGain ? 1 : 0;
            clampedUp += gain > maxGain ? 1 : 0;
            current = gain < minGain ? minGain : gain > maxGain ? maxGain : gain;
            const double db = current > 0.0 ? 20.0 * std::log10(current) : -999.9;
            position = static_cast<float>(std::min(std::max((db + 24.0) / 48.0, 0.0), 1.0));
            adjusting = std::fabs(1.0 - correctedRatio) > 0.0001;
        } else {
            ++held;
        }
        bool quiet = suspend != 0.0;
        for (std::size_t k = 0; k < active.size(); ++k) {
            if (used[k] && std::fabs(static_cast<double>(_copies[k][i])) > suspend) quiet = false;
        }
        suspended += quiet ? 1 : 0;
        std::vector<double> before;
        std::vector<double> after;
        for (std::size_t k = 0; k < active.size(); ++k) {
            if (!used[k]) continue;
            const double x = _copies[k][i];
            const double y = active[k][i];
            before.push_back(settings.filter != 0 ? Weight(_inFilters[k], x) : x);
            after.push_back(settings.filter != 0 ? Weight(_outFilters[k], y) : y);
        }
        if (!quiet && anyUsed) {
            wrapped += Push(_in, before, 1.0) ? 1 : 0;
            Push(_out, after, 1.0);
            Push(_outGain, after, current);
        }
        for (auto& channel : active)
            channel[i] = static_cast<float>(static_cast<double>(channel[i]) * current);
    }
}

} // namespace KAV::Reference
