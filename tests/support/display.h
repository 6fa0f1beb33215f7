#pragma once

namespace KAV::Tests {

/// A display for the test, without a screen, which the process and its children use during the object's
/// lifetime. Windows always has one. Fails the test if there is none.
class CDisplay final {
public:
    CDisplay();
    ~CDisplay();
    CDisplay(const CDisplay&) = delete;
    CDisplay& operator=(const CDisplay&) = delete;

private:
    int _server = -1; // process number
};

} // namespace KAV::Tests
