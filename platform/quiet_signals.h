#pragma once

namespace KAV::Platform {

/// While it lives, threads started by this thread begin with every signal blocked, so that a host's signals
/// go to the host's own threads. Does nothing on systems without signals. Each thread uses its own.
class CQuietSignals final {
public:
    CQuietSignals() noexcept;
    ~CQuietSignals();
    CQuietSignals(const CQuietSignals&) = delete;
    CQuietSignals& operator=(const CQuietSignals&) = delete;

private:
    alignas(16) unsigned char _before[128] = {}; // the system's own set of signals
};

} // namespace KAV::Platform
