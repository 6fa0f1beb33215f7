// The store on systems without a registry: one file per key.

#include "platform/file_system.h"
#include "platform/settings_store.h"
#include "tests/support/faulty_files.h"
#include "tests/support/file_text.h"
#include "tests/support/other_process.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace KAV::Platform;
using namespace KAV::Tests;
namespace fs = std::filesystem;

namespace {

constexpr auto User = ESettingsRoot::CurrentUser;
const std::string Key = "Software/Kavelin/KAV Sorrel Limiter";

std::string Read(const std::string& name, ESettingsRoot root = User, const std::string& key = Key) {
    const SBytes bytes = ReadSetting(root, key, name);
    return bytes.data != nullptr ? std::string(bytes.data.get(), bytes.size) : std::string("(nothing)");
}

bool Write(const std::string& name, const std::string& value, const std::string& key = Key) {
    return WriteSetting(User, key, name, value.data(), value.size());
}

fs::path Store() {
    return fs::path(std::getenv("XDG_CONFIG_HOME")) / "kavelin" / "settings";
}

fs::path KeyFile() {
    return Store() / "HKEY_CURRENT_USER" / "Software" / "Kavelin" / "KAV Sorrel Limiter.json";
}

} // namespace

TEST(SettingsFiles, LieInTheUsersConfigurationFolder) {
    ASSERT_TRUE(Write("Width", std::string("\xE8\x03\0\0", 4)));
    EXPECT_EQ(ReadText(KeyFile()), "{\n \"Width\": \"e8030000\"\n}\n");
}

TEST(SettingsFiles, KeepEveryRootApart) {
    for (const auto root : {User, ESettingsRoot::ClassesRoot, ESettingsRoot::LocalMachine,
             ESettingsRoot::Users, ESettingsRoot::CurrentConfig}) {
        const auto value = std::to_string(static_cast<int>(root));
        ASSERT_TRUE(WriteSetting(root, Key, "Root", value.data(), value.size()));
    }
    EXPECT_EQ(Read("Root", User), "0");
    EXPECT_EQ(Read("Root", ESettingsRoot::ClassesRoot), "1");
    EXPECT_EQ(Read("Root", ESettingsRoot::LocalMachine), "2");
    EXPECT_EQ(Read("Root", ESettingsRoot::Users), "3");
    EXPECT_EQ(Read("Root", ESettingsRoot::CurrentConfig), "4");
}

TEST(SettingsFiles, CountAsMissingWhenDamagedAndAreKeptAside) {
    const std::vector<std::string> damaged{"", "{", "[]", "{\"Width\": 5}", "{\"Width\": \"e80\"}",
        "{\"Width\": \"xy\"}", "\xFF\xFE", std::string(100000, '['), std::string("\0\0\0\0", 4)};
    for (std::size_t i = 0; i < damaged.size(); ++i) {
        WriteText(KeyFile(), damaged[i]);
        EXPECT_EQ(Read("Width"), "(nothing)") << damaged[i].substr(0, 20);
        EXPECT_FALSE(fs::exists(KeyFile()));
        auto aside = KeyFile();
        aside += ".damaged-" + std::to_string(i + 1);
        EXPECT_TRUE(fs::exists(aside));
        EXPECT_EQ(ReadText(aside), damaged[i]);
    }
    EXPECT_TRUE(Write("Width", "new"));
    EXPECT_EQ(Read("Width"), "new");
}

TEST(SettingsFiles, AreKeptAsideByAWriteAsWell) {
    WriteText(KeyFile(), "{\"Width\": ");
    EXPECT_TRUE(Write("FPS", "60"));
    EXPECT_EQ(Read("FPS"), "60");
    EXPECT_EQ(ReadText(KeyFile().string() + ".damaged-1"), "{\"Width\": ");
}

TEST(SettingsFiles, AreNoDamagedOnesWhenTheyJustCannotBeOpened) {
    ASSERT_TRUE(Write("Width", "precious"));
    const auto before = ReadText(KeyFile());
    for (int call = 1; call <= 12; ++call) {
        {
            const CFaultyFiles files(call, CFaultyFiles::EFault::HalfFail);
            Read("Width");
            EXPECT_TRUE(files.Happened() || call > 4);
        }
        EXPECT_EQ(ReadText(KeyFile()), before) << "call " << call;
    }
}

