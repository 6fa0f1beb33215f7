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

} // namespace KAV::Tests
