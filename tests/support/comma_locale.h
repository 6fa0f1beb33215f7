#pragma once

namespace KAV::Tests {

/// Gives the process a locale with a decimal comma for the lifetime of the object. Fails the test if the
/// system can't: in the wrong locale it would prove nothing.
class CCommaLocale final {
public:
    CCommaLocale();
    ~CCommaLocale();
    CCommaLocale(const CCommaLocale&) = delete;
    CCommaLocale& operator=(const CCommaLocale&) = delete;

    /// Switches between this locale and the "C" locale.
    static void Switch(bool comma);
};

} // namespace KAV::Tests
