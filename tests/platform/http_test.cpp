// Time limits, set so short that a test can wait for them.

#include "platform/http.h"

#include "tests/support/local_server.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <array>
#include <cerrno>
#include <csignal>
#include <unistd.h>
#endif

using namespace KAV::Platform;
using namespace KAV::Tests;

namespace {

struct SReceiver final : IHttpReceiver {
    bool KeepGoing() noexcept override { return true; }
    bool Begin(const SHttpHead& begun) noexcept override {
        head = begun;
        ++begins;
        return true;
    }
    bool Take(const char* data, std::size_t size) noexcept override {
        bytes.append(data, size);
        return true;
    }
    SHttpHead head;
    int begins = 0;
    std::string bytes;
};

SHttpRequest Request(const CLocalServer& server, std::uint32_t limitMs) {
    SHttpRequest request;
    request.host = "127.0.0.1";
    request.port = server.Port();
    request.path = "/";
    request.timeLimitMs = limitMs;
    return request;
}

} // namespace

TEST(ExchangeHttp, HandsOverTheHeadOnceAndThenTheBytes) {
    const CLocalServer server([](CConnection& connection, const std::string&) {
        connection.Answer(418, "bytes", "content-encoding:  GZip \r\nLOCATION: /there\r\n");
    });
    SReceiver receiver;
    const auto result = ExchangeHttp(Request(server, 10000), receiver);
    EXPECT_EQ(result.end, EHttpEnd::Whole);
    EXPECT_EQ(result.error, 0);
    EXPECT_EQ(receiver.begins, 1);
    EXPECT_EQ(receiver.head.status, 418);
    EXPECT_EQ(receiver.head.encoding, "GZip");
    EXPECT_EQ(receiver.head.location, "/there");
    EXPECT_EQ(receiver.bytes, "bytes");
}

TEST(ExchangeHttp, EndsASilentServer) {
    const CLocalServer server([](CConnection& connection, const std::string&) { connection.AwaitItsEnd(); });
    SReceiver receiver;
    const auto result = ExchangeHttp(Request(server, 300), receiver);
    EXPECT_EQ(result.end, EHttpEnd::Failed);
    EXPECT_NE(result.error, 0);
    EXPECT_EQ(receiver.begins, 0);
}

TEST(ExchangeHttp, EndsASlowDripOfBytes) {
    const CLocalServer server([](CConnection& connection, const std::string&) {
        connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n");
        while (connection.Send("x")) connection.Pause(20);
    });
    SReceiver receiver;
    const auto result = ExchangeHttp(Request(server, 500), receiver);
    EXPECT_EQ(result.end, EHttpEnd::Failed);
    EXPECT_NE(result.error, 0);
    EXPECT_EQ(receiver.begins, 1);
}

#if !defined(_WIN32)
TEST(ExchangeHttp, LeavesTheHostsSignalsAsTheyAre) {
    const auto signals = [] {
        sigset_t mask;
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        std::vector<std::uintptr_t> state;
        for (int number = 1; number < 32; ++number) {
            struct sigaction action {};
            sigaction(number, nullptr, &action);
            state.push_back(reinterpret_cast<std::uintptr_t>(action.sa_handler));
            state.push_back(static_cast<std::uintptr_t>(sigismember(&mask, number)));
        }
        return state;
    };
    const auto before = signals();
    const CLocalServer server([](CConnection& connection, const std::string&) { connection.Reset(); });
    SReceiver receiver;
    ExchangeHttp(Request(server, 10000), receiver);
    EXPECT_EQ(signals(), before);
}

namespace {

/// A receiver that lets the library write to a connection that the server has closed.
class CBrokenPipe final : public IHttpReceiver {
public:
    CBrokenPipe() {
        EXPECT_EQ(pipe(_ends.data()), 0);
        close(_ends[0]);
    }
    ~CBrokenPipe() { close(_ends[1]); }
    CBrokenPipe(const CBrokenPipe&) = delete;
    CBrokenPipe& operator=(const CBrokenPipe&) = delete;

    bool KeepGoing() noexcept override {
        writes += write(_ends[1], "x", 1) < 0 && errno == EPIPE ? 1 : 0;
        return true;
    }
    bool Begin(const SHttpHead&) noexcept override { return true; }
    bool Take(const char*, std::size_t) noexcept override { return true; }

    int writes = 0;

private:
    std::array<int, 2> _ends{-1, -1};
};

std::atomic<int> pipeSignals{0};

bool IsPending() {
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 1;
}

} // namespace

TEST(ExchangeHttp, KeepsTheSignalOfABrokenConnectionFromTheHost) {
    std::signal(SIGPIPE, [](int) { ++pipeSignals; });
    const CLocalServer server([](CConnection& connection, const std::string&) { connection.Reset(); });
    CBrokenPipe receiver;
    ExchangeHttp(Request(server, 10000), receiver);
    EXPECT_GT(receiver.writes, 0);
    EXPECT_EQ(pipeSignals, 0);
    EXPECT_FALSE(IsPending());
    raise(SIGPIPE); // the host's own signal still arrives
    EXPECT_EQ(pipeSignals, 1);
}

TEST(ExchangeHttp, LeavesASignalThatTheHostHoldsBack) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    raise(SIGPIPE);
    const CLocalServer server([](CConnection& connection, const std::string&) { connection.Reset(); });
    CBrokenPipe receiver;
    ExchangeHttp(Request(server, 10000), receiver);
    EXPECT_TRUE(IsPending());
}
#endif

TEST(ExchangeHttp, EndsASlowDripOfAHead) {
    const CLocalServer server([](CConnection& connection, const std::string&) {
        connection.Send("HTTP/1.1 200 OK\r\nX: ");
        while (connection.Send("x")) connection.Pause(20);
    });
    SReceiver receiver;
    EXPECT_EQ(ExchangeHttp(Request(server, 500), receiver).end, EHttpEnd::Failed);
    EXPECT_EQ(receiver.begins, 0);
}

TEST(ExchangeHttp, EndsAsSoonAsTheReceiverWantsItWhateverTheServerDoes) {
    for (const bool greets : {false, true}) {
        std::atomic<bool> asked{false};
        const CLocalServer server([&](CConnection& connection, const std::string&) {
            if (greets) connection.Send("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n");
            asked = true;
            connection.AwaitItsEnd();
        });
        struct SImpatient final : IHttpReceiver {
            explicit SImpatient(const std::atomic<bool>& serverHasIt) : asked(serverHasIt) {}
            bool KeepGoing() noexcept override { return !asked; }
            bool Begin(const SHttpHead&) noexcept override { return true; }
            bool Take(const char*, std::size_t) noexcept override { return true; }
            const std::atomic<bool>& asked;
        } receiver(asked);
        const auto began = std::chrono::steady_clock::now();
        EXPECT_EQ(ExchangeHttp(Request(server, 10000), receiver).end, EHttpEnd::Failed);
        // Half of the time after which it would have ended on its own.
        EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(5));
    }
}
