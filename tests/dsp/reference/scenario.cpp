#include "tests/dsp/reference/scenario.h"

#include <algorithm>
#include <limits>

namespace KAV::Reference {

CScenario::CScenario(std::uint64_t seed) : _random(seed) {
    ChooseKind();
    ChooseStart();
}

bool CScenario::IsOver() const {
    return _done == _blocks;
}

void CScenario::ChooseKind() {
    const double draw = _random.Unit();
    _kind = draw < 0.30   ? EKind::Short
            : draw < 0.56 ? EKind::Ordinary
            : draw < 0.61 ? EKind::Long
            : draw < 0.74 ? EKind::Silent
            : draw < 0.80 ? EKind::Calm
            : draw < 0.86 ? EKind::Fast
                          : EKind::Raised;
    _blocks = _random.Integer(35, 45);
    _channels = ChooseChannels();
    _fixedFrames = _random.Chance(0.3);
    switch (_kind) {
    case EKind::Short:
        _frames = _random.Integer(1, 64);
        break;
    case EKind::Ordinary:
        _frames = _random.Integer(64, 500);
        break;
    case EKind::Long:
        _frames = _random.Integer(500, 4096);
        break;
    // Four thousand, so that the five seconds may end exactly at the end of a block.
    case EKind::Silent:
        _frames = _random.OneOf({4000, 4000, 4096, 3901});
        break;
    case EKind::Calm:
        _frames = _random.Integer(300, 600);
        break;
    case EKind::Fast:
        _frames = _random.Integer(1, 150);
        break;
    case EKind::Raised:
        _frames = _random.Integer(1, 60);
        break;
    }
}

void CScenario::ChooseStart() {
    _move = _random.OneOf({0.0, 0.02, 0.1, 0.4});
    _flip = _random.OneOf({0.0, 0.01, 0.03, 0.1});
    _unsteady = _random.OneOf({0.0, 0.0, 0.03, 0.1});
    for (CMaterial& material : _materials) {
        if (_kind == EKind::Silent) material.SetHabit(CMaterial::EHabit::Patient);
        if (_kind == EKind::Calm) material.SetHabit(CMaterial::EHabit::Calm);
    }
    if (_kind == EKind::Silent) _unsteady = _random.OneOf({0.0, 0.1, 0.2});
    if (_kind == EKind::Calm) {
        // Unity gain everywhere lets an infinity reach the limiter; a new rate gives it a clean window again.
        _move = 0.0;
        _unsteady = 0.2;
    }
    if (_kind == EKind::Calm || _random.Chance(0.2)) return; // the settings of a new instance

    if (_kind == EKind::Raised) {
        _settings.oversampling = _random.Integer(1, 3);
        _settings.highQuality = _random.Chance(0.5);
    }
    if (_kind == EKind::Silent && _random.Chance(0.3)) _settings.oversampling = 1;
    _settings.groupsParallel = _random.Chance(0.5);
    _settings.simd = _random.Chance(0.5);
    _settings.editedGroup = _random.Integer(0, 3);
    _settings.hostBypass = _random.Chance(0.05);
    for (int g = 0; g < 4; ++g) {
        _settings.autoRelease[g] = _random.Chance(0.5);
        _settings.limiter[g] = _random.Chance(0.85);
        _settings.solo[g] = _random.Chance(0.05);
        _settings.mute[g] = _random.Chance(0.1);
        _settings.inputGain[g] = ChoosePosition(_settings.inputGain[g]);
        _settings.threshold[g] = ChoosePosition(_settings.threshold[g]);
        _settings.ceiling[g] = ChoosePosition(_settings.ceiling[g]);
        _settings.release[g] = ChoosePosition(_settings.release[g]);
    }
    _settings.mainInput = ChoosePosition(_settings.mainInput);
    _settings.mainOutput = ChoosePosition(_settings.mainOutput);
    ChooseToggles();
    ChooseMaps();
}

float CScenario::ChooseRate() {
    if (_kind == EKind::Silent) return _random.OneOf({8000.0f, 8000.0f, 8000.9f, 12000.0f});
    if (_kind == EKind::Fast) {
        return _random.OneOf({88200.0f, 96000.0f, 96000.0f, 176400.0f, 192000.0f, 352800.0f, 384000.0f});
    }
    if (_random.Chance(0.1)) return static_cast<float>(8000.0 + 42000.0 * _random.Unit());
    return _random.OneOf(
        {8000.0f, 8000.0f, 11025.0f, 16000.0f, 22050.0f, 32000.0f, 44100.0f, 44100.0f, 48000.0f});
}

int CScenario::ChooseChannels() {
    if (_kind == EKind::Long || _kind == EKind::Silent) return _random.Integer(1, 3);
    if (_kind == EKind::Calm) return _random.Integer(1, 2);
    if (_random.Chance(0.1)) return 16;
    return _random.Chance(0.7) ? _random.Integer(1, 4) : _random.Integer(5, 16);
}

int CScenario::ChooseFrames() {
    if (_fixedFrames || _kind == EKind::Silent) return _frames;
    if (_kind != EKind::Long && _random.Chance(0.01)) return _random.Integer(1, 2000);
    return _random.Chance(0.5) ? _frames : _random.Integer(1, _frames);
}

int CScenario::ChooseAnnounced() {
    if (_random.Chance(0.05)) return _random.OneOf({0, -1, -512});
    if (_random.Chance(0.3)) return _random.Integer(std::max(1, _frames / 6), _frames);
    return _random.Chance(0.5) ? _frames : _random.Integer(_frames, 2 * _frames);
}

float CScenario::ChoosePosition(float present) {
    const double draw = _random.Unit();
    if (draw < 0.15) return 0.0f;
    if (draw < 0.35) return 1.0f;
    if (draw < 0.45) return 0.5f;
    if (draw < 0.6) return std::clamp(present + _random.Signed(0.02f), 0.0f, 1.0f);
    // Exactly at the distance from an end at which a smoother still jumps, and slightly further.
    if (draw < 0.7) return _random.OneOf({1.0f - 0.99f, 0.01f, 0.99f});
    return static_cast<float>(_random.Unit());
}

void CScenario::ChooseToggles() {
    const double density = _random.OneOf({0.1, 0.3, 0.6, 1.0});
    for (int g = 0; g < 4; ++g) {
        const bool inUse = _random.Chance(0.5);
        for (int entry = 0; entry < 16; ++entry) {
            // Prefers low entries, because they name the channels that a small host has.
            const double chance = entry < 4 ? 0.7 : density;
            _settings.channelInGroup[entry][g] = inUse && _random.Chance(chance);
        }
    }
}

void CScenario::ChooseMaps() {
    for (int g = 0; g < 4; ++g) ChooseMap(g);
}

void CScenario::ChooseMap(int group) {
    const int style = _random.Integer(0, 4);
    _settings.type[group] = _random.Chance(0.35) ? 1 : _random.OneOf({0, 2, 3, 4});
    for (int entry = 0; entry < 16; ++entry) {
        int* const pair = _settings.map[group][entry];
        switch (style) {
        case 0: // one channel each
            pair[0] = entry;
            pair[1] = -1;
            break;
        case 1: // anything, including gaps and channels that don't exist
            pair[0] = 2 * entry;
            pair[1] = 2 * entry + 1;
            break;
        case 2: // anything, holes and foreign channels included
            pair[0] = _random.Integer(-1, 19);
            pair[1] = _random.Integer(-1, 19);
            break;
        case 3: // crowded: more slots than channels
            pair[0] = _random.Integer(0, _channels - 1);
            pair[1] = _random.Integer(0, _channels - 1);
            break;
        default: // two one-channel entries, or their mirror
            pair[0] = entry < 2 ? (group % 2 == 0 ? entry : 1 - entry) : -1;
            pair[1] = -1;
            break;
        }
    }
}

void CScenario::MovePositions() {
    for (int g = 0; g < 4; ++g) {
        for (float* position : {&_settings.inputGain[g], &_settings.threshold[g], &_settings.ceiling[g],
                 &_settings.release[g]}) {
            if (_random.Chance(_move)) *position = ChoosePosition(*position);
        }
    }
    if (_random.Chance(_move)) _settings.mainInput = ChoosePosition(_settings.mainInput);
    if (_random.Chance(_move)) _settings.mainOutput = ChoosePosition(_settings.mainOutput);
}

void CScenario::FlipSwitches() {
    const auto flip = [this](bool& value) {
        if (_random.Chance(_flip)) value = !value;
    };
    flip(_settings.hostBypass);
    flip(_settings.groupsParallel);
    flip(_settings.simd);
    for (int g = 0; g < 4; ++g) {
        flip(_settings.autoRelease[g]);
        flip(_settings.limiter[g]);
        flip(_settings.mute[g]);
        // Solo silences the rest, so it doesn't last long.
        if (_settings.solo[g] ? _random.Chance(0.2) : _random.Chance(_flip * 0.3)) {
            _settings.solo[g] = !_settings.solo[g];
        }
    }
    if (_kind == EKind::Raised) {
        if (_random.Chance(_flip)) _settings.oversampling = _random.Integer(0, 3);
        flip(_settings.highQuality);
    }
    if (_random.Chance(_flip)) _settings.editedGroup = _random.Integer(0, 3);
    if (_random.Chance(_flip)) ChooseToggles();
    if (_random.Chance(_flip)) ChooseMap(_random.Integer(0, 3));
}

SHostBlock CScenario::Next() {
    SHostBlock block;
    const bool first = _done == 0;
    if (first ? _random.Chance(0.97) : _random.Chance(_unsteady * 0.5)) block.rate = ChooseRate();
    if (_random.Chance(_unsteady * 0.3)) {
        block.rate = _random.OneOf({0.0f, -44100.0f, 1600001.0f, std::numeric_limits<float>::quiet_NaN(),
            std::numeric_limits<float>::infinity()});
    }
    if (first ? _random.Chance(0.9) : _random.Chance(_unsteady)) block.announced = ChooseAnnounced();
    if (!first) {
        MovePositions();
        FlipSwitches();
        if (_random.Chance(_unsteady)) _channels = ChooseChannels();
    }
    for (bool& latch : block.latch) latch = _random.Chance(0.15);
    block.emptyCalls = _random.Chance(0.03);
    block.flushedHost = _random.Chance(0.1);
    block.settings = _settings;
    block.frames = ChooseFrames();
    block.audio.resize(static_cast<std::size_t>(_channels));
    for (std::size_t k = 0; k < block.audio.size(); ++k) {
        block.audio[k].resize(static_cast<std::size_t>(block.frames));
        _materials[k].Fill(_random, block.audio[k]);
    }
    ++_done;
    return block;
}

} // namespace KAV::Reference
