#pragma once

#include "utils/file_question.h"

#include <string_view>

namespace KAV::Utils {

/// Boxes that ask the user something or show an error. This is a seam: tests replace the system's boxes by
/// their own answers. Threads: any but the audio thread, with no lock held, because a box may stay open for
/// hours. Nothing throws.
///
/// Each question is answered exactly once, on the thread that asked: before the call returns, where a dialog
/// runs a message loop of its own, or later, from a message of that thread's loop. Either way other messages
/// run in between, and anything can have happened by then: even the object that asked may have been
/// destroyed (utils/still_there.h). So nothing may rely on the answer when the call returns.
class IDialogs {
public:
    IDialogs() = default;
    IDialogs(const IDialogs&) = delete;
    IDialogs& operator=(const IDialogs&) = delete;

    virtual void OpenFile(const SFileQuestion& question, PathAnswer answered) noexcept = 0;
    virtual void SaveFile(const SFileQuestion& question, PathAnswer answered) noexcept = 0;
    /// Shows an error.
    virtual void ShowError(std::u16string_view title, std::u16string_view text) noexcept = 0;
    /// Whether ShowError() blocks until the user has closed the box. If so, don't call it where a host waits,
    /// such as in the creation of an instance: a scanner without a user would wait for ever.
    virtual bool ErrorsWait() const noexcept = 0;

protected:
    ~IDialogs() = default;
};

/// The system's own dialogs. Errors that can't be shown, because there is no display, go to the session log.
/// Files are asked for on the thread of an editor's window only, one question at a time: that window takes no
/// input meanwhile, and is where the answer arrives. Every other question is answered at once, as cancelled,
/// and so is an open one when the window goes.
IDialogs& SystemDialogs() noexcept;

/// The dialogs in use: the system's own, unless a test has replaced them.
IDialogs& Dialogs() noexcept;

/// For tests: replaces the dialogs of the whole process; null restores the system's own. `dialogs` must
/// outlive its use.
void UseDialogs(IDialogs* dialogs) noexcept;

} // namespace KAV::Utils
