#pragma once

#include "utils/maker_service.h"
#include "utils/thread.h"

namespace KAV::GUI {

/// Sends the log of the session before to the maker, once per process, on a thread of its own: the only way
/// in which he learns of what failed. Logs that earlier processes could not send go with it. They count as
/// sent when the server answers with success; until then they are kept for the next process, 1 MB at most.
/// It is a part of the root and not the root itself because the thread begins while the classes on top of the
/// root are still being built.
///
/// Threads: the owner's, but OnThread().
class CErrorReport final : private Utils::CThread::IOnThread {
public:
    explicit CErrorReport(const Utils::SMakerService& a_psService);
    CErrorReport(const CErrorReport&) = delete;
    CErrorReport& operator=(const CErrorReport&) = delete;

    /// Begins, once the log of this session has. Without a server there is nothing to begin, and no log is
    /// kept.
    void Start() noexcept;
    /// Ends a running request, and waits for the thread without limit.
    void Stop() noexcept;

private:
    void OnThread(Utils::CThread* a_piThread) override;

    Utils::SMakerService _sService;
    Utils::CThread _iThread{*this};
};

} // namespace KAV::GUI
