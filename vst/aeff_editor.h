#pragma once

#include "vst/vst2.h"

namespace KAV {

/// An effect's editor, as a host calls it through the effect's record. Threads: the host's user-interface
/// thread.
class AEffEditor {
public:
    virtual ~AEffEditor() = default;
    AEffEditor(const AEffEditor&) = delete;
    AEffEditor& operator=(const AEffEditor&) = delete;

    /// Whether a window can be opened at all. If a host knows of an editor, it shows the editor's window and
    /// no controls of its own.
    virtual bool hasWindow() const noexcept = 0;
    /// Points `*rect` at the editor's size in pixels, valid as long as the editor. False without a window.
    virtual bool getRect(VST::ERect** rect) = 0;
    /// Shows the editor in the host's window `parent`. False if it can't be shown.
    virtual bool open(void* parent) = 0;
    virtual void close() = 0;
    /// Whether the host has opened the editor and not closed it since.
    virtual bool isOpen() const noexcept { return false; }
    /// The host calls this repeatedly while the editor is open; some hosts also call it at other times.
    virtual void idle() {}

    // Returns true if the editor has used the key; then the host doesn't.
    virtual bool onKeyDown(const VST::VstKeyCode&) { return false; }
    virtual bool onKeyUp(const VST::VstKeyCode&) { return false; }
    /// The interface has no call for this: turns of the wheel reach a window through its own system.
    virtual bool onWheel(float /*distance*/) { return false; }
    /// How the user wants to turn knobs: 0 in circles, 1 in circles from where they are, 2 in lines.
    virtual bool setKnobMode(std::int32_t /*mode*/) { return false; }

protected:
    AEffEditor() = default;
};

} // namespace KAV
