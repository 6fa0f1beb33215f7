#pragma once

#include <functional>
#include <memory>
#include <thread>

namespace KAV::Tests {

/// The thread of a host, which makes all calls of the editor. It waits as hosts of this system do: on Windows
/// by reading messages, so that the windows made on it live, and work and idle calls also come from the loops
/// of menus and boxes.
class CHostLoop final {
public:
    /// `idle` is called at the rate; never if it is 0.
    CHostLoop(int idleHz, std::function<void()> idle);
    ~CHostLoop(); ///< no idle call is running then; windows of the thread end with it
    CHostLoop(const CHostLoop&) = delete;
    CHostLoop& operator=(const CHostLoop&) = delete;

    /// Runs `work` on the thread, and waits for it.
    void Run(const std::function<void()>& work);
    std::thread::id Thread() const noexcept;

private:
    struct SParts;
    std::unique_ptr<SParts> _parts;
};

} // namespace KAV::Tests
