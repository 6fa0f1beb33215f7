#include "utils/thread.h"

#include "platform/quiet_signals.h"

#include <system_error>

namespace KAV::Utils {

CThread::~CThread() {
    Stop();
    if (_handle.joinable()) _handle.detach(); // the thread's own operation destroys the object
}

void CThread::Start() noexcept {
    if (_handle.joinable()) return;
    running = true;
    try {
        const Platform::CQuietSignals quiet; // the host's signals belong on the host's own threads
        _handle = std::thread([this] {
            _self = std::this_thread::get_id();
            try {
                _client.OnThread(this);
            } catch (...) { // an exception here would end the host
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
