#include "utils/unsent_log.h"

#include "tests/support/faulty_files.h"
#include "tests/support/file_text.h"
#include "tests/support/scratch_home.h"

#include <gtest/gtest.h>
#include <string>

using namespace KAV;
using namespace KAV::Utils;
using namespace KAV::Tests;

namespace {

/// A file that doesn't exist yet.
std::filesystem::path File() {
    const auto file = ScratchFolder() / "unsent.log";
    std::filesystem::remove(file);
    return file;
}

/// A line of this many bytes that starts with a number.
std::string Line(std::size_t number, std::size_t length) {
    auto line = std::to_string(number);
    line.resize(length - 2, 'x');
    return line + "\r\n";
}

} // namespace

TEST(LastLines, AreAllOfAShortText) {
    EXPECT_EQ(LastLines("a\r\nb\r\n", 6), "a\r\nb\r\n");
    EXPECT_EQ(LastLines("", 0), "");
}

TEST(LastLines, BeginWithAWholeLine) {
    for (std::size_t longest = 3; longest < 6; ++longest)
        EXPECT_EQ(LastLines("a\r\nb\r\n", longest), "b\r\n") << longest;
    EXPECT_EQ(LastLines("a\r\nb", 3), "b");
}

TEST(LastLines, BeginWithAWholeCharacterWhenTheLastLineIsTooLong) {
    EXPECT_EQ(LastLines("abc\r\n", 3), "c\r\n");
    EXPECT_EQ(LastLines("abc", 2), "bc");
    EXPECT_EQ(LastLines("a\xE2\x82\xAC"
                        "b",
                  3),
        "b");
    EXPECT_EQ(LastLines("a\xE2\x82\xAC"
                        "b",
                  4),
        "\xE2\x82\xAC"
        "b");
    EXPECT_EQ(LastLines("abc", 0), "");
}

TEST(UnsentLog, HoldsLogsInTheOrderOfTheirSessions) {
    const auto file = File();
    EXPECT_EQ(AddToUnsentLog(file, "DateTime=1\r\n"), "DateTime=1\r\n");
    EXPECT_EQ(AddToUnsentLog(file, "DateTime=2\r\n"), "DateTime=1\r\nDateTime=2\r\n");
    EXPECT_EQ(AddToUnsentLog(file, ""), "DateTime=1\r\nDateTime=2\r\n");
    EXPECT_EQ(ReadText(file), "DateTime=1\r\nDateTime=2\r\n");
}

TEST(UnsentLog, BeginsANewLineAfterOneThatACrashHasCut) {
    const auto file = File();
    AddToUnsentLog(file, "Error=cut \xC3");
    EXPECT_EQ(AddToUnsentLog(file, "DateTime=2\r\n"), "Error=cut \xC3\r\nDateTime=2\r\n");
    EXPECT_EQ(ReadText(file), "Error=cut \xC3\r\nDateTime=2\r\n");
}

TEST(UnsentLog, HoldsALogOnceWhenAProcessEndedBeforeItClearedTheLog) {
    const auto file = File();
    AddToUnsentLog(file, "DateTime=1\r\n");
    AddToUnsentLog(file, "DateTime=2\r\n");
    EXPECT_EQ(AddToUnsentLog(file, "DateTime=2\r\n"), "DateTime=1\r\nDateTime=2\r\n");
    EXPECT_EQ(ReadText(file), "DateTime=1\r\nDateTime=2\r\n");
}

TEST(UnsentLog, HoldsTheLastMegabyteWhateverIsAdded) {
    const auto file = File();
    std::string all;
    for (std::size_t i = 0; i < 30; ++i) {
        const auto log = Line(i, 99990);
        all += log;
        const auto held = AddToUnsentLog(file, log);
        EXPECT_EQ(held, all.substr(all.size() - std::min<std::size_t>(i + 1, 10) * log.size())) << i;
        EXPECT_EQ(ReadText(file), held) << i;
    }
    const auto longLog = Line(0, 1000) + Line(1, LongestUnsentLog);
    EXPECT_EQ(AddToUnsentLog(file, longLog), Line(1, LongestUnsentLog));
    EXPECT_EQ(ReadText(file), Line(1, LongestUnsentLog));
}

TEST(UnsentLog, TakesTheEndOfAFileThatIsTooLong) {
    const auto file = File();
    WriteText(file, Line(0, LongestUnsentLog) + Line(1, 1000) + Line(2, 1000));
    EXPECT_EQ(AddToUnsentLog(file, ""), Line(1, 1000) + Line(2, 1000));
    EXPECT_EQ(AddToUnsentLog(file, Line(3, 1000)), Line(1, 1000) + Line(2, 1000) + Line(3, 1000));
}

TEST(UnsentLog, ReturnsWhatItCannotWrite) {
    const auto file = File();
    const CFaultyFiles files(1, CFaultyFiles::EFault::Stop);
    EXPECT_EQ(AddToUnsentLog(file, "DateTime=1\r\n"), "DateTime=1\r\n");
    EXPECT_TRUE(files.Happened());
}
