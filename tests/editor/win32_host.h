#pragma once

#include "tests/support/loaded_library.h"
#include "vst/vst2.h"

#include "platform/winapi/windows_header.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace KAV::Tests {

/// A host on Windows with one thread: it makes all calls, and its windows' messages come when it pumps them.
/// Everything that the effect asks is noted.
class CWin32Host final {
public:
    explicit CWin32Host(const CLoadedLibrary& library);
    /// Ends the instance if it is still there; the editor stays open if it is.
    ~CWin32Host();
    CWin32Host(const CWin32Host&) = delete;
    CWin32Host& operator=(const CWin32Host&) = delete;

    /// Null: the instance has ended.
    VST::AEffect* Effect() const noexcept { return _effect; }
    std::intptr_t Dispatch(VST::EffectOpcode opcode, std::int32_t index = 0, std::intptr_t value = 0,
        void* pointer = nullptr, float option = 0.0f);
    bool Open(HWND parent) { return Dispatch(VST::effEditOpen, 0, 0, parent) == 1; }
    void Close() { Dispatch(VST::effEditClose); }
    void EndInstance();
    VST::ERect Rect();
    std::string Chunk();

    /// Runs inside the next call of this kind that the effect makes.
    void Inside(std::int32_t opcode, std::function<void()> work);
    /// The kinds of the calls that belong to an edit, in order: 'b', 'v', 'e'.
    const std::string& Edits() const noexcept { return _edits; }

private:
    static std::intptr_t Answer(
        VST::AEffect*, std::int32_t opcode, std::int32_t, std::intptr_t, void*, float);

    VST::AEffect* _effect = nullptr;
    std::string _edits;
    std::int32_t _insideOf = -1;
    std::function<void()> _inside;
};

/// A top-level window of the host's, or with a parent one that it has in there; it shows.
HWND MakeHostWindow(HWND parent = nullptr);
/// The next timer message of that window runs this once.
void InLoopOf(HWND hostWindow, std::function<void()> work);

/// Handles the messages that have come; with a time, all that come within it.
void Pump(int ms = 0);
/// Handles messages until something holds, for at most half a minute.
bool PumpUntil(const std::function<bool()>& holds);

/// The editor's window in a window of the host's; null without one.
HWND EditorIn(HWND parent);
/// What a part of a window shows.
std::vector<std::uint32_t> PixelsOf(
    HWND window, std::int32_t x, std::int32_t y, std::int32_t w, std::int32_t h);
/// Waits until it shows a picture, not one colour.
bool ShowsAPicture(HWND editor);

/// A left drag from the middle of a widget, upwards; with the release, or without.
void Drag(HWND editor, std::string_view widget, bool releases = true);
void Click(HWND editor, std::string_view widget);

} // namespace KAV::Tests
