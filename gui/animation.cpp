#include "gui/animation.h"

#include <algorithm>
#include <limits>

namespace KAV::GUI {

float Overshoot(float a_fFrom, float a_fTo, float a_fPhase) noexcept {
    if (a_fPhase >= 1.0f) return a_fTo;
    const float way = a_fTo - a_fFrom;
    const float swing = a_fPhase <= 0.7f ? a_fPhase / 0.7f : (1.0f - a_fPhase) / 0.3f;
    return way * a_fPhase + a_fFrom + way * 0.5f * swing;
}

float OvershootHeld(float a_fFrom, float a_fTo, float a_fPhase) noexcept {
    return std::clamp(Overshoot(a_fFrom, a_fTo, a_fPhase), 0.0f, 1.0f);
}

void SAnimValue::Retarget(float a_fTarget) noexcept {
    if (a_fTarget == fTarget) return;
    nElapsedMs = 0;
    fFrom = fValue;
    fTarget = a_fTarget;
    if (fTarget != fValue && Duration() == 0) fValue = fTarget;
}

void SAnimValue::Jump(float a_fValue) noexcept {
    fFrom = a_fValue;
    fValue = a_fValue;
    fTarget = a_fValue;
}

bool SAnimValue::Step(std::uint32_t a_nMs) noexcept {
    if (fTarget == fValue) return false;
    const std::uint32_t duration = Duration();
    if (duration == 0) {
        fValue = fTarget;
        return true;
    }
    const auto length = static_cast<float>(duration);
    if (pfnEase != nullptr) {
        // A redraw after a change of size passes a whole time stamp, which must not wrap around.
        nElapsedMs += std::min(a_nMs, std::numeric_limits<std::uint32_t>::max() - nElapsedMs);
        fValue = pfnEase(fFrom, fTarget, static_cast<float>(nElapsedMs) / length);
        return true;
    }
    const bool rises = fTarget > fValue;
    const float next = fValue + static_cast<float>(a_nMs) / length * (fTarget - fFrom);
    fValue = rises ? std::min(next, fTarget) : std::max(next, fTarget);
    return true;
}

} // namespace KAV::GUI
