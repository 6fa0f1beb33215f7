#include "platform/winapi/wininet_exchange.h"

#include "platform/winapi/wide_text.h"
#include "platform/winapi/wininet_library.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <limits>
#include <ranges>
#include <utility>

namespace KAV::Platform {

namespace {

constexpr DWORD LongestHead = 256u << 10; // bytes
constexpr DWORD Block = 4096;
constexpr std::size_t MostUnfetched = 1u << 20; // bytes received but not yet fetched

SHttpResult LastFailure(EHttpEnd end = EHttpEnd::Failed) noexcept {
    return {end, static_cast<std::int32_t>(GetLastError())};
}

/// Sets the limits of one handle: some versions of the library don't pass them on to handles made from it.
void LimitWaits(HINTERNET handle, DWORD limitMs) noexcept {
    DWORD once = 1;
    for (const int option :
        {INTERNET_OPTION_CONNECT_TIMEOUT, INTERNET_OPTION_SEND_TIMEOUT, INTERNET_OPTION_RECEIVE_TIMEOUT}) {
        WinInet()->SetOption(handle, static_cast<DWORD>(option), &limitMs, sizeof(limitMs));
    }
    WinInet()->SetOption(handle, INTERNET_OPTION_CONNECT_RETRIES, &once, sizeof(once));
}

/// A header line by the library's number for it; empty if there is no such line.
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

/// How many bytes follow the head; the largest number if the head doesn't say.
std::uint64_t BodyLength(HINTERNET request) {
    const auto text = HeadLine(request, HTTP_QUERY_CONTENT_LENGTH);
    std::uint64_t length = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    const bool inChunks = !HeadLine(request, HTTP_QUERY_TRANSFER_ENCODING).empty();
    return error == std::errc() && !inChunks ? length : std::numeric_limits<std::uint64_t>::max();
}

constexpr SHttpResult GivenUp{EHttpEnd::Failed, ERROR_INTERNET_OPERATION_CANCELLED};
constexpr SHttpResult NoMemory{EHttpEnd::Failed, ERROR_NOT_ENOUGH_MEMORY};

} // namespace

CWinInetExchange::CWinInetExchange(SHttpRequest request) : _request(std::move(request)) {}

void CWinInetExchange::Run() noexcept {
    SHttpResult result = NoMemory;
    try {
        result = Exchange();
    } catch (...) { // no memory
    }
    CloseHandles();
    const std::scoped_lock lock(_mutex);
    _come.result = result;
    _news.notify_all();
}

CWinInetExchange::SNews CWinInetExchange::Await(std::uint32_t ms) {
    std::unique_lock lock(_mutex);
    _news.wait_for(lock, std::chrono::milliseconds(ms),
        [this] { return _come.head || !_come.bytes.empty() || _come.result; });
    _room.notify_all();
    return std::exchange(_come, {});
}

void CWinInetExchange::GiveUp() noexcept {
    {
        const std::scoped_lock lock(_mutex);
        _givenUp = true;
    }
    _room.notify_all();
    CloseHandles();
}

/// Closes handles in reverse order of creation. Each is closed once, by the first thread to get here.
void CWinInetExchange::CloseHandles() noexcept {
    std::vector<void*> handles;
    {
        const std::scoped_lock lock(_mutex);
        handles.swap(_handles);
    }
    for (auto* const handle : std::views::reverse(handles)) WinInet()->CloseHandle(handle);
}

/// Null if there is no handle or the exchange has been abandoned.
void* CWinInetExchange::Keep(void* handle) {
    if (handle == nullptr) return nullptr;
    const std::scoped_lock lock(_mutex);
    if (_givenUp) {
        WinInet()->CloseHandle(handle);
        SetLastError(ERROR_INTERNET_OPERATION_CANCELLED);
        return nullptr;
    }
    LimitWaits(handle, _request.timeLimitMs);
    _handles.push_back(handle);
    return handle;
}

bool CWinInetExchange::Begin(SHttpHead head) {
    const std::scoped_lock lock(_mutex);
    _come.head = std::move(head);
    _news.notify_all();
    return !_givenUp;
}

bool CWinInetExchange::Take(const char* data, std::size_t size) {
    std::unique_lock lock(_mutex);
    _room.wait(lock, [this] { return _givenUp || _come.bytes.size() < MostUnfetched; });
    if (_givenUp) return false;
    const bool isAwaited = _come.bytes.empty();
    _come.bytes.append(data, size);
    if (isAwaited) _news.notify_all();
    return true;
}

/// Takes whatever has arrived at once: reading whole blocks would wait for a server that sends one byte a
/// second.
SHttpResult CWinInetExchange::ReadBytes(void* request, std::uint64_t length) {
    std::array<char, Block> block{};
    while (true) {
        DWORD available = 0;
        DWORD got = 0;
        if (WinInet()->QueryDataAvailable(request, &available, 0, 0) == 0 ||
            (available > 0 &&
                WinInet()->ReadFile(request, block.data(), std::min(available, Block), &got) == 0)) {
            return LastFailure(
                GetLastError() == ERROR_INTERNET_TIMEOUT ? EHttpEnd::Failed : EHttpEnd::CutShort);
        }
        got = static_cast<DWORD>(std::min<std::uint64_t>(got, length)); // the same packet may contain more
        length -= got;
        if (got == 0) return {EHttpEnd::Whole, 0};
        if (!Take(block.data(), got)) return GivenUp;
    }
}

SHttpResult CWinInetExchange::Exchange() {
    if (WinInet() == nullptr) return LastFailure();
    void* const session = Keep(
        WinInet()->Open(ToWide(_request.agent).c_str(), INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0));
    if (session == nullptr) return LastFailure();
    void* const server = Keep(WinInet()->Connect(session, ToWide(_request.host).c_str(), _request.port,
        nullptr, nullptr, INTERNET_SERVICE_HTTP, 0, 0));
    if (server == nullptr) return LastFailure();
    const bool post = !_request.body.empty();
    const DWORD flags = INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_KEEP_CONNECTION |
                        INTERNET_FLAG_PRAGMA_NOCACHE | INTERNET_FLAG_NO_AUTO_REDIRECT |
                        INTERNET_FLAG_NO_COOKIES | INTERNET_FLAG_NO_UI |
                        (_request.secure ? DWORD{INTERNET_FLAG_SECURE} : 0);
    void* const asked = Keep(WinInet()->OpenRequest(
        server, post ? L"POST" : L"GET", ToWide(_request.path).c_str(), nullptr, nullptr, nullptr, flags, 0));
    if (asked == nullptr) return LastFailure();
    std::string body = _request.body; // the library wants it writable
    if (WinInet()->SendRequest(asked, post ? L"Content-Type: application/x-www-form-urlencoded\r\n" : nullptr,
            post ? DWORD(-1) : 0, post ? body.data() : nullptr, static_cast<DWORD>(body.size())) == 0) {
        return LastFailure();
    }
    SHttpHead head;
    if (!ReadHead(asked, head)) return LastFailure();
    if (head.status == 0) return {EHttpEnd::Failed, ERROR_HTTP_INVALID_SERVER_RESPONSE}; // cut off in it
    if (HeadIsTooLong(asked)) return {EHttpEnd::Failed, ERROR_HTTP_INVALID_SERVER_RESPONSE};
    const auto length = BodyLength(asked);
    if (!Begin(std::move(head))) return GivenUp;
    return ReadBytes(asked, length);
}

} // namespace KAV::Platform
