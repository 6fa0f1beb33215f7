#include "platform/file_dialog.h"

#include "platform/quiet_signals.h"
#include "platform/xdg/dialog_control.h"
#include "platform/xdg/dialog_program.h"
#include "platform/xdg/portal_dialog.h"
#include "platform/xdg/spawned_program.h"

#include <cstdlib>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>

namespace KAV::Platform {

struct CFileDialog::SParts {
    SFileRequest request;
    Answered answered;
    // Copied on the thread that asks, because that of the dialog must not read them.
    CEnvironment environment;
    std::string road;       // the only one to try; empty: all of them
    std::string busAddress; // of the session
    CDialogControl control;

    bool Tries(std::string_view name) const { return (road.empty() || road == name) && !control.IsEnded(); }

    SFileAnswer Ask() {
        std::optional<SFileAnswer> answer;
        if (Tries("portal")) answer = AskPortal(request, busAddress, control);
        if (!answer && Tries("zenity"))
            answer = AskProgram(
                FindProgram("zenity", environment), ZenityArguments(request), environment, control);
        if (!answer && Tries("kdialog"))
            answer = AskProgram(FindProgram("kdialog", environment), KdialogArguments(request, environment),
                environment, control);
        return answer.value_or(SFileAnswer{EFileAnswer::NotAsked, {}});
    }

    void Run() noexcept {
        TakeOrdinaryPriority();
        SFileAnswer answer;
        try {
            answer = Ask();
        } catch (...) { // no memory
            answer = {};
        }
        answered(control.IsEnded() ? SFileAnswer{} : answer);
    }
};

CFileDialog::CFileDialog(SFileRequest request, Answered answered) : _parts(std::make_shared<SParts>()) {
    _parts->request = std::move(request);
    _parts->answered = std::move(answered);
    const char* const road = std::getenv("KAV_FILE_DIALOG");
    if (road != nullptr) _parts->road = road;
    _parts->busAddress = SessionBusAddress();
    const CQuietSignals quiet;
    std::thread([parts = _parts] { parts->Run(); }).detach();
}

CFileDialog::~CFileDialog() {
    End();
}

void CFileDialog::Raise() noexcept {
    _parts->control.Raise();
}

void CFileDialog::End() noexcept {
    _parts->control.End();
}

} // namespace KAV::Platform
