#pragma once

#include "utils/turn.h"

#include <string>
#include <vector>

namespace KAV {

/// Shows errors to the user. Errors in the creation of an instance are shown when it is complete, each
/// text once; where a box would hold up the host it waits for the first window, and the log has it at once.
/// Threads: any but the audio thread. A box is never shown within a turn.
class CErrorBoxes final {
public:
    explicit CErrorBoxes(Utils::CTurns& turns) noexcept : _turns(turns) {}
    CErrorBoxes(const CErrorBoxes&) = delete;
    CErrorBoxes& operator=(const CErrorBoxes&) = delete;

    void BeginCreation();
    void EndCreation();
    void Tell(std::u16string text);
    /// Shows what had to wait.
    void ShowHeld();

private:
    Utils::CTurns& _turns;

    // Within a turn
    bool _isCreating = false;
    std::vector<std::u16string> _held; // no box has shown them yet; no text twice
};

} // namespace KAV
