#pragma once

#include "native/linux/file_list_model.h"
#include "native/text_box_painter.h"
#include "pixels/bitmap.h"
#include "pixels/lettering.h"
#include "platform/picture_target.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace KAV::Native {

/// How a list of files looks, and what lies where: the folder, its entries, the name or the question, the
/// filter, and two buttons. Only what is visible is drawn. Throws std::bad_alloc. Threads: that of the
/// lettering.
class CFileListPainter final {
public:
    enum class EPart : std::uint8_t { None, List, Name, Filter, Accept, Cancel };

    CFileListPainter(Pixels::CLettering& lettering, std::int32_t dotsPerInch) noexcept;

    std::int32_t FirstWidth() const noexcept { return 33 * _row; }
    std::int32_t FirstHeight() const noexcept { return 20 * _row; }
    void Resize(std::int32_t width, std::int32_t height);

    std::size_t VisibleRows() const noexcept;
    const Platform::SArea& PlaceOf(EPart part) const noexcept;
    EPart PartAt(std::int32_t x, std::int32_t y) const noexcept;
    /// The row of the list at that height; the first one that is shown is 0.
    std::size_t RowAt(std::int32_t y) const noexcept;
    /// The position in the name nearest to an x of the window.
    std::size_t NamePositionAt(std::int32_t x) const noexcept;

    /// The window, opaque. `first`: the entry in the first row.
    Pixels::SBitmap Paint(CFileListModel& model, std::size_t first, bool caretShown);
    void Forget() noexcept; ///< fonts have been found

private:
    void Text(Pixels::SBitmap& to, const Platform::SArea& place, std::u16string_view text,
        std::uint32_t colour, std::int32_t align, bool bold = false);
    void Button(Pixels::SBitmap& to, EPart part, std::u16string_view text);
    void PaintList(Pixels::SBitmap& to, const CFileListModel& model, std::size_t first);

    Pixels::CLettering& _lettering;
    std::int32_t _row;  // height of a line
    std::int32_t _unit; // of lines and distances
    std::int32_t _width = 1;
    std::int32_t _height = 1;
    Platform::SArea _folder;
    Platform::SArea _list;
    Platform::SArea _name;
    Platform::SArea _filter;
    Platform::SArea _accept;
    Platform::SArea _cancel;
    std::optional<CTextBoxPainter> _box; // of the name
};

} // namespace KAV::Native
