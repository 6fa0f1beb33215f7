#pragma once

#include <cstddef>

namespace KAV::Tests {

/// While an object of this class lives, one allocation of its thread fails as if memory had run out: the
/// `nth`, counted from 1. On Linux the C library's functions and mmap() are interposed; elsewhere and in
/// sanitizer builds only operator new.
class CFailingAllocation final {
public:
    explicit CFailingAllocation(std::size_t nth) noexcept;
    ~CFailingAllocation();
    CFailingAllocation(const CFailingAllocation&) = delete;
    CFailingAllocation& operator=(const CFailingAllocation&) = delete;

    /// Whether every kind of allocation can fail on this system and in this build.
    static bool ReachesAll() noexcept;
};

/// While an object of this class lives, one `operator new` fails of those that all threads call together: the
/// `nth`, counted from 1. Threads that stand aside neither count nor fail. One at a time.
class CFailingNew final {
public:
    explicit CFailingNew(std::size_t nth) noexcept;
    ~CFailingNew();
    CFailingNew(const CFailingNew&) = delete;
    CFailingNew& operator=(const CFailingNew&) = delete;

    /// Whether there were that many.
    static bool HasFailed() noexcept;
    /// Whether the calling thread stands aside from now on; at first none does.
    static void StandAside(bool aside) noexcept;
};

} // namespace KAV::Tests
