#include "platform/number_text.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale.h> // NOLINT(modernize-deprecated-headers): newlocale() is the system's

namespace KAV::Platform {

namespace {

locale_t CLocale() noexcept {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr); // the C library's, never freed
    return locale;
}

/// Clears `errno` for a call of the C library, and restores it, because the calling thread may rely on it.
class CKeepErrno final {
public:
    CKeepErrno() noexcept { errno = 0; }
    ~CKeepErrno() { errno = _before; }
    CKeepErrno(const CKeepErrno&) = delete;
    CKeepErrno& operator=(const CKeepErrno&) = delete;

private:
    int _before = errno;
};

} // namespace

ENumber ReadInt(const char* text, std::int32_t& value) noexcept {
    const CKeepErrno keep;
    char* end = nullptr;
    const long long number = strtoll_l(text, &end, 10, CLocale());
    if (end == text) return ENumber::None;
    if (errno == ERANGE || number < std::numeric_limits<std::int32_t>::min() ||
        number > std::numeric_limits<std::int32_t>::max()) {
        return ENumber::OutOfRange;
    }
    value = static_cast<std::int32_t>(number);
    return ENumber::Read;
}

ENumber ReadFloat(const char* text, float& value) noexcept {
    const CKeepErrno keep;
    char* end = nullptr;
    const float number = strtof_l(text, &end, CLocale());
    if (end == text) return ENumber::None;
    if (errno == ERANGE || std::fpclassify(number) == FP_SUBNORMAL) return ENumber::OutOfRange;
    value = number;
    return ENumber::Read;
}

} // namespace KAV::Platform
