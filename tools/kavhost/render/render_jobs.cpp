#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/plot/plot.h"
#include "tools/kavhost/render/render.h"

#include <algorithm>
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
        throw CFailure(
            Utf8(folder) + ": cannot be created as a folder" + (error ? ": " + error.message() : ""));
    }
}

/// Two names of one file, whether it is there or not.
bool AreSame(const fs::path& a, const fs::path& b) {
    std::error_code error;
    if (fs::equivalent(a, b, error)) return true;
    const auto whole = fs::weakly_canonical(a, error);
    return !error && whole == fs::weakly_canonical(b, error);
}

/// A name that the user has given for an additional output.
struct SExtra {
    const char* option;
    const fs::path& wanted;
    std::vector<std::string> extensions; ///< that a file may have; those in a folder get the first
};

bool IsFolder(const fs::path& path, std::size_t inputs) {
    std::error_code error;
    return inputs > 1 || fs::is_directory(path, error) || !path.has_filename();
}

/// The path of a job's additional output.
fs::path ExtraFor(const SExtra& extra, const SRenderJob& job, std::size_t inputs) {
    if (extra.wanted.empty()) return {};
    if (!IsFolder(extra.wanted, inputs)) {
        const auto extension = Utf8(extra.wanted.extension());
        const auto has = [&](const std::string& other) { return EqualIgnoringCase(extension, other); };
        if (std::ranges::any_of(extra.extensions, has)) return extra.wanted;
        std::string possible;
        for (const auto& one : extra.extensions) possible += (possible.empty() ? "" : " and ") + one;
        throw CUsageError(std::string(extra.option) + ": " + Utf8(extra.wanted) + ": only " + possible +
                          (extra.extensions.size() == 1 ? " is supported" : " are supported"));
    }
    auto name = extra.wanted / job.output.filename();
    return name.replace_extension(extra.extensions.front());
}

void MakeExtraFolder(const SExtra& extra, std::size_t inputs) {
    if (extra.wanted.empty() || !IsFolder(extra.wanted, inputs)) return;
    std::error_code error;
    if (fs::exists(extra.wanted, error) && !fs::is_directory(extra.wanted, error)) {
        throw CUsageError(Utf8(extra.wanted) + ": not a folder, and there is more than one input");
    }
    MakeFolder(extra.wanted);
}

/// Gives jobs their pictures and the data; no file may be meant twice.
void PlanExtras(
    std::vector<SRenderJob>& jobs, const std::vector<fs::path>& inputs, const SRenderOptions& options) {
    if (!options.plot.empty() && !CanDrawPlots()) {
        throw CUsageError("--plot: this build cannot draw pictures; --plot-data writes the numbers");
    }
    const SExtra plot{"--plot", options.plot, {".png"}};
    const SExtra data{"--plot-data", options.plotData, {".csv", ".json"}};
    std::set<fs::path> taken;
    for (auto& job : jobs) {
        job.plot = ExtraFor(plot, job, jobs.size());
        job.plotData = ExtraFor(data, job, jobs.size());
        for (const auto& file : {job.plot, job.plotData}) {
            if (file.empty()) continue;
            if (!taken.insert(file).second) {
                throw CUsageError(Utf8(file) + ": two inputs would produce this file");
            }
            for (const auto& input : inputs) {
                if (AreSame(file, input)) throw CUsageError(Utf8(file) + ": would replace an input");
            }
            if (AreSame(file, job.output) || (!options.state.empty() && AreSame(file, options.state))) {
                throw CUsageError(Utf8(file) + ": is named for two different outputs");
            }
        }
    }
    for (const auto& extra : {plot, data}) MakeExtraFolder(extra, jobs.size());
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
            Utf8(output) + ": unknown output format; .wav, .flac, .aif, .aiff and .ogg are supported");
    }
    if (samples && !Holds(*container, *samples)) {
        throw CUsageError(Utf8(output) + ": " + std::string(ContainerName(*container)) +
                          " cannot store the format " + std::string(FormatName(*samples)));
    }
    for (const auto& input : inputs) {
        std::error_code error; // a file that doesn't exist can't be an input
        if (fs::equivalent(output, input, error))
            throw CUsageError(Utf8(output) + ": would replace an input");
    }
    if (!options.state.empty() && AreSame(output, options.state)) {
        throw CUsageError(Utf8(output) + ": is named for both the audio and the state");
    }
}

std::vector<SRenderJob> PlanOutputs(
    const std::vector<fs::path>& inputs, const fs::path& output, const SRenderOptions& options) {
    std::error_code error;
    if (!IsFolder(output, inputs.size())) {
        CheckOutput(output, inputs, options);
        return {{inputs.front(), output}};
    }
    if (fs::exists(output, error) && !fs::is_directory(output, error)) {
        throw CUsageError(Utf8(output) + ": not a folder, and there is more than one input");
    }
    std::vector<SRenderJob> jobs;
    std::set<fs::path> outputs;
    for (const auto& input : inputs) {
        jobs.push_back({input, NameIn(output, input)});
        if (!outputs.insert(jobs.back().output).second) {
            throw CUsageError(Utf8(jobs.back().output) + ": two inputs would produce this file");
        }
        CheckOutput(jobs.back().output, inputs, options);
    }
    return jobs;
}

} // namespace

std::vector<SRenderJob> PlanJobs(
    const std::vector<fs::path>& inputs, const fs::path& output, const SRenderOptions& options) {
    CheckState(options.state, inputs);
    auto jobs = PlanOutputs(inputs, output, options);
    PlanExtras(jobs, inputs, options);
    if (IsFolder(output, inputs.size())) MakeFolder(output);
    return jobs;
}

} // namespace KAV::Host
