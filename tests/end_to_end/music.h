#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace KAV::Tests {

/// A sound file in memory, channels interleaved.
struct SMusic {
    std::vector<float> samples;
    int channels = 0;
    int rateHz = 0;

    float Peak() const;
};

/// Fails the test when the file can't be read.
SMusic ReadMusic(const std::filesystem::path& file);
/// As 32-bit float WAV.
void WriteMusic(const std::filesystem::path& file, const SMusic& music);

/// Twenty seconds from the middle of a produced track, as dense as music gets.
SMusic RealMusic();

/// Runs a command line; the test fails with what it said when its exit code isn't 0.
void RunCommand(const std::string& command);

} // namespace KAV::Tests
