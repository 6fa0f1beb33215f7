#include "platform/http.h"

#include "platform/winapi/lasting_thread.h"
#include "platform/winapi/wininet_exchange.h"

#include <algorithm>
#include <memory>
#include <windows.h>

#include <wininet.h>

namespace KAV::Platform {

namespace {

constexpr std::uint32_t LongestLimitMs = 10000;
constexpr std::uint32_t LongestWaitMs = 50; // between two polls of the receiver

/// Passes on what arrives, until the end or until the receiver cancels.
SHttpResult Fetch(CWinInetExchange& exchange, std::uint32_t limitMs, IHttpReceiver& receiver) noexcept {
    const ULONGLONG endTick = GetTickCount64() + limitMs;
    while (true) {
        if (!receiver.KeepGoing()) return {EHttpEnd::Failed, ERROR_INTERNET_OPERATION_CANCELLED};
        if (GetTickCount64() > endTick) return {EHttpEnd::Failed, ERROR_INTERNET_TIMEOUT};
        const auto news = exchange.Await(LongestWaitMs);
        if (news.head && !receiver.Begin(*news.head)) return {EHttpEnd::Refused, 0};
        if (!news.bytes.empty() && !receiver.Take(news.bytes.data(), news.bytes.size()))
            return {EHttpEnd::Refused, 0};
        if (news.result) return *news.result;
    }
}

} // namespace

SHttpResult ExchangeHttp(const SHttpRequest& request, IHttpReceiver& receiver) noexcept {
    try {
        if (!receiver.KeepGoing()) return {EHttpEnd::Failed, ERROR_INTERNET_OPERATION_CANCELLED};
        auto limited = request;
        limited.timeLimitMs = std::min(request.timeLimitMs, LongestLimitMs);
        const auto exchange = std::make_shared<CWinInetExchange>(limited);
        if (!StartLastingThread([exchange] { exchange->Run(); }))
            return {EHttpEnd::Failed, ERROR_NOT_ENOUGH_MEMORY};
        const auto result = Fetch(*exchange, limited.timeLimitMs, receiver);
        exchange->GiveUp();
        return result;
    } catch (...) { // no memory
        return {EHttpEnd::Failed, ERROR_NOT_ENOUGH_MEMORY};
    }
}

} // namespace KAV::Platform
