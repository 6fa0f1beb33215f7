#pragma once

namespace KAV::Tests {

/// A display of the test's own, without a screen, which the process and those it starts see while it lives.
/// Windows always has one. Fails the test when there is none to be had.
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
