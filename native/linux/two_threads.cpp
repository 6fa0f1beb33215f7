#include "native/linux/two_threads.h"

#include "platform/quiet_signals.h"

#include <atomic>
#include <exception>
#include <system_error>
#include <thread>

namespace KAV::Native {

void OnTwoThreads(std::size_t count, const std::function<void(std::size_t)>& work) noexcept {
    std::atomic<std::size_t> next{0};
    const auto run = [&]() noexcept {
        for (std::size_t i = next++; i < count; i = next++) {
            try {
                work(i);
            } catch (const std::exception&) { // as promised
            }
        }
    };
    std::thread helper;
    if (count > 1) {
        const Platform::CQuietSignals quiet;
        try {
            helper = std::thread(run);
        } catch (const std::system_error&) { // no thread: see the header
        }
    }
    run();
    if (helper.joinable()) helper.join();
}

} // namespace KAV::Native
