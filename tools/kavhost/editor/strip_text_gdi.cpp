#include "platform/winapi/wide_text.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/editor/strip_text.h"
#include "tools/kavhost/screen/memory_picture_win32.h"

namespace KAV::Host {

namespace {

/// A typeface in a context, as long as it lives.
class CChosenFont final {
public:
    CChosenFont(HDC context, std::int32_t size) noexcept
        : _context(context),
          // Grey edges, not those for one order of red, green and blue: the picture only says how much is
          // covered.
          _font(
              CreateFontW(-size, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                  CLIP_DEFAULT_PRECIS, ANTIALIASED_QUALITY, DEFAULT_PITCH | FF_SWISS, L"Segoe UI")),
          _before(SelectObject(context, _font)) {}
    ~CChosenFont() {
        SelectObject(_context, _before);
        DeleteObject(_font);
    }
    CChosenFont(const CChosenFont&) = delete;
    CChosenFont& operator=(const CChosenFont&) = delete;

private:
    HDC _context;
    HFONT _font;
    HGDIOBJ _before;
};

} // namespace

struct CStripText::SNative {};

CStripText::CStripText() : _native(std::make_unique<SNative>()) {}

CStripText::~CStripText() = default;

STextPicture CStripText::Render(const std::string& text, std::int32_t size) {
    const auto wide = Platform::ToWide(text);
    const auto length = static_cast<int>(wide.size());
    SIZE extent{};
    {
        const CMemoryPicture trial(1, 1);
        const CChosenFont font(trial.Context(), size);
        GetTextExtentPoint32W(trial.Context(), wide.c_str(), length, &extent);
    }
    if (extent.cx < 1 || extent.cy < 1) return {};
    STextPicture picture{extent.cx, extent.cy, {}};
    const CMemoryPicture memory(picture.width, picture.height);
    if (memory.Pixels() == nullptr) throw CFailure("out of memory for a picture");
    {
        const CChosenFont font(memory.Context(), size);
        SetTextColor(memory.Context(), RGB(0xFF, 0xFF, 0xFF));
        SetBkMode(memory.Context(), TRANSPARENT);
        TextOutW(memory.Context(), 0, 0, wide.c_str(), length);
    }
    GdiFlush();
    const auto count = static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height);
    picture.coverage.resize(count);
    for (std::size_t i = 0; i < count; ++i)
        picture.coverage[i] = static_cast<std::uint8_t>(memory.Pixels()[i] & 0xFF);
    return picture;
}

} // namespace KAV::Host
