#include "platform/settings_store.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace KAV::Platform;

namespace {

// A key that only this run of the test uses, because a registry outlives it.
std::string Key() {
    static const std::string run = std::to_string(std::random_device()());
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    return std::string("Software/Kavelin/Test/") + test->test_suite_name() + "." + test->name() + "." + run;
}

std::string Read(const std::string& key, const std::string& name) {
    const SBytes bytes = ReadSetting(ESettingsRoot::CurrentUser, key, name);
    return bytes.data != nullptr ? std::string(bytes.data.get(), bytes.size) : std::string("(nothing)");
}

bool Write(const std::string& key, const std::string& name, const std::string& value) {
    return WriteSetting(ESettingsRoot::CurrentUser, key, name, value.data(), value.size());
}

} // namespace

TEST(SettingsStore, GivesBackEveryByte) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
    ASSERT_TRUE(Write(Key(), "bytes", all));
    EXPECT_EQ(Read(Key(), "bytes"), all);
    const SBytes bytes = ReadSetting(ESettingsRoot::CurrentUser, Key(), "bytes");
    ASSERT_NE(bytes.data, nullptr);
    EXPECT_EQ(bytes.data[256], 0);
    EXPECT_EQ(bytes.data[257], 0);
}

TEST(SettingsStore, KeepsTheValuesOfAKeyApart) {
    ASSERT_TRUE(Write(Key(), "Width", "1234"));
    ASSERT_TRUE(Write(Key(), "FPS", std::string("\x3C\0\0\0", 4)));
    ASSERT_TRUE(Write(Key(), "Width", "56"));
    EXPECT_EQ(Read(Key(), "Width"), "56");
    EXPECT_EQ(Read(Key(), "FPS"), std::string("\x3C\0\0\0", 4));
    EXPECT_TRUE(SettingExists(ESettingsRoot::CurrentUser, Key(), "FPS"));
}

TEST(SettingsStore, HasNoValueThatWasNeverWritten) {
    EXPECT_EQ(Read(Key(), "Width"), "(nothing)");
    EXPECT_FALSE(SettingExists(ESettingsRoot::CurrentUser, Key(), "Width"));
    ASSERT_TRUE(Write(Key(), "Width", "1"));
    EXPECT_EQ(Read(Key(), "Height"), "(nothing)");
    EXPECT_EQ(Read(Key() + "/Below", "Width"), "(nothing)");
}

TEST(SettingsStore, TakesKeysAndNamesInAnyLetters) {
    const auto key = Key() + "/Gr\xC3\xB6\xC3\x9F"
                             "e 100% .hidden";
    ASSERT_TRUE(Write(key, "\xE9\x9F\xB3\xE9\x87\x8F \"\\ .", "loud"));
    EXPECT_EQ(Read(key, "\xE9\x9F\xB3\xE9\x87\x8F \"\\ ."), "loud");
}

TEST(SettingsStore, TakesPartsOfKeysUpTo255Characters) {
    const std::string umlaut = "\xC3\xA4";
    for (const std::size_t length : {100u, 101u, 150u, 229u, 230u, 231u, 250u, 251u, 254u, 255u}) {
        std::string umlauts;
        for (std::size_t i = 0; i < length; ++i) umlauts += umlaut;
        for (const auto& part : {std::string(length, 'x'), umlauts, std::string(length, '%')}) {
            const auto last = Key() + "/" + part;
            const auto middle = last + "/Below";
            ASSERT_TRUE(Write(last, "Width", "of the last part")) << length;
            ASSERT_TRUE(Write(middle, "Width", "of one in the middle")) << length;
            EXPECT_EQ(Read(last, "Width"), "of the last part") << length;
            EXPECT_EQ(Read(middle, "Width"), "of one in the middle") << length;
            EXPECT_TRUE(SettingExists(ESettingsRoot::CurrentUser, last, "Width")) << length;
        }
        ASSERT_TRUE(Write(Key(), std::string(length, 'n'), "of a name")) << length;
        EXPECT_EQ(Read(Key(), std::string(length, 'n')), "of a name") << length;
    }
}

TEST(SettingsStore, KeepsLongKeysApart) {
    const std::string stem(254, 'x');
    for (const auto* const end : {"a", "b", "/a", "/b"})
        ASSERT_TRUE(Write(Key() + "/" + stem + end, "Width", end));
    for (const auto* const end : {"a", "b", "/a", "/b"})
        EXPECT_EQ(Read(Key() + "/" + stem + end, "Width"), end);
    for (std::size_t cut = 1; cut < stem.size(); ++cut)
        EXPECT_EQ(
            Read(Key() + "/" + stem.substr(0, cut) + "/" + stem.substr(cut) + "a", "Width"), "(nothing)");
}

TEST(SettingsStore, LosesNothingWhenManyWriteAtOnce) {
    constexpr int Writers = 4;
    constexpr int Rounds = 10;
    std::vector<std::thread> threads;
    for (int writer = 0; writer < Writers; ++writer) {
        threads.emplace_back([writer, key = Key()] {
            for (int round = 0; round < Rounds; ++round) {
                const auto value = std::to_string(writer * 1000 + round);
                // A writer gives up after two seconds, which other writers may well need on a busy disk.
                bool isWritten = false;
                for (int attempt = 0; attempt < 60 && !isWritten; ++attempt)
                    isWritten = Write(key, "value " + std::to_string(writer), value);
                EXPECT_TRUE(isWritten);
                EXPECT_EQ(Read(key, "value " + std::to_string(writer)), value);
            }
        });
    }
    for (auto& thread : threads) thread.join();
    for (int writer = 0; writer < Writers; ++writer) {
        EXPECT_EQ(Read(Key(), "value " + std::to_string(writer)), std::to_string(writer * 1000 + Rounds - 1));
    }
}

TEST(SettingsStore, HasFiveRoots) {
    for (const auto root : {ESettingsRoot::CurrentUser, ESettingsRoot::ClassesRoot,
             ESettingsRoot::LocalMachine, ESettingsRoot::Users, ESettingsRoot::CurrentConfig}) {
        // The registry's root of users contains only users directly below it.
        const auto key = (root == ESettingsRoot::Users ? ".Default/" : "") + Key();
        const auto value = std::to_string(static_cast<int>(root));
        ASSERT_TRUE(WriteSetting(root, key, "Root", value.data(), value.size())) << value;
        const SBytes bytes = ReadSetting(root, key, "Root");
        ASSERT_NE(bytes.data, nullptr) << value;
        EXPECT_EQ(std::string(bytes.data.get(), bytes.size), value);
        EXPECT_TRUE(SettingExists(root, key, "Root"));
    }
}
