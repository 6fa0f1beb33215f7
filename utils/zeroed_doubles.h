#pragma once

#include <cstddef>
#include <utility>

namespace KAV::Utils {

/// An array of zeros whose pages cost memory only once they are touched, so room for a stage that rarely runs
/// is cheap. Threads: the constructor and destructor call the system; the rest on any one thread.
class CZeroedDoubles final {
public:
    CZeroedDoubles() noexcept = default;
    /// Throws std::bad_alloc.
    explicit CZeroedDoubles(std::size_t count);
    ~CZeroedDoubles();
    CZeroedDoubles(CZeroedDoubles&& other) noexcept { Swap(other); }
    CZeroedDoubles& operator=(CZeroedDoubles&& other) noexcept {
        Swap(other);
        return *this;
    }

    std::size_t Size() const noexcept { return _count; }
    double* Data() noexcept { return _first; }

private:
    void Swap(CZeroedDoubles& other) noexcept {
        std::swap(_first, other._first);
        std::swap(_count, other._count);
    }

    double* _first = nullptr; // null if it is empty
    std::size_t _count = 0;
};

} // namespace KAV::Utils
