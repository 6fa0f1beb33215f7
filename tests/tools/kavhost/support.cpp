#include "tests/tools/kavhost/support.h"

#include "platform/library.h"
#include "tests/support/scratch_home.h"
#include "tools/kavhost/audio/wav_reader.h"
#include "tools/kavhost/audio/wav_writer.h"
#include "tools/kavhost/base/random.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/console/commands.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace KAV::Tests {

namespace fs = std::filesystem;

fs::path EffectFile(const std::string& name) {
    return fs::path(KAVHOST_TEST_EFFECTS) / (name + std::string(Platform::LibrarySuffix()));
}

fs::path PluginFile() {
    return fs::path(KAVHOST_PLUGIN);
}

fs::path PluginProfile() {
    return fs::path(KAVHOST_PROFILE);
}

std::string BytesOf(const fs::path& file) {
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    return std::move(bytes).str();
}

void WriteBytes(const fs::path& file, const std::string& bytes) {
    std::ofstream(file, std::ios::binary) << bytes;
}

fs::path NewFolder() {
    static int count = 0;
    auto folder = ScratchFolder() / ("folder" + std::to_string(++count));
    fs::create_directories(folder);
    return folder;
}

SAudio Noise(int channels, std::size_t frames, float peak, Host::ESampleFormat samples) {
    SAudio audio{{48000, channels, samples}, std::vector<float>(frames * static_cast<std::size_t>(channels))};
    Host::CRandom random(42);
    for (float& sample : audio.samples) sample = peak * static_cast<float>(random.Bipolar());
    return audio;
}

void WriteWav(const fs::path& file, const SAudio& audio, bool dither) {
    std::ofstream stream(file, std::ios::binary);
    Host::CWavWriter writer(stream, audio.format, dither);
    auto samples = audio.samples;
    writer.Write(samples);
    writer.Finish();
}

SAudio ReadWav(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    Host::CWavReader reader(stream);
    SAudio audio{reader.Format(), {}};
    audio.samples.resize(reader.Frames() * static_cast<std::size_t>(audio.format.channels));
    reader.Read(audio.samples);
    return audio;
}

SRun RunHost(const std::vector<std::string>& arguments) {
    std::ostringstream out, errors;
    const auto code = Host::RunKavhost(arguments, out, errors);
    return {static_cast<int>(code), out.str(), errors.str()};
}

std::vector<std::string> FilesIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(Host::Utf8(entry.path().filename()));
    std::ranges::sort(names);
    return names;
}

} // namespace KAV::Tests
