#pragma once

#include "utils/turn.h"

#include <string>
#include <vector>

namespace KAV {

/// Shows errors to the user. Errors in the creation of an instance are shown when it is complete, each
/// text once; where a box would hold up the host it waits for the first window, and the log has it at once.
/// There, what goes wrong while an editor on the host's thread is at work is shown after that: the host may
/// end the instance in the box's own loop.
/// Threads: any but the audio thread. A box is never shown within a turn.
class CErrorBoxes final {
public:
    explicit CErrorBoxes(Utils::CTurns& turns) noexcept : _turns(turns) {}
    CErrorBoxes(const CErrorBoxes&) = delete;
    CErrorBoxes& operator=(const CErrorBoxes&) = delete;

    void BeginCreation();
    void EndCreation();
    void Tell(std::u16string text);
    /// Shows what had to wait, unless an editor is at work. The instance may have ended when this returns.
    void ShowHeld();
    // An editor is at work on the host's thread: it opens, or handles a message.
    void BeginWork();
    void EndWork();

private:
    Utils::CTurns& _turns;

    // Within a turn
    bool _isCreating = false;
    bool _isAtWork = false;            // and boxes wait for the user
    std::vector<std::u16string> _held; // no box has shown them yet; no text twice
};

} // namespace KAV
