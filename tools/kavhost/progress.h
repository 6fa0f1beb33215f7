#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace KAV::Host {

/// A bar on the terminal while a file is worked on; nothing when standard error is no terminal.
class CProgress final {
public:
    CProgress(const std::string& title, std::uint64_t total);
    ~CProgress();

    void Advance(std::uint64_t amount);

private:
    struct SBar;
    std::unique_ptr<SBar> _bar;
};

} // namespace KAV::Host
