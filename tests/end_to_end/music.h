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

/// Fails the test if the file can't be read.
SMusic ReadMusic(const std::filesystem::path& file);
/// Writes 32-bit float WAV.
void WriteMusic(const std::filesystem::path& file, const SMusic& music);

void WriteMp3(const std::filesystem::path& file, const SMusic& music);

/// Twenty seconds from the middle of a produced track, with very dense music.
SMusic RealMusic();

/// Runs a command line. If its exit code isn't 0, the test fails and shows its output.
void RunCommand(const std::string& command);

} // namespace KAV::Tests
