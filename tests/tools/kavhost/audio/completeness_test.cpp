#include "tools/kavhost/audio/completeness.h"

#include "tests/tools/kavhost/support.h"

#include <gtest/gtest.h>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

std::string Little(std::uint64_t number, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text.push_back(static_cast<char>(number >> (8 * i) & 0xFF));
    return text;
}

std::string Big(std::uint64_t number, int bytes) {
    const auto little = Little(number, bytes);
    return {little.rbegin(), little.rend()};
}

std::string Missing(const std::string& bytes, std::uint64_t frames = 0) {
    static const auto file = NewFolder() / "file";
    WriteBytes(file, bytes);
    return MissingPart(file, frames);
}

/// A WAV file whose header announces `announced` bytes of audio.
std::string Wav(std::uint64_t announced, std::size_t present) {
    return "RIFF" + Little(0, 4) + "WAVEjunk" + Little(3, 4) + "abc" + std::string(1, 0) + "data" +
           Little(announced, 4) + std::string(present, 'x');
}

const std::string Text = "the input is cut off: it announces 100 bytes of audio but contains 60";

} // namespace

TEST(Completeness, ComparesTheChunkOfTheAudioWithWhatIsThere) {
    EXPECT_EQ(Missing(Wav(100, 60)), Text);
    EXPECT_EQ(Missing(Wav(60, 60)), "");
    EXPECT_EQ(Missing(Wav(50, 60)), ""); // other chunks may follow
    EXPECT_EQ(Missing("FORM" + Big(0, 4) + "AIFFSSND" + Big(100, 4) + std::string(60, 'x')), Text);
    EXPECT_EQ(
        Missing("caff" + Big(0, 4) + "desc" + Big(5, 8) + "abcdedata" + Big(100, 8) + std::string(60, 'x')),
        Text);
    EXPECT_EQ(Missing(".snd" + Big(24, 4) + Big(100, 4) + std::string(12 + 60, 'x')), Text);
}

TEST(Completeness, FindsTheSizesThatNeed64Bits) {
    const auto file = [](std::uint64_t announced) {
        return "RF64" + Little(0xFFFFFFFF, 4) + "WAVEds64" + Little(28, 4) + Little(0, 8) +
               Little(announced, 8) + std::string(12, 0) + "data" + Little(0xFFFFFFFF, 4) +
               std::string(60, 'x');
    };
    EXPECT_EQ(Missing(file(100)), Text);
    EXPECT_EQ(Missing(file(60)), "");
}

TEST(Completeness, TakesStreamsOfUnknownLengthAsTheyAre) {
    for (const std::uint64_t size : {0xFFFFFFFFu, 0x7FFFFFFFu, 0x80000000u, 0x7FFFF000u, 0xFFFFFFDBu, 0u})
        EXPECT_EQ(Missing(Wav(size, 60)), "") << size;
    EXPECT_NE(Missing(Wav(0xC0000000u, 60)), "");
    EXPECT_EQ(Missing("caff" + Big(0, 4) + "data" + Big(~0ull, 8) + std::string(60, 'x')), "");
}

TEST(Completeness, CountsTheFramesOfFlac) {
    const auto file = "fLaC" + std::string(17, 1) + Big(0xF0'0000'1000, 5) + std::string(60, 'x');
    EXPECT_EQ(Missing(file, 4096), "");
    EXPECT_EQ(Missing(file, 4000),
        "the input is cut off or damaged: it announces 4096 frames, but only 4000 could be read");
}

TEST(Completeness, LooksForTheMarkOfTheLastPageOfOgg) {
    const auto page = [](char mark, std::size_t length) {
        return std::string("OggS") + std::string(1, 0) + std::string(1, mark) + std::string(20, 1) +
               std::string(1, 1) + std::string(1, static_cast<char>(length)) + std::string(length, 'x');
    };
    EXPECT_EQ(Missing(page(2, 30) + page(4, 30)), "");
    EXPECT_EQ(Missing(page(2, 30) + page(0, 30)), "the input is cut off: its last page is missing");
    const auto whole = page(2, 30) + page(4, 30);
    EXPECT_NE(Missing(whole.substr(0, whole.size() - 1)), "");
}

TEST(Completeness, ReadsTheNumberOfBytesThatMpegFilesMayBeginWith) {
    const auto file = [](std::uint64_t announced, std::size_t offset, const std::string& tag) {
        auto frame = std::string("\xFF\xFB", 2) + std::string(offset - 2, 0) + "Info" + Big(3, 4) +
                     Big(10, 4) + Big(announced, 4);
        frame.resize(60, 'x');
        return tag + frame;
    };
    const std::string tag = "ID3" + std::string(6, 0) + std::string(1, 5) + "a tag";
    for (const std::size_t offset : {36u, 21u, 13u}) {
        EXPECT_EQ(Missing(file(100, offset, {})), Text);
        EXPECT_EQ(Missing(file(100, offset, tag)), Text);
        EXPECT_EQ(Missing(file(60, offset, tag)), "");
    }
}

TEST(Completeness, ClaimsNothingOfWhatItDoesNotKnow) {
    EXPECT_EQ(Missing(""), "");
    EXPECT_EQ(Missing("RIFF"), "");
    EXPECT_EQ(Missing(std::string(200, 'x')), "");
    EXPECT_EQ(Missing("RIFF" + Little(0, 4) + "WAVE" + "LIST" + Little(0xFFFFFFF0, 4)), "");
}
