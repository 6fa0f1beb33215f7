#pragma once

#include "tools/kavhost/audio/sample_format.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace KAV::Tests {

/// One of the test effects, by the name of its source file.
std::filesystem::path EffectFile(const std::string& name);

/// The product's own library as built, and its profile.
std::filesystem::path PluginFile();
std::filesystem::path PluginProfile();

/// Reads a whole file; writes a file of these bytes.
std::string BytesOf(const std::filesystem::path& file);
void WriteBytes(const std::filesystem::path& file, const std::string& bytes);

/// A new empty folder.
std::filesystem::path NewFolder();

/// Interleaved audio with its format.
struct SAudio {
    Host::SAudioFormat format;
    std::vector<float> samples;

    std::size_t Frames() const { return samples.size() / static_cast<std::size_t>(format.channels); }
};

/// Noise between -peak and peak, different in each channel but the same in each call.
SAudio Noise(
    int channels, std::size_t frames, float peak, Host::ESampleFormat samples = Host::ESampleFormat::Float32);

void WriteWav(const std::filesystem::path& file, const SAudio& audio, bool dither = false);
SAudio ReadWav(const std::filesystem::path& file);

/// The result and output of a run of kavhost in this process.
struct SRun {
    int code;
    std::string out;
    std::string errors;
};

SRun RunHost(const std::vector<std::string>& arguments);

/// Names of the files in a folder, sorted.
std::vector<std::string> FilesIn(const std::filesystem::path& folder);

} // namespace KAV::Tests
