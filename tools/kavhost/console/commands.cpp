#include "tools/kavhost/console/commands.h"

#include "platform/executable.h"
#include "platform/library.h"
#include "tools/kavhost/base/pending_file.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/bench/bench.h"
#include "tools/kavhost/console/options.h"
#include "tools/kavhost/content/factory_content.h"
#include "tools/kavhost/editor/editor_commands.h"
#include "tools/kavhost/editor/scratch_settings.h"
#include "tools/kavhost/effect/effect.h"
#include "tools/kavhost/effect/effect_library.h"
#include "tools/kavhost/effect/state_file.h"
#include "tools/kavhost/inspect/info.h"
#include "tools/kavhost/inspect/inspect.h"
#include "tools/kavhost/inspect/patch_content.h"
#include "tools/kavhost/render/render.h"
#include "tools/kavhost/render/render_batch.h"
#include "tools/kavhost/report/report.h"
#include "tools/kavhost/setup/profile.h"
#include "tools/kavhost/setup/settings.h"
#include "tools/kavhost/setup/setup.h"
#include "utils/path.h"

#include <algorithm>
#include <exception>
#include <span>
#include <system_error>

namespace KAV::Host {

namespace {

constexpr SStream UsualStream{44100, 512};

void PrintError(std::ostream& errors, std::string message) {
    std::ranges::replace_if(
        message, [](char letter) { return letter == '\n' || letter == '\r'; }, ' ');
    errors << "kavhost: " << Trim(message) << std::endl;
}

/// The name of the plug-in that comes with kavhost, and of its profile.
constexpr const char* OwnPlugin = "KAVSorrelLimiter";

std::filesystem::path OwnFolder() {
    return Platform::ExecutableFile().parent_path();
}

std::filesystem::path PluginFile(const SOptions& options) {
    if (!options.plugin.empty()) return options.plugin;
    return OwnFolder() / PathOf(OwnPlugin + std::string(Platform::LibrarySuffix()));
}

std::optional<SProfile> ProfileFor(const CEffect& effect, const std::filesystem::path& wanted) {
    if (wanted.empty()) return FindProfile(OwnFolder(), effect.UniqueId());
    auto profile = ReadProfile(wanted);
    if (profile.uniqueId != effect.UniqueId()) {
        throw CFailure(Utf8(wanted) + ": the profile of another effect: its unique id is " +
                       std::to_string(profile.uniqueId) + ", not " + std::to_string(effect.UniqueId()));
    }
    return profile;
}

void RunInfo(const SOptions& options, std::ostream& out) {
    const CEffectLibrary library(PluginFile(options));
    CEffect effect(library, UsualStream);
    const auto profile = ProfileFor(effect, options.profile);
    const auto* known = profile ? &*profile : nullptr;
    CSetup(options.state).Apply(effect);
    ResolveSettings(options.settings, effect, known);
    std::optional<CStateFile> state;
    if (!options.savedState.empty()) state.emplace(options.savedState, effect);
    effect.Start(); // the latency need not be known before
    (options.isJson ? PrintInfoAsJson : PrintInfo)(out, library.File(), effect, known);
    if (state) state->Commit();
}

/// Each parameter that is not as in `fresh`, in words.
std::vector<std::string> ChangesFrom(
    std::span<const float> fresh, const CEffect& effect, const SProfile* profile) {
    std::vector<std::string> changes;
    for (std::int32_t i = 0; i < effect.Parameters(); ++i) {
        const float value = effect.Parameter(i);
        if (value == fresh[static_cast<std::size_t>(i)]) continue;
        const auto* const law = profile != nullptr ? profile->Find(i) : nullptr;
        if (law != nullptr) {
            changes.push_back(law->name + " " + QuantityAt(*law, static_cast<double>(value)));
        } else {
            const auto label = effect.ParameterLabel(i);
            changes.push_back(std::string(Trim(effect.ParameterName(i))) + " " +
                              std::string(Trim(effect.ParameterDisplay(i) + " " + label)));
        }
    }
    return changes;
}

/// `changes`, which may be null, gets what will be other than in a fresh effect.
CSetup SetupFor(const CEffectLibrary& library, const SStateOptions& state,
    std::span<const std::string> settings, const std::filesystem::path& wantedProfile,
    std::vector<std::string>* changes = nullptr) {
    CSetup setup(state);
    CEffect effect(library, UsualStream); // of its own: finding a value may move the parameter about
    const auto profile = ProfileFor(effect, wantedProfile);
    const auto* const known = profile ? &*profile : nullptr;
    std::vector<float> fresh;
    fresh.reserve(static_cast<std::size_t>(std::max(effect.Parameters(), 0)));
    for (std::int32_t i = 0; i < effect.Parameters(); ++i) fresh.push_back(effect.Parameter(i));
    setup.Apply(effect); // what a parameter displays may depend on the state
    setup.Set(ResolveSettings(settings, effect, known));
    if (changes != nullptr) *changes = ChangesFrom(fresh, effect, known);
    return setup;
}

/// A file that fails does not keep the others from being done.
EExitCode RunRender(const SOptions& options, std::ostream& out, std::ostream& errors) {
    const CEffectLibrary library(PluginFile(options));
    auto render = options.render;
    auto setup = SetupFor(library, options.state, options.settings, options.profile, &render.changes);
    CRenderer renderer(library, std::move(setup), render);
    std::vector<SRenderReport> reports;
    auto code = EExitCode::Done;
    const auto jobs = PlanJobs(options.inputs, options.output, render);
    RenderAll(renderer, jobs, options.jobs, [&](SOutcome outcome) {
        if (!outcome.report) {
            PrintError(errors, outcome.failure);
            code = EExitCode::Failure;
            return;
        }
        if (!options.isJson) PrintReport(out, *outcome.report);
        reports.push_back(*std::move(outcome.report));
    });
    if (options.isJson) out << ReportsAsJson(reports) << "\n";
    return code;
}

/// Fails before the user has set anything if the files that are written at the end can't be.
void CheckEditOutputs(const SOptions& options) {
    const auto& state = options.savedState;
    if (!options.output.empty()) {
        if (std::filesystem::is_directory(options.output) || !options.output.has_filename())
            throw CUsageError(Utf8(options.output) + ": a folder, not a name for the audio");
        PlanJobs({options.edit.input}, options.output, options.render);
        const CPendingFile trial(options.output);
    } else if (std::error_code error; std::filesystem::equivalent(state, options.edit.input, error)) {
        throw CUsageError(Utf8(state) + ": would replace an input");
    }
    if (!state.empty()) const CPendingFile trial(state);
}

EExitCode RunEdit(const SOptions& options, std::ostream& out, std::ostream& errors) {
    const auto& state = options.savedState;
    CheckEditOutputs(options);
    const CEffectLibrary library(PluginFile(options));
    const auto setup = SetupFor(library, options.state, options.settings, options.profile);
    const auto edited =
        EditFile(library, setup, options.edit, [&](const std::string& note) { PrintError(errors, note); });
    if (!state.empty()) {
        if (edited.state.empty()) throw CFailure(Utf8(state) + ": the effect provides no state");
        CPendingFile file(state);
        file.Stream() << edited.state;
        file.Commit();
    }
    if (!edited.failure.empty()) {
        throw CFailure(
            edited.failure + (state.empty() ? "" : "; " + Utf8(state) + " has what was set by then"));
    }
    if (options.output.empty()) return EExitCode::Done;
    auto render = options.render;
    render.state.clear();
    render.blockSize = options.edit.blockSize;
    const auto settings = edited.state.empty() ? setup : CSetup::OfState(edited.state, "the effect's state");
    CRenderer renderer(library, settings, render);
    const auto jobs = PlanJobs({options.edit.input}, options.output, render);
    auto code = EExitCode::Done;
    RenderAll(renderer, jobs, 1, [&](const SOutcome& outcome) {
        if (outcome.report) return PrintReport(out, *outcome.report);
        PrintError(errors, outcome.failure);
        code = EExitCode::Failure;
    });
    return code;
}

void RunShot(const SOptions& options, std::ostream& errors) {
    const auto& shot = options.shot;
    if (!EqualIgnoringCase(Utf8(shot.output.extension()), ".png"))
        throw CUsageError(Utf8(shot.output) + ": only .png is supported");
    const CScratchSettings scratch;
    const CEffectLibrary library(PluginFile(options));
    const auto setup = SetupFor(library, options.state, options.settings, options.profile);
    ShootEditor(library, setup, shot, [&](const std::string& note) { PrintError(errors, note); });
}

void RunInspect(const SOptions& options, std::ostream& out) {
    const auto content = ReadPatch(options.patch);
    std::optional<SProfile> profile;
    if (!options.profile.empty())
        profile = ReadProfile(options.profile);
    else if (content.uniqueId)
        profile = FindProfile(OwnFolder(), *content.uniqueId);
    else if (const auto own = OwnFolder() / PathOf(OwnPlugin + std::string(".json"));
             content.form == "binary" && std::filesystem::exists(own))
        profile = ReadProfile(own); // no other effect has that form
    (options.isJson ? PrintPatchAsJson : PrintPatch)(out, content, profile ? &*profile : nullptr);
}

void RunBench(const SOptions& options, std::ostream& out) {
    const auto& bench = options.bench;
    const CEffectLibrary library(PluginFile(options));
    const auto setup = SetupFor(library, options.state, options.settings, options.profile);
    const auto material = bench.input.empty() ? MakeMaterial(bench) : ReadMaterial(bench);
    CBenchSubject first(library, setup, material, bench.blockSize);

    SBenchReport report{.first = first.Effect().Name(),
        .second = {},
        .rateHz = material.rateHz,
        .channels = material.audio.Channels(),
        .blockSize = bench.blockSize,
        .seconds = static_cast<double>(material.audio.Frames()) / material.rateHz,
        .result = {}};
    if (options.otherPlugin.empty() && options.otherSettings.empty()) {
        report.result = Measure(first, nullptr, bench.runs);
    } else {
        const bool isSame = options.otherPlugin.empty();
        const CEffectLibrary otherLibrary(isSame ? PluginFile(options) : options.otherPlugin);
        const auto otherSetup = SetupFor(
            otherLibrary, {}, options.otherSettings, isSame ? options.profile : std::filesystem::path{});
        CBenchSubject second(otherLibrary, otherSetup, material, bench.blockSize);
        report.second = second.Effect().Name();
        report.result = Measure(first, &second, bench.runs);
    }
    if (options.isJson)
        out << BenchAsJson(report) << "\n";
    else
        PrintBench(out, report);
}

std::filesystem::path DocumentsFolder() {
    return Utils::ToSystemPath(Utils::GetDocumentsFolder());
}

std::filesystem::path ContentFolder(const SOptions& options) {
    return options.content.empty() ? OwnFolder() / "content" : options.content;
}

EExitCode PrintChangesAndGetCode(std::ostream& out, const ContentReport& report) {
    PrintChanges(out, report);
    return HasFailed(report) ? EExitCode::Failure : EExitCode::Done;
}

EExitCode Run(const SOptions& options, std::ostream& out, std::ostream& errors) {
    auto code = EExitCode::Done;
    switch (options.command) {
    case ECommand::Print:
        out << options.text;
        break;
    case ECommand::Info:
        RunInfo(options, out);
        break;
    case ECommand::Render:
        code = RunRender(options, out, errors);
        break;
    case ECommand::Edit:
        code = RunEdit(options, out, errors);
        break;
    case ECommand::Shot:
        RunShot(options, errors);
        break;
    case ECommand::Bench:
        RunBench(options, out);
        break;
    case ECommand::Inspect:
        RunInspect(options, out);
        break;
    case ECommand::InstallContent:
        code = PrintChangesAndGetCode(out, InstallContent(ContentFolder(options), DocumentsFolder()));
        break;
    case ECommand::UninstallContent:
        code = PrintChangesAndGetCode(out, UninstallContent(DocumentsFolder()));
        break;
    case ECommand::ListContent:
        PrintContent(out, ListContent(ContentFolder(options), DocumentsFolder()));
        break;
    }
    out.flush();
    if (!out) throw CFailure("standard output cannot be written");
    return code;
}

} // namespace

EExitCode RunKavhost(
    const std::vector<std::string>& arguments, std::ostream& out, std::ostream& errors) noexcept {
    try {
        return Run(ReadOptions(arguments), out, errors);
    } catch (const CUsageError& error) {
        PrintError(errors, error.what());
        return EExitCode::Usage;
    } catch (const CInterruption& interruption) {
        PrintError(errors, interruption.what());
        return EExitCode::Interrupted;
    } catch (const std::exception& error) { // of ours, of a library, or of an effect that lets one out
        PrintError(errors, error.what());
    } catch (...) {
        PrintError(errors, "an unknown error");
    }
    return EExitCode::Failure;
}

} // namespace KAV::Host
