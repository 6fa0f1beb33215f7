#include "tests/dsp/reference/fx_group.h"

#include <cmath>

namespace KAV::Reference {

CFxGroup::CFxGroup(int number, CCoverage& coverage)
    : _number(number), _coverage(coverage), _limiter(coverage) {}

void CFxGroup::SetSampleRate(float rateHz) {
    if (_sampleRate == rateHz) return;
    _sampleRate = rateHz;
    if (_block > 0) {
        _mixSmoother.SetRate(_sampleRate / static_cast<float>(_block));
        _parameterSmoother.SetRate(_sampleRate / static_cast<float>(_block));
    }
    const double limiterRate = static_cast<double>(_factor) * static_cast<double>(_sampleRate);
    if (_limiter.Rate() != limiterRate) _limiter.SetRate(limiterRate);
}

void CFxGroup::SetBlock(int length) {
    if (_block == length) return;
    _block = length;
    _mixSmoother.SetRate(_sampleRate / static_cast<float>(_block));
    _parameterSmoother.SetRate(_sampleRate / static_cast<float>(_block));
}

void CFxGroup::Update(const SSettings& settings, int factor) {
    const int g = _number;
    _coverage.HitIf(_firstBlock, ECase::GroupFirstBlock);
    SetFactor(factor);
    StepMix(settings.hostBypass);

    if (!_firstBlock && _limiterOn != settings.limiter[g]) {
        _coverage.Hit(settings.limiter[g] ? ECase::LimiterSwitchedOn : ECase::LimiterSwitchedOff);
    }
    _limiterOn = settings.limiter[g];
    StepInputGain(settings.inputGain[g]);

    if (StepPosition(_threshold, settings.threshold[g])) {
        _coverage.HitIf(!_firstBlock, ECase::ThresholdMoves);
        GiveParams();
    }
    if (StepPosition(_ceiling, settings.ceiling[g])) {
        _coverage.HitIf(!_firstBlock, ECase::CeilingMoves);
        GiveParams();
    }
    if (StepPosition(_release, settings.release[g])) {
        _coverage.HitIf(!_firstBlock, ECase::ReleaseMoves);
        GiveParams();
    }
    if (_auto != settings.autoRelease[g] || _firstBlock) {
        const ECase turned = settings.autoRelease[g] ? ECase::AutoSwitchedOn : ECase::AutoSwitchedOff;
        _coverage.HitIf(!_firstBlock, turned);
        _auto = settings.autoRelease[g];
        GiveParams();
    }
}

void CFxGroup::SetFactor(int factor) {
    if (_factor == factor) return;
    _factor = factor;
    const double limiterRate = static_cast<double>(_factor) * static_cast<double>(_sampleRate);
    if (_limiter.Rate() != limiterRate) _limiter.SetRate(limiterRate);
}

void CFxGroup::StepMix(bool hostBypass) {
    if (hostBypass != _bypass) {
        _coverage.Hit(hostBypass ? ECase::BypassBegins : ECase::BypassEnds);
        _coverage.HitIf(_mixPosition > 0.0f && _mixPosition < 1.0f, ECase::BypassTurnsMidway);
        _coverage.HitIf(_mixPosition == 1.0f, ECase::BypassEndsFromFull);
    }
    _bypass = hostBypass;
    _mixPosition = _mixSmoother.Step(_mixPosition, _bypass ? 1.0f : 0.0f, _coverage);
}

void CFxGroup::StepInputGain(float target) {
    if (_inputGain == target && !_firstBlock) return;
    _coverage.HitIf(!_firstBlock, ECase::InputGainMoves);
    _inputGain = _parameterSmoother.Step(_inputGain, target, _coverage);
    const double position = _inputGain;
    _gainStage.SetGain(static_cast<float>(std::pow(10.0, (20.0 * position - 20.0) / 20.0)));
}

bool CFxGroup::StepPosition(float& position, float target) {
    if (position == target && !_firstBlock) return false;
    position = _parameterSmoother.Step(position, target, _coverage);
    return true;
}

void CFxGroup::GiveParams() {
    _limiter.SetParams(
        static_cast<double>(_threshold), static_cast<double>(_ceiling), static_cast<double>(_release), _auto);
}

void CFxGroup::RunEmpty() {
    _coverage.HitIf(_firstBlock, ECase::GroupFirstBlockEmpty);
    _coverage.HitIf(_limiter.LatchPending(), ECase::LatchWaits);
    _firstBlock = false;
}

void CFxGroup::Run(std::span<float* const> channels, int length) {
    _firstBlock = false;
    const bool between = IsCrossfading();
    CountMix();

    // Every slot is copied before any is processed, without the look-ahead's delay.
    std::vector<std::vector<float>> dry;
    if (between) {
        for (const float* channel : channels) dry.emplace_back(channel, channel + length);
    }
    if (_mixPosition != 1.0f) {
        for (float* channel : channels) _gainStage.Apply(channel, length, _coverage);
        _coverage.Hit(_limiterOn ? ECase::LimiterOn : ECase::LimiterOff);
        if (_limiterOn) _limiter.Process(channels, length);
    }
    _coverage.HitIf(_limiter.LatchPending(), ECase::LatchWaits);
    if (between) {
        for (std::size_t slot = 0; slot < channels.size(); ++slot) {
            float* const channel = channels[slot];
            for (int i = 0; i < length; ++i) {
                const float before = dry[slot][static_cast<std::size_t>(i)];
                channel[i] = _mixPosition * before + (1.0f - _mixPosition) * channel[i];
            }
        }
    }
}

void CFxGroup::CountMix() {
    _coverage.HitIf(_mixPosition == 0.0f, ECase::MixZero);
    _coverage.HitIf(_mixPosition == 1.0f, ECase::MixOne);
    _coverage.HitIf(IsCrossfading(), ECase::MixBetween);
}

bool CFxGroup::IsCrossfading() const {
    return _mixPosition != 0.0f && _mixPosition != 1.0f;
}

std::size_t CFxGroup::LookAhead() const {
    return _limiter.LookAhead();
}

void CFxGroup::SetLatch() {
    _limiter.SetLatch();
}

double CFxGroup::ReportedGain() const {
    return _limiter.ReportedGain();
}

} // namespace KAV::Reference
