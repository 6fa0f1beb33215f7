#pragma once

#include <cstdint>

namespace KAV::GUI {

/// A value at the phase 0..1 of a move from one to another.
using Ease = float (*)(float a_fFrom, float a_fTo, float a_fPhase);

/// Goes beyond the target by up to half the way, and back: for what appears and vanishes.
float Overshoot(float a_fFrom, float a_fTo, float a_fPhase) noexcept;
/// As Overshoot(), limited to 0..1: for values.
float OvershootHeld(float a_fFrom, float a_fTo, float a_fPhase) noexcept;

/// An animated number: it moves from its present value to a target. Threads: as its owner.
struct SAnimValue {
    float fFrom = 0.0f;           ///< when the present move began
    float fValue = 0.0f;          ///< shown now
    float fTarget = 0.0f;         ///< moved to
    std::uint32_t nRiseMs = 0;    ///< how long a move up takes; 0: it jumps
    std::uint32_t nFallMs = 0;    ///< and a move down
    Ease pfnEase = nullptr;       ///< the course of a move; null: straight
    std::uint32_t nElapsedMs = 0; ///< of the present move; counted only with `pfnEase`

    /// Begins a move to `a_fTarget`, unless that is the present target.
    void Retarget(float a_fTarget) noexcept;
    /// Is there at once.
    void Jump(float a_fValue) noexcept;
    /// Goes on by `a_nMs`. Whether anything has moved.
    bool Step(std::uint32_t a_nMs) noexcept;
    /// How long the present move takes in all, in milliseconds.
    std::uint32_t Duration() const noexcept { return fTarget > fValue ? nRiseMs : nFallMs; }
};

} // namespace KAV::GUI
