#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

namespace KAV::Utils {

/// Numbers that any thread leaves for another one to collect. Initially closed. Threads: any.
class CPostBox final {
public:
    CPostBox() = default;
    CPostBox(const CPostBox&) = delete;
    CPostBox& operator=(const CPostBox&) = delete;

    void Open();
    /// Drops its content and everything that arrives later.
    void Close();
    void Post(std::uint32_t message);
    /// What has arrived since the last call, oldest first.
    std::vector<std::uint32_t> Take();

private:
    std::mutex _mutex;
    bool _isOpen = false;
    std::vector<std::uint32_t> _messages; // oldest first
};

} // namespace KAV::Utils
