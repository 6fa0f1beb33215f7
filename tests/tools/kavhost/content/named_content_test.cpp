#include "tools/kavhost/content/named_content.h"

#include "tests/support/file_text.h"
#include "tests/tools/kavhost/records.h"
#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "utils/path.h"
#include "vst/vst2.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace KAV;
using namespace KAV::Host;
using namespace KAV::Tests;

namespace fs = std::filesystem;

namespace {

class NamedContent : public testing::Test {
protected:
    void SetUp() override {
        _before = fs::current_path();
        fs::create_directories(_folder / "work");
        fs::current_path(_folder / "work");
    }
    void TearDown() override {
        fs::current_path(_before);
        Utils::UseDocumentsFolder(std::nullopt);
    }

    /// Adds a file of the user, or of the factory.
    fs::path Users(const std::string& name) { return Add(_users / PathOf(name)); }
    fs::path Factory(const std::string& name) { return Add(_folders.factory / PathOf(name)); }

    static fs::path Add(const fs::path& file) {
        WriteText(file, "content");
        return file;
    }
    fs::path Find(const std::string& name, ENamedContent kind = ENamedContent::Patch) const {
        return FindContent(kind, PathOf(name), _folders);
    }
    std::string Failure(const std::string& name, ENamedContent kind = ENamedContent::Patch) const {
        try {
            return "found " + Utf8(Find(name, kind));
        } catch (const CFailure& failure) {
            return failure.what();
        }
    }

    fs::path _before;
    fs::path _folder = NewFolder();
    SContentFolders _folders{_folder / "documents", _folder / "factory"};
    fs::path _users = _folders.documents / "Kavelin" / "KAV Sorrel Limiter";
};

} // namespace

TEST_F(NamedContent, IsTheFileThatExistsThenTheUsersThenTheFactorys) {
    const auto factory = Factory("Patches/Loud.kvp");
    EXPECT_EQ(Find("Loud"), factory);
    const auto users = Users("Loud.kvp");
    EXPECT_EQ(Find("Loud"), users);
    WriteBytes("Loud", "content");
    EXPECT_EQ(Find("Loud"), "Loud");
}

TEST_F(NamedContent, IsTheRecordOfTwoPatchesWithOneNameAsInThePlugIn) {
    Users("Loud.kvp");
    const auto record = Users("Loud.fxp");
    EXPECT_EQ(Find("Loud"), record);
    EXPECT_EQ(ContentNames(ENamedContent::Patch, _folders).size(), 1u);
}

TEST_F(NamedContent, MayHaveDotsInItsName) {
    const auto wide = Factory("Routings/7.1.4.kvt"), narrow = Factory("Routings/7.1.kvt");
    EXPECT_EQ(Find("7.1", ENamedContent::Routing), narrow);
    EXPECT_EQ(Find("7.1.4", ENamedContent::Routing), wide);
    Factory("Routings/Legacy/5.0.kvt"); // of old patches, which know it by number
    EXPECT_EQ(Failure("5.0", ENamedContent::Routing), "5.0: no such file, and no routing of this name");
}

TEST_F(NamedContent, IsNotLookedUpForAPath) {
    Users("Loud.kvp");
    EXPECT_EQ(Find("./Loud"), "./Loud");
    EXPECT_EQ(Find("sub/Loud"), "sub/Loud");
    EXPECT_EQ(Find("/Loud"), "/Loud");
}

TEST_F(NamedContent, IsFoundThoughAFolderHasItsName) {
    const auto users = Users("Loud.kvp");
    fs::create_directory("Loud");
    fs::create_directory("Quiet");
    EXPECT_EQ(Find("Loud"), users);
    EXPECT_EQ(Find("Quiet"), "Quiet"); // where reading will fail
}

TEST_F(NamedContent, LeavesTheNameOfTheFirstPatchAlone) {
    Users("default.kvp");
    EXPECT_EQ(Find("default"), "default");
    WriteBytes("default", "content");
    EXPECT_EQ(Find("default"), "default");
    EXPECT_TRUE(ContentNames(ENamedContent::Patch, _folders).empty());
    const auto routing = Factory("Routings/default.kvt"); // it is no name of routings
    fs::remove("default");
    EXPECT_EQ(Find("default", ENamedContent::Routing), routing);
}

TEST_F(NamedContent, NamesWhatIsMeantByANameThatIsUnknown) {
    EXPECT_EQ(Failure("Loud"), "Loud: no such file, and no patch of this name");
    Factory("Patches/Master - Streaming.kvp");
    Factory("Patches/Voice.kvp");
    EXPECT_EQ(Failure("Master - Steaming"), "Master - Steaming: no such file, and no patch of this name; the "
                                            "nearest is \"Master - Streaming\"");
    EXPECT_EQ(Failure("streaming"),
        "streaming: no such file, and no patch of this name; the nearest is \"Master - Streaming\"");
    EXPECT_EQ(Failure("Xyzzy"), "Xyzzy: no such file, and no patch of this name");
}

