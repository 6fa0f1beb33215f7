#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace KAV::Utils {

/// What a dialog for files begins with.
struct SFileQuestion {
    std::u16string filter; ///< "title||pattern;pattern", several of them with "|||" between
    std::u16string name;   ///< proposed for a file to save
    std::u16string folder; ///< with forward slashes; empty: the system's choice
};

/// Receives the path that the user has chosen; an empty one when the user chose none, or can't be asked. It
/// doesn't throw.
using PathAnswer = std::function<void(std::u16string_view path)>;

/// Boxes that ask or tell the user something. It is a seam: tests put answers of their own in the system's
/// place. Threads: any but the audio thread, and no lock held: a box may stay for hours. Nothing throws.
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
    /// Tells of an error.
    virtual void ShowError(std::u16string_view title, std::u16string_view text) noexcept = 0;
    /// ShowError() ends when the user has closed the box. Then it isn't for places where a host waits, such
    /// as the creation of an instance: a scanner without a user would wait for ever.
    virtual bool ErrorsWait() const noexcept = 0;

protected:
    ~IDialogs() = default;
};

/// The system's own. What can't be shown, for want of a display, goes to the session log. It asks for no
/// files: every such question is answered at once, as cancelled.
IDialogs& SystemDialogs() noexcept;

/// The one in use: the system's own, unless a test has put another in its place.
IDialogs& Dialogs() noexcept;

/// For tests: the dialogs of the whole process from now on; null means the system's own. `dialogs` must
/// outlive its use.
void UseDialogs(IDialogs* dialogs) noexcept;

} // namespace KAV::Utils
