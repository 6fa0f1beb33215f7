// The log belongs to the process, and each test has its own process.

#include "utils/session_log.h"

#include "platform/file_system.h"
#include "platform/system_info.h"
#include "tests/support/faulty_files.h"
#include "tests/support/file_text.h"
#include "utils/cpu_features.h"
#include "utils/path.h"
#include "utils/system_description.h"
#include "utils/text.h"
#include "utils/unsent_log.h"

#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <thread>
#include <vector>

using namespace KAV;
using namespace KAV::Utils;
using namespace KAV::Tests;

namespace {

std::filesystem::path File() {
    return ToSystemPath(LogPath());
}

std::filesystem::path Unsent() {
    return ToSystemPath(UnsentLogPath());
}

/// The lines of the file; each must end with CR LF.
std::vector<std::string> Lines() {
    std::vector<std::string> lines;
    const auto text = ReadText(File());
    for (const auto line : Split(text, "\r\n")) lines.emplace_back(line);
    EXPECT_FALSE(lines.empty());
    if (lines.empty()) return lines;
    EXPECT_EQ(lines.back(), "") << "the last line has no line end";
    lines.pop_back();
    return lines;
}

bool IsDateTime(const std::string& line) {
    return std::regex_match(line, std::regex(R"(DateTime=\d{4}\.\d\d\.\d\d\.\d\d:\d\d:\d\d)"));
}

} // namespace

TEST(SessionLog, LiesInTheTemporaryFolderUnderTheMachinesName) {
    EXPECT_EQ(LogPath(), GetTemporaryFolder() + u"KAV Sorrel Limiter " + MachineId() + u".log");
}

TEST(SessionLog, BeginsWithTheDateAndAppendsLines) {
    EXPECT_FALSE(std::filesystem::exists(File()));
    LogLine(u"Error=first \xE4");
    LogLine(u"second");
    const auto lines = Lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_TRUE(IsDateTime(lines[0])) << lines[0];
    EXPECT_EQ(lines[1], "Error=first \xC3\xA4");
    EXPECT_EQ(lines[2], "second");
    EXPECT_EQ(PreviousLog(), u"");
}

TEST(SessionLog, WritesADateFromTheYearToTheSecond) {
    std::tm moment{};
    moment.tm_year = 126; // since 1900
    moment.tm_mon = 1;    // since January
    moment.tm_mday = 3;
    moment.tm_hour = 16;
    moment.tm_min = 5;
    moment.tm_sec = 6;
    EXPECT_EQ(LogTime(moment), "2026.02.03.16:05:06");
}

TEST(SessionLog, BeginsWithThePresentLocalTime) {
    const auto before = LogTime(Platform::LocalTime());
    LogLine(u"x");
    const auto after = LogTime(Platform::LocalTime());
    const auto written = Lines().at(0).substr(std::string("DateTime=").size());
    if (before <= after) { // the clock wasn't set back meanwhile
        EXPECT_GE(written, before);
        EXPECT_LE(written, after);
    }
}

TEST(SessionLog, KeepsWhatTheFileHeldAndBeginsAnew) {
    WriteText(File(), "DateTime=2026.01.02.03:04:05\r\nSessionStart=1\r\n");
    EXPECT_EQ(PreviousLog(), u""); // the file hasn't been opened yet
    LogLine(u"new");
    EXPECT_EQ(PreviousLog(), u"DateTime=2026.01.02.03:04:05\r\nSessionStart=1\r\n");
    ASSERT_EQ(Lines().size(), 2u);
    EXPECT_EQ(Lines()[1], "new");
}

TEST(SessionLog, KeepsTheEndOfALogThatIsLongerThanAny) {
    const std::string line = "Error=" + std::string(992, 'x') + "\r\n"; // 1000 bytes
    std::string log = "first\r\n";
    while (log.size() <= 17u << 20) log += line;
    WriteText(File(), log + "last\r\n");
    LogLine(u"new");
    const auto previous = PreviousLog();
    EXPECT_LE(previous.size(), 16u << 20);
    EXPECT_GT(previous.size(), (16u << 20) - line.size());
    EXPECT_TRUE(previous.starts_with(u"Error=x"));
    EXPECT_TRUE(previous.ends_with(u"x\r\nlast\r\n"));
}

TEST(SessionLog, KeepsALogThatACrashHasCut) {
    WriteText(File(), "SessionStart=1\r\nError=cut \xC3");
    LogLine(u"new");
    EXPECT_EQ(PreviousLog(), u"SessionStart=1\r\nError=cut \xFFFD");
}

TEST(SessionLog, WritesTheSessionsLinesInOrder) {
    LogSessionStart();
    LogSessionEnd();
    const auto lines = Lines();
    ASSERT_EQ(lines.size(), 12u);
    const std::vector<std::string> beginnings{"DateTime=", "SessionStart=", "Application=KAV Sorrel Limiter",
        "Version=1.0.1.0",
        "OS=", "NetBiosName=", "Computer=", "SIMD=", "RAM=", "Display=", "SessionEnd=", "~CGUI()"};
    for (std::size_t i = 0; i < lines.size(); ++i)
        EXPECT_TRUE(lines[i].starts_with(beginnings[i])) << lines[i];
    EXPECT_TRUE(std::regex_match(lines[1], std::regex("SessionStart=\\d+")));
    EXPECT_EQ(lines[2], "Application=KAV Sorrel Limiter");
    EXPECT_EQ(lines[3], "Version=1.0.1.0");
    EXPECT_GT(lines[4].size(), 3u);
    EXPECT_EQ(lines[7], "SIMD=" + ToUtf8(DescribeFeatures(DetectFeatures())));
    EXPECT_TRUE(std::regex_match(lines[8], std::regex("RAM=\\d+/\\d+GB"))) << lines[8];
    EXPECT_TRUE(std::regex_match(lines[9], std::regex("Display=|Display=\\d+, 1:\\d+x\\d+@\\d+, dpi=\\d+%")))
        << lines[9];
    EXPECT_TRUE(std::regex_match(lines[10], std::regex("SessionEnd=\\d+")));
}

