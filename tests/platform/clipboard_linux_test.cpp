#include "platform/clipboard.h"
#include "tests/support/display.h"

#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace KAV::Platform;
using namespace KAV::Tests;

TEST(Clipboard, FailsWithoutADisplay) {
    unsetenv("DISPLAY");
    EXPECT_FALSE(WriteClipboard("clipboard:x", "x", 1));
    EXPECT_EQ(ReadClipboard("clipboard:x").data, nullptr);
}

TEST(Clipboard, FailsAtOnceForADisplayThatIsGoneOrElsewhere) {
    for (const char* const display : {":4711", "host.example.invalid:0", "", "nonsense"}) {
        setenv("DISPLAY", display, 1);
        EXPECT_FALSE(WriteClipboard("clipboard:x", "x", 1)) << display;
        EXPECT_EQ(ReadClipboard("clipboard:x").data, nullptr) << display;
    }
}

TEST(Clipboard, ReachesOtherProcesses) {
    const CDisplay display;
    const pid_t child = fork(); // before there are threads
    if (child == 0) {
        for (int attempt = 0; attempt < 500; ++attempt) { // its parent writes any time now
            const SBytes bytes = ReadClipboard("clipboard:shared");
            if (bytes.data != nullptr) _exit(std::string(bytes.data.get(), bytes.size) == "hello" ? 0 : 1);
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        _exit(2);
    }
    EXPECT_TRUE(WriteClipboard("clipboard:shared", "hello", 5));
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST(Clipboard, SurvivesTheEndOfTheDisplay) {
    {
        const CDisplay display;
        EXPECT_TRUE(WriteClipboard("clipboard:x", "x", 1));
    }
    EXPECT_EQ(ReadClipboard("clipboard:x").data, nullptr);
    EXPECT_FALSE(WriteClipboard("clipboard:x", "x", 1));
}
