#pragma once

#include "tests/dsp/reference/random.h"

#include <span>

namespace KAV::Reference {

/// The sound of one channel: it keeps one kind of material for some blocks, then takes another.
class CMaterial final {
public:
    /// Restless: anything. Patient: mostly long silence. Calm: quiet, except for infinities.
    enum class EHabit { Restless, Patient, Calm };
    void SetHabit(EHabit habit);
    void Fill(CRandom& random, std::span<float> block);

private:
    enum class EKind {
        Silence,
        BelowGate,
        AtGate,
        AroundGate,
        Denormal,
        Quiet,
        Ordinary,
        Loud,
        Extreme,
        Steady,
        Square,
        FullScale,
        Impulses,
        NotANumber,
        Infinite,
        Huge
    };
    void Choose(CRandom& random);
    EKind ChooseKind(CRandom& random) const;
    float Sample(CRandom& random);
    bool IsFaint() const;
    void SurpriseGate(CRandom& random, std::span<float> block) const;
    static void Spoil(CRandom& random, std::span<float> block, float value);

    EHabit _habit = EHabit::Restless;
    EKind _kind = EKind::Ordinary;
    int _blocksLeft = 0;
    int _phase = 0;
    int _period = 1;
    float _level = 0.0f;
};

} // namespace KAV::Reference
