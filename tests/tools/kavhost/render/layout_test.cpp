#include "tests/tools/kavhost/support.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

class Layout : public testing::Test {
protected:
    SRun Run(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"render", "-p", EffectFile("keeper").string(),
            (_folder / "in.wav").string(), "-o", (_folder / "out.wav").string(), "--no-dither", "--no-align",
            "--no-preroll"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunHost(arguments);
    }
    void MakeInput(int channels, std::optional<std::uint32_t> mask) const {
        auto audio = Noise(channels, 100, 0.5f, ESampleFormat::Int16);
        audio.format.mask = mask;
        WriteWav(_folder / "in.wav", audio);
    }
    std::optional<std::uint32_t> OutputMask() const { return ReadWav(_folder / "out.wav").format.mask; }

    std::filesystem::path _folder = NewFolder();
};

} // namespace

TEST_F(Layout, OfTheInputIsKept) {
    for (const auto& mask :
        std::vector<std::optional<std::uint32_t>>{0x60F, 0x3F, 0x3, 0, 0xFFFFFFFF, std::nullopt}) {
        MakeInput(6, mask);
        ASSERT_EQ(Run().code, 0);
        EXPECT_EQ(OutputMask(), mask);
        EXPECT_EQ(ReadWav(_folder / "out.wav").samples, ReadWav(_folder / "in.wav").samples);
    }
}

TEST_F(Layout, OfTheUserWins) {
    const std::pair<const char*, std::uint32_t> choices[] = {{"5.1", 0x3F}, {"5.1(side)", 0x60F},
        {"FL+FR+FC+BC+SL+SR", 0x707}, {"0x707", 0x707}, {"0x3", 0x3}, {"0", 0}, {"0xffffffff", 0xFFFFFFFF}};
    for (const auto& mask : std::vector<std::optional<std::uint32_t>>{std::nullopt, 0x13F}) {
        MakeInput(6, mask);
        for (const auto& [text, wanted] : choices) {
            ASSERT_EQ(Run({"--layout", text}).code, 0) << text;
            EXPECT_EQ(OutputMask(), wanted) << text;
        }
    }
}

TEST_F(Layout, OfAnotherCountOfChannelsFailsWithoutAFile) {
    MakeInput(6, 0x3F);
    const auto run = Run({"--layout", "7.1"});
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.errors.find("in.wav: --layout 7.1 has 8 speakers, but the file has 6 channels\n"),
        std::string::npos)
        << run.errors;
    EXPECT_EQ(FilesIn(_folder), std::vector<std::string>{"in.wav"});
}

TEST_F(Layout, ThatIsUnknownIsWrongUsage) {
    MakeInput(6, 0x3F);
    for (const char* text : {"5.2", "0x", "0xg", "63", "FL+", "0x100000000"}) {
        const auto run = Run({"--layout", text});
        EXPECT_EQ(run.code, 2) << text;
        EXPECT_NE(run.errors.find("--layout: \"" + std::string(text) + "\" is neither"), std::string::npos)
            << run.errors;
    }
    EXPECT_EQ(FilesIn(_folder), std::vector<std::string>{"in.wav"});
}

TEST_F(Layout, IsInTheReport) {
    MakeInput(6, 0x60F);
    EXPECT_NE(Run().out.find("  speakers              5.1(side) (0x60f)\n"), std::string::npos);
    auto json = nlohmann::json::parse(Run({"--json"}).out)[0];
    EXPECT_EQ(json["speaker_mask"], 0x60F);
    EXPECT_EQ(json["speakers"], "5.1(side)");
    json = nlohmann::json::parse(Run({"--json", "--layout", "5.1"}).out)[0];
    EXPECT_EQ(json["speaker_mask"], 0x3F);
    MakeInput(6, std::nullopt);
    EXPECT_EQ(Run().out.find("speakers"), std::string::npos);
    json = nlohmann::json::parse(Run({"--json"}).out)[0];
    EXPECT_TRUE(json["speaker_mask"].is_null());
    EXPECT_TRUE(json["speakers"].is_null());
}
