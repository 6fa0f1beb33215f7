#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <initializer_list>

namespace KAV::Tests {

/// The place of a virtual operation in its class's table, as this ABI keeps it in a pointer to the member. A
/// virtual destructor takes two places.
template<typename TMember>
std::size_t SlotOf(TMember member) {
    std::uintptr_t word = 0;
    static_assert(sizeof(member) >= sizeof(word));
    std::memcpy(&word, &member, sizeof(word));
    EXPECT_EQ(word % sizeof(void*), 1u) << "not a virtual operation";
    return (word - 1) / sizeof(void*);
}

/// That operations follow one another, from `first` on.
inline void ExpectSlotsFrom(std::size_t first, std::initializer_list<std::size_t> slots) {
    for (const std::size_t slot : slots) EXPECT_EQ(slot, first++);
}

} // namespace KAV::Tests