TEST(SettingsFiles, AreNotReplacedByAWriteThatCannotReadThem) {
    ASSERT_TRUE(Write("Width", "precious"));
    const auto before = ReadText(KeyFile());
    {
        const CFaultyFiles files(1, CFaultyFiles::EFault::Unreadable);
        EXPECT_EQ(Read("Width"), "(nothing)");
        EXPECT_FALSE(Write("FPS", "60"));
    }
    EXPECT_EQ(ReadText(KeyFile()), before);
}

TEST(SettingsFiles, KeepTheOldValueOrHoldTheNewOneWhicheverCallOfAWriteFails) {
    ASSERT_TRUE(Write("Width", "old"));
    ASSERT_TRUE(Write("FPS", "60"));
    int calls = 0;
    {
        const CFaultyFiles files(0, CFaultyFiles::EFault::Fail);
        ASSERT_TRUE(Write("Width", "old"));
        calls = files.Calls();
    }
    ASSERT_GT(calls, 10);
    for (int call = 1; call <= calls; ++call) {
        for (const bool ends : {false, true}) {
            InAnotherProcess([&] {
                CFaultyFiles files(call, CFaultyFiles::EFault::HalfFail);
                if (ends) files.onFault = [] { _exit(7); };
                Write("Width", "new");
                return 0;
            });
            const auto value = Read("Width");
            EXPECT_TRUE(value == "old" || value == "new") << "call " << call << ": " << value;
            EXPECT_EQ(Read("FPS"), "60") << "call " << call;
            ASSERT_TRUE(Write("Width", "old"));
        }
    }
}

TEST(SettingsFiles, StayInsideTheStoreWhateverTheKey) {
    for (const char* const key : {"../../..", "..", ".", "a/../b", "/etc", "a//b", "a/", "a\\..\\b", "~"}) {
        Write("escape", "value", key);
    }
    EXPECT_FALSE(Write("escape", "value", "a//b"));
    EXPECT_FALSE(Write("escape", "value", ""));
    EXPECT_FALSE(Write("escape", "value", std::string(300, 'x')));
    EXPECT_TRUE(Write("escape", "value", "a/../b"));
    EXPECT_EQ(Read("escape", User, "a/../b"), "value");
    EXPECT_EQ(Read("escape", User, "b"), "(nothing)");
    for (const auto& entry : fs::recursive_directory_iterator(std::getenv("XDG_CONFIG_HOME"))) {
        EXPECT_TRUE(entry.path().string().starts_with(Store().string()) || entry.is_directory())
            << entry.path();
    }
}

TEST(SettingsFiles, HaveNoPartBeyondTheRegistrysLimit) { // Wine's registry doesn't have that limit
    const std::string longest(255, 'x');
    EXPECT_TRUE(Write("escape", "value", longest));
    for (const auto& key : {longest + "x", longest + "x/Below", "Above/" + longest + "x"}) {
        EXPECT_FALSE(Write("escape", "value", key));
        EXPECT_EQ(Read("escape", User, key), "(nothing)");
    }
}

TEST(SettingsFiles, SurviveManyProcessesThatWriteAtOnce) {
    constexpr int Processes = 6;
    constexpr int Rounds = 15;
    std::vector<pid_t> children;
    for (int process = 0; process < Processes; ++process) {
        const pid_t child = fork();
        if (child == 0) {
            bool good = true;
            for (int round = 0; round < Rounds; ++round) {
                const auto value = std::to_string(round);
                // A writer gives up after two seconds, which other writers may well need on a busy disk.
                bool isWritten = false;
                for (int attempt = 0; attempt < 60 && !isWritten; ++attempt)
                    isWritten = Write(std::to_string(process), value);
                good = isWritten && Read(std::to_string(process)) == value && good;
            }
            _exit(good ? 0 : 1);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    for (int process = 0; process < Processes; ++process)
        EXPECT_EQ(Read(std::to_string(process)), std::to_string(Rounds - 1));
}

TEST(SettingsFiles, AreNotWrittenWithoutAHome) {
    if (getuid() != 0) GTEST_SKIP() << "only root can become a user without a home";
    setenv("XDG_CONFIG_HOME", "also/relative", 1);
    setenv("HOME", "relative/path", 1);
    EXPECT_EQ(AsNobody([] { return Write("Width", "value") || Read("Width") != "(nothing)" ? 1 : 0; }), 0);
}
