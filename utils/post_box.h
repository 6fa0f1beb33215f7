#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

namespace KAV::Utils {

/// Numbers that any thread leaves for one that comes by. Closed at first. Threads: any.
class CPostBox final {
public:
    CPostBox() = default;
    CPostBox(const CPostBox&) = delete;
    CPostBox& operator=(const CPostBox&) = delete;

    void Open();
    /// Drops what is in it, and what comes from now on.
    void Close();
    void Post(std::uint32_t message);
    /// What has come since the last time, oldest first.
    std::vector<std::uint32_t> Take();

private:
    std::mutex _mutex;
    bool _isOpen = false;
    std::vector<std::uint32_t> _messages; // oldest first
};

} // namespace KAV::Utils
