#pragma once

namespace KAV::Tests {

/// A display for the test, without a screen, which the process and its children use during the object's
/// lifetime. Windows always has one. Fails the test if there is none.
class CDisplay final {
public:
    /// `without`: the name of an extension that it doesn't have.
    explicit CDisplay(const char* without = nullptr);
    ~CDisplay();
    CDisplay(const CDisplay&) = delete;
    CDisplay& operator=(const CDisplay&) = delete;

    /// The process number of the display's server; -1 on Windows.
    int Server() const noexcept { return _server; }

private:
    int _server = -1; // process number
};

} // namespace KAV::Tests
