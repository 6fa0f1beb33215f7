#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace KAV::GFX {

// Error numbers of calls that have none of their own, as GDI+ numbers its errors.
inline constexpr std::int32_t InvalidParameter = 2;
inline constexpr std::int32_t OutOfMemory = 3;

/// Writes the failed calls of a renderer to the session log, as "Error=" + the call as it stands in the
/// source +
/// ":" + its error number. The same line is written once a second at most: a draw that fails in every frame
/// would otherwise fill the disk. Each renderer has one. Threads: that of the window.
class CCallLog final {
public:
    void Failed(std::u16string_view a_sCall, std::int32_t a_nError) noexcept;

private:
    struct SLine {
        std::u16string sText;
        std::uint32_t nWrittenMs = 0;
    };
    std::vector<SLine> _vsRecent; // written less than a second before the last line, each text once
};

} // namespace KAV::GFX
