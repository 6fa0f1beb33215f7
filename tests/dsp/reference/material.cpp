#include "tests/dsp/reference/material.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>

namespace KAV::Reference {

void CMaterial::SetHabit(EHabit habit) {
    _habit = habit;
}

void CMaterial::Fill(CRandom& random, std::span<float> block) {
    if (_blocksLeft == 0) Choose(random);
    --_blocksLeft;
    for (float& sample : block) sample = Sample(random);
    if (_kind == EKind::NotANumber) Spoil(random, block, std::numeric_limits<float>::quiet_NaN());
    if (_kind == EKind::Infinite) {
        const float infinity = std::numeric_limits<float>::infinity();
        Spoil(random, block, random.Chance(0.5) ? infinity : -infinity);
    }
    if (_habit == EHabit::Patient) SurpriseGate(random, block);
}

bool CMaterial::IsFaint() const {
    return _kind == EKind::Silence || _kind == EKind::BelowGate || _kind == EKind::AtGate ||
           _kind == EKind::Denormal;
}

void CMaterial::SurpriseGate(CRandom& random, std::span<float> block) const {
    // A single NaN isn't silence.
    if (IsFaint() && random.Chance(0.03)) block[block.size() / 2] = std::numeric_limits<float>::quiet_NaN();
    // If silence begins one sample before a block, the five seconds end with the last sample of a block.
    if (_blocksLeft == 0 && random.Chance(0.5)) block.back() = 1e-8f;
}

void CMaterial::Choose(CRandom& random) {
    _kind = ChooseKind(random);
    _blocksLeft = random.Integer(1, 8);
    // A gate needs a long stretch to close, and material that spoils the sound should last only one block.
    if (_habit == EHabit::Patient && IsFaint()) _blocksLeft = random.Integer(11, 20);
    if (_kind == EKind::NotANumber || _kind == EKind::Infinite || _kind == EKind::Huge) _blocksLeft = 1;
    _phase = 0;
    _period = random.Integer(2, 200);
    _level = random.Signed(random.Chance(0.5) ? 1.0f : 4.0f);
}

CMaterial::EKind CMaterial::ChooseKind(CRandom& random) const {
    if (_habit == EHabit::Calm) return random.Chance(0.3) ? EKind::Infinite : EKind::Quiet;
    if (random.Chance(_habit == EHabit::Patient ? 0.6 : 0.15)) {
        return random.OneOf(
            {EKind::Silence, EKind::BelowGate, EKind::BelowGate, EKind::Denormal, EKind::AtGate});
    }
    if (random.Chance(0.06)) {
        return random.OneOf({EKind::AroundGate, EKind::NotANumber, EKind::Infinite, EKind::Huge});
    }
    return random.OneOf({EKind::Quiet, EKind::Ordinary, EKind::Ordinary, EKind::Loud, EKind::Loud,
        EKind::Steady, EKind::Square, EKind::FullScale, EKind::Impulses, EKind::Extreme});
}

float CMaterial::Sample(CRandom& random) {
    ++_phase;
    switch (_kind) {
    case EKind::Silence:
        return (_phase % 16 == 0) ? -0.0f : 0.0f;
    case EKind::BelowGate:
        return random.Signed(1.9e-8f);
    case EKind::AtGate:
        return (_phase / _period) % 2 == 0 ? 2e-8f : -2e-8f;
    case EKind::AroundGate:
        return random.Chance(0.5) ? 2e-8f : random.Signed(2.5e-8f);
    case EKind::Denormal: {
        // Half of them only become denormal after a gain.
        if (random.Chance(0.5)) return random.Signed(1e-37f);
        const std::uint64_t bits = random.Bits();
        const std::uint32_t sign = (bits & 1) != 0 ? 0x80000000u : 0u;
        return std::bit_cast<float>(sign | static_cast<std::uint32_t>((bits >> 8) & 0x007FFFFFu));
    }
    case EKind::Quiet:
        return random.Signed(0.02f);
    case EKind::Ordinary:
        return random.Signed(0.8f);
    case EKind::Loud:
        return random.Signed(5.0f);
    case EKind::Extreme:
        return random.Signed(3000.0f);
    case EKind::Steady:
        return _level;
    case EKind::Square:
        return (_phase / _period) % 2 == 0 ? _level : -_level;
    case EKind::FullScale:
        return (_phase / _period) % 2 == 0 ? 1.0f : -1.0f;
    case EKind::Impulses:
        return _phase % _period == 0 ? 8.0f * _level : 0.0f;
    case EKind::Huge:
        return random.Signed(std::numeric_limits<float>::max());
    case EKind::NotANumber:
    case EKind::Infinite:
        return random.Signed(0.5f);
    }
    return 0.0f;
}

/// Replaces a few samples in a row: the second infinity in a row gets a gain of almost 0.
void CMaterial::Spoil(CRandom& random, std::span<float> block, float value) {
    const std::size_t length = block.size();
    const std::size_t run = std::min<std::size_t>(length, static_cast<std::size_t>(random.Integer(1, 4)));
    const std::size_t first = static_cast<std::size_t>(random.Integer(0, static_cast<int>(length - run)));
    for (std::size_t i = first; i < first + run; ++i) block[i] = value;
}

} // namespace KAV::Reference
