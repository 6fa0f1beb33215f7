#include "gui/error_report.h"

#include "utils/http.h"
#include "utils/product.h"
#include "utils/session_log.h"
#include "utils/system_description.h"
#include "utils/text.h"
#include "utils/unsent_log.h"
#include "utils/web_address.h"

#include <atomic>

namespace KAV::GUI {

namespace {

std::atomic<bool> sent{false}; // or tried, by any instance of this process

/// Any of these means that the server has the log, whether or not its response has a body.
bool IsSuccess(std::int32_t a_nStatus) noexcept {
    return a_nStatus >= 200 && a_nStatus < 300;
}

std::u16string Body(std::u16string_view a_sLog) {
    const auto log = Utils::ToUtf8(a_sLog);
    const auto end =
        Utils::LastLines(log, Utils::LongestUnsentLog); // repaired text is longer than what was kept
    return u"app=" + std::u16string(Utils::ProductName) + u" " + Utils::MachineId() + u"&content=" +
           Utils::ToUtf16(Utils::PercentEncoded(end));
}

} // namespace

CErrorReport::CErrorReport(const Utils::SMakerService& a_psService) : _sService(a_psService) {}

void CErrorReport::Start() noexcept {
    if (_sService.origin.empty()) {
        Utils::DropUnsentLog(); // no later process could send it either
    } else {
        _iThread.Start();
    }
}

void CErrorReport::Stop() noexcept {
    _iThread.Stop();
}

void CErrorReport::OnThread(Utils::CThread* a_piThread) {
    if (a_piThread != &_iThread || sent || !_iThread.running) return;
    const auto log = Utils::UnsentLog();
    const auto address = Utils::LogAddress(_sService);
    if (address.empty()) Utils::DropUnsentLog();
    if (log.empty() || address.empty()) return;
    Utils::HttpOptions options;
    options.body = Body(log);
    options.agent = u"KAV GUI";
    options.authorities = _sService.authorities;
    options.keepGoing = &_iThread.running;
    if (sent.exchange(true)) return; // another instance got here at the same time
    std::size_t size = 0;
    Utils::HttpGet(address, size, &options);
    if (IsSuccess(options.status)) Utils::DropUnsentLog();
}

} // namespace KAV::GUI