TEST(SessionLog, ASecondInstanceAppendsToTheSameFile) {
    LogSessionStart();
    LogSessionStart();
    LogSessionEnd();
    EXPECT_EQ(Lines().size(), 1u + 9 + 9 + 2);
}

TEST(SessionLog, AProcessThatFindsTheFileTakenLogsNothingAndKnowsOfNoSession) {
    WriteText(File(), "SessionStart=of another process\r\n");
    const auto other = Platform::SystemFiles().OpenAlone(File());
    ASSERT_NE(other, Platform::IFileSystem::NoFile);
    LogLine(u"mine");
    EXPECT_EQ(PreviousLog(), u"");
    Platform::SystemFiles().Close(other);
    LogLine(u"mine as well"); // too late: the first line decides
    EXPECT_EQ(ReadText(File()), "SessionStart=of another process\r\n");
}

TEST(SessionLog, IsNoErrorWhenNothingCanBeOpened) {
    const auto file = File();
    WriteText(file, "SessionStart=1\r\n");
    {
        const CFaultyFiles files(1, CFaultyFiles::EFault::Stop);
        LogSessionStart();
        LogSessionEnd();
        EXPECT_TRUE(files.Happened());
        EXPECT_EQ(PreviousLog(), u"");
    }
    EXPECT_EQ(ReadText(file), "SessionStart=1\r\n");
}

TEST(SessionLog, DropsTextThatIsIllFormed) {
    LogLine(u"good");
    LogLine(u"bad \xD800");
    LogLine(u"");
    const auto lines = Lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1], "good");
    EXPECT_EQ(lines[2], "");
}

TEST(SessionLog, AddsThePreviousLogToThoseThatWereNotSent) {
    WriteText(Unsent(), "DateTime=1\r\nError=older\r\n");
    WriteText(File(), "DateTime=2\r\nError=newer\r\n");
    LogLine(u"present");
    const std::string both = "DateTime=1\r\nError=older\r\nDateTime=2\r\nError=newer\r\n";
    EXPECT_EQ(UnsentLog(), ToUtf16(both));
    EXPECT_EQ(PreviousLog(), u"DateTime=2\r\nError=newer\r\n");
    EXPECT_EQ(ReadText(Unsent()), both);
    DropUnsentLog();
    EXPECT_FALSE(std::filesystem::exists(Unsent()));
    EXPECT_EQ(UnsentLog(), ToUtf16(both)); // as it was when the file was opened
}

TEST(SessionLog, KeepsUnsentLogsWhenThereIsNoPreviousOne) {
    WriteText(Unsent(), "Error=older\r\n");
    LogLine(u"present");
    EXPECT_EQ(UnsentLog(), u"Error=older\r\n");
    EXPECT_EQ(ReadText(Unsent()), "Error=older\r\n");
}

TEST(SessionLog, MakesNoFileWhenThereIsNothingUnsent) {
    LogLine(u"present");
    EXPECT_EQ(UnsentLog(), u"");
    EXPECT_FALSE(std::filesystem::exists(Unsent()));
}

TEST(SessionLog, LeavesUnsentLogsToTheProcessThatHasTheFile) {
    WriteText(Unsent(), "Error=older\r\n");
    const auto other = Platform::SystemFiles().OpenAlone(File());
    ASSERT_NE(other, Platform::IFileSystem::NoFile);
    LogLine(u"mine");
    EXPECT_EQ(UnsentLog(), u"");
    DropUnsentLog();
    EXPECT_EQ(ReadText(Unsent()), "Error=older\r\n");
    Platform::SystemFiles().Close(other);
}

TEST(SessionLog, ComplainsOfTextures) {
    LogTextureTooLarge(u"Knob", 9000, 8192, 100, 4096);
    LogTextureAspect(u"Fader", 400, 100, 4, 2);
    const auto lines = Lines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1], "Error=TextureTooLarge:\"Knob\", a_nW=9000[nMaxW=8192], a_nH=100[nMaxH=4096]");
    EXPECT_EQ(lines[2],
        "Error=TextureHasIncompatibleAspect:\"Fader\", a_nW=400, a_nH=100, nAspect=4[nMaxAspect=2]");
}

TEST(SessionLog, KeepsLinesWholeThatManyThreadsWrite) {
    constexpr int Threads = 4;
    constexpr int Rounds = 200;
    std::vector<std::thread> threads;
    for (int i = 0; i < Threads; ++i) {
        threads.emplace_back([] {
            for (int round = 0; round < Rounds; ++round) {
                LogLine(u"a line that is long enough to be torn in the middle");
                PreviousLog();
            }
        });
    }
    for (auto& thread : threads) thread.join();
    const auto lines = Lines();
    ASSERT_EQ(lines.size(), 1u + Threads * Rounds);
    EXPECT_TRUE(IsDateTime(lines[0]));
    for (std::size_t i = 1; i < lines.size(); ++i)
        ASSERT_EQ(lines[i], "a line that is long enough to be torn in the middle");
}

TEST(SessionLog, WritesALineOnceThatIsFoundAgainAndAgain) {
    for (int n = 0; n < 3; ++n) LogLineOnce(u"found");
    LogLineOnce(u"another");
    LogLine(u"found");
    auto lines = Lines();
    lines.erase(lines.begin()); // the date
    EXPECT_EQ(lines, (std::vector<std::string>{"found", "another", "found"}));
}
