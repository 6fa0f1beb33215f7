#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace KAV::Host {

/// A progress bar on the terminal; nothing if standard error is not a terminal.
/// Threads: Advance() on any number at once.
class CProgress final {
public:
    CProgress(const std::string& title, std::uint64_t total);
    ~CProgress();

    bool IsShown() const noexcept { return _bar != nullptr; }
    void Advance(std::uint64_t amount);

private:
    struct SBar;
    std::mutex _mutex;
    std::unique_ptr<SBar> _bar;
};

/// One piece of the work that a bar shows. It moves the bar by `share` in total; however the piece ends, its
/// end moves the bar by what is left. The bar must outlive it.
class CProgressPart final {
public:
    CProgressPart(CProgress& bar, std::uint64_t share) : _bar(bar), _share(share) {}
    ~CProgressPart() { _bar.Advance(_share - _told); }
    CProgressPart(const CProgressPart&) = delete;
    CProgressPart& operator=(const CProgressPart&) = delete;

    void Begin(std::uint64_t steps) noexcept { _steps = steps; }
    void Advance(std::uint64_t steps);

private:
    CProgress& _bar;
    std::uint64_t _share;
    std::uint64_t _told = 0;  ///< of the share
    std::uint64_t _steps = 0; ///< 0: not known
    std::uint64_t _done = 0;
};

} // namespace KAV::Host
