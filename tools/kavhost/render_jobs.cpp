#include "tools/kavhost/errors.h"
#include "tools/kavhost/render.h"
#include "tools/kavhost/text.h"

#include <set>
#include <system_error>

namespace KAV::Host {

namespace {

namespace fs = std::filesystem;

/// The input's name in the folder; what kavhost reads and does not write, such as MP3, becomes WAV.
fs::path NameIn(const fs::path& folder, const fs::path& input) {
    auto name = folder / input.filename();
    if (!ContainerOf(name)) name.replace_extension(".wav");
    return name;
}

void MakeFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (!fs::is_directory(folder)) {
        throw CFailure(Utf8(folder) + ": cannot be made a folder" + (error ? ": " + error.message() : ""));
    }
}

/// Two names of one file, whether it is there or not.
bool AreSame(const fs::path& a, const fs::path& b) {
    std::error_code error;
    if (fs::equivalent(a, b, error)) return true;
    const auto whole = fs::weakly_canonical(a, error);
    return !error && whole == fs::weakly_canonical(b, error);
}

void CheckState(const fs::path& state, const std::vector<fs::path>& inputs) {
    if (state.empty()) return;
    // The state has the channels of the file that it was made for.
    if (inputs.size() > 1) throw CUsageError("--save-state: there is more than one input");
    if (AreSame(state, inputs.front())) throw CUsageError(Utf8(state) + ": would replace an input");
}

void CheckOutput(const fs::path& output, const std::vector<fs::path>& inputs, const SRenderOptions& options) {
    const auto& samples = options.samples;
    const auto container = ContainerOf(output);
    if (!container) {
        throw CUsageError(
            Utf8(output) + ": unknown output format; .wav, .flac, .aif, .aiff and .ogg are possible");
    }
    if (samples && !Holds(*container, *samples)) {
        throw CUsageError(Utf8(output) + ": " + std::string(ContainerName(*container)) +
                          " does not hold the format " + std::string(FormatName(*samples)));
    }
    for (const auto& input : inputs) {
        std::error_code error; // a file that does not exist is no other's
        if (fs::equivalent(output, input, error))
            throw CUsageError(Utf8(output) + ": would replace an input");
    }
    if (!options.state.empty() && AreSame(output, options.state)) {
        throw CUsageError(Utf8(output) + ": cannot take both the audio and the state");
    }
}

} // namespace

std::vector<SRenderJob> PlanJobs(
    const std::vector<fs::path>& inputs, const fs::path& output, const SRenderOptions& options) {
    CheckState(options.state, inputs);
    std::error_code error;
    const bool isFolder = fs::is_directory(output, error);
    if (inputs.size() == 1 && !isFolder && output.has_filename()) {
        CheckOutput(output, inputs, options);
        return {{inputs.front(), output}};
    }
    if (fs::exists(output, error) && !isFolder) {
        throw CUsageError(Utf8(output) + ": not a folder, and there is more than one input");
    }
    std::vector<SRenderJob> jobs;
    std::set<fs::path> outputs;
    for (const auto& input : inputs) {
        jobs.push_back({input, NameIn(output, input)});
        if (!outputs.insert(jobs.back().output).second) {
            throw CUsageError(Utf8(jobs.back().output) + ": two inputs would give this file");
        }
        CheckOutput(jobs.back().output, inputs, options);
    }
    MakeFolder(output);
    return jobs;
}

} // namespace KAV::Host
