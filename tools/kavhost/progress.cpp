#include "tools/kavhost/progress.h"

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
    _bar->done = std::min(_bar->done + amount, _bar->total); // the total may be an estimate
    const double share = static_cast<double>(_bar->done) / static_cast<double>(_bar->total);
    const auto steps = static_cast<unsigned long>(share * SBar::Steps);
    if (steps > _bar->display.count()) _bar->display += steps - _bar->display.count();
}

} // namespace KAV::Host
