#pragma once

namespace KAV::Tests {

/// Gives the process a locale whose decimal point is a comma, until the object dies. Fails the test when the
/// system can't: a test that ran in the wrong locale would prove nothing.
class CCommaLocale final {
public:
    CCommaLocale();
    ~CCommaLocale();
    CCommaLocale(const CCommaLocale&) = delete;
    CCommaLocale& operator=(const CCommaLocale&) = delete;

    /// Between this locale and the plain one.
    static void Switch(bool comma);
};

} // namespace KAV::Tests
