#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

namespace KAV::Host {

/// A progress bar on the terminal, one line that is drawn again as the work goes on and erased at its end;
/// nothing if standard error is not a terminal.
/// Threads: any, any number at once.
class CProgress final {
public:
    CProgress(const std::string& title, std::uint64_t total);
    ~CProgress();
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

    void Advance(std::uint64_t amount);
    void SetTitle(const std::string& title);

    /// Runs `print`, whose output may go to the same terminal, while the bar is out of the way.
    void MakeWayFor(const std::function<void()>& print);

private:
    void Draw();
    void Erase();

    std::mutex _mutex;
    std::string _title;
    std::uint64_t _total;
    std::uint64_t _done = 0;
    int _columns;           ///< of the terminal; 0: there is none
    std::string _line;      ///< as it stands on the terminal
    std::size_t _width = 0; ///< columns that it takes there
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
