#pragma once

#include "utils/dialogs.h"
#include "utils/offered_folder.h"
#include "utils/still_there.h"
#include "utils/turn.h"

#include <memory>
#include <string>
#include <string_view>

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
    /// The answer is a path with `extension`, and no other file is replaced than the one that the user has
    /// agreed to: if there is a file of the path that the extension makes of the user's answer, the user is
    /// asked again, with that name. The proposed folder is made, so that the dialog opens there; it goes
    /// again if nothing is saved in it.
    bool AskToSave(Utils::SFileQuestion question, std::u16string extension, Utils::PathAnswer answered);

private:
    using Operation = void (Utils::IDialogs::*)(const Utils::SFileQuestion&, Utils::PathAnswer) noexcept;
    struct SQuestion {
        Operation operation;
        Utils::SFileQuestion question;
        std::u16string extension; // of the answer; empty: it stays as it is
        Utils::PathAnswer answered;
        std::shared_ptr<Utils::COfferedFolder> folder{}; // while the dialog may open in it
    };
    using Question = std::shared_ptr<SQuestion>; // kept by what answers it

    bool Ask(SQuestion question);
    void Put(const Question& question, const Utils::CStillThere& asker);
    void Answer(std::u16string_view chosen, const Question& question, const Utils::CStillThere& asker);

    Utils::CTurns& _turns;
    bool _isOpen = false; // within a turn: a question waits for its answer
};

} // namespace KAV
