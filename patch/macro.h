#pragma once

#include "utils/shared.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace KAV {

/// Which parameters follow which macro knob: 64 slots for each of the five macros, each slot a parameter and
/// how strongly it follows. SetParam() moves the knobs; this is only the table. Threads: any; a slot is two
/// words, each of which is read as either the old or the new value.
class CMacro {
public:
    static constexpr std::size_t Macros = 5;
    static constexpr std::size_t Slots = 64;
    static constexpr std::int32_t NoTag = -1; ///< an empty slot
    static constexpr float NoSensitivity =
        0.5f; ///< the target doesn't move; below this it moves against the knob

    CMacro() noexcept { ClearMacros(); }
    CMacro(const CMacro&) = delete;
    CMacro& operator=(const CMacro&) = delete;

    /// Empties all 320 slots. Parameters that a macro has moved stay where they are.
    void ClearMacros() noexcept;

    /// Lets `tag` (a parameter of any group) follow `macro` (0..4) with `sensitivity` 0..1. A sensitivity of
    /// exactly 0.5 frees the first slot that holds the tag; if no slot does, the tag takes a free slot all
    /// the same. If no slot is free, the assignment is lost.
    void AssignMacro(std::size_t macro, std::int32_t tag, float sensitivity) noexcept;

    /// How strongly `tag` follows `macro` (0..4), according to the last slot that holds it; 0.5 if no slot
    /// does.
    float Sensitivity(std::size_t macro, std::int32_t tag) const noexcept;

    std::array<std::array<Utils::CShared<std::int32_t>, Slots>, Macros> tags;
    std::array<std::array<Utils::CShared<float>, Slots>, Macros> sensitivities;

protected:
    ~CMacro() = default;
};

} // namespace KAV
