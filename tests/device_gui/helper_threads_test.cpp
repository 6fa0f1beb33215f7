// The threads that an instance starts in its host.

#include "tests/support/file_text.h"
#include "tests/support/local_server.h"
#include "tests/support/other_threads.h"
#include "tests/support/recording_host.h"
#include "utils/path.h"
#include "utils/session_log.h"

#include <cstdlib>
#include <gtest/gtest.h>

using namespace KAV;
using namespace KAV::Tests;

TEST(HelperThreads, OfAnInstanceTakeNoSignals) {
    unsetenv("DISPLAY"); // which would be asked on a thread that may still be there
    WriteText(Utils::ToSystemPath(Utils::LogPath()), "SessionStart=1\r\n"); // for the error report to send
    const CLocalServer server([](CConnection& connection, const std::string&) { connection.AwaitItsEnd(); });
    const auto before = Threads();
    const CHostedEffect effect(nullptr, {server.Origin(), server.Origin(), u"0123abcd", u"vst24_test", {}});
    server.AwaitRequests(1);
    const auto started = AwaitNewThreads(before, 2);
    ASSERT_EQ(started.size(), 2u);
    for (const int thread : started) EXPECT_TRUE(BlocksAllSignals(thread));
}
