#include "platform/http.h"

#include "platform/winapi/wide_text.h"
#include "platform/winapi/wininet_library.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

namespace KAV::Platform {

namespace {

constexpr std::uint32_t LongestLimitMs = 10000;
constexpr DWORD LongestHead = 256u << 10; // bytes
constexpr DWORD Block = 4096;

/// A handle of the library's; none is null.
class CNetHandle final {
public:
    explicit CNetHandle(HINTERNET handle) noexcept : _handle(handle) {}
    ~CNetHandle() {
        if (_handle != nullptr) WinInet()->CloseHandle(_handle);
    }
    CNetHandle(const CNetHandle&) = delete;
    CNetHandle& operator=(const CNetHandle&) = delete;
    HINTERNET Get() const noexcept { return _handle; }

private:
    HINTERNET _handle;
};

SHttpResult LastFailure(EHttpEnd end = EHttpEnd::Failed) noexcept {
    return {end, static_cast<std::int32_t>(GetLastError())};
}

/// Of one handle: not every version of the library hands the limits on to those that are made from it.
void LimitWaits(HINTERNET handle, DWORD limitMs) noexcept {
    DWORD once = 1;
    for (const int option :
        {INTERNET_OPTION_CONNECT_TIMEOUT, INTERNET_OPTION_SEND_TIMEOUT, INTERNET_OPTION_RECEIVE_TIMEOUT}) {
        WinInet()->SetOption(handle, static_cast<DWORD>(option), &limitMs, sizeof(limitMs));
    }
    WinInet()->SetOption(handle, INTERNET_OPTION_CONNECT_RETRIES, &once, sizeof(once));
}

/// A line of the head by the library's number for it; empty when there is none.
std::string HeadLine(HINTERNET request, DWORD which) {
    DWORD size = 0;
    DWORD first = 0;
    WinInet()->QueryInfo(request, which, nullptr, &size, &first);
    if (GetLastError() != ERROR_INSUFFICIENT_BUFFER || size > LongestHead * sizeof(wchar_t)) return {};
    std::wstring text(size / sizeof(wchar_t) + 1, L'\0');
    size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    first = 0;
    if (WinInet()->QueryInfo(request, which, text.data(), &size, &first) == 0) return {};
    text.resize(size / sizeof(wchar_t));
    return ToUtf8(text);
}

bool HeadIsTooLong(HINTERNET request) noexcept {
    DWORD size = 0;
    DWORD first = 0;
    WinInet()->QueryInfo(request, HTTP_QUERY_RAW_HEADERS_CRLF, nullptr, &size, &first);
    return size / sizeof(wchar_t) > LongestHead;
}

bool ReadHead(HINTERNET request, SHttpHead& head) {
    DWORD status = 0;
    DWORD size = sizeof(status);
    DWORD first = 0;
    if (WinInet()->QueryInfo(
            request, HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &status, &size, &first) == 0) {
        return false;
    }
    head.status = static_cast<std::int32_t>(status);
    head.encoding = HeadLine(request, HTTP_QUERY_CONTENT_ENCODING);
    head.location = HeadLine(request, HTTP_QUERY_LOCATION);
    return true;
}

/// How many bytes follow the head; the largest number when it doesn't tell.
std::uint64_t BodyLength(HINTERNET request) {
    const auto text = HeadLine(request, HTTP_QUERY_CONTENT_LENGTH);
    std::uint64_t length = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    const bool inChunks = !HeadLine(request, HTTP_QUERY_TRANSFER_ENCODING).empty();
    return error == std::errc() && !inChunks ? length : std::numeric_limits<std::uint64_t>::max();
}

/// What has come is taken at once: reading whole blocks would wait for a server that sends a byte a second.
SHttpResult ReadBytes(
    HINTERNET request, std::uint64_t length, ULONGLONG endTick, IHttpReceiver& receiver) noexcept {
    std::array<char, Block> block{};
    while (true) {
        if (!receiver.GoesOn()) return {EHttpEnd::Failed, ERROR_INTERNET_OPERATION_CANCELLED};
        if (GetTickCount64() > endTick) return {EHttpEnd::Failed, ERROR_INTERNET_TIMEOUT};
        DWORD available = 0;
        DWORD got = 0;
        if (WinInet()->QueryDataAvailable(request, &available, 0, 0) == 0 ||
            (available > 0 &&
                WinInet()->ReadFile(request, block.data(), std::min(available, Block), &got) == 0)) {
            return LastFailure(
                GetLastError() == ERROR_INTERNET_TIMEOUT ? EHttpEnd::Failed : EHttpEnd::CutShort);
        }
        got = static_cast<DWORD>(std::min<std::uint64_t>(got, length)); // more may lie in the same packet
        length -= got;
        if (got == 0) return {EHttpEnd::Whole, 0};
        if (!receiver.Take(block.data(), got)) return {EHttpEnd::Refused, 0};
    }
}

SHttpResult Exchange(const SHttpRequest& request, IHttpReceiver& receiver) {
    if (WinInet() == nullptr) return LastFailure();
    if (!receiver.GoesOn()) return {EHttpEnd::Failed, ERROR_INTERNET_OPERATION_CANCELLED};
    const DWORD limitMs = std::min(request.timeLimitMs, LongestLimitMs);
    const ULONGLONG endTick = GetTickCount64() + limitMs;
    const CNetHandle session(
        WinInet()->Open(ToWide(request.agent).c_str(), INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0));
    if (session.Get() == nullptr) return LastFailure();
    LimitWaits(session.Get(), limitMs);
    const CNetHandle server(WinInet()->Connect(session.Get(), ToWide(request.host).c_str(), request.port,
        nullptr, nullptr, INTERNET_SERVICE_HTTP, 0, 0));
    if (server.Get() == nullptr) return LastFailure();
    LimitWaits(server.Get(), limitMs);
    const bool post = !request.body.empty();
    const DWORD flags = INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_KEEP_CONNECTION |
                        INTERNET_FLAG_PRAGMA_NOCACHE | INTERNET_FLAG_NO_AUTO_REDIRECT |
                        INTERNET_FLAG_NO_COOKIES | INTERNET_FLAG_NO_UI |
                        (request.secure ? DWORD{INTERNET_FLAG_SECURE} : 0);
    const CNetHandle asked(WinInet()->OpenRequest(server.Get(), post ? L"POST" : L"GET",
        ToWide(request.path).c_str(), nullptr, nullptr, nullptr, flags, 0));
    if (asked.Get() == nullptr) return LastFailure();
    LimitWaits(asked.Get(), limitMs);
    std::string body = request.body; // the library wants it writable
    if (WinInet()->SendRequest(asked.Get(),
            post ? L"Content-Type: application/x-www-form-urlencoded\r\n" : nullptr, post ? DWORD(-1) : 0,
            post ? body.data() : nullptr, static_cast<DWORD>(body.size())) == 0) {
        return LastFailure();
    }
    SHttpHead head;
    if (!ReadHead(asked.Get(), head)) return LastFailure();
    if (head.status == 0) return {EHttpEnd::Failed, ERROR_HTTP_INVALID_SERVER_RESPONSE}; // broken off in it
    if (HeadIsTooLong(asked.Get())) return {EHttpEnd::Failed, ERROR_HTTP_INVALID_SERVER_RESPONSE};
    if (!receiver.Begin(head)) return {EHttpEnd::Refused, 0};
    return ReadBytes(asked.Get(), BodyLength(asked.Get()), endTick, receiver);
}

} // namespace

SHttpResult ExchangeHttp(const SHttpRequest& request, IHttpReceiver& receiver) noexcept {
    try {
        return Exchange(request, receiver);
    } catch (...) { // no memory
        return {EHttpEnd::Failed, ERROR_NOT_ENOUGH_MEMORY};
    }
}

} // namespace KAV::Platform
