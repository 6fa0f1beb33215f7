#pragma once

#include "platform/winapi/gdiplus_library.h"

#include <map>
#include <string>
#include <string_view>

namespace KAV::Tests {

/// GDI+ as the system has it, with every call counted, while this object lives; any function can be made to
/// fail. Everything of GDI+ has to be made and freed within its life. One at a time, on one thread.
class CCountedGdiplus final {
public:
    CCountedGdiplus();
    ~CCountedGdiplus();
    CCountedGdiplus(const CCountedGdiplus&) = delete;
    CCountedGdiplus& operator=(const CCountedGdiplus&) = delete;

    /// From now on this function does nothing and returns `status`; with Ok it works again. Only bits are
    /// unlocked all the same, as their bitmap would be of no use any more.
    void Fail(std::string_view function, Gdiplus::Status status);
    /// How often this function was called and succeeded.
    int Calls(std::string_view function) const;
    /// What has been made and not been freed, by kind of object. Kinds of which nothing is left are missing.
    std::map<std::string, int> Left() const;
    /// Makes of each kind so far.
    std::map<std::string, int> Made() const;
};

} // namespace KAV::Tests
