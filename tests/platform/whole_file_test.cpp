#include "platform/whole_file.h"

#include "platform/file_system.h"
#include "tests/support/faulty_files.h"
#include "tests/support/file_text.h"
#include "tests/support/scratch_home.h"

#include <gtest/gtest.h>
#include <string>

using namespace KAV::Platform;
using namespace KAV::Tests;
using EFault = CFaultyFiles::EFault;
namespace fs = std::filesystem;

namespace {

const std::string Old(3000, 'o');
const std::string New(5000, 'n');

bool Replace(const fs::path& file, const std::string& text) {
    return ReplaceWholeFile(file, text.data(), text.size());
}

std::string Read(const fs::path& file) {
    const SBytes bytes = ReadWholeFile(file);
    return {bytes.data.get(), bytes.size};
}

/// The calls of a replacement without faults.
int CallsOfAReplacement(bool exists) {
    const auto folder = ScratchFolder() / "count";
    fs::create_directories(folder);
    if (exists) WriteText(folder / "file", Old);
    const CFaultyFiles files(0, EFault::Fail);
    EXPECT_TRUE(Replace(folder / "file", New));
    const int calls = files.Calls();
    fs::remove_all(folder);
    return calls;
}

} // namespace

TEST(ReadWholeFile, ReturnsTheBytesFollowedByTwoZeros) {
    const auto file = ScratchFolder() / "bytes";
    const std::string text("a\0b\xFF", 4);
    WriteText(file, text);
    const SBytes bytes = ReadWholeFile(file);
    ASSERT_NE(bytes.data, nullptr);
    EXPECT_EQ(std::string(bytes.data.get(), bytes.size + 2), text + std::string(2, '\0'));
}

TEST(ReadWholeFile, GivesNothingForAnEmptyOrMissingFileOrAFolder) {
    WriteText(ScratchFolder() / "empty", "");
    EXPECT_EQ(ReadWholeFile(ScratchFolder() / "empty").data, nullptr);
    EXPECT_EQ(ReadWholeFile(ScratchFolder() / "missing").data, nullptr);
    EXPECT_EQ(ReadWholeFile(ScratchFolder()).data, nullptr);
}

TEST(ReadWholeFile, GivesNothingWhenAnyCallFails) {
    const auto file = ScratchFolder() / "file";
    WriteText(file, Old);
    for (int call = 1; call <= 3; ++call) { // open, size, read
        const CFaultyFiles files(call, EFault::HalfFail);
        EXPECT_EQ(ReadWholeFile(file).data, nullptr) << call;
        EXPECT_TRUE(files.Happened());
    }
}

TEST(ReadWholeFile, ReadsNothingOfAFileThatIsTooLarge) {
    const auto file = ScratchFolder() / "file";
    WriteText(file, Old);
    EXPECT_EQ(ReadWholeFile(file, Old.size()).size, Old.size());
    const CFaultyFiles files(0, EFault::Fail);
    const SBytes bytes = ReadWholeFile(file, Old.size() - 1);
    EXPECT_EQ(bytes.data, nullptr);
    EXPECT_EQ(bytes.size, Old.size());
    EXPECT_EQ(files.Names(), "OpenToRead Size Close ");
}

TEST(ReplaceWholeFile, MakesOrReplacesAndLeavesNothingElse) {
    const auto folder = ScratchFolder() / "replace";
    fs::create_directories(folder);
    EXPECT_TRUE(Replace(folder / "file", Old));
    EXPECT_EQ(Read(folder / "file"), Old);
    EXPECT_TRUE(Replace(folder / "file", New));
    EXPECT_EQ(Read(folder / "file"), New);
    EXPECT_EQ(CountEntries(folder), 1u);
}

TEST(ReplaceWholeFile, IsOnTheDiskBeforeItGetsTheName) {
    const CFaultyFiles files(0, EFault::Fail);
    EXPECT_TRUE(Replace(ScratchFolder() / "durable", New));
    EXPECT_EQ(files.Names(), "Kind CreateNew Write Flush Close Replace FlushFolder ");
}

TEST(ReplaceWholeFile, RefusesFoldersAndMissingFolders) {
    EXPECT_FALSE(Replace(ScratchFolder(), New));
    EXPECT_FALSE(Replace(ScratchFolder() / "none" / "file", New));
}

TEST(ReplaceWholeFile, TakesNamesAsLongAsTheSystemAllows) {
    const auto file = ScratchFolder() / std::string(250, 'x');
    EXPECT_TRUE(Replace(file, New));
    EXPECT_EQ(Read(file), New);
}

TEST(ReplaceWholeFile, LeavesTheOldFileOrTheNewOneWhicheverCallFails) {
    for (const bool exists : {true, false}) {
        const int calls = CallsOfAReplacement(exists);
        ASSERT_GE(calls, exists ? 8 : 6);
        for (int call = 1; call <= calls; ++call) {
            for (const EFault fault : {EFault::Fail, EFault::HalfFail}) {
                const auto folder = ScratchFolder() / "fail";
                fs::create_directories(folder);
                if (exists) WriteText(folder / "file", Old);
                bool replaced = false;
                {
                    const CFaultyFiles files(call, fault);
                    replaced = Replace(folder / "file", New);
                    EXPECT_TRUE(files.Happened());
                }
                EXPECT_EQ(ReadText(folder / "file"), replaced ? New : exists ? Old : "") << "call " << call;
                // Otherwise only a file whose own removal failed.
                EXPECT_LE(CountEntries(folder), 1u) << "call " << call;
                fs::remove_all(folder);
            }
        }
    }
}

TEST(ReplaceWholeFile, LeavesTheOldFileOrTheNewOneWhereverTheProcessStops) {
    for (const bool exists : {true, false}) {
        const int calls = CallsOfAReplacement(exists);
        bool oldSeen = false;
        bool newSeen = false;
        for (int call = 1; call <= calls; ++call) {
            for (const EFault fault : {EFault::Stop, EFault::HalfStop}) {
                const auto folder = ScratchFolder() / "stop";
                fs::create_directories(folder);
                if (exists) WriteText(folder / "file", Old);
                {
                    const CFaultyFiles files(call, fault);
                    Replace(folder / "file", New);
                }
                const auto content = ReadText(folder / "file");
                oldSeen |= content == (exists ? Old : "");
                newSeen |= content == New;
                EXPECT_TRUE(content == New || content == (exists ? Old : "")) << "call " << call;
                fs::remove_all(folder);
            }
        }
        EXPECT_TRUE(oldSeen);
        EXPECT_TRUE(newSeen);
    }
}

TEST(MakeFolders, MakesAllThatAreMissing) {
    EXPECT_TRUE(MakeFolders(ScratchFolder() / "a" / "b" / "c"));
    EXPECT_TRUE(fs::is_directory(ScratchFolder() / "a" / "b" / "c"));
    EXPECT_TRUE(MakeFolders(ScratchFolder() / "a" / "b" / "c"));
}

TEST(MakeFolders, FailsWhereAFileIsInTheWay) {
    WriteText(ScratchFolder() / "file", "x");
    EXPECT_FALSE(MakeFolders(ScratchFolder() / "file"));
    EXPECT_FALSE(MakeFolders(ScratchFolder() / "file" / "folder"));
    EXPECT_FALSE(MakeFolders({}));
}
