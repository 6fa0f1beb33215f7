#include "tests/end_to_end/music.h"

#include "tests/support/scratch_home.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sndfile.h>
#include <sstream>

namespace KAV::Tests {

float SMusic::Peak() const {
    float peak = 0.0f;
    for (const float x : samples) peak = std::max(peak, std::fabs(x));
    return peak;
}

SMusic ReadMusic(const std::filesystem::path& file) {
    SF_INFO info{};
    SNDFILE* sound = sf_open(file.c_str(), SFM_READ, &info);
    EXPECT_NE(sound, nullptr) << file << ": " << sf_strerror(nullptr);
    if (sound == nullptr) return {};
    SMusic music{{}, info.channels, info.samplerate};
    music.samples.resize(static_cast<std::size_t>(info.frames * info.channels));
    // The length of an MP3 is known for certain only once it has been read.
    const sf_count_t frames = sf_readf_float(sound, music.samples.data(), info.frames);
    EXPECT_GT(frames, 0);
    music.samples.resize(static_cast<std::size_t>(frames * info.channels));
    sf_close(sound);
    return music;
}

namespace {

void Write(const std::filesystem::path& file, const SMusic& music, int format) {
    SF_INFO info{};
    info.samplerate = music.rateHz;
    info.channels = music.channels;
    info.format = format;
    SNDFILE* sound = sf_open(file.c_str(), SFM_WRITE, &info);
    ASSERT_NE(sound, nullptr) << file << ": " << sf_strerror(nullptr);
    const auto frames = static_cast<sf_count_t>(music.samples.size()) / music.channels;
    EXPECT_EQ(sf_writef_float(sound, music.samples.data(), frames), frames);
    EXPECT_EQ(sf_close(sound), 0);
}

} // namespace

void WriteMusic(const std::filesystem::path& file, const SMusic& music) {
    Write(file, music, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
}

void WriteMp3(const std::filesystem::path& file, const SMusic& music) {
    Write(file, music, SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III);
}

SMusic RealMusic() {
    SMusic music = ReadMusic("/usr/share/games/asc/music/machine_wars.mp3"); // of the package asc-music
    const auto second = static_cast<std::ptrdiff_t>(music.channels * music.rateHz);
    if (music.samples.size() < static_cast<std::size_t>(140 * second)) {
        ADD_FAILURE() << "the track is too short";
        return music;
    }
    music.samples = {music.samples.begin() + 120 * second, music.samples.begin() + 140 * second};
    return music;
}

void RunCommand(const std::string& command) {
    const auto log = ScratchFolder() / "command.log";
    const int status = std::system((command + " >'" + log.string() + "' 2>&1").c_str());
    std::stringstream said;
    said << std::ifstream(log).rdbuf();
    ASSERT_EQ(status, 0) << command << '\n' << said.str();
}

} // namespace KAV::Tests
