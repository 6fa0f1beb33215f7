#include "platform/http.h"

#include "platform/curl/curl_library.h"

#include <algorithm>
#include <csignal>
#include <ctime>
#include <memory>
#include <pthread.h>
#include <string_view>

namespace KAV::Platform {

namespace {

constexpr std::size_t LongestHead = 256u << 10;
constexpr int LongestWaitMs = 50; // between two polls of the receiver

/// On a connection that the server has closed, the TLS library raises SIGPIPE, which could end the host.
/// While this object lives, the signal is blocked in this thread; one that is pending at its end is
/// discarded.
class CNoPipeSignal final {
public:
    CNoPipeSignal() noexcept {
        sigemptyset(&_pipe);
        sigaddset(&_pipe, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        _wasPending = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &_pipe, &_before);
    }
    ~CNoPipeSignal() {
        const timespec now{};
        if (!_wasPending) sigtimedwait(&_pipe, nullptr, &now);
        pthread_sigmask(SIG_SETMASK, &_before, nullptr);
    }
    CNoPipeSignal(const CNoPipeSignal&) = delete;
    CNoPipeSignal& operator=(const CNoPipeSignal&) = delete;

private:
    sigset_t _pipe{};
    sigset_t _before{};
    bool _wasPending = false;
};

struct SEndEasy {
    void operator()(CURL* easy) const noexcept { Curl()->easy_cleanup(easy); }
};
struct SEndMulti {
    void operator()(CURLM* multi) const noexcept { Curl()->multi_cleanup(multi); }
};
struct SFreeList {
    void operator()(curl_slist* list) const noexcept { Curl()->slist_free_all(list); }
};

/// A response on its way from the library to the receiver.
struct SAnswer {
    IHttpReceiver& receiver;
    SHttpHead head;
    std::size_t headSize = 0;
    bool begun = false;
    bool refused = false; // by the receiver
    bool tooLong = false; // the head
};

bool EqualNames(std::string_view left, std::string_view right) noexcept {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(left, right, {}, lower, lower);
}

std::string_view Trimmed(std::string_view text) noexcept {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") + 1 - first);
}

void ReadHeadLine(std::string_view line, SHttpHead& head) {
    if (line.starts_with("HTTP/")) { // of this response or, after a status below 200, of the next one
        head = {};
        const auto blank = line.find(' ');
        if (blank == std::string_view::npos) return;
        for (const char c : line.substr(blank + 1, 3)) {
            if (c >= '0' && c <= '9') head.status = head.status * 10 + (c - '0');
        }
        return;
    }
    const auto colon = line.find(':');
    if (colon == std::string_view::npos) return;
    const auto name = line.substr(0, colon);
    if (EqualNames(name, "Content-Encoding")) head.encoding = Trimmed(line.substr(colon + 1));
    if (EqualNames(name, "Location")) head.location = Trimmed(line.substr(colon + 1));
}

/// One line of the head, or of the trailer that may follow the body; 0 ends the exchange.
std::size_t OnHeadLine(char* data, std::size_t, std::size_t size, void* user) noexcept {
    auto& answer = *static_cast<SAnswer*>(user);
    answer.headSize += size;
    answer.tooLong = answer.headSize > LongestHead;
    if (answer.tooLong) return 0;
    if (answer.begun) return size;
    try {
        const std::string_view line(data, size);
        if (!Trimmed(line).empty()) {
            ReadHeadLine(line, answer.head);
        } else if (answer.head.status >= 200) {
            answer.begun = true;
            answer.refused = !answer.receiver.Begin(answer.head);
        }
        return answer.refused ? 0 : size;
    } catch (...) { // no memory
        return 0;
    }
}

std::size_t OnBytes(char* data, std::size_t, std::size_t size, void* user) noexcept {
    auto& answer = *static_cast<SAnswer*>(user);
    answer.refused = !answer.receiver.Take(data, size);
    return answer.refused ? 0 : size;
}

using List = std::unique_ptr<curl_slist, SFreeList>;

/// Appends a line to a curl list; false if there is no memory.
bool Append(List& list, const char* line) noexcept {
    curl_slist* const longer = Curl()->slist_append(list.get(), line);
    if (longer == nullptr) return false;
    (void)list.release();
    list.reset(longer);
    return true;
}

/// The same header lines as on Windows: of the library's own lines only Host and those that describe the
/// body.
bool HeadLines(const SHttpRequest& request, List& list) noexcept {
    return Append(list, "Accept:") && Append(list, "Expect:") && Append(list, "Pragma: no-cache") &&
           (request.body.empty() || Append(list, "Content-Type: application/x-www-form-urlencoded"));
}

bool Prepare(CURL* easy, const SHttpRequest& request, const List& lines, SAnswer& answer) {
    const auto set = [easy](CURLoption option, auto value) {
        return Curl()->easy_setopt(easy, option, value) == CURLE_OK;
    };
    const auto url = std::string(request.secure ? "https://" : "http://") + request.host + ":" +
                     std::to_string(request.port) + request.path;
    const long limitMs = static_cast<long>(request.timeLimitMs);
    set(CURLOPT_PATH_AS_IS, 1L);
    set(CURLOPT_QUICK_EXIT, 1L); // don't wait for an abandoned name look-up; unknown before 7.87
    return set(CURLOPT_URL, url.c_str()) && set(CURLOPT_NOSIGNAL, 1L) &&
           (set(CURLOPT_PROTOCOLS_STR, "http,https") ||
               set(CURLOPT_PROTOCOLS, static_cast<long>(CURLPROTO_HTTP | CURLPROTO_HTTPS))) &&
           set(CURLOPT_SSL_VERIFYPEER, 1L) && set(CURLOPT_SSL_VERIFYHOST, 2L) &&
           set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2)) &&
           (request.authorities.empty() || set(CURLOPT_CAINFO, request.authorities.c_str())) &&
           set(CURLOPT_FOLLOWLOCATION, 0L) &&
           set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1)) &&
           set(CURLOPT_TIMEOUT_MS, limitMs) && set(CURLOPT_CONNECTTIMEOUT_MS, limitMs) &&
           set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L) && set(CURLOPT_HTTPHEADER, lines.get()) &&
           (request.agent.empty() || set(CURLOPT_USERAGENT, request.agent.c_str())) &&
           (request.body.empty() ||
               (set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size())) &&
                   set(CURLOPT_POSTFIELDS, request.body.c_str()))) &&
           set(CURLOPT_HEADERFUNCTION, &OnHeadLine) && set(CURLOPT_HEADERDATA, static_cast<void*>(&answer)) &&
           set(CURLOPT_WRITEFUNCTION, &OnBytes) && set(CURLOPT_WRITEDATA, static_cast<void*>(&answer));
}

