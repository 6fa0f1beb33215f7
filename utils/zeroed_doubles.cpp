#include "utils/zeroed_doubles.h"

#include "platform/pages.h"

#include <new>

namespace KAV::Utils {

CZeroedDoubles::CZeroedDoubles(std::size_t count) : _count(count) {
    if (count == 0) return;
    _first = static_cast<double*>(Platform::MapPages(count * sizeof(double)));
    if (_first == nullptr) throw std::bad_alloc();
}

CZeroedDoubles::~CZeroedDoubles() {
    if (_first != nullptr) Platform::UnmapPages(_first, _count * sizeof(double));
}

} // namespace KAV::Utils
