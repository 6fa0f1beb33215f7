#include "tools/kavhost/base/progress.h"

#include "platform/terminal.h"
#include "tools/kavhost/base/text.h"

#include <algorithm>
#include <iostream>
#include <string_view>

namespace KAV::Host {

namespace {

constexpr int WidestBar = 40;
constexpr int FewestColumns = 20; // below, a bar would say nothing
constexpr int PercentWidth = 8;   // "100% [" in front of the bar, "] " after it

/// A text and the columns that a terminal needs for it.
struct SFitted {
    std::string text;
    int columns = 0;
};

/// As much of the text as fits. Letters beyond those of Europe and the Near East count as two columns wide,
/// as many of them are.
SFitted Fit(std::string_view text, int columns) {
    SFitted fitted;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t next = i + 1;
        while (next < text.size() && (static_cast<unsigned char>(text[next]) & 0xC0) == 0x80) ++next;
        const int width = next - i > 2 ? 2 : 1;
        if (fitted.columns + width > columns) break;
        fitted.text += text.substr(i, next - i);
        fitted.columns += width;
        i = next;
    }
    return fitted;
}

} // namespace

CProgress::CProgress(const std::string& title, std::uint64_t total)
    : _title(Printable(title)), _total(std::max<std::uint64_t>(total, 1)),
      _columns(Platform::ErrorStreamColumns()) {
    if (_columns < FewestColumns) _columns = 0;
    const std::lock_guard lock(_mutex);
    Draw();
}

CProgress::~CProgress() {
    Erase();
}

void CProgress::Advance(std::uint64_t amount) {
    const std::lock_guard lock(_mutex);
    _done = std::min(_done + amount, _total); // the total may be an estimate
    Draw();
}

void CProgress::SetTitle(const std::string& title) {
    const std::lock_guard lock(_mutex);
    _title = Printable(title);
    Draw();
}

void CProgress::MakeWayFor(const std::function<void()>& print) {
    const std::lock_guard lock(_mutex);
    Erase();
    print();
    Draw();
}

void CProgress::Draw() {
    if (_columns == 0) return;
    const double share = static_cast<double>(_done) / static_cast<double>(_total);
    const auto percent = std::to_string(static_cast<int>(share * 100));
    const int left = _columns - 1 - PercentWidth; // a full line would move on to the next one
    const int bar = std::min(WidestBar, left / 2);
    const auto filled = static_cast<std::size_t>(share * bar);
    const auto title = Fit(_title, left - bar);
    const auto line = std::string(3 - percent.size(), ' ') + percent + "% [" + std::string(filled, '#') +
                      std::string(static_cast<std::size_t>(bar) - filled, ' ') + "] " + title.text;
    if (line == _line) return;
    const auto width = static_cast<std::size_t>(PercentWidth + bar + title.columns);
    const std::size_t rest = _width > width ? _width - width : 0; // of a longer line before
    std::cerr << "\r" + line + std::string(rest, ' ') << std::flush;
    _line = line;
    _width = std::max(width, _width);
}

void CProgress::Erase() {
    if (_line.empty()) return;
    std::cerr << "\r" + std::string(_width, ' ') + "\r" << std::flush;
    _line.clear();
    _width = 0;
}

void CProgressPart::Advance(std::uint64_t steps) {
    if (_steps == 0) return;
    _done = std::min(_done + steps, _steps); // the number of steps may be an estimate
    const double done = static_cast<double>(_done) / static_cast<double>(_steps);
    const auto reached = std::min(static_cast<std::uint64_t>(done * static_cast<double>(_share)), _share);
    if (reached <= _told) return;
    _bar.Advance(reached - _told);
    _told = reached;
}

} // namespace KAV::Host
