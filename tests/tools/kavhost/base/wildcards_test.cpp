#include "platform/command_line.h"
#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/base/wildcards.h"

#include <gtest/gtest.h>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

class Wildcards : public testing::Test {
protected:
    void Make(const std::string& name) const {
        const auto file = _folder / PathOf(name);
        std::filesystem::create_directories(file.parent_path());
        WriteBytes(file, "x");
    }

    /// What the name in the folder stands for, relative to the folder, with slashes.
    std::vector<std::string> Expanded(const std::string& name) const {
        std::vector<std::string> found;
        for (const auto& file : ExpandWildcards(_folder / PathOf(name))) {
            const auto text = file.lexically_relative(_folder).generic_u8string();
            found.emplace_back(text.begin(), text.end());
        }
        return found;
    }

    std::filesystem::path _folder = NewFolder();
};

using Names = std::vector<std::string>;

} // namespace

TEST_F(Wildcards, StandForTheFilesThatFitInOrder) {
    for (const auto* name : {"b.wav", "a.wav", "a.flac", "ab.wav", "a.wav.txt"}) Make(name);
    EXPECT_EQ(Expanded("*.wav"), (Names{"a.wav", "ab.wav", "b.wav"}));
    EXPECT_EQ(Expanded("?.wav"), (Names{"a.wav", "b.wav"}));
    EXPECT_EQ(Expanded("a*"), (Names{"a.flac", "a.wav", "a.wav.txt", "ab.wav"}));
    EXPECT_EQ(Expanded("*a*v"), (Names{"a.wav", "ab.wav", "b.wav"}));
    EXPECT_EQ(Expanded("a.*.t?t"), Names{"a.wav.txt"});
    EXPECT_EQ(Expanded("**.flac"), Names{"a.flac"});
}

TEST_F(Wildcards, IgnoreTheCaseOfAscii) {
    Make("Song.WAV");
    EXPECT_EQ(Expanded("sONG*.wav"), Names{"Song.WAV"});
}

TEST_F(Wildcards, StandForCharactersOfAnyScript) {
    const std::string name = "\xE9\x9F\xB3\xE5\x9C\xA7.wav"; // two characters
    Make(name);
    EXPECT_EQ(Expanded("??.wav"), Names{name});
    EXPECT_EQ(Expanded("?.wav"), Names{"?.wav"});
    EXPECT_EQ(Expanded("\xE9\x9F\xB3*"), Names{name});
}

TEST_F(Wildcards, MayStandInNamesOfFolders) {
    for (const auto* name : {"disc 1/a.wav", "disc 2/a.wav", "disc 2/b.wav", "other/a.wav", "disc 3"})
        Make(name);
    EXPECT_EQ(Expanded("disc*/a.wav"), (Names{"disc 1/a.wav", "disc 2/a.wav"}));
    EXPECT_EQ(Expanded("disc ?/*.wav"), (Names{"disc 1/a.wav", "disc 2/a.wav", "disc 2/b.wav"}));
}

TEST_F(Wildcards, StandForNoFolderAndNoHiddenFile) {
    Make("a.wav");
    Make(".a.wav");
    Make("folder.wav/x");
    EXPECT_EQ(Expanded("*.wav"), Names{"a.wav"});
    EXPECT_EQ(Expanded(".*.wav"), Names{".a.wav"});
}

TEST_F(Wildcards, WithoutAFileThatFitsStandForThemselves) {
    Make("a.wav");
    EXPECT_EQ(Expanded("*.flac"), Names{"*.flac"});
    EXPECT_EQ(Expanded("missing/*.wav"), Names{"missing/*.wav"});
    EXPECT_EQ(Expanded("missing.wav"), Names{"missing.wav"});
    EXPECT_EQ(Expanded("a.wav"), Names{"a.wav"});
}

// Such names exist on one of the systems only, which is the one whose shells expand wildcards.
TEST_F(Wildcards, ThatAreANameAreThatName) {
    if (!KAV::Platform::ShellExpandsWildcards()) return;
    Make("a?.wav");
    Make("ab.wav");
    EXPECT_EQ(Expanded("a?.wav"), Names{"a?.wav"});
    EXPECT_EQ(Expanded("a*.wav"), (Names{"a?.wav", "ab.wav"}));
}

// A shell that expands them leaves what was quoted as it is; the other never does.
TEST_F(Wildcards, OfInputsAreExpandedWhereTheShellDoesNot) {
    for (const auto* name : {"one.wav", "two.wav"}) WriteWav(_folder / name, Noise(2, 100, 0.5f));
    const auto out = _folder / "out";
    std::filesystem::create_directory(out);
    const auto run =
        RunHost({"render", "-p", Utf8(EffectFile("fader")), Utf8(_folder / "*.wav"), "-o", Utf8(out)});
    if (KAV::Platform::ShellExpandsWildcards()) {
        EXPECT_EQ(run.code, 1);
        EXPECT_NE(run.errors.find("*.wav: no such file"), std::string::npos) << run.errors;
    } else {
        EXPECT_EQ(run.code, 0) << run.errors;
        EXPECT_EQ(FilesIn(out), (Names{"one.wav", "two.wav"}));
    }
}

TEST_F(Wildcards, OfInputsThatFitNothingFailInOneLine) {
    const auto run = RunHost({"render", "-p", Utf8(EffectFile("fader")), Utf8(_folder / "*.wav"), "-o",
        Utf8(_folder / "out.flac")});
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.errors.find("*.wav: no such file"), std::string::npos) << run.errors;
}
