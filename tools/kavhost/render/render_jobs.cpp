#include "platform/file_identity.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/pending_file.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/plot/plot.h"
#include "tools/kavhost/render/render.h"

#include <algorithm>
#include <map>
#include <set>
#include <system_error>
#include <variant>

namespace KAV::Host {

namespace {

namespace fs = std::filesystem;

/// The name for standard input and standard output.
constexpr const char* Standard = "-";

constexpr const char* Containers = ".wav, .flac, .aif, .aiff and .ogg are supported";

/// What two names of one file have in common: the file, through links of either kind, or the place where it
/// will be.
using FileKey = std::variant<Platform::SFileIdentity, fs::path>;

FileKey KeyOf(const fs::path& file) {
    if (const auto identity = Platform::IdentityOf(file)) return *identity;
    std::error_code error;
    const auto place = fs::weakly_canonical(file, error);
    return error ? file : place;
}

/// Files that a command names, so that none is read and written, or written twice.
class CNamedFiles final {
public:
    explicit CNamedFiles(const std::vector<fs::path>& inputs) {
        for (const auto& input : inputs) { // a file that doesn't exist can't be an input
            if (const auto identity = Platform::IdentityOf(input)) _inputs.insert(*identity);
        }
    }

    /// `kind` is what the file is to hold.
    void AddOutput(const fs::path& file, const char* kind) {
        if (file.empty() || file == Standard) return;
        const auto key = KeyOf(file);
        const auto* const identity = std::get_if<Platform::SFileIdentity>(&key);
        if (identity != nullptr && _inputs.contains(*identity))
            throw CUsageError(Utf8(file) + ": would replace an input");
        const auto [other, isNew] = _outputs.emplace(key, kind);
        if (isNew) return;
        if (other->second == kind) throw CUsageError(Utf8(file) + ": two inputs would produce this file");
        throw CUsageError(Utf8(file) + ": is named for both " + other->second + " and " + kind);
    }

private:
    std::set<Platform::SFileIdentity> _inputs;
    std::map<FileKey, std::string> _outputs;
};

/// The extension for outputs, with its point; empty if the user has chosen none.
std::string WantedExtension(const SRenderOptions& options) {
    if (options.extension.empty()) return {};
    auto extension = (options.extension.starts_with('.') ? "" : ".") + options.extension;
    if (!ContainerOf(PathOf("x" + extension)))
        throw CUsageError("--ext: " + options.extension + ": unknown output format; " + Containers);
    return extension;
}

/// The input's name in the folder; what kavhost reads and does not write, such as MP3, becomes WAV.
fs::path NameIn(const fs::path& folder, const fs::path& input, const std::string& extension) {
    auto name = folder / (input == Standard ? fs::path("stdin.wav") : input.filename());
    if (!extension.empty())
        name.replace_extension(PathOf(extension));
    else if (!ContainerOf(name))
        name.replace_extension(".wav");
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

/// Refuses what several outputs can't share. `isFileName`: by its extension it is the name of one of them.
void CheckFolder(const fs::path& folder, bool isFileName) {
    std::error_code error;
    if (fs::is_directory(folder, error)) return;
    if (fs::exists(folder, error))
        throw CUsageError(Utf8(folder) + ": not a folder, and there is more than one input");
    if (!isFileName) return;
    throw CUsageError(Utf8(folder) + ": the name of a file, and there is more than one input; a folder's " +
                      "name may end in /");
}

bool Names(const SExtra& extra, const fs::path& file) {
    const auto extension = Utf8(file.extension());
    return std::ranges::any_of(
        extra.extensions, [&](const std::string& one) { return EqualIgnoringCase(extension, one); });
}

/// The path of a job's additional output.
fs::path ExtraFor(const SExtra& extra, const SRenderJob& job, std::size_t inputs) {
    if (extra.wanted.empty()) return {};
    if (!IsFolder(extra.wanted, inputs)) {
        if (Names(extra, extra.wanted)) return extra.wanted;
        std::string possible;
        for (const auto& one : extra.extensions) possible += (possible.empty() ? "" : " and ") + one;
        throw CUsageError(std::string(extra.option) + ": " + Utf8(extra.wanted) + ": only " + possible +
                          (extra.extensions.size() == 1 ? " is supported" : " are supported"));
    }
    const auto name = job.output == Standard ? NameIn({}, job.input, {}) : job.output.filename();
    return (extra.wanted / name).replace_extension(extra.extensions.front());
}

void MakeExtraFolder(const SExtra& extra, std::size_t inputs) {
    if (extra.wanted.empty() || !IsFolder(extra.wanted, inputs)) return;
    CheckFolder(extra.wanted, Names(extra, extra.wanted));
    MakeFolder(extra.wanted);
}

void CheckState(const fs::path& state, const std::vector<fs::path>& inputs, bool isAlbum) {
    if (state.empty()) return;
    // The state has the channels of the file that it was made for.
    if (inputs.size() > 1 && !isAlbum) throw CUsageError("--save-state: there is more than one input");
}

void CheckFormat(const SRenderJob& job, const SRenderOptions& options) {
    if (!job.container) {
        throw CUsageError(Utf8(job.output) + ": unknown output format; " + Containers +
                          (job.output.has_extension() ? "" : ", and a new folder's name ends in /"));
    }
    const auto& samples = options.samples;
    if (samples && !Holds(*job.container, *samples)) {
        throw CUsageError(Utf8(job.output) + ": " + std::string(ContainerName(*job.container)) +
                          " cannot store the format " + std::string(FormatName(*samples)));
    }
}

/// A job whose output isn't in a folder.
SRenderJob PlanFile(const fs::path& input, const fs::path& output, const std::string& extension) {
    SRenderJob job{input, output};
    job.container = ContainerOf(output);
    if (extension.empty()) {
        if (output == Standard) job.container = EContainer::Wav;
        return job;
    }
    const auto wanted = ContainerOf(PathOf("x" + extension));
    if (output != Standard && job.container && job.container != wanted)
        throw CUsageError("--ext: " + Utf8(output) + " has a container of its own");
    job.container = wanted;
    return job;
}

std::vector<SRenderJob> PlanOutputs(
    const std::vector<fs::path>& inputs, const fs::path& output, const SRenderOptions& options) {
    const auto extension = WantedExtension(options);
    if (std::ranges::count(inputs, fs::path(Standard)) > 1)
        throw CUsageError("standard input can be read only once");
    if (output == Standard && inputs.size() > 1)
        throw CUsageError("-o -: standard output can hold one file, and there is more than one input");
    if (output == Standard || !IsFolder(output, inputs.size()))
        return {PlanFile(inputs.front(), output, extension)};
    CheckFolder(output, ContainerOf(output).has_value());
    std::vector<SRenderJob> jobs;
    for (const auto& input : inputs) {
        jobs.push_back({input, NameIn(output, input, extension)});
        jobs.back().container = ContainerOf(jobs.back().output);
    }
    return jobs;
}

/// Gives jobs their pictures, data and state.
void PlanExtras(std::vector<SRenderJob>& jobs, const SRenderOptions& options) {
    if (!options.plot.empty() && !CanDrawPlots()) {
        throw CUsageError("--plot: this build cannot draw pictures; --plot-data writes the numbers");
    }
    const SExtra plot{"--plot", options.plot, {".png"}};
    const SExtra data{"--plot-data", options.plotData, {".csv", ".json"}};
    for (auto& job : jobs) {
        job.plot = ExtraFor(plot, job, jobs.size());
        job.plotData = ExtraFor(data, job, jobs.size());
        if (&job == &jobs.front()) job.state = options.state; // an album has one for all
        job.keepsExisting = options.keepsExisting;
    }
}

/// Cleans the folders of all outputs, each once.
void RemoveAbandoned(const std::vector<SRenderJob>& jobs) {
    std::map<fs::path, fs::path> files; // one for each folder
    for (const auto& job : jobs) {
        for (const auto& file : {job.output, job.plot, job.plotData, job.state}) {
            if (!file.empty()) files.emplace(file == Standard ? file : file.parent_path(), file);
        }
    }
    for (const auto& [folder, file] : files) RemoveAbandonedBeside(file);
}

} // namespace

std::vector<SRenderJob> PlanJobs(
    const std::vector<fs::path>& inputs, const fs::path& output, const SRenderOptions& options) {
    CheckState(options.state, inputs, options.isAlbum);
    auto jobs = PlanOutputs(inputs, output, options);
    for (const auto& job : jobs) CheckFormat(job, options);
    PlanExtras(jobs, options);
    CNamedFiles files(inputs);
    files.AddOutput(options.state, "the state"); // one, of an album
    for (const auto& job : jobs) {
        files.AddOutput(job.output, "the audio");
        files.AddOutput(job.plot, "the picture");
        files.AddOutput(job.plotData, "the data");
    }
    MakeExtraFolder({"--plot", options.plot, {".png"}}, jobs.size());
    MakeExtraFolder({"--plot-data", options.plotData, {".csv", ".json"}}, jobs.size());
    if (output != Standard && IsFolder(output, jobs.size())) MakeFolder(output);
    RemoveAbandoned(jobs);
    return jobs;
}

} // namespace KAV::Host
