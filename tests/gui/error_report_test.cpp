// One report per process, and each test is a process.

#include "gui/error_report.h"

#include "gui/gui.h"
#include "tests/support/file_text.h"
#include "tests/support/local_server.h"
#include "utils/number.h"
#include "utils/path.h"
#include "utils/session_log.h"
#include "utils/system_description.h"
#include "utils/text.h"
#include "utils/web_address.h"

#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>

#if !defined(_WIN32)
#include "tests/support/other_process.h"

#include <sys/wait.h>
#include <unistd.h>
#endif

using namespace KAV;
using namespace KAV::Tests;

namespace {

Utils::CTurns turns;

Utils::SMakerService Service(const std::u16string& origin) {
    return {origin, {}, u"0123abcd", u"vst24_test", {}};
}

CLocalServer::Behaviour Answering(int status) {
    return [=](CConnection& connection, const std::string&) { connection.Answer(status, "dropped"); };
}

/// The session before left this.
void LeaveALog(std::string_view text) {
    WriteText(Utils::ToSystemPath(Utils::LogPath()), text);
}

std::filesystem::path UnsentFile() {
    return Utils::ToSystemPath(Utils::UnsentLogPath());
}

/// Processes before could not send this.
void LeaveAnUnsentLog(std::string_view text) {
    WriteText(UnsentFile(), text);
}

/// For a minute at most.
bool AwaitThatNothingIsUnsent() {
    for (int i = 0; i < 6000 && std::filesystem::exists(UnsentFile()); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return !std::filesystem::exists(UnsentFile());
}

/// Long enough for a request that nobody shall make.
void LetTimePass() {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
}

} // namespace

TEST(ErrorReport, SendsThePreviousLogPercentEncoded) {
    LeaveALog("Error=a&b+c~!()' \xC3\xA4\r\n");
    const CLocalServer server(Answering(200));
    const GUI::CGUI gui(turns, Service(server.Origin()));
    const auto requests = server.AwaitRequests(1);
    ASSERT_EQ(requests.size(), 1u);
    const auto& request = requests[0];
    EXPECT_TRUE(request.starts_with("POST /log.php HTTP/1.1\r\n")) << request;
    EXPECT_NE(request.find("\r\nUser-Agent: KAV GUI\r\n"), std::string::npos) << request;
    EXPECT_NE(request.find("\r\nContent-Type: application/x-www-form-urlencoded\r\n"), std::string::npos)
        << request;
    EXPECT_TRUE(request.ends_with("\r\n\r\napp=KAV Sorrel Limiter " + Utils::ToUtf8(Utils::MachineId()) +
                                  "&content=Error%3da%26b%2bc~!()'%20%c3%a4%0d%0a"))
        << request;
}

TEST(ErrorReport, IsSentOncePerProcess) {
    LeaveALog("Error=x\r\n");
    const CLocalServer server(Answering(200));
    {
        const GUI::CGUI first(turns, Service(server.Origin()));
        const GUI::CGUI second(turns, Service(server.Origin()));
        EXPECT_EQ(server.AwaitRequests(1).size(), 1u);
        LetTimePass();
    }
    const GUI::CGUI third(turns, Service(server.Origin()));
    LetTimePass();
    EXPECT_EQ(server.Requests().size(), 1u);
}

TEST(ErrorReport, IsNotSentAgainAfterAFailure) {
    LeaveALog("Error=x\r\n");
    const CLocalServer server(Answering(500));
    for (int i = 0; i < 2; ++i) {
        const GUI::CGUI gui(turns, Service(server.Origin()));
        server.AwaitRequests(1);
        LetTimePass();
    }
    EXPECT_EQ(server.Requests().size(), 1u);
}

TEST(ErrorReport, NeedsALog) {
    const CLocalServer server(Answering(200));
    const GUI::CGUI gui(turns, Service(server.Origin()));
    LetTimePass();
    EXPECT_EQ(server.Requests().size(), 0u);
    EXPECT_EQ(Utils::PreviousLog(), u"");
}

TEST(ErrorReport, NeedsAServerAndLeavesItToTheNextInstanceWithout) {
    LeaveALog("Error=x\r\n");
    { const GUI::CGUI gui(turns, Service({})); }
    { const GUI::CGUI gui(turns, Service(u"http://server.invalid")); } // no log goes out in the clear
    const CLocalServer server(Answering(200));
    const GUI::CGUI gui(turns, Service(server.Origin()));
    EXPECT_EQ(server.AwaitRequests(1).size(), 1u);
}

TEST(ErrorReport, SendsTheLogsThatEarlierProcessesCouldNotSend) {
    LeaveAnUnsentLog("Error=older\r\n");
    LeaveALog("Error=newer\r\n");
    const CLocalServer server(Answering(200));
    const GUI::CGUI gui(turns, Service(server.Origin()));
    const auto requests = server.AwaitRequests(1);
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_TRUE(requests[0].ends_with("&content=Error%3dolder%0d%0aError%3dnewer%0d%0a")) << requests[0];
}

TEST(ErrorReport, KeepsTheLogUntilAServerHasIt) {
    LeaveALog("Error=x\r\n");
    const CLocalServer server([](CConnection& connection, const std::string&) {
        EXPECT_EQ(ReadText(UnsentFile()), "Error=x\r\n");
        connection.Answer(200, "");
    });
    const GUI::CGUI gui(turns, Service(server.Origin()));
    EXPECT_EQ(server.AwaitRequests(1).size(), 1u);
    EXPECT_TRUE(AwaitThatNothingIsUnsent());
}

TEST(ErrorReport, TakesAnySuccessForADelivery) {
    LeaveALog("Error=x\r\n");
    const CLocalServer server(Answering(204));
    const GUI::CGUI gui(turns, Service(server.Origin()));
    EXPECT_TRUE(AwaitThatNothingIsUnsent());
}

TEST(ErrorReport, KeepsALogThatTheServerRefuses) {
    LeaveALog("Error=x\r\n");
    const CLocalServer server(Answering(403));
    {
        const GUI::CGUI gui(turns, Service(server.Origin()));
        server.AwaitRequests(1);
        LetTimePass();
    }
    EXPECT_EQ(ReadText(UnsentFile()), "Error=x\r\n");
}

TEST(ErrorReport, KeepsNoLogWithoutAServer) {
    LeaveALog("Error=x\r\n");
    const GUI::CGUI gui(turns, Service({}));
    EXPECT_FALSE(std::filesystem::exists(UnsentFile()));
}

TEST(ErrorReport, KeepsNoLogForAServerThatGetsNone) {
    LeaveALog("Error=x\r\n");
    const GUI::CGUI gui(turns, Service(u"http://server.invalid"));
    EXPECT_TRUE(AwaitThatNothingIsUnsent());
}

TEST(ErrorReport, SendsTheLastLinesOfALogBeyondAMegabyte) {
    std::string log = "first\r\n";
    while (log.size() <= 1u << 20) log += "line " + std::to_string(log.size()) + "\r\n";
    LeaveALog(log);
    const CLocalServer server(Answering(200));
    const GUI::CGUI gui(turns, Service(server.Origin()));
    const auto requests = server.AwaitRequests(1);
    ASSERT_EQ(requests.size(), 1u);
    const auto content = requests[0].substr(requests[0].find("&content=") + 9);
    const auto end = log.substr(log.size() - (1u << 20));
    EXPECT_TRUE(content == Utils::PercentEncoded(end.substr(end.find('\n') + 1)))
        << content.substr(0, 100) << " ... " << content.size();
}

#if !defined(_WIN32) // which can't copy a process
namespace {

std::size_t Count(std::string_view text, std::string_view part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string_view::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

} // namespace

TEST(ErrorReport, ALogThatShortLivedProcessesCouldNotSendIsSentByTheNext) {
    LeaveALog("Error=crash\r\n");
    const auto closed = u"http://127.0.0.1:" + Utils::FormatInt(FreePort());
    for (int i = 0; i < 10; ++i) {
        InAnotherProcess([&] {
            const GUI::CGUI gui(turns, Service(closed));
            return 0;
        });
    }
    const CLocalServer server(Answering(200));
    const GUI::CGUI gui(turns, Service(server.Origin()));
    const auto requests = server.AwaitRequests(1);
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(Count(requests[0], "Error%3dcrash"), 1u);
    EXPECT_EQ(Count(requests[0], "SessionEnd%3d"), 10u);
}

TEST(ErrorReport, IsSentByOneOfManyProcesses) {
    LeaveALog("Error=crash\r\n");
    int ports[2] = {-1, -1};
    ASSERT_EQ(pipe(ports), 0);
    std::vector<pid_t> children;
    for (int i = 0; i < 8; ++i) { // before this process has the server's thread
        const pid_t child = fork();
        if (child == 0) {
            std::uint16_t port = 0;
            if (read(ports[0], &port, sizeof(port)) != sizeof(port)) _exit(1);
            const GUI::CGUI gui(turns, Service(u"http://127.0.0.1:" + Utils::FormatInt(port)));
            _exit(AwaitThatNothingIsUnsent() ? 0 : 2);
        }
        children.push_back(child);
    }
    const CLocalServer server(Answering(200));
    const auto port = server.Port();
    for (std::size_t i = 0; i < children.size(); ++i)
        ASSERT_EQ(write(ports[1], &port, sizeof(port)), static_cast<ssize_t>(sizeof(port)));
    for (const auto child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    std::size_t sent = 0;
    for (const auto& request : server.Requests()) sent += Count(request, "Error%3dcrash");
    EXPECT_EQ(sent, 1u);
}
#endif

TEST(ErrorReport, TheEndOfTheEditorEndsTheRequest) {
    LeaveALog("Error=x\r\n");
    std::atomic<bool> wentAway{false};
    const CLocalServer server(
        [&](CConnection& connection, const std::string&) { wentAway = connection.AwaitItsEnd(); });
    auto asked = std::chrono::steady_clock::now();
    {
        const GUI::CGUI gui(turns, Service(server.Origin()));
        server.AwaitRequests(1);
        asked = std::chrono::steady_clock::now();
    }
    // Half of the time after which it would have ended by itself.
    EXPECT_LT(std::chrono::steady_clock::now() - asked, std::chrono::seconds(5));
#if !defined(_WIN32) // whose client ends its connection in its own time
    for (int i = 0; i < 100 && !wentAway; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_TRUE(wentAway);
#endif
}
