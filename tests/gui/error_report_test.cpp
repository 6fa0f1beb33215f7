// One report per process, and each test is a process.

#include "gui/error_report.h"

#include "gui/gui.h"
#include "tests/support/file_text.h"
#include "tests/support/local_server.h"
#include "utils/path.h"
#include "utils/session_log.h"
#include "utils/system_description.h"
#include "utils/text.h"

#include <chrono>
#include <gtest/gtest.h>
#include <memory>

using namespace KAV;
using namespace KAV::Tests;

namespace {

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

/// Long enough for a request that nobody shall make.
void LetTimePass() {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
}

} // namespace

TEST(ErrorReport, SendsThePreviousLogPercentEncoded) {
    LeaveALog("Error=a&b+c~!()' \xC3\xA4\r\n");
    const CLocalServer server(Answering(200));
    const GUI::CGUI gui(Service(server.Origin()));
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
        const GUI::CGUI first(Service(server.Origin()));
        const GUI::CGUI second(Service(server.Origin()));
        EXPECT_EQ(server.AwaitRequests(1).size(), 1u);
        LetTimePass();
    }
    const GUI::CGUI third(Service(server.Origin()));
    LetTimePass();
    EXPECT_EQ(server.Requests().size(), 1u);
}

TEST(ErrorReport, IsNotSentAgainAfterAFailure) {
    LeaveALog("Error=x\r\n");
    const CLocalServer server(Answering(500));
    for (int i = 0; i < 2; ++i) {
        const GUI::CGUI gui(Service(server.Origin()));
        server.AwaitRequests(1);
        LetTimePass();
    }
    EXPECT_EQ(server.Requests().size(), 1u);
}

TEST(ErrorReport, NeedsALog) {
    const CLocalServer server(Answering(200));
    const GUI::CGUI gui(Service(server.Origin()));
    LetTimePass();
    EXPECT_EQ(server.Requests().size(), 0u);
    EXPECT_EQ(Utils::PreviousLog(), u"");
}

TEST(ErrorReport, NeedsAServerAndLeavesItToTheNextInstanceWithout) {
    LeaveALog("Error=x\r\n");
    { const GUI::CGUI gui(Service({})); }
    { const GUI::CGUI gui(Service(u"http://server.invalid")); } // no log goes out in the clear
    const CLocalServer server(Answering(200));
    const GUI::CGUI gui(Service(server.Origin()));
    EXPECT_EQ(server.AwaitRequests(1).size(), 1u);
}

#if !defined(_WIN32) // where a request ends in its own time
TEST(ErrorReport, TheEndOfTheEditorEndsTheRequest) {
    LeaveALog("Error=x\r\n");
    std::atomic<bool> wentAway{false};
    const CLocalServer server(
        [&](CConnection& connection, const std::string&) { wentAway = connection.AwaitItsEnd(); });
    auto asked = std::chrono::steady_clock::now();
    {
        const GUI::CGUI gui(Service(server.Origin()));
        server.AwaitRequests(1);
        asked = std::chrono::steady_clock::now();
    }
    // Half of the time after which it would have ended by itself.
    EXPECT_LT(std::chrono::steady_clock::now() - asked, std::chrono::seconds(5));
    for (int i = 0; i < 100 && !wentAway; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_TRUE(wentAway);
}
#endif
