#include "tests/dsp/reference/fx_group.h"

#include "tests/dsp/reference/meters.h"

#include <cmath>
#include <utility>

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
    _mode = 0;
    if (settings.type[g] == 1) {
        const bool mid = settings.channelInGroup[0][g];
        const bool side = settings.channelInGroup[1][g];
        if (mid) _mode = settings.solo[g] ? 4 : 1;
        if (side) _mode = settings.solo[g] ? 8 : 2;
        if (mid && side) _mode = 3;
    }
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
        _coverage.Hit(_limiterOn ? ECase::LimiterOn : ECase::LimiterOff);
        if (_mode != 0) CountMidSide(channels);
        if (_mode == 0 || channels.size() < 2) {
            RunPlain(channels, length);
        } else {
            RunMidSide(channels, length);
        }
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

void CFxGroup::RunPlain(std::span<float* const> channels, int length) {
    for (float* channel : channels) _gainStage.Apply(channel, length, _coverage);
    for (std::size_t slot = 0; slot < channels.size(); ++slot) {
        _inputPeaks[slot] = PeakOf(channels[slot], length, _inputPeaks[slot]);
    }
    if (_limiterOn) _limiter.Process(channels, length);
    for (std::size_t slot = 0; slot < channels.size(); ++slot) {
        _outputPeaks[slot] = PeakOf(channels[slot], length, _outputPeaks[slot]);
    }
}

void CFxGroup::RunMidSide(std::span<float* const> channels, int length) {
    float* const first = channels[0];
    float* const second = channels[1];
    for (int i = 0; i < length; ++i) {
        const float mid = (first[i] + second[i]) * 0.5f;
        const float side = (first[i] - second[i]) * 0.5f;
        first[i] = mid;
        second[i] = side;
    }
    std::vector<float*> worked;
    if (_mode == 3 || _mode == 1 || _mode == 4) worked.push_back(first);
    if (_mode == 3 || _mode == 2 || _mode == 8) worked.push_back(second);
    for (float* half : worked) _gainStage.Apply(half, length, _coverage);
    for (std::size_t slot = 0; slot < worked.size(); ++slot) {
        _inputPeaks[slot] = PeakOf(worked[slot], length, _inputPeaks[slot]);
    }
    if (_limiterOn) _limiter.Process(worked, length);
    for (std::size_t slot = 0; slot < channels.size(); ++slot) {
        _outputPeaks[slot] = PeakOf(channels[slot], length, _outputPeaks[slot]);
    }
    for (int i = 0; i < length; ++i) {
        const float mid = first[i];
        const float side = second[i];
        if (_mode == 4) second[i] = mid;
        if (_mode == 8) first[i] = side;
        if (_mode == 8) second[i] = -side;
        if (_mode < 4) first[i] = mid + side;
        if (_mode < 4) second[i] = mid - side;
    }
}

void CFxGroup::CountMidSide(std::span<float* const> channels) {
    if (channels.size() < 2) {
        _coverage.Hit(ECase::MidSideOfOneChannel);
        return;
    }
    _coverage.HitIf(_mode == 1, ECase::MidAlone);
    _coverage.HitIf(_mode == 2, ECase::SideAlone);
    _coverage.HitIf(_mode == 3, ECase::MidAndSide);
    _coverage.HitIf(_mode == 4, ECase::MidSoloed);
    _coverage.HitIf(_mode == 8, ECase::SideSoloed);
    _coverage.HitIf(channels.size() > 2, ECase::MidSideOfManyChannels);
    _coverage.HitIf(channels[0] == channels[1], ECase::MidSideOfOneBuffer);
}

int CFxGroup::MidSideMode() const {
    return _mode;
}

float CFxGroup::TakeInputPeak(std::size_t slot) {
    return std::exchange(_inputPeaks[slot], 0.0f);
}

float CFxGroup::TakeOutputPeak(std::size_t slot) {
    return std::exchange(_outputPeaks[slot], 0.0f);
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
