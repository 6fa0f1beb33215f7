#pragma once

#include <atomic>

namespace KAV::Utils {

/// A word that one thread writes while others read it. Each read returns either the old value or the new one;
/// the order of changes to different words is not defined. On every supported processor a read or write is
/// one plain move. Threads: any.
template<typename T>
class CShared final {
public:
    CShared() noexcept = default;
    explicit(false) CShared(T value) noexcept : _value(value) {}
    CShared(const CShared&) = delete;

    CShared& operator=(const CShared&) = delete;
    CShared& operator=(T value) noexcept {
        _value.store(value, std::memory_order_relaxed);
        return *this;
    }
    explicit(false) operator T() const noexcept { return _value.load(std::memory_order_relaxed); }

private:
    static_assert(std::atomic<T>::is_always_lock_free);
    std::atomic<T> _value{};
};

} // namespace KAV::Utils
