#pragma once

#include <cstdint>
#include <string>

namespace KAV::Native {

/// A key as the user's layout, modifiers and compose sequences have it.
struct STypedKey {
    std::uint32_t symbol = 0; ///< its keysym
    std::u16string text;      ///< what it types: empty, one character, or what a sequence composes
    bool down = false;
    bool shift = false;
    bool control = false;
    bool alt = false;
    /// The letter keys by the layout that is in use, or by the first one that has Latin letters, 'A' to 'Z';
    /// 0 for others: so that Control+Z works with a Greek layout.
    char16_t latin = 0;
};

} // namespace KAV::Native
