#pragma once

#include <string>

namespace KAV::Tests {

/// A display for the test, without a screen, which the process and its children use during the object's
/// lifetime. Windows always has one. Fails the test if there is none.
class CDisplay final {
public:
    static constexpr const char* UsualScreen = "1280x720x24"; ///< width, height, bits

    /// `without`: the name of an extension that it doesn't have.
    explicit CDisplay(const char* without = nullptr, const char* screen = UsualScreen);
    ~CDisplay();
    CDisplay(const CDisplay&) = delete;
    CDisplay& operator=(const CDisplay&) = delete;

    /// The process number of the display's server; -1 on Windows.
    int Server() const noexcept { return _server; }
    /// The server dies. No other one gets the display's number before the end of this object.
    void Kill();

private:
    int _server = -1;    // process number; -1: none, or it is dead
    std::string _number; // of the display
    int _held = -1;      // what keeps the number of a dead one
};

} // namespace KAV::Tests