/// Runs what was added to `multi`. The library's blocking call isn't used, because it checks only once a
/// second whether to continue.
CURLcode Run(CURLM* multi, IHttpReceiver& receiver) noexcept {
    int running = 1;
    while (running > 0) {
        if (!receiver.KeepGoing()) return CURLE_ABORTED_BY_CALLBACK;
        if (Curl()->multi_perform(multi, &running) != CURLM_OK) return CURLE_FAILED_INIT;
        if (running > 0 && Curl()->multi_poll(multi, nullptr, 0, LongestWaitMs, nullptr) != CURLM_OK)
            return CURLE_FAILED_INIT;
    }
    int left = 0;
    const CURLMsg* const message = Curl()->multi_info_read(multi, &left);
    return message != nullptr ? message->data.result : CURLE_FAILED_INIT;
}

SHttpResult ResultOf(CURLcode code, const SAnswer& answer) noexcept {
    if (code == CURLE_OK) return {EHttpEnd::Whole, 0};
    if (answer.refused) return {EHttpEnd::Refused, 0};
    if (answer.tooLong) return {EHttpEnd::Failed, CURLE_FILESIZE_EXCEEDED};
    const bool ours = code == CURLE_OPERATION_TIMEDOUT || code == CURLE_ABORTED_BY_CALLBACK ||
                      code == CURLE_FAILED_INIT || code == CURLE_OUT_OF_MEMORY;
    return {answer.begun && !ours ? EHttpEnd::CutShort : EHttpEnd::Failed, static_cast<std::int32_t>(code)};
}

SHttpResult Exchange(const SHttpRequest& request, IHttpReceiver& receiver) {
    if (Curl() == nullptr) return {EHttpEnd::Failed, CURLE_FAILED_INIT};
    SAnswer answer{receiver, {}};
    List lines;
    const std::unique_ptr<CURL, SEndEasy> easy(Curl()->easy_init());
    const std::unique_ptr<CURLM, SEndMulti> multi(Curl()->multi_init());
    if (easy == nullptr || multi == nullptr || !HeadLines(request, lines) ||
        !Prepare(easy.get(), request, lines, answer) ||
        Curl()->multi_add_handle(multi.get(), easy.get()) != CURLM_OK) {
        return {EHttpEnd::Failed, CURLE_FAILED_INIT};
    }
    const CURLcode code = Run(multi.get(), receiver);
    Curl()->multi_remove_handle(multi.get(), easy.get());
    return ResultOf(code, answer);
}

} // namespace

SHttpResult ExchangeHttp(const SHttpRequest& request, IHttpReceiver& receiver) noexcept {
    try {
        const CNoPipeSignal quiet;
        return Exchange(request, receiver);
    } catch (...) { // no memory
        return {EHttpEnd::Failed, CURLE_OUT_OF_MEMORY};
    }
}

} // namespace KAV::Platform
