#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace KAV::Host {

/// A rendered line: how much of each pixel is covered, 0 to 255, row by row.
struct STextPicture {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint8_t> coverage;
};

/// The lettering of a strip, in a typeface of the system's. Keeps the typeface meanwhile.
class CStripText final {
public:
    CStripText();
    ~CStripText();
    CStripText(const CStripText&) = delete;
    CStripText& operator=(const CStripText&) = delete;

    /// `size` is that of the typeface in pixels. Throws CFailure when memory is short.
    STextPicture Render(const std::string& text, std::int32_t size);

private:
    struct SNative;
    std::unique_ptr<SNative> _native;
};

} // namespace KAV::Host
