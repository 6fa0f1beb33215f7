#include "tools/kavhost/play/read_ahead.h"

#include "tests/tools/kavhost/support.h"
#include "tools/kavhost/audio/audio_file.h"
#include "tools/kavhost/play/block_queue.h"
#include "tools/kavhost/play/play_controls.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

using namespace KAV::Host;
using namespace KAV::Tests;

namespace {

constexpr std::size_t Frames = 1000;

class ReadAhead : public testing::Test {
protected:
    ReadAhead() { WriteWav(file, audio); }

    /// The next block; waits for it.
    SBlock Next() {
        const auto guard = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (queue.Front() == nullptr && std::chrono::steady_clock::now() < guard)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (queue.Front() == nullptr) {
            ADD_FAILURE() << "nothing was read";
            return {};
        }
        const auto block = *queue.Front();
        for (std::size_t i = 0; i < block.frames * 2; ++i)
            EXPECT_EQ(block.samples[i], audio.samples[block.first * 2 + i]);
        queue.Pop();
        return block;
    }

    std::filesystem::path file = NewFolder() / "in.wav";
    SAudio audio = Noise(2, Frames, 0.5f);
    SPlayControls controls{1};
    CBlockQueue queue{5, 300, 2};
};

} // namespace

TEST_F(ReadAhead, ReadsTheFileOverAndOver) {
    CAudioReader reader(file);
    CReadAhead ahead(reader, queue, controls);
    for (int round = 0; round < 3; ++round) {
        for (const std::uint64_t first : {0u, 300u, 600u, 900u}) {
            const auto block = Next();
            EXPECT_EQ(block.first, first);
            EXPECT_EQ(block.endsFile, first == 900);
            EXPECT_EQ(block.frames, first == 900 ? 100u : 300u);
        }
    }
    EXPECT_EQ(controls.length, Frames); // whatever the header said
    EXPECT_EQ(ahead.Failure(), "");
}

TEST_F(ReadAhead, GoesToThePlaceThatIsRequested) {
    CAudioReader reader(file);
    CReadAhead ahead(reader, queue, controls);
    controls.Seek(555);
    ahead.Wake();
    auto block = Next();
    while (block.request != controls.request) block = Next(); // read before
    EXPECT_EQ(block.first, 555u);
    EXPECT_EQ(Next().first, 855u);
}

TEST_F(ReadAhead, EndsWhileItsQueueIsFull) {
    CAudioReader reader(file);
    const CReadAhead ahead(reader, queue, controls);
    while (queue.Back() != nullptr) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

TEST_F(ReadAhead, OfAnEmptyFileIsOneBlockOfNothing) {
    WriteWav(file, Noise(2, 0, 0.5f));
    CAudioReader reader(file);
    CReadAhead ahead(reader, queue, controls);
    const auto block = Next();
    EXPECT_EQ(block.frames, 0u);
    EXPECT_TRUE(block.endsFile);
    EXPECT_EQ(controls.length, 0u);
}

TEST_F(ReadAhead, EndsTheFileWhereItIsDamagedAndSaysSo) {
    const auto flac = file.parent_path() / "in.flac";
    ASSERT_EQ(RunHost({"render", "-p", EffectFile("fader").string(), file.string(), "-o", flac.string(),
                          "--format", "16"})
                  .code,
        0);
    auto bytes = BytesOf(flac);
    for (std::size_t i = bytes.size() / 2; i < bytes.size(); ++i) bytes[i] = 'x';
    WriteBytes(flac, bytes);
    CAudioReader reader(flac);
    CReadAhead ahead(reader, queue, controls);
    const auto guard = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (ahead.Failure().empty() && std::chrono::steady_clock::now() < guard) {
        if (queue.Front() != nullptr) queue.Pop();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_NE(ahead.Failure().find("in.flac: damaged"), std::string::npos) << ahead.Failure();
}
