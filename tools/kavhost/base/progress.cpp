#include "tools/kavhost/base/progress.h"

#include "platform/terminal.h"

#include <algorithm>
#include <boost/timer/progress_display.hpp>
#include <iostream>

namespace KAV::Host {

struct CProgress::SBar {
    SBar(const std::string& title, std::uint64_t frames)
        : total(frames), display(Steps, std::cerr, title + "\n") {}

    static constexpr unsigned long Steps = 1000; // the display's own count has 32 bits on some systems

    std::uint64_t total;
    std::uint64_t done = 0;
    boost::timer::progress_display display;
};

CProgress::CProgress(const std::string& title, std::uint64_t total) {
    if (total > 0 && Platform::ErrorStreamIsTerminal()) _bar = std::make_unique<SBar>(title, total);
}

CProgress::~CProgress() {
    if (_bar && _bar->display.count() < SBar::Steps) std::cerr << std::endl; // what follows begins a line
}

void CProgress::Advance(std::uint64_t amount) {
    if (!_bar) return;
    const std::lock_guard lock(_mutex);
    _bar->done = std::min(_bar->done + amount, _bar->total); // the total may be an estimate
    const double share = static_cast<double>(_bar->done) / static_cast<double>(_bar->total);
    const auto steps = static_cast<unsigned long>(share * SBar::Steps);
    if (steps > _bar->display.count()) _bar->display += steps - _bar->display.count();
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
