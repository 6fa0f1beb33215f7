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

    /// Whether a window can be opened at all: hosts that know of an editor show its window, and no controls
    /// of their own.
    virtual bool hasWindow() const noexcept = 0;
    /// Points `*rect` at the editor's size in pixels, valid as long as the editor. False without a window.
    virtual bool getRect(VST::ERect** rect) = 0;
    /// Shows the editor in the host's window `parent`. False if it can't be shown.
    virtual bool open(void* parent) = 0;
    virtual void close() = 0;

protected:
    AEffEditor() = default;
};

} // namespace KAV
