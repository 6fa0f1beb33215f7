#pragma once

#include "utils/dialogs.h"
#include "utils/turn.h"

namespace KAV {

/// Asks the user for files on behalf of one instance, one question at a time. What needs the answer is
/// written as two turns: one asks and ends, the answer begins the other.
///
/// Threads: any but the audio thread; the answer comes on the thread that asked. No question is asked within
/// a turn, and no answer is passed on within one.
class CFileQuestions final {
public:
    explicit CFileQuestions(Utils::CTurns& turns) noexcept : _turns(turns) {}
    CFileQuestions(const CFileQuestions&) = delete;
    CFileQuestions& operator=(const CFileQuestions&) = delete;

    /// Asks when the present turn has ended, or at once without one. `answered` is called once, with an empty
    /// path if the user cancels, and never after the end of the instance; what it throws is dropped. Returns
    /// false while another question is open: then nothing is asked and `answered` is not called. When a call
    /// returns, the answer may have come and the instance may have ended.
    bool AskToOpen(Utils::SFileQuestion question, Utils::PathAnswer answered);
    bool AskToSave(Utils::SFileQuestion question, Utils::PathAnswer answered);

private:
    using Operation = void (Utils::IDialogs::*)(const Utils::SFileQuestion&, Utils::PathAnswer) noexcept;

    bool Ask(Operation operation, Utils::SFileQuestion question, Utils::PathAnswer answered);
    void Answer(std::u16string_view path, const Utils::PathAnswer& answered);

    Utils::CTurns& _turns;
    bool _isOpen = false; // within a turn: a question waits for its answer
};

} // namespace KAV
