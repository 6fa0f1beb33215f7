#include "utils/thread.h"

#include "platform/quiet_signals.h"

#include <system_error>

namespace KAV::Utils {

CThread::~CThread() {
    Stop();
    if (_handle.joinable()) _handle.detach(); // its own operation destroys it
}

void CThread::Start() noexcept {
    if (_handle.joinable()) return;
    running = true;
    try {
        const Platform::CQuietSignals quiet; // a host's signals are for the host's own threads
        _handle = std::thread([this] {
            _self = std::this_thread::get_id();
            try {
                _client.OnThread(this);
            } catch (...) { // it would end the host
                running = false;
            }
        });
    } catch (...) { // the system has no more threads, or no memory
        running = false;
    }
}

void CThread::Stop() noexcept {
    running = false;
    if (_self == std::this_thread::get_id()) return;
    if (_handle.joinable()) _handle.join();
}

} // namespace KAV::Utils
