#include "utils/http.h"

#include "platform/http.h"
#include "platform/system_info.h"
#include "utils/gunzip.h"
#include "utils/path.h"
#include "utils/text.h"
#include "utils/web_address.h"

#include <algorithm>
#include <optional>

namespace KAV::Utils {

namespace {

constexpr int MostRedirects = 5;
constexpr std::uint32_t TimeLimitMs = 10000;
constexpr std::int32_t Found = 200;

bool IsRedirect(std::int32_t status) noexcept {
    return (status >= 301 && status <= 303) || status == 307 || status == 308;
}

/// Keeps the inflated body of a response with status 200, up to its limit.
class CAnswer final : public Platform::IHttpReceiver {
public:
    explicit CAnswer(const CShared<bool>* keepGoing) noexcept : _keepGoing(keepGoing) {}

    bool KeepGoing() noexcept override { return _keepGoing == nullptr || *_keepGoing; }
    bool Begin(const Platform::SHttpHead& head) noexcept override {
        try {
            _head = head;
            if (head.encoding.find("gzip") != std::string::npos) _gunzip.emplace();
            return head.status == Found;
        } catch (...) { // no memory
            return false;
        }
    }
    bool Take(const char* data, std::size_t size) noexcept override {
        try {
            _sent += size;
            if (_sent > LongestAnswer) return false;
            if (_gunzip) return _gunzip->Add(data, size, _text, LongestAnswer);
            _text.append(data, size);
            return true;
        } catch (...) { // no memory
            return false;
        }
    }

    const Platform::SHttpHead& Head() const noexcept { return _head; }
    const std::string& Text() const noexcept { return _text; }

private:
    const CShared<bool>* _keepGoing;
    Platform::SHttpHead _head;
    std::optional<CGunzip> _gunzip;
    std::size_t _sent = 0; // bytes, as received
    std::string _text;
};

Platform::SHttpRequest Request(const SWebAddress& address, const HttpOptions& options) {
    Platform::SHttpRequest request;
    request.secure = address.secure;
    request.host = address.host;
    request.port = address.port;
    request.path = address.path;
    request.body = ToUtf8(options.body);
    request.agent = ToUtf8(options.agent);
    request.authorities = ToSystemPath(options.authorities);
    return request;
}

/// The response after all redirects; empty if there was none.
std::optional<std::string> Fetch(std::u16string_view url, HttpOptions& options) {
    auto address = ParseWebAddress(ToUtf8(url));
    if (!address) return std::nullopt;
    auto request = Request(*address, options);
    if (request.body.empty() != options.body.empty()) return std::nullopt; // ill-formed text
    if (request.agent.find_first_of("\r\n") != std::string::npos) return std::nullopt;
    const std::uint32_t begin = Platform::TickMs();
    for (int redirects = 0; redirects <= MostRedirects; ++redirects) {
        const std::uint32_t spentMs = Platform::TickMs() - begin;
        if (spentMs >= TimeLimitMs) return std::nullopt;
        request.timeLimitMs = TimeLimitMs - spentMs;
        CAnswer answer(options.keepGoing);
        const auto result = Platform::ExchangeHttp(request, answer);
        options.status = answer.Head().status;
        options.error = result.error;
        const bool came =
            result.end == Platform::EHttpEnd::Whole || result.end == Platform::EHttpEnd::CutShort;
        if (came && options.status == Found) return answer.Text();
        if (!IsRedirect(options.status)) return std::nullopt;
        address = FollowRedirect(*address, answer.Head().location);
        if (!address) return std::nullopt;
        if (options.status <= 303) request.body.clear(); // these mean GET; the others repeat the request
        request.secure = address->secure;
        request.host = address->host;
        request.port = address->port;
        request.path = address->path;
    }
    return std::nullopt;
}

} // namespace

std::unique_ptr<char[]> HttpGet(std::u16string_view url, std::size_t& size, HttpOptions* options) noexcept {
    size = 0;
    try {
        HttpOptions none;
        HttpOptions& used = options != nullptr ? *options : none;
        used.status = 0;
        used.error = 0;
        const auto text = Fetch(url, used);
        if (!text) return nullptr;
        auto bytes = std::make_unique<char[]>(text->size() + 2);
        std::ranges::copy(*text, bytes.get());
        size = text->size();
        return bytes;
    } catch (...) { // no memory
        return nullptr;
    }
}

} // namespace KAV::Utils
