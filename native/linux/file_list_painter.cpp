#include "native/linux/file_list_painter.h"

#include "native/paint.h"
#include "utils/text.h"

#include <algorithm>
#include <array>
#include <string>

namespace KAV::Native {

namespace {

using Platform::SArea;

// The colours of the menus.
constexpr std::uint32_t Ground = 0xFF25282C;
constexpr std::uint32_t Edge = 0xFF0D0E10;
constexpr std::uint32_t Bar = 0xFF46525C;
constexpr std::uint32_t Ink = 0xFFD3D7DC;
constexpr std::uint32_t HotInk = 0xFFF4F0E4;
constexpr std::uint32_t Grey = 0xFF737981;

constexpr std::int32_t Left = 3; // alignments: a row in the middle
constexpr std::int32_t Middle = 4;

bool IsIn(const SArea& area, std::int32_t x, std::int32_t y) noexcept {
    return x >= area.left && x < area.left + area.width && y >= area.top && y < area.top + area.height;
}

std::string LastPart(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

} // namespace

CFileListPainter::CFileListPainter(Pixels::CLettering& lettering, std::int32_t dotsPerInch) noexcept
    : _lettering(lettering), _row(std::max(22 * dotsPerInch / 96, 10)), _unit(std::max(dotsPerInch / 96, 1)) {
}

void CFileListPainter::Resize(std::int32_t width, std::int32_t height) {
    const std::int32_t gap = 8 * _unit;
    const std::int32_t button = 5 * _row;
    _width = std::max(width, 1);
    _height = std::max(height, 1);
    const std::int32_t inner = std::max(_width - 2 * gap, 1);
    _folder = {gap, gap, inner, _row};
    const std::int32_t bottom = _height - gap - _row;
    _cancel = {_width - gap - button, bottom, button, _row};
    _accept = {_cancel.left - gap - button, bottom, button, _row};
    _filter = {gap, bottom, std::max(_accept.left - 2 * gap, 0), _row};
    _name = {gap, bottom - gap - _row, inner, _row};
    _list = {gap, gap + _row, inner, std::max(_name.top - gap - (gap + _row), 0)};
    _box.emplace(_lettering, _name.width, _name.height);
}

std::size_t CFileListPainter::VisibleRows() const noexcept {
    return static_cast<std::size_t>(std::max(_list.height / _row, 1));
}

const SArea& CFileListPainter::PlaceOf(EPart part) const noexcept {
    switch (part) {
    case EPart::List:
        return _list;
    case EPart::Name:
        return _name;
    case EPart::Filter:
        return _filter;
    case EPart::Accept:
        return _accept;
    case EPart::Cancel:
        return _cancel;
    default:
        return _folder;
    }
}

CFileListPainter::EPart CFileListPainter::PartAt(std::int32_t x, std::int32_t y) const noexcept {
    for (const auto part : {EPart::List, EPart::Name, EPart::Filter, EPart::Accept, EPart::Cancel}) {
        if (IsIn(PlaceOf(part), x, y)) return part;
    }
    return EPart::None;
}

std::size_t CFileListPainter::RowAt(std::int32_t y) const noexcept {
    return static_cast<std::size_t>(std::max(y - _list.top, 0) / _row);
}

std::size_t CFileListPainter::NamePositionAt(std::int32_t x) const noexcept {
    return _box ? _box->PositionAt(x - _name.left) : 0;
}

void CFileListPainter::Forget() noexcept {
    if (_box) _box->Forget();
}

void CFileListPainter::Text(Pixels::SBitmap& to, const SArea& place, std::u16string_view text,
    std::uint32_t colour, std::int32_t align, bool bold) {
    Pixels::STextLine line;
    line.text = text;
    line.pixels = static_cast<float>(_row) * 0.6f;
    line.bold = bold;
    line.ellipsis = true;
    line.align = align;
    line.colour = colour;
    line.left = place.left;
    line.top = place.top;
    line.width = place.width;
    line.height = place.height;
    if (place.width > 0 && place.height > 0) _lettering.Draw(line, to);
}

void CFileListPainter::Button(Pixels::SBitmap& to, EPart part, std::u16string_view text) {
    const auto& place = PlaceOf(part);
    Fill(to, place, Bar);
    Frame(to, place, _unit, Edge);
    Text(to, place, text, HotInk, Middle);
}

void CFileListPainter::PaintList(Pixels::SBitmap& to, const CFileListModel& model, std::size_t first) {
    Fill(to, _list, Edge);
    const auto& entries = model.Entries();
    const std::int32_t inset = 4 * _unit;
    for (std::size_t row = 0; row < VisibleRows() && first + row < entries.size(); ++row) {
        const auto& entry = entries[first + row];
        const SArea place{_list.left, _list.top + static_cast<std::int32_t>(row) * _row, _list.width,
            std::min(_row, _list.height - static_cast<std::int32_t>(row) * _row)};
        const bool isSelected = first + row == model.Selected();
        if (isSelected) Fill(to, place, Bar);
        auto name = Utils::ToUtf16(entry.name);
        if (entry.isFolder) name += u'/';
        Text(to, {place.left + inset, place.top, place.width - 3 * inset, place.height}, name,
            isSelected ? HotInk : Ink, Left, entry.isFolder);
    }
    if (!model.IsReadable()) Text(to, _list, u"This folder can't be read.", Grey, Middle);
    if (entries.size() > VisibleRows()) { // where in the list the rows are
        const auto part = [&](std::size_t entry) {
            return static_cast<std::int32_t>(
                static_cast<std::size_t>(_list.height) * std::min(entry, entries.size()) / entries.size());
        };
        const std::int32_t top = part(first);
        Fill(to,
            {_list.left + _list.width - inset, _list.top + top, inset,
                std::max(part(first + VisibleRows()) - top, 2 * _unit)},
            Grey);
    }
}

Pixels::SBitmap CFileListPainter::Paint(CFileListModel& model, std::size_t first, bool caretShown) {
    auto to = Pixels::TransparentBitmap(_width, _height);
    Fill(to, {0, 0, _width, _height}, Ground);
    Text(to, _folder, Utils::ToUtf16(model.Folder()) + (model.IsWaiting() ? u" ..." : u""), Ink, Left);
    PaintList(to, model, first);
    const bool asks = model.State() == CFileListModel::EState::Replaces;
    const auto& request = model.Request();
    if (asks) {
        Text(to, _name, Utils::ToUtf16(LastPart(model.Path())) + u" exists. Replace it?", HotInk, Left, true);
    } else if (request.saves && _box) {
        Overlay(to, _box->Paint(model.Name(), caretShown), _name.left, _name.top);
    }
    if (model.Filter() < request.filters.size())
        Text(to, _filter, Utils::ToUtf16(request.filters[model.Filter()].title), Ink, Left);
    Button(to, EPart::Accept, asks ? u"Replace" : request.saves ? u"Save" : u"Open");
    Button(to, EPart::Cancel, u"Cancel");
    return to;
}

} // namespace KAV::Native
