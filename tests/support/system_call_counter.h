#pragma once

#include <cstddef>

namespace KAV::Tests {

/// Counts what the audio thread must not do, while an object of this class lives and on its thread alone:
/// memory taken or given back, and locks. On Linux the C library's own functions are interposed, elsewhere
/// operator new and delete.
class CSystemCallCounter final {
public:
    CSystemCallCounter() noexcept;
    ~CSystemCallCounter();
    CSystemCallCounter(const CSystemCallCounter&) = delete;
    CSystemCallCounter& operator=(const CSystemCallCounter&) = delete;

    std::size_t Allocations() const noexcept; ///< malloc, calloc, realloc, aligned ones, free, new and delete
    std::size_t Locks() const noexcept; ///< mutexes, read and write locks, condition variables, semaphores
    /// Whether locks can be seen on this system and in this build.
    static bool SeesLocks() noexcept;
};

} // namespace KAV::Tests
