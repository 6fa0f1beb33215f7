#pragma once

#include <cstddef>

namespace KAV::Tests {

/// Counts what the audio thread must not do, on its own thread and during the lifetime of the object:
/// allocations, releases and locks. On Linux the C library's functions are interposed, elsewhere operator new
/// and delete.
class CSystemCallCounter final {
public:
    CSystemCallCounter() noexcept;
    ~CSystemCallCounter();
    CSystemCallCounter(const CSystemCallCounter&) = delete;
    CSystemCallCounter& operator=(const CSystemCallCounter&) = delete;

    std::size_t Allocations() const noexcept; ///< malloc, calloc, realloc, aligned ones, free, new and delete
    std::size_t Locks() const noexcept; ///< mutexes, read and write locks, condition variables, semaphores
    /// Whether locks can be counted on this system and in this build.
    static bool SeesLocks() noexcept;
};

} // namespace KAV::Tests
