#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

namespace KAV::Host {

class CAudioReader;
class CBlockQueue;
struct SBlock;
struct SPlayControls;

/// A thread that reads a file into a queue, over and over: its end is followed by its beginning. When another
/// place is requested, it goes there. All of these outlive it.
class CReadAhead final {
public:
    CReadAhead(CAudioReader& reader, CBlockQueue& queue, SPlayControls& controls);
    ~CReadAhead();
    CReadAhead(const CReadAhead&) = delete;
    CReadAhead& operator=(const CReadAhead&) = delete;

    void Wake(); ///< there is a new request
    /// Why the file could not be read any further; then it is taken to end there. Empty if it could.
    std::string Failure() const;

private:
    void Run();
    bool Fill(SBlock& block); ///< false: nothing more can be read

    CAudioReader& _reader;
    CBlockQueue& _queue;
    SPlayControls& _controls;
    std::uint64_t _request; ///< what is being read for
    std::uint64_t _place = 0;

    mutable std::mutex _mutex;
    std::condition_variable _wakes;
    bool _ends = false;    // under the lock
    bool _isWoken = false; // under the lock
    std::string _failure;  // under the lock
    std::thread _thread;
};

} // namespace KAV::Host