TEST_F(NamedContent, IsListedOnceAndSorted) {
    Users("B.kvp");
    Users("notes.txt");
    Users(".kvp");
    Factory("Patches/B.kvp");
    Factory("Patches/A.kvp");
    const auto names = ContentNames(ENamedContent::Patch, _folders);
    ASSERT_EQ(names.size(), 2u);
    EXPECT_EQ(names[0].name, "A");
    EXPECT_FALSE(names[0].isUsers);
    EXPECT_EQ(names[1].name, "B");
    EXPECT_TRUE(names[1].isUsers);
    for (const auto& content : names) EXPECT_EQ(Find(content.name), content.file);
    EXPECT_TRUE(ContentNames(ENamedContent::Patch, {}).empty());
}

TEST_F(NamedContent, IsTakenByTheCommandLine) {
    Utils::UseDocumentsFolder(Utils::FromSystemPath(_folders.documents) + u"/");
    const auto keeper = KAV::VST::FourCharacters('t', 'k', 'e', 'p');
    fs::create_directories(_users);
    WriteBytes(_users / "Half.fxp", ValueRecord(keeper, "", {0.5f, 0.25f, 0.75f}));
    const auto run = RunHost({"info", "--json", "-p", Utf8(EffectFile("keeper")), "--patch", "Half"});
    ASSERT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(nlohmann::json::parse(run.out)["parameters"][1]["value"], 0.25);
    EXPECT_EQ(RunHost({"inspect", "Half"}).code, 0);

    const auto info = [&](const std::string& option, const std::string& value) {
        return RunHost({"info", "-p", Utf8(PluginFile()), option, value});
    };
    WriteText(_folders.documents / "Kavelin" / "Routings" / "Pair.kvt",
        "<kav_input_routing><name>Pair</name><map>0,-1|*|1,-1</map></kav_input_routing>");
    EXPECT_EQ(info("--routing", "Pair").code, 0);
    const auto state = Utf8(_folder / "pairs.state");
    const auto groups = RunHost({"info", "-p", Utf8(PluginFile()), "--routing", "Pair", "--routing", "3:Pair",
        "--save-state", state});
    EXPECT_EQ(groups.code, 0) << groups.errors;
    const auto routings = nlohmann::json::parse(RunHost({"inspect", "--json", state}).out)["routings"];
    for (std::size_t group = 0; group < 4; ++group)
        EXPECT_EQ(routings[group]["name"], group % 2 == 0 ? "Pair" : "Not found") << group;
    EXPECT_EQ(info("--routing", "all:Pair").code, 0);
    EXPECT_EQ(RunHost({"inspect", "Pair"}).out, "routing \"Pair\"\n  \"\"  channel 1\n  \"\"  channel 2\n");
    const auto unknown = info("--routing", "Pear");
    EXPECT_EQ(unknown.code, 1);
    EXPECT_EQ(unknown.errors,
        "kavhost: Pear: no such file, and no routing of this name; the nearest is \"Pair\"\n");
}

TEST_F(NamedContent, IsListedByInfoForItsEffectAlone) {
    Utils::UseDocumentsFolder(Utils::FromSystemPath(_folders.documents) + u"/");
    Users("My Mix.kvp");
    WriteText(_folders.documents / "Kavelin" / "Routings" / "Pair.kvt", "x");
    const auto own = RunHost({"info", "-p", Utf8(PluginFile())}).out;
    EXPECT_NE(own.find("names for --patch\n         default, which is your first one\n  yours    \"My Mix\"\n"
                       "names for --routing\n  yours    \"Pair\"\n"),
        std::string::npos)
        << own;
    const auto json = nlohmann::json::parse(RunHost({"info", "--json", "-p", Utf8(PluginFile())}).out);
    EXPECT_EQ(json["patch_names"][0]["name"], "My Mix");
    EXPECT_EQ(json["patch_names"][0]["users"], true);
    EXPECT_EQ(json["patch_names"][0]["file"], Utf8(_users / "My Mix.kvp"));
    EXPECT_EQ(json["routing_names"][0]["name"], "Pair");
    const auto other = RunHost({"info", "-p", Utf8(EffectFile("keeper"))}).out;
    EXPECT_EQ(other.find("names for"), std::string::npos) << other;
}

TEST(ShellWord, IsOneWordOfTheShellWhateverItHolds) {
    EXPECT_EQ(ShellWord("Master - Streaming"), "\"Master - Streaming\"");
    EXPECT_EQ(ShellWord("it's"), "\"it's\"");
    EXPECT_EQ(ShellWord("a$b"), "'a$b'");
    EXPECT_EQ(ShellWord("\"it's\""), "'\"it'\\''s\"'");
}
